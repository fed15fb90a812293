#include "zo_video/zo_frame_rate_limit.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace {

TEST(FrameRateLimit, FirstFrameMayComeAtTheFirstTime) {
  EXPECT_EQ(500, zo::earliestTimestamp(500, 0, 10));
}

TEST(FrameRateLimit, ShareOfEachFrameIsCutToWholeMilliseconds) {
  EXPECT_EQ(33, zo::earliestTimestamp(0, 1, 30));
  EXPECT_EQ(66, zo::earliestTimestamp(0, 2, 30));
  EXPECT_EQ(100, zo::earliestTimestamp(0, 3, 30));
  EXPECT_EQ(-167, zo::earliestTimestamp(-200, 1, 30));
}

TEST(FrameRateLimit, LastFrameCountThatFitsIntoThirtyTwoBits) {
  EXPECT_EQ(2147483000, zo::earliestTimestamp(0, 2147483, 1));
}

TEST(FrameRateLimit, ProductWrapsAroundAtThirtyTwoBits) {
  // 1000 x 2147484 is 352 above 2^31, which reads as 352 - 2^31.
  EXPECT_EQ(-2147483296LL, zo::earliestTimestamp(0, 2147484, 1));
  EXPECT_EQ(-2147483296LL + 5000000000LL, zo::earliestTimestamp(5000000000LL, 2147484, 1));
}

TEST(FrameRateLimit, NegativeQuotientIsCutTowardsZero) {
  EXPECT_EQ(-715827765LL, zo::earliestTimestamp(0, 2147484, 3));
}

TEST(FrameRateLimit, NegativeCounterAfterTheCounterItselfWrapped) {
  // 1000 x -2^31 is a multiple of 2^32.
  EXPECT_EQ(7, zo::earliestTimestamp(7, INT_MIN, 25));
}

TEST(FrameRateLimit, SmallestProductDividedByTheSmallestRate) {
  // 1000 x 2^28 is an odd multiple of 2^31.
  EXPECT_EQ(-2147483648LL, zo::earliestTimestamp(0, 268435456, 1));
}

TEST(FrameRateLimit, TimesAtTheEndOfTheirRangeWrapAround) {
  EXPECT_EQ(LLONG_MIN + 99, zo::earliestTimestamp(LLONG_MAX, 1, 10));
}

TEST(WholeFps, CutsTowardsZero) {
  EXPECT_EQ(0, zo::wholeFps(0.0F));
  EXPECT_EQ(0, zo::wholeFps(0.999F));
  EXPECT_EQ(1, zo::wholeFps(1.0F));
  EXPECT_EQ(29, zo::wholeFps(29.97F));
}

TEST(WholeFps, NotANumberMeansNoLimit) {
  EXPECT_EQ(0, zo::wholeFps(std::numeric_limits<float>::quiet_NaN()));
}

TEST(WholeFps, LargestRateThatFitsIsKept) {
  EXPECT_EQ(2147483520, zo::wholeFps(2147483520.0F));
}

TEST(WholeFps, LargerRatesBecomeTheLargestNumber) {
  EXPECT_EQ(INT_MAX, zo::wholeFps(2147483648.0F));
  EXPECT_EQ(INT_MAX, zo::wholeFps(1e30F));
  EXPECT_EQ(INT_MAX, zo::wholeFps(std::numeric_limits<float>::infinity()));
}

TEST(RebasedTimestamp, OnlyANegativeStartIsMovedToZero) {
  EXPECT_EQ(0, zo::rebasedTimestamp(-80, -80));
  EXPECT_EQ(120, zo::rebasedTimestamp(40, -80));
  EXPECT_EQ(500, zo::rebasedTimestamp(500, 500));
  EXPECT_EQ(540, zo::rebasedTimestamp(540, 500));
}

TEST(RebasedTimestamp, DifferenceBeyondTheRangeWrapsAround) {
  EXPECT_EQ(LLONG_MIN, zo::rebasedTimestamp(LLONG_MAX, -1));
}

}  // namespace
