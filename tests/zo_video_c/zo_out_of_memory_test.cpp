// Every allocation of the plain functions fails once: the status says so, nothing escapes, nothing leaks and
// the caller's pointers stay as they were.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "zo_failing_memory.h"
#include "zo_test_support.h"
#include "zo_video_c/zo_video_c.h"

namespace zo {
namespace test {
namespace {

/// Runs `call` with the first, the second, ... allocation failing until none of them does. Returns how often
/// it failed.
template <class Call>
int failEachAllocation(Call&& call) {
  for (int i = 0; i < 10000; ++i) {
    char message[128] = "";
    const MemoryShortage shortage(Requests::OURS, i);
    const int status = call(message, static_cast<unsigned>(sizeof(message)));
    if (!shortage.met()) {
      EXPECT_EQ(::ZO_STATUS_OK, status) << message;
      return i;
    }
    // An allocation may fail without consequence where there is another way.
    if (status != ::ZO_STATUS_OK) {
      EXPECT_TRUE(status == ::ZO_STATUS_STD_EXCEPTION || status == ::ZO_STATUS_OUT_OF_MEMORY) << status;
      EXPECT_NE(std::string(), message);
    }
  }
  ADD_FAILURE() << "allocates without end";
  return 0;
}

class OutOfMemory : public testing::Test {
 protected:
  static std::string clip() {
    static const TempDir DIRECTORY;
    static const std::string PATH = makeClip(DIRECTORY.file("clip.mp4"), ClipOptions()).path;
    return PATH;
  }
};

TEST_F(OutOfMemory, CreatingAReaderLeavesTheCallersPointer) {
  const std::string path = clip();
  ZoVideoReader untouched = {};
  const int failures = failEachAllocation([&](char* p_message, unsigned size) {
    ZoVideoReader* p_reader = &untouched;
    const int status =
        zoVideoReader_create(nullptr, nullptr, path.c_str(), std::numeric_limits<unsigned>::max(), -1, 1, 0,
                             0, &p_reader, p_message, size);
    if (status == ::ZO_STATUS_OK) {
      zoVideoReader_release(&p_reader);
    } else {
      EXPECT_EQ(&untouched, p_reader);
    }
    return status;
  });
  EXPECT_GE(failures, 3) << "record, handle and reader at least";
}

TEST_F(OutOfMemory, CreatingAConverterLeavesTheCallersPointer) {
  int place = 0;
  auto* p_untouched = reinterpret_cast<ZoVideoConverter*>(&place);
  const int failures = failEachAllocation([&](char* p_message, unsigned size) {
    ZoVideoConverter* p_converter = p_untouched;
    const int status = zoVideoConverter_create(&p_converter, p_message, size);
    if (status == ::ZO_STATUS_OK) {
      zoVideoConverter_release(&p_converter);
    } else {
      EXPECT_EQ(p_untouched, p_converter);
    }
    return status;
  });
  EXPECT_GE(failures, 2) << "converter and its private part";
}

TEST_F(OutOfMemory, CreatingAFrameLeavesTheCallersPointer) {
  ZoFrame untouched = {};
  const int failures = failEachAllocation([&](char* p_message, unsigned size) {
    ZoFrame* p_frame = &untouched;
    const int status = zoFrame_create(&p_frame, p_message, size);
    if (status == ::ZO_STATUS_OK) {
      zoFrame_release(&p_frame);
    } else {
      EXPECT_EQ(&untouched, p_frame);
    }
    return status;
  });
  EXPECT_GE(failures, 2) << "record and frame";
}

TEST_F(OutOfMemory, HugeSizesAreReportedNotThrown) {
  ZoFrame* p_source = nullptr;
  ZoFrame* p_destination = nullptr;
  ZoVideoConverter* p_converter = nullptr;
  ASSERT_EQ(::ZO_STATUS_OK, zoFrame_create(&p_source, nullptr, 0));
  ASSERT_EQ(::ZO_STATUS_OK, zoFrame_create(&p_destination, nullptr, 0));
  ASSERT_EQ(::ZO_STATUS_OK, zoVideoConverter_create(&p_converter, nullptr, 0));
  ASSERT_EQ(::ZO_STATUS_OK, zoFrame_reuse(p_source, ::ZO_FRAME_FORMAT_GRAY8, ZoSize{8, 8}, nullptr, 0));
  const int largest = std::numeric_limits<int>::max();
  char message[128] = "";
  EXPECT_EQ(::ZO_STATUS_STD_EXCEPTION,
            zoVideoConverter_convert(p_converter, p_source, ::ZO_FRAME_FORMAT_RGB24, ZoSize{largest, largest},
                                     p_destination, message, sizeof(message)));
  EXPECT_STREQ("zoVideoConverter_convert: caught standard exception: std::bad_alloc", message);
  EXPECT_EQ(::ZO_STATUS_STD_EXCEPTION, zoFrame_reuse(p_destination, ::ZO_FRAME_FORMAT_RGB24,
                                                     ZoSize{largest, largest}, message, sizeof(message)));
  EXPECT_EQ(0, p_destination->plane_count);
  zoVideoConverter_release(&p_converter);
  zoFrame_release(&p_source);
  zoFrame_release(&p_destination);
}

}  // namespace
}  // namespace test
}  // namespace zo
