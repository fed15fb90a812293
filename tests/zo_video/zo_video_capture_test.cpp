#include "zo_video/zo_video_capture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "zo_capture_test.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_converter.h"
#include "zo_video/zo_video_reader.h"

namespace zo {
namespace test {
namespace {

// The interface

/// Place of a virtual function in its class's table, in pointers.
template <class Member>
std::ptrdiff_t slot(Member member) {
  std::ptrdiff_t words[2] = {0, 0};
  static_assert(sizeof(member) == sizeof(words), "a pointer to a member function is two words");
  std::memcpy(words, &member, sizeof(words));
#if defined(__arm__) || defined(__aarch64__)
  const std::ptrdiff_t mark = 0;  // that it is virtual stands in the second word
#else
  const std::ptrdiff_t mark = 1;
#endif
  return (words[0] - mark) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

/// Its new function comes behind all of the interface's.
class LongerCapture : public ICapture {
 public:
  virtual void more() = 0;
};

TEST(CaptureInterface, VirtualFunctionsKeepTheirPlaces) {
  EXPECT_EQ(0, slot(&ICapture::format));
  EXPECT_EQ(1, slot(&ICapture::frameSize));
  EXPECT_EQ(2, slot(&ICapture::fps));
  EXPECT_EQ(3, slot(&ICapture::frameIndex));
  EXPECT_EQ(4, slot(&ICapture::timestamp));
  EXPECT_EQ(5, slot(&ICapture::frameCount));
  EXPECT_EQ(6, slot(&ICapture::timestampToFrameIndex));
  EXPECT_EQ(7, slot(&ICapture::isLive));
  EXPECT_EQ(8, slot(&ICapture::isOpen));
  EXPECT_EQ(9, slot(&ICapture::isEof));
  EXPECT_EQ(10, slot(&ICapture::setMaxFps));
  EXPECT_EQ(11, slot(&ICapture::setJpegQuality));
  EXPECT_EQ(12, slot(&ICapture::setFormat));
  EXPECT_EQ(13, slot(&ICapture::setFrameSize));
  EXPECT_EQ(14, slot(&ICapture::open));
  EXPECT_EQ(15, slot(&ICapture::close));
  EXPECT_EQ(16, slot(&ICapture::read));
  EXPECT_EQ(17, slot(&ICapture::readJpeg));
  EXPECT_EQ(18, slot(&ICapture::setPosition));
  EXPECT_EQ(21, slot(&LongerCapture::more)) << "the destructor takes two places, and they are the last";
}

TEST_F(Capture, WorksThroughTheInterface) {
  const std::unique_ptr<ICapture> p_capture = std::make_unique<VideoCapture>(true, false);
  p_capture->open(clip(5), -1);
  Frame frame;
  ASSERT_TRUE(p_capture->read(frame));
  EXPECT_EQ(0, paintedNumber(frame));
  EXPECT_EQ(5, p_capture->frameCount());
}

// Before open, open, close

TEST_F(Capture, FreshObjectIsClosedAndUnset) {
  VideoCapture capture(true, true);
  EXPECT_FALSE(capture.isOpen());
  EXPECT_FALSE(capture.isLive());
  EXPECT_FALSE(capture.isEof());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, capture.format());
  EXPECT_EQ(Size(0, 0), capture.frameSize());
  EXPECT_EQ(0, capture.frameCount());
  EXPECT_EQ(-1, capture.frameIndex());
  EXPECT_EQ(0, capture.timestamp());
}

TEST_F(Capture, ReadBeforeOpenReportsTheReadersError) {
  VideoCapture capture(true, false);
  Frame frame;
  EXPECT_ZO_EXCEPTION(capture.read(frame), ZO_STATUS_NOT_OPENED,
                      "call VideoReader.open(...) before this operation", "_checkIfGood");
}

TEST_F(Capture, OpenOfAMissingFilePassesTheReadersErrorOn) {
  VideoCapture capture(true, false);
  const Exception error = caughtZoException([&] { capture.open(_directory.file("none.mp4"), -1); });
  EXPECT_EQ(ZO_STATUS_OPEN_ERROR, error.status());
  EXPECT_FALSE(capture.isOpen());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, capture.format());
}

TEST_F(Capture, OpenTakesTheStreamsFormatAndSizeWhereNoneIsSet) {
  VideoCapture capture(true, false);
  capture.open(clip(5), -1);
  EXPECT_TRUE(capture.isOpen());
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, capture.format());
  EXPECT_EQ(Size(64, 48), capture.frameSize());
  EXPECT_FLOAT_EQ(25.0F, capture.fps());
}

TEST_F(Capture, OpenKeepsTheFormatAndSizeThatAreSet) {
  VideoCapture capture(true, false);
  capture.setFormat(ZO_FRAME_FORMAT_BGR24);
  capture.setFrameSize(Size(32, 24));
  capture.open(clip(5), -1);
  EXPECT_EQ(ZO_FRAME_FORMAT_BGR24, capture.format());
  EXPECT_EQ(Size(32, 24), capture.frameSize());
}

class CaptureUnsetSize : public Capture, public testing::WithParamInterface<Named<Size>> {};

TEST_P(CaptureUnsetSize, IsReplacedByTheStreamsSizeAtOpen) {
  VideoCapture capture(true, false);
  capture.setFrameSize(GetParam().value);
  capture.open(clip(2), -1);
  EXPECT_EQ(Size(64, 48), capture.frameSize());
}

INSTANTIATE_TEST_SUITE_P(Sizes, CaptureUnsetSize,
                         testing::ValuesIn<Named<Size>>({{"NoWidth", Size(0, 24)},
                                                         {"NoHeight", Size(32, 0)},
                                                         {"NegativeWidth", Size(-32, 24)},
                                                         {"NegativeHeight", Size(32, -24)}}),
                         caseName<Size>);

TEST_F(Capture, FrameCountIsKnownWithNavigationOnly) {
  const std::string path = clip(7);
  VideoCapture with_navigation(true, false);
  with_navigation.open(path, -1);
  EXPECT_EQ(7, with_navigation.frameCount());
  VideoCapture without_navigation(false, false);
  without_navigation.open(path, -1);
  EXPECT_EQ(0, without_navigation.frameCount());
}

TEST_F(Capture, OpenLeavesNoNavigationFileBehind) {
  const std::string path = clip(7);
  VideoCapture capture(true, false);
  capture.open(path, -1);
  EXPECT_THROW(readFile(path + VideoReader::NAVIGATION_FILE_EXTENSION), std::runtime_error);
}

TEST_F(Capture, TimeoutReachesTheReader) {
  StalledServer server;
  VideoCapture capture(false, false);
  EXPECT_ZO_EXCEPTION(capture.open(server.url("http", "clip.ts"), 50), ZO_STATUS_TIMEOUT,
                      "Video stream read/open timeout.", "_checkCallBackStatus");
}

TEST_F(Capture, CloseForgetsFormatSizeAndRate) {
  const std::string path = clip(6);
  VideoCapture capture(true, false);
  capture.setFormat(ZO_FRAME_FORMAT_BGR24);
  capture.setFrameSize(Size(32, 24));
  capture.setMaxFps(10);
  capture.open(path, -1);
  capture.close();
  EXPECT_FALSE(capture.isOpen());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, capture.format());
  EXPECT_EQ(Size(0, 0), capture.frameSize());
  ClipOptions larger;
  larger.width = 80;
  larger.height = 64;
  capture.open(clip(4, larger), -1);
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, capture.format());
  EXPECT_EQ(Size(80, 64), capture.frameSize());
  EXPECT_EQ((std::vector<long long>{0, 40, 80, 120}), remainingTimes(capture));
}

TEST_F(Capture, ClearDoesWhatCloseDoes) {
  VideoCapture capture(true, false);
  capture.setMaxFps(10);
  capture.setFormat(ZO_FRAME_FORMAT_BGR24);
  capture.open(clip(6), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  capture.clear();
  EXPECT_FALSE(capture.isOpen());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, capture.format());
  Buffer jpeg;
  long long timestamp = 0;
  EXPECT_FALSE(capture.readJpeg(jpeg, timestamp));
}

TEST_F(Capture, CloseKeepsTheNavigationSwitch) {
  const std::string path = clip(6);
  VideoCapture capture(true, false);
  capture.open(path, -1);
  capture.close();
  capture.open(path, -1);
  EXPECT_EQ(6, capture.frameCount());
}

TEST_F(Capture, OpenWithoutCloseGoesOnCountingAgainstTheOldTimes) {
  const std::string path = clip(4);
  VideoCapture capture(true, false);
  capture.open(path, -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));  // time 0
  capture.open(path, -1);
  // The first frame has the time of the last delivered one, so it counts as its duplicate.
  EXPECT_EQ((std::vector<long long>{40, 80, 120}), remainingTimes(capture));
}

TEST_F(Capture, CloseForgetsTheFirstTime) {
  VideoCapture capture(false, false);
  capture.open(clipFrom(25, 3), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  ASSERT_EQ(1000, frame.timestamp());
  capture.close();
  capture.setMaxFps(25);
  capture.open(clip(3), -1);
  EXPECT_EQ((std::vector<long long>{0, 40, 80}), remainingTimes(capture));
}

// Reading

TEST_F(Capture, DeliversEveryFrameAsDecodedByDefault) {
  const std::string path = clip(8);
  VideoReader reader;
  reader.open(path.c_str(), -1, nullptr, false, false, false);
  VideoCapture capture(false, false);
  capture.open(path, -1);
  Frame expected;
  Frame frame;
  bool got_frame = false;
  for (int i = 0; i < 8; ++i) {
    ASSERT_EQ(0, reader.read(expected, got_frame, nullptr));
    ASSERT_TRUE(got_frame);
    ASSERT_TRUE(capture.read(frame)) << i;
    EXPECT_TRUE(samePixels(expected, frame)) << i;
    EXPECT_EQ(40 * i, frame.timestamp());
    EXPECT_EQ(i, capture.frameIndex());
    EXPECT_EQ(40 * i, capture.timestamp());
  }
  EXPECT_FALSE(capture.read(frame));
}

TEST_F(Capture, ConvertsToTheFormatAndSizeThatAreSet) {
  const std::string path = clip(3);
  VideoReader reader;
  reader.open(path.c_str(), -1, nullptr, false, false, false);
  Frame decoded;
  bool got_frame = false;
  reader.read(decoded, got_frame, nullptr);
  VideoConverter converter;
  Frame expected;
  converter.convert(decoded, ZO_FRAME_FORMAT_BGR24, Size(40, 30), expected,
                    VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);

  VideoCapture capture(false, false);
  capture.setFormat(ZO_FRAME_FORMAT_BGR24);
  capture.setFrameSize(Size(40, 30));
  capture.open(path, -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  EXPECT_EQ(ZO_FRAME_FORMAT_BGR24, frame.format());
  EXPECT_EQ(Size(40, 30), frame.size());
  EXPECT_TRUE(samePixels(expected, frame));
}

class CaptureOutputSize : public Capture, public testing::WithParamInterface<Named<Size>> {};

TEST_P(CaptureOutputSize, OneDifferentSideIsEnoughToScale) {
  VideoCapture capture(false, false);
  capture.setFrameSize(GetParam().value);
  capture.open(clip(2), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  EXPECT_EQ(GetParam().value, frame.size());
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, frame.format());
}

INSTANTIATE_TEST_SUITE_P(Sizes, CaptureOutputSize,
                         testing::ValuesIn<Named<Size>>({{"OtherHeight", Size(64, 24)},
                                                         {"OtherWidth", Size(32, 48)}}),
                         caseName<Size>);

TEST_F(Capture, NewFormatAndSizeTakeEffectAtTheNextRead) {
  VideoCapture capture(false, false);
  capture.open(clip(4), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  capture.setFormat(ZO_FRAME_FORMAT_GRAY8);
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, capture.format());
  ASSERT_TRUE(capture.read(frame));
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
  EXPECT_EQ(Size(64, 48), frame.size());
  capture.setFrameSize(Size(16, 12));
  ASSERT_TRUE(capture.read(frame));
  EXPECT_EQ(Size(16, 12), frame.size());
  EXPECT_EQ(80, frame.timestamp());
}

// A stream that changes on the way

ClipOptions larger() {
  ClipOptions options;
  options.pixel_format = AV_PIX_FMT_YUVJ420P;
  options.width = 80;
  options.height = 32;
  return options;
}

ClipOptions finerInColour() {
  ClipOptions options;
  options.pixel_format = AV_PIX_FMT_YUVJ422P;
  return options;
}

TEST_F(Capture, OneFrameComesInTheStreamsNewSize) {
  VideoCapture capture(false, false);
  capture.open(clipThatChanges(larger()), -1);
  EXPECT_EQ(
      (std::vector<Size>{Size(64, 48), Size(64, 48), Size(64, 48), Size(80, 32), Size(64, 48), Size(64, 48)}),
      remaining(capture, &Frame::size));
  EXPECT_EQ(Size(64, 48), capture.frameSize());
}

TEST_F(Capture, FramesComeInTheStreamsNewPixelFormatAndFormatStays) {
  VideoCapture capture(false, false);
  capture.open(clipThatChanges(finerInColour()), -1);
  EXPECT_EQ((std::vector<FrameFormat>{ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                                      ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV422_PLANAR,
                                      ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV422_PLANAR}),
            remaining(capture, &Frame::format));
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, capture.format());
}

class CaptureOfChanges : public Capture, public testing::WithParamInterface<Named<ClipOptions (*)()>> {};

TEST_P(CaptureOfChanges, ConvertedFramesStayInTheFormatAndSizeThatAreSet) {
  const std::string path = clipThatChanges(GetParam().value());
  VideoCapture capture(false, false);
  capture.setFormat(ZO_FRAME_FORMAT_GRAY8);
  capture.setFrameSize(Size(32, 24));
  capture.open(path, -1);
  EXPECT_EQ(std::vector<FrameFormat>(6, ZO_FRAME_FORMAT_GRAY8), remaining(capture, &Frame::format));
  capture.open(path, -1);
  EXPECT_EQ(std::vector<Size>(6, Size(32, 24)), remaining(capture, &Frame::size));
}

INSTANTIATE_TEST_SUITE_P(All, CaptureOfChanges,
                         testing::ValuesIn<Named<ClipOptions (*)()>>({{"Size", larger},
                                                                      {"PixelFormat", finerInColour}}),
                         caseName<ClipOptions (*)()>);

// The end, duplicates

TEST_F(Capture, EndLeavesTheCallersFrameUntouched) {
  VideoCapture capture(false, false);
  capture.open(clip(2), -1);
  EXPECT_EQ(2U, remainingTimes(capture).size());
  Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(20, 10), 5);
  frame.setTimestamp(77);
  const std::string before = packedBytes(frame);
  EXPECT_FALSE(capture.read(frame));
  EXPECT_FALSE(capture.isEof());
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
  EXPECT_EQ(77, frame.timestamp());
  EXPECT_EQ(before, packedBytes(frame));
  EXPECT_FALSE(capture.read(frame));
}

TEST_F(Capture, FrameWithTheTimeOfTheFrameBeforeIsLeftOut) {
  // 40.4 ms is 40 ms too.
  VideoCapture capture(true, false);
  capture.open(clipAtTenths({0, 400, 404, 800, 1200}), -1);
  Frame frame;
  std::vector<long long> indices;
  std::vector<long long> times;
  while (capture.read(frame)) {
    indices.push_back(capture.frameIndex());
    times.push_back(frame.timestamp());
  }
  EXPECT_EQ((std::vector<long long>{0, 1, 3, 4}), indices);
  EXPECT_EQ((std::vector<long long>{0, 40, 80, 120}), times);
}

TEST_F(Capture, SeveralDuplicatesInARowAndAtTheEndAreLeftOut) {
  VideoCapture capture(true, false);
  capture.open(clipAtTenths({0, 3, 6, 400, 800, 803, 806}), -1);
  EXPECT_EQ((std::vector<long long>{0, 40, 80}), remainingTimes(capture));
}

TEST_F(Capture, FrameAtTimeZeroIsNoDuplicateOfNothing) {
  VideoCapture capture(true, false);
  capture.open(clip(1), -1);
  EXPECT_EQ((std::vector<long long>{0}), remainingTimes(capture));
}

// Positions

TEST_F(Capture, GoesOnWithTheFrameOfAnIndex) {
  VideoCapture capture(true, false);
  capture.open(clip(30), -1);
  Frame frame;
  for (const int index : {17, 3, 29, 0, 12}) {
    capture.setPosition(index);
    ASSERT_TRUE(capture.read(frame)) << index;
    EXPECT_EQ(index, paintedNumber(frame));
    EXPECT_EQ(40 * index, frame.timestamp());
    EXPECT_EQ(index, capture.frameIndex());
  }
}

TEST_F(Capture, SetPositionStartsTheRateLimitAnew) {
  VideoCapture capture(true, false);
  capture.setMaxFps(10);
  capture.open(clip(30), -1);
  EXPECT_EQ(thinned(30, 10), remainingTimes(capture));
  capture.setPosition(11);
  EXPECT_EQ(thinned(19, 10, 440), remainingTimes(capture));
  capture.setPosition(2);
  EXPECT_EQ(thinned(28, 10, 80), remainingTimes(capture));
}

TEST_F(Capture, SetPositionBackToTheLastFrameDeliversItAgain) {
  VideoCapture capture(true, false);
  capture.open(clip(10), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  capture.setPosition(0);
  ASSERT_TRUE(capture.read(frame));
  EXPECT_EQ(0, frame.timestamp());
}

TEST_F(Capture, SetPositionTakesTheJpegAway) {
  VideoCapture capture(true, false);
  capture.open(clip(10), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  capture.setPosition(5);
  Buffer jpeg;
  long long timestamp = 0;
  EXPECT_FALSE(capture.readJpeg(jpeg, timestamp));
}

TEST_F(Capture, PositionOutsideTheClipPassesTheReadersErrorOn) {
  VideoCapture capture(true, false);
  capture.open(clip(10), -1);
  EXPECT_ZO_EXCEPTION(capture.setPosition(10), ZO_STATUS_OUT_OF_RANGE,
                      "Failure in VideoReader::move(frame_index == 10): frame index is out of range.",
                      "moveByIndex");
}

TEST_F(Capture, PositionWithoutNavigationPassesTheReadersErrorOn) {
  VideoCapture capture(false, false);
  capture.open(clip(10), -1);
  EXPECT_ZO_EXCEPTION(capture.setPosition(1), ZO_STATUS_NOT_ALLOWED,
                      "Failure in VideoReader::move(frame_index == 1): navigation is not allowed.",
                      "moveByIndex");
}

TEST_F(Capture, RefusedPositionLeavesTheRateLimitAlone) {
  VideoCapture capture(true, false);
  capture.setMaxFps(10);
  capture.open(clip(10), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  EXPECT_THROW(capture.setPosition(-1), Exception);
  ASSERT_TRUE(capture.read(frame));
  EXPECT_EQ(120, frame.timestamp());
}

TEST_F(Capture, RefusedPositionLeavesTheJpeg) {
  VideoCapture capture(true, false);
  capture.open(clip(3), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  ASSERT_TRUE(capture.read(frame));
  EXPECT_THROW(capture.setPosition(3), Exception);
  Buffer jpeg;
  long long timestamp = 0;
  EXPECT_TRUE(capture.readJpeg(jpeg, timestamp));
  EXPECT_LT(0U, jpeg.size());
  EXPECT_EQ(40, timestamp);
}

TEST_F(Capture, NoTimeIsMappedToAnIndex) {
  VideoCapture capture(true, false);
  capture.open(clip(10), -1);
  EXPECT_EQ(0, capture.timestampToFrameIndex(200));
  EXPECT_EQ(0, capture.timestampToFrameIndex(-1));
}

}  // namespace
}  // namespace test
}  // namespace zo
