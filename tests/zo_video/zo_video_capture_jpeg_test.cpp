#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "zo_capture_test.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_capture.h"

namespace zo {
namespace test {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_capture";

/// Width, height and number of components in the header of a JPEG.
struct JpegHeader {
  int width = 0;
  int height = 0;
  int components = 0;
};

JpegHeader jpegHeader(const Buffer& jpeg) {
  const unsigned char* p = jpeg.data();
  for (unsigned at = 2; at + 9 < jpeg.size() && p[at] == 0xFF; at += 2U + (p[at + 2] << 8 | p[at + 3])) {
    if (p[at + 1] == 0xC0) {
      return {p[at + 7] << 8 | p[at + 8], p[at + 5] << 8 | p[at + 6], p[at + 9]};
    }
  }
  return {};
}

// JPEG

TEST_F(Capture, JpegBeforeAnyReadLeavesBothArgumentsAlone) {
  VideoCapture capture(true, false);
  Buffer jpeg("old", 3);
  long long timestamp = 77;
  EXPECT_FALSE(capture.readJpeg(jpeg, timestamp));
  capture.open(clip(3), -1);
  EXPECT_FALSE(capture.readJpeg(jpeg, timestamp));
  EXPECT_EQ(3U, jpeg.size());
  EXPECT_EQ(77, timestamp);
}

TEST_F(Capture, JpegAfterTheEndLeavesBothArgumentsAlone) {
  VideoCapture capture(true, false);
  capture.open(clip(3), -1);
  remainingTimes(capture);
  Buffer jpeg("old", 3);
  long long timestamp = 77;
  EXPECT_FALSE(capture.readJpeg(jpeg, timestamp));
  EXPECT_EQ(3U, jpeg.size());
  EXPECT_EQ(77, timestamp);
}

TEST_F(Capture, JpegOutlivesAFailedOpenAndGoesWithTheReadThatFindsNothingOpen) {
  VideoCapture capture(true, false);
  capture.open(clip(3), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  EXPECT_THROW(capture.open(_directory.file("none.mp4"), -1), Exception);
  Buffer jpeg;
  long long timestamp = 77;
  EXPECT_TRUE(capture.readJpeg(jpeg, timestamp));
  EXPECT_LT(0U, jpeg.size());
  EXPECT_EQ(0, timestamp);
  EXPECT_THROW(capture.read(frame), Exception);
  EXPECT_FALSE(capture.readJpeg(jpeg, timestamp));
}

TEST_F(Capture, OpenLeavesTheJpeg) {
  const std::string path = clip(3);
  VideoCapture capture(true, false);
  capture.open(path, -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  capture.open(path, -1);
  Buffer jpeg;
  long long timestamp = 0;
  EXPECT_TRUE(capture.readJpeg(jpeg, timestamp));
}

TEST_F(Capture, JpegIsMadeFromThePictureAsDecoded) {
  VideoCapture capture(true, false);
  capture.setFormat(ZO_FRAME_FORMAT_GRAY8);
  capture.setFrameSize(Size(16, 12));
  capture.open(clip(3), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  ASSERT_TRUE(capture.read(frame));
  Buffer jpeg;
  long long timestamp = 0;
  ASSERT_TRUE(capture.readJpeg(jpeg, timestamp));
  EXPECT_EQ(40, timestamp);
  const JpegHeader header = jpegHeader(jpeg);
  EXPECT_EQ(64, header.width);
  EXPECT_EQ(48, header.height);
  EXPECT_EQ(3, header.components);
}

TEST_F(Capture, JpegOfOneFrameMayBeTakenTwice) {
  VideoCapture capture(true, false);
  capture.open(clip(3), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  Buffer first;
  Buffer second;
  long long timestamp = 0;
  ASSERT_TRUE(capture.readJpeg(first, timestamp));
  ASSERT_TRUE(capture.readJpeg(second, timestamp));
  ASSERT_EQ(first.size(), second.size());
  EXPECT_EQ(0, std::memcmp(first.data(), second.data(), first.size()));
}

TEST_F(Capture, JpegQualityIsUsedAndSurvivesClose) {
  const std::string path = clip(3);
  const auto jpegBytes = [&path](VideoCapture& capture) {
    capture.open(path, -1);
    Frame frame;
    EXPECT_TRUE(capture.read(frame));
    Buffer jpeg;
    long long timestamp = 0;
    EXPECT_TRUE(capture.readJpeg(jpeg, timestamp));
    return std::string(reinterpret_cast<const char*>(jpeg.data()), jpeg.size());
  };
  VideoCapture by_default(true, false);
  VideoCapture ninety(true, false);
  ninety.setJpegQuality(90);
  VideoCapture five(true, false);
  five.setJpegQuality(5);
  const std::string small = jpegBytes(five);
  EXPECT_EQ(jpegBytes(by_default), jpegBytes(ninety));
  EXPECT_LT(small.size(), jpegBytes(ninety).size());
  five.close();
  EXPECT_EQ(small, jpegBytes(five));
}

class CaptureBadQuality : public Capture, public testing::WithParamInterface<Named<int>> {};

TEST_P(CaptureBadQuality, IsRefused) {
  VideoCapture capture(true, false);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, capture.setJpegQuality(GetParam().value), ZO_STATUS_INVALID_ARGUMENT,
                           "Invalid JPEG quality", "setJpegQuality");
}

INSTANTIATE_TEST_SUITE_P(Qualities, CaptureBadQuality,
                         testing::ValuesIn<Named<int>>({{"JustBelow", -1},
                                                        {"JustAbove", 101},
                                                        {"Smallest", std::numeric_limits<int>::min()},
                                                        {"Largest", std::numeric_limits<int>::max()}}),
                         caseName<int>);

TEST_F(Capture, QualityZeroIsAcceptedAndThenRefusedByTheEncoder) {
  VideoCapture capture(true, false);
  capture.setJpegQuality(100);
  capture.setJpegQuality(0);
  capture.open(clip(3), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  Buffer jpeg;
  long long timestamp = 77;
  const Exception error = caughtZoException([&] { capture.readJpeg(jpeg, timestamp); });
  EXPECT_EQ(ZO_STATUS_INVALID_ARGUMENT, error.status());
  EXPECT_STREQ("encode", error.function());
  EXPECT_EQ(77, timestamp);
}

// Pictures that the decoder does not produce

TEST_F(Capture, MissingPictureIsAnEmptyFrameWithItsTime) {
  VideoCapture capture(false, false);
  capture.setFormat(ZO_FRAME_FORMAT_BGR24);
  capture.open(clipWithoutPictureFour(), -1);
  std::vector<int> empty;
  for (int i = 0; i < 10; ++i) {
    Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(20, 10), 5);
    ASSERT_TRUE(capture.read(frame)) << i;
    EXPECT_EQ(40 * i, frame.timestamp());
    if (!frame.initialized()) {
      empty.push_back(i);
      EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, frame.format());
      Buffer jpeg("old", 3);
      long long timestamp = -1;
      EXPECT_TRUE(capture.readJpeg(jpeg, timestamp));
      EXPECT_EQ(0U, jpeg.size());
      EXPECT_EQ(40 * i, timestamp);
    }
  }
  EXPECT_EQ((std::vector<int>{4}), empty);
}

TEST_F(Capture, MissingPictureIsLeftOutOnRequest) {
  VideoCapture capture(false, true);
  capture.open(clipWithoutPictureFour(), -1);
  EXPECT_EQ((std::vector<long long>{0, 40, 80, 120, 200, 240, 280, 320, 360}), remainingTimes(capture));
}

// Failures on the way

TEST_F(Capture, FrameThatCannotBeConvertedCountsAsDelivered) {
  VideoCapture capture(true, false);
  capture.setMaxFps(10);
  capture.setFormat(ZO_FRAME_FORMAT_YUV420_PLANAR_YV12);
  capture.open(clip(10), -1);
  Frame frame;
  const Exception error = caughtZoException([&] { capture.read(frame); });
  EXPECT_EQ(ZO_STATUS_NOT_SUPPORTED, error.status());
  capture.setFormat(ZO_FRAME_FORMAT_BGR24);
  ASSERT_TRUE(capture.read(frame));
  EXPECT_EQ(120, frame.timestamp());
}

TEST_F(Capture, FrameThatCannotBeConvertedHasAJpegAllTheSame) {
  VideoCapture capture(true, false);
  capture.setFormat(ZO_FRAME_FORMAT_YUV420_PLANAR_YV12);
  capture.open(clip(3), -1);
  Frame frame;
  EXPECT_THROW(capture.read(frame), Exception);
  EXPECT_THROW(capture.read(frame), Exception);
  Buffer jpeg;
  long long timestamp = 0;
  EXPECT_TRUE(capture.readJpeg(jpeg, timestamp));
  EXPECT_EQ(64, jpegHeader(jpeg).width);
  EXPECT_EQ(40, timestamp);
}

// 40.4 ms is 40 ms too.
TEST_F(Capture, FrameThatCannotBeConvertedCountsForDuplicatesToo) {
  VideoCapture capture(true, false);
  capture.setFormat(ZO_FRAME_FORMAT_YUV420_PLANAR_YV12);
  capture.open(clipAtTenths({0, 400, 404, 800}), -1);
  Frame frame;
  EXPECT_THROW(capture.read(frame), Exception);
  EXPECT_THROW(capture.read(frame), Exception);
  capture.setFormat(ZO_FRAME_FORMAT_BGR24);
  EXPECT_EQ((std::vector<long long>{80}), remainingTimes(capture));
}

/// A clip in which the decoder refuses one packet.
std::string clipWithRefusedPacket(const std::string& path, int refused, int frames) {
  ClipOptions options;
  options.codec = "mjpeg";
  options.pixel_format = AV_PIX_FMT_YUVJ420P;
  options.edit_packet = [refused](int i, AVPacket* p_packet) {
    if (i == refused) {
      std::memset(p_packet->data, 0, static_cast<std::size_t>(p_packet->size));
    }
    return true;
  };
  options.frames = frames;
  return makeClip(path, options).path;
}

// The third share of ten in a second begins at 200 ms. The reader fails on the way there, at 160 ms.
TEST_F(Capture, ReaderThatFailsTakesTheJpegAwayAndLeavesTheRateLimitAlone) {
  VideoCapture capture(false, false);
  capture.setMaxFps(10);
  capture.open(clipWithRefusedPacket(_directory.file("damaged.mov"), 4, 10), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  ASSERT_TRUE(capture.read(frame));
  ASSERT_EQ(120, frame.timestamp());
  Buffer jpeg;
  long long timestamp = 0;
  ASSERT_TRUE(capture.readJpeg(jpeg, timestamp));
  const Exception error = caughtZoException([&] { capture.read(frame); });
  EXPECT_TRUE(error.status() == ZO_STATUS_READ_ERROR || error.status() == ZO_STATUS_DECODER_ERROR)
      << error.what();
  EXPECT_EQ(120, frame.timestamp()) << "the caller's frame stays";
  jpeg = Buffer("old", 3);
  timestamp = 77;
  EXPECT_FALSE(capture.readJpeg(jpeg, timestamp));
  EXPECT_EQ(3U, jpeg.size());
  EXPECT_EQ(77, timestamp);
  EXPECT_EQ((std::vector<long long>{200, 320}), remainingTimes(capture));
}

TEST_F(Capture, DamagedFileIsReportedAndReadingGoesOn) {
  const std::string path = clipWithRefusedPacket(_directory.file("damaged.mov"), 2, 6);
  VideoCapture capture(true, false);
  capture.open(path, -1);
  Frame frame;
  int errors = 0;
  std::vector<long long> delivered;
  for (bool more = true; more;) {
    try {
      more = capture.read(frame);
      if (more && frame.initialized()) {
        delivered.push_back(frame.timestamp());
      }
    } catch (const Exception& exception) {
      EXPECT_TRUE(exception.status() == ZO_STATUS_READ_ERROR || exception.status() == ZO_STATUS_DECODER_ERROR)
          << exception.what();
      ASSERT_LT(++errors, 10);
    }
  }
  EXPECT_GE(errors, 1);
  EXPECT_EQ((std::vector<long long>{0, 40, 120, 160, 200}), delivered);
}

}  // namespace
}  // namespace test
}  // namespace zo
