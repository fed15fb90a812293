#include "zo_core_internal/zo_guarded.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>

namespace zo {
namespace {

struct GuardCase {
  const char* name;
  std::function<void()> body;
  int status;
  const char* message;
};

class Guarded : public testing::TestWithParam<GuardCase> {};

TEST_P(Guarded, TurnsWhatIsThrownIntoStatusAndMessage) {
  char message[256] = "untouched";
  EXPECT_EQ(GetParam().status, guarded("zoThing_do", message, sizeof(message), GetParam().body));
  EXPECT_STREQ(GetParam().message, message);
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, Guarded,
    testing::Values(GuardCase{"NothingThrown", [] {}, ZO_STATUS_OK, "untouched"},
                    GuardCase{"OurException",
                              [] {
                                throw Exception(nullptr, ZO_STATUS_SEEK_ERROR, "seek", "src/file", 1,
                                                "no frame %d", 7);
                              },
                              ZO_STATUS_SEEK_ERROR, "no frame 7"},
                    GuardCase{
                        "OurExceptionWithAnUnknownStatus",
                        [] { throw Exception(nullptr, static_cast<Status>(-5), "f", "src/file", 1, "odd"); },
                        -5, "odd"},
                    GuardCase{"StandardException", [] { throw std::runtime_error("broken"); },
                              ZO_STATUS_STD_EXCEPTION, "zoThing_do: caught standard exception: broken"},
                    GuardCase{"OutOfMemory", [] { throw std::bad_alloc(); }, ZO_STATUS_STD_EXCEPTION,
                              "zoThing_do: caught standard exception: std::bad_alloc"},
                    GuardCase{"Number", [] { throw 42; }, ZO_STATUS_UNKNOWN_ERROR,
                              "zoThing_do: caught unknown exception."},
                    GuardCase{"Text", [] { throw "text"; }, ZO_STATUS_UNKNOWN_ERROR,
                              "zoThing_do: caught unknown exception."}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(GuardedWithoutBuffer, StatusIsAllThereIs) {
  EXPECT_EQ(ZO_STATUS_STD_EXCEPTION,
            guarded("zoThing_do", nullptr, 0, [] { throw std::runtime_error("x"); }));
  EXPECT_EQ(ZO_STATUS_UNKNOWN_ERROR, guarded("zoThing_do", nullptr, 0, [] { throw 1; }));
}

}  // namespace
}  // namespace zo
