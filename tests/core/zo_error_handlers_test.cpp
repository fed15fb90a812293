#include "zo_core/zo_error_handlers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>

#include "zo_test_support.h"

namespace zo {
namespace {

using Handler = std::function<Status(char*, unsigned)>;

struct HandlerCase {
  const char* name;
  Status status;
  std::string message;
  Handler handle;
};

std::vector<HandlerCase> handlerCases() {
  const Exception exception(nullptr, ZO_STATUS_SEEK_ERROR, "raise", "file", 1, "the message");
  const std::runtime_error standard("the reason");
  return {
      {"Zo", ZO_STATUS_SEEK_ERROR, "the message",
       [=](char* p_message, unsigned size) {
         return handleZoException("zoThing_do", exception, p_message, size);
       }},
      {"Std", ZO_STATUS_STD_EXCEPTION, "zoThing_do: caught standard exception: the reason",
       [=](char* p_message, unsigned size) {
         return handleStdException("zoThing_do", standard, p_message, size);
       }},
      {"Unknown", ZO_STATUS_UNKNOWN_ERROR, "zoThing_do: caught unknown exception.",
       [](char* p_message, unsigned size) { return handleUnknownException("zoThing_do", p_message, size); }},
  };
}

TEST(ErrorHandlersTest, TakePercentSignsOfTheMessageAsTheyAre) {
  char message[64];
  const Exception exception(nullptr, ZO_STATUS_OPEN_ERROR, "f", "file", 1, "%s", "a%20b %d %n %%");
  EXPECT_EQ(ZO_STATUS_OPEN_ERROR, handleZoException("g", exception, message, sizeof(message)));
  EXPECT_STREQ("a%20b %d %n %%", message);
}

class ErrorHandlers : public testing::TestWithParam<HandlerCase> {};

TEST_P(ErrorHandlers, WriteTheMessageAndReturnTheStatus) {
  char message[100];
  EXPECT_EQ(GetParam().status, GetParam().handle(message, sizeof(message)));
  EXPECT_EQ(GetParam().message, message);
}

TEST_P(ErrorHandlers, WriteNothingIntoANullBufferOfSizeZero) {
  EXPECT_EQ(GetParam().status, GetParam().handle(nullptr, 0));
}

TEST_P(ErrorHandlers, WriteNothingIntoANullBufferWhateverItsSize) {
  EXPECT_EQ(GetParam().status, GetParam().handle(nullptr, 100));
}

TEST_P(ErrorHandlers, WriteNothingIntoABufferOfSizeZero) {
  char message = 'x';
  EXPECT_EQ(GetParam().status, GetParam().handle(&message, 0));
  EXPECT_EQ('x', message);
}

TEST_P(ErrorHandlers, WriteOnlyTheEndIntoABufferOfSizeOne) {
  char message[2] = {'x', 'y'};
  EXPECT_EQ(GetParam().status, GetParam().handle(message, 1));
  EXPECT_EQ('\0', message[0]);
  EXPECT_EQ('y', message[1]);
}

TEST_P(ErrorHandlers, CutTheMessageToFit) {
  char message[8];
  std::fill(std::begin(message), std::end(message), '#');
  EXPECT_EQ(GetParam().status, GetParam().handle(message, 6));
  EXPECT_EQ(GetParam().message.substr(0, 5), message);
  EXPECT_EQ('#', message[6]);
  EXPECT_EQ('#', message[7]);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ErrorHandlers, testing::ValuesIn(handlerCases()), test::CaseName());

TEST(ErrorHandlersTest, PassTheStatusOnEvenWhenItIsUnknown) {
  const Exception exception(nullptr, static_cast<Status>(77), "f", "file", 1, "m");
  EXPECT_EQ(static_cast<Status>(77), handleZoException("g", exception, nullptr, 0));
}

TEST(ErrorHandlersTest, TakeANullFunctionNameAsAnEmptyOne) {
  char message[100];
  EXPECT_EQ(ZO_STATUS_UNKNOWN_ERROR, handleUnknownException(nullptr, message, sizeof(message)));
  EXPECT_STREQ(": caught unknown exception.", message);
  EXPECT_EQ(ZO_STATUS_STD_EXCEPTION,
            handleStdException(nullptr, std::runtime_error("why"), message, sizeof(message)));
  EXPECT_STREQ(": caught standard exception: why", message);
  const Exception exception(nullptr, ZO_STATUS_SEEK_ERROR, "f", "file", 1, "m");
  EXPECT_EQ(ZO_STATUS_SEEK_ERROR, handleZoException(nullptr, exception, message, sizeof(message)));
  EXPECT_STREQ("m", message);
}

}  // namespace
}  // namespace zo
