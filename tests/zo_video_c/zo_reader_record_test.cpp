#include "zo_video_c/zo_video_c_reader_record.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#include "zo_test_support.h"

namespace zo {
namespace test {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video_c/zo_video_c_reader";

class ReaderRecordRotation : public testing::TestWithParam<int> {};

TEST_P(ReaderRecordRotation, KnownCodePassesThrough) {
  EXPECT_EQ(GetParam(), static_cast<int>(toZoVideoRotation(static_cast<VideoRotation>(GetParam()))));
}

INSTANTIATE_TEST_SUITE_P(Codes, ReaderRecordRotation, testing::Range(0, 5),
                         [](const auto& param) { return "Code" + std::to_string(param.param); });

TEST(ReaderRecord, UnknownRotationIsRefused) {
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, toZoVideoRotation(static_cast<VideoRotation>(5)),
                           ZO_STATUS_INTERNAL_ERROR, "Failed to convert video rotation 5",
                           "toZoVideoRotation");
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, toZoVideoRotation(static_cast<VideoRotation>(-1)),
                           ZO_STATUS_INTERNAL_ERROR, "Failed to convert video rotation -1",
                           "toZoVideoRotation");
}

TEST(ReaderRecord, UpdateWithoutARecordIsRefused) {
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, updateReader(nullptr), ZO_STATUS_NULL_POINTER,
                           "Parameter 'p_reader' is null", "updateReader");
}

TEST(ReaderRecord, UpdateWithoutAReaderIsRefused) {
  ZoVideoReader record = {};
  record.width = 77;
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, updateReader(&record), ZO_STATUS_NOT_INITIALIZED,
                           "Underlying C++ object is not initialized.", "updateReader");
  EXPECT_EQ(77, record.width);
}

TEST(ReaderRecord, ReleaseOfARecordWithoutAReaderFreesTheRecord) {
  const TempDir directory;
  const std::string path = makeClip(directory.file("clip.mp4"), ClipOptions()).path;
  ZoVideoReader* p_reader = nullptr;
  ASSERT_EQ(::ZO_STATUS_OK,
            zoVideoReader_create(nullptr, nullptr, path.c_str(), std::numeric_limits<unsigned>::max(), -1, 0,
                                 0, 0, &p_reader, nullptr, 0));
  const std::unique_ptr<ReaderHandle> p_handle(static_cast<ReaderHandle*>(p_reader->p_handle));
  p_reader->p_handle = nullptr;
  EXPECT_EQ(::ZO_STATUS_OK, zoVideoReader_release(&p_reader));
  EXPECT_EQ(nullptr, p_reader);
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, p_handle->reader.format());
}

TEST(ReaderRecord, FieldsFollowTheReader) {
  const TempDir directory;
  const std::string path = makeClip(directory.file("clip.mp4"), ClipOptions()).path;
  ReaderHandle handle;
  handle.reader.open(path.c_str(), -1, nullptr, true, false, false);
  ZoVideoReader record = {};
  record.p_handle = &handle;
  handle.reader.moveByIndex(7);
  Frame frame;
  bool got_frame = false;
  handle.reader.read(frame, got_frame, nullptr);
  updateReader(&record);
  EXPECT_EQ(7, record.frame_index);
  EXPECT_EQ(280, record.timestamp);
  EXPECT_EQ(30, record.frame_count);
  handle.reader.close();
  updateReader(&record);
  EXPECT_EQ(::ZO_FRAME_FORMAT_UNDEFINED, record.format);
  EXPECT_EQ(0, record.width);
  EXPECT_EQ(0, record.height);
  EXPECT_EQ(0, record.frame_count);
  EXPECT_EQ(-1, record.frame_index);
  EXPECT_EQ(0, record.timestamp);
  EXPECT_DOUBLE_EQ(25.0, record.fps) << "the rate outlives the stream";
  EXPECT_STREQ("", record.url);
}

struct ThrowingCallback {
  const char* name;
  int (*p_callback)(void*);
  int status;
  const char* message;
};

class ReaderCallback : public testing::TestWithParam<ThrowingCallback> {};

TEST_P(ReaderCallback, ExceptionBecomesAStatus) {
  const TempDir directory;
  const std::string path = makeClip(directory.file("clip.mp4"), ClipOptions()).path;
  ZoVideoReader* p_reader = nullptr;
  char message[128] = "";
  EXPECT_EQ(GetParam().status, zoVideoReader_create(GetParam().p_callback, nullptr, path.c_str(),
                                                    static_cast<unsigned>(path.size()), -1, 0, 0, 0,
                                                    &p_reader, message, sizeof(message)));
  EXPECT_STREQ(GetParam().message, message);
  EXPECT_EQ(nullptr, p_reader);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ReaderCallback,
    testing::Values(ThrowingCallback{"Ours",
                                     [](void*) -> int {
                                       throw Exception(nullptr, ZO_STATUS_CODEC_ERROR, "f", "src/file", 1,
                                                       "asked %d times", 7);
                                     },
                                     ZO_STATUS_CODEC_ERROR, "asked 7 times"},
                    ThrowingCallback{"Standard", [](void*) -> int { throw std::runtime_error("no"); },
                                     ZO_STATUS_STD_EXCEPTION,
                                     "std::exception(...) occurred in callback function"},
                    ThrowingCallback{"Unknown", [](void*) -> int { throw 42; }, ZO_STATUS_UNKNOWN_ERROR,
                                     "Unknown exception occurred in callback function"}),
    [](const auto& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace test
}  // namespace zo
