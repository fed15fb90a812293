#include <gtest/gtest.h>

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

// The rate limit

TEST_F(Capture, TenFramesASecondOfTwentyFive) {
  VideoCapture capture(true, false);
  capture.setMaxFps(10);
  capture.open(clip(26), -1);
  EXPECT_EQ((std::vector<long long>{0, 120, 200, 320, 400, 520, 600, 720, 800, 920, 1000}),
            remainingTimes(capture));
}

class CaptureRate : public Capture, public testing::WithParamInterface<Named<float>> {};

TEST_P(CaptureRate, DeliversTheFirstFrameAtOrAfterEachShare) {
  VideoCapture capture(true, false);
  capture.setMaxFps(GetParam().value);
  capture.open(clip(50), -1);
  EXPECT_EQ(thinned(50, static_cast<int>(GetParam().value)), remainingTimes(capture));
}

INSTANTIATE_TEST_SUITE_P(Rates, CaptureRate,
                         testing::ValuesIn<Named<float>>({{"One", 1.0F},
                                                          {"AlmostTwo", 1.99F},
                                                          {"Three", 3.0F},
                                                          {"Seven", 7.0F},
                                                          {"TwelveAndAHalf", 12.5F},
                                                          {"JustBelowTheStreams", 24.0F},
                                                          {"TheStreams", 25.0F},
                                                          {"AboveTheStreams", 60.0F}}),
                         caseName<float>);

class CaptureNoLimit : public Capture, public testing::WithParamInterface<Named<float>> {};

TEST_P(CaptureNoLimit, DeliversEveryFrame) {
  VideoCapture capture(true, false);
  capture.setMaxFps(5);
  capture.setMaxFps(GetParam().value);
  capture.open(clip(5), -1);
  EXPECT_EQ((std::vector<long long>{0, 40, 80, 120, 160}), remainingTimes(capture));
}

INSTANTIATE_TEST_SUITE_P(
    Rates, CaptureNoLimit,
    testing::ValuesIn<Named<float>>({{"Zero", 0.0F},
                                     {"MinusZero", -0.0F},
                                     {"Half", 0.5F},
                                     {"AlmostOne", 0.999F},
                                     {"Huge", 1e30F},
                                     {"Infinite", std::numeric_limits<float>::infinity()},
                                     {"NotANumber", std::numeric_limits<float>::quiet_NaN()}}),
    caseName<float>);

class CaptureBadRate : public Capture, public testing::WithParamInterface<Named<float>> {};

TEST_P(CaptureBadRate, IsRefusedAndTheOldOneStays) {
  VideoCapture capture(true, false);
  capture.setMaxFps(10);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, capture.setMaxFps(GetParam().value), ZO_STATUS_INVALID_ARGUMENT,
                           "Invalid FPS", "setMaxFps");
  capture.open(clip(6), -1);
  EXPECT_EQ((std::vector<long long>{0, 120, 200}), remainingTimes(capture));
}

INSTANTIATE_TEST_SUITE_P(Rates, CaptureBadRate,
                         testing::ValuesIn<Named<float>>({{"MinusOne", -1.0F},
                                                          {"JustBelowZero", -0.001F},
                                                          {"MinusInfinite",
                                                           -std::numeric_limits<float>::infinity()}}),
                         caseName<float>);

TEST_F(Capture, SlowStreamCatchesUpWithinItsShare) {
  std::vector<int64_t> tenths{0};
  std::vector<long long> expected{0};
  for (int i = 0; i < 20; ++i) {
    const long long time = 1000 + 40LL * i;
    tenths.push_back(time * 10);
    if (time >= 100LL * static_cast<long long>(expected.size())) {
      expected.push_back(time);
    }
  }
  ASSERT_EQ(18U, expected.size()) << "one after the gap, 16 at once, then one more in time";
  VideoCapture capture(true, false);
  capture.setMaxFps(10);
  capture.open(clipAtTenths(tenths), -1);
  EXPECT_EQ(expected, remainingTimes(capture));
}

TEST_F(Capture, LimitHoldsAgainstTheFirstDeliveredTime) {
  VideoCapture capture(true, false);
  capture.setMaxFps(10);
  capture.open(clipFrom(25, 12), -1);
  EXPECT_EQ(thinned(12, 10, 1000), remainingTimes(capture));
}

TEST_F(Capture, FramesBeforeTimeZeroAreTooEarlyForALimit) {
  VideoCapture capture(false, false);
  capture.setMaxFps(25);
  capture.open(clipFrom(-3, 6), -1);
  EXPECT_EQ((std::vector<long long>{0, 40, 80}), remainingTimes(capture));
}

TEST_F(Capture, LimitSetOnTheWayHoldsAgainstANegativeFirstTime) {
  VideoCapture capture(false, false);
  capture.open(clipFrom(-3, 6), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  capture.setMaxFps(25);
  EXPECT_EQ((std::vector<long long>{40, 80, 120, 160, 200}), remainingTimes(capture));
}

TEST_F(Capture, TooEarlyFramesAtTheEndDeliverNothing) {
  VideoCapture capture(true, false);
  capture.setMaxFps(1);
  capture.open(clip(20), -1);
  Frame frame;
  ASSERT_TRUE(capture.read(frame));
  Frame untouched;
  EXPECT_FALSE(capture.read(untouched));
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, untouched.format());
}

// Times

TEST_F(Capture, NegativeFirstTimeIsMovedToZero) {
  const std::string path = clipFrom(-3, 6);
  ASSERT_EQ(-120, timestampToMs(decodeReference(path).pictures.front().best_effort_timestamp,
                                decodeReference(path).time_base));
  VideoCapture capture(false, false);
  capture.open(path, -1);
  Frame frame;
  for (int i = 0; i < 6; ++i) {
    ASSERT_TRUE(capture.read(frame));
    EXPECT_EQ(40 * i, frame.timestamp());
    EXPECT_EQ(40 * i - 120, capture.timestamp()) << "the reader's own time";
    Buffer jpeg;
    long long timestamp = -1;
    ASSERT_TRUE(capture.readJpeg(jpeg, timestamp));
    EXPECT_EQ(40 * i, timestamp);
  }
}

TEST_F(Capture, PositiveFirstTimeIsKept) {
  VideoCapture capture(false, false);
  capture.open(clipAtTenths({5000, 5400, 5800}), -1);
  EXPECT_EQ((std::vector<long long>{500, 540, 580}), remainingTimes(capture));
}

}  // namespace
}  // namespace test
}  // namespace zo
