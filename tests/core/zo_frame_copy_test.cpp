#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <type_traits>
#include <utility>

#include "zo_core/zo_frame.h"
#include "zo_test_support.h"

namespace zo {
namespace {

static_assert(std::is_nothrow_move_constructible<Frame>::value, "frames move without cost");
static_assert(std::is_nothrow_move_assignable<Frame>::value, "frames move without cost");

const FrameFormat FORMATS[] = {ZO_FRAME_FORMAT_GRAY8,
                               ZO_FRAME_FORMAT_RGB24,
                               ZO_FRAME_FORMAT_BGR24,
                               ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                               ZO_FRAME_FORMAT_YUV420_PLANAR_YV12,
                               ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12,
                               ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21,
                               ZO_FRAME_FORMAT_YUV422_PLANAR,
                               ZO_FRAME_FORMAT_YUV422_PACKED_YUY2,
                               ZO_FRAME_FORMAT_YUV422_PACKED_UYVY,
                               ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16,
                               ZO_FRAME_FORMAT_YUV444_PACKED_IYU2,
                               ZO_FRAME_FORMAT_YUV444_PLANAR};

using CopyParam = std::tuple<FrameFormat, Size>;
class FrameCopyTo : public testing::TestWithParam<CopyParam> {};

TEST_P(FrameCopyTo, CopiesFormatSizePixelsAndTimestamp) {
  Frame source = test::makeNoiseFrame(std::get<0>(GetParam()), std::get<1>(GetParam()), 5);
  source.setTimestamp(123456789012LL);
  Frame destination;
  source.copyTo(destination);
  EXPECT_TRUE(test::samePixels(source, destination));
  EXPECT_EQ(123456789012LL, destination.timestamp());
  EXPECT_NE(source.planeData(0), destination.planeData(0));
  const std::string pixels = test::packedBytes(source);
  test::fillFrame(destination, 0);
  EXPECT_EQ(pixels, test::packedBytes(source));
}

TEST_P(FrameCopyTo, WorksBetweenDifferentStrides) {
  const FrameFormat format = std::get<0>(GetParam());
  const Size size = std::get<1>(GetParam());
  Frame tight;
  tight.reuse(format, size, DeviceContext(), 1);
  Frame noise = test::makeNoiseFrame(format, size, 6);
  for (unsigned plane = 0; plane < noise.planeCount(); ++plane) {
    for (unsigned row = 0; row < noise.planeRows(plane); ++row) {
      std::copy_n(noise.planeData(plane) + row * static_cast<std::size_t>(noise.planeStride(plane)),
                  noise.planeRowBytes(plane),
                  tight.planeData(plane) + row * static_cast<std::size_t>(tight.planeStride(plane)));
    }
  }
  Frame destination;
  tight.copyTo(destination);
  EXPECT_TRUE(test::samePixels(noise, destination));
}

std::string copyName(const testing::TestParamInfo<CopyParam>& test_case) {
  return test::shortName(std::get<0>(test_case.param)) + "_" + test::shortName(std::get<1>(test_case.param));
}

INSTANTIATE_TEST_SUITE_P(AllFormats, FrameCopyTo,
                         testing::Combine(testing::ValuesIn(FORMATS),
                                          testing::Values(Size(1, 1), Size(7, 5), Size(64, 2))),
                         copyName);

TEST(FrameCopyToTest, ChangesNothingOntoItself) {
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_BGR24, Size(7, 5), 3);
  frame.setTimestamp(4);
  const std::string pixels = test::packedBytes(frame);
  const unsigned char* p_data = frame.planeData(0);
  frame.copyTo(frame);
  EXPECT_EQ(p_data, frame.planeData(0));
  EXPECT_EQ(pixels, test::packedBytes(frame));
  EXPECT_EQ(4, frame.timestamp());
}

TEST(FrameCopyToTest, ChangesNothingOntoItselfWhateverTheAlignment) {
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(3, 2), DeviceContext(), 1);
  const unsigned char* const p_before = frame.planeData(0);
  frame.copyTo(frame);
  EXPECT_EQ(3U, frame.planeStride(0));
  EXPECT_EQ(p_before, frame.planeData(0));
}

TEST(FrameCopyToTest, LeavesAnEmptyFrameWhenTheSourceIsEmpty) {
  Frame destination = test::makeNoiseFrame(ZO_FRAME_FORMAT_BGR24, Size(7, 5), 3);
  Frame().copyTo(destination);
  EXPECT_FALSE(destination.initialized());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, destination.format());
  EXPECT_EQ(Size(0, 0), destination.size());
}

TEST(FrameCopyToTest, CopiesTheTimestampOfAnEmptyFrame) {
  Frame source;
  source.setTimestamp(40);
  Frame destination;
  source.copyTo(destination);
  EXPECT_EQ(40, destination.timestamp());
  EXPECT_FALSE(destination.initialized());
}

TEST(FrameCopyToTest, ReusesTheMemoryOfTheDestination) {
  const Frame source = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(20, 20), 3);
  Frame destination;
  destination.reuse(ZO_FRAME_FORMAT_BGR24, Size(100, 100), DeviceContext(), 0);
  const unsigned char* p_data = destination.planeData(0);
  source.copyTo(destination);
  EXPECT_EQ(p_data, destination.planeData(0));
  EXPECT_TRUE(test::samePixels(source, destination));
}

TEST(FrameCopyToTest, SeparatesFramesThatSharedTheirPixels) {
  Frame source = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(20, 20), 3);
  Frame destination = source;
  source.copyTo(destination);
  EXPECT_NE(source.planeData(0), destination.planeData(0));
  EXPECT_TRUE(test::samePixels(source, destination));
}

TEST(FrameSharing, GivesCopiesTheSamePixels) {
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(7, 5), 3);
  frame.setTimestamp(9);
  Frame copy(frame);
  Frame assigned;
  assigned = frame;
  for (const Frame* p_copy : {static_cast<const Frame*>(&copy), static_cast<const Frame*>(&assigned)}) {
    EXPECT_EQ(frame.planeData(0), p_copy->planeData(0));
    EXPECT_EQ(frame.planeData(2), p_copy->planeData(2));
    EXPECT_EQ(frame.format(), p_copy->format());
    EXPECT_EQ(frame.size(), p_copy->size());
    EXPECT_EQ(9, p_copy->timestamp());
  }
}

TEST(FrameSharing, EndsWithTheLastCopy) {
  Frame last;
  {
    Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(7, 5), 3);
    const Frame copy = frame;
    last = copy;
  }
  EXPECT_TRUE(test::samePixels(test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(7, 5), 3), last));
}

TEST(FrameSharing, KeepsTimestampsApart) {
  Frame frame;
  Frame copy = frame;
  copy.setTimestamp(1);
  EXPECT_EQ(0, frame.timestamp());
}

TEST(FrameSharing, IsUnchangedByAssignmentToItself) {
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(7, 5), 3);
  const std::string pixels = test::packedBytes(frame);
  const Frame& same = frame;
  frame = same;
  EXPECT_EQ(pixels, test::packedBytes(frame));
}

TEST(FrameMoving, HandsThePixelsOnAndLeavesAnEmptyFrame) {
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(7, 5), 3);
  frame.setTimestamp(8);
  const unsigned char* p_data = frame.planeData(0);
  Frame moved(std::move(frame));
  EXPECT_EQ(p_data, moved.planeData(0));
  EXPECT_EQ(8, moved.timestamp());
  EXPECT_FALSE(frame.initialized());  // NOLINT(bugprone-use-after-move): that is what is tested
  EXPECT_EQ(0, frame.timestamp());
  frame = std::move(moved);
  EXPECT_EQ(p_data, frame.planeData(0));
  EXPECT_FALSE(moved.initialized());  // NOLINT(bugprone-use-after-move)
}

TEST(FrameMoving, LeavesAnEmptyFrameAlsoWhenTheTargetHeldAPicture) {
  Frame source = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(7, 5), 1);
  Frame target = test::makeNoiseFrame(ZO_FRAME_FORMAT_BGR24, Size(9, 9), 2);
  target.setTimestamp(5);
  target = std::move(source);
  EXPECT_EQ(Size(7, 5), target.size());
  EXPECT_FALSE(source.initialized());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, source.format());
  EXPECT_EQ(Size(0, 0), source.size());
  EXPECT_EQ(0, source.timestamp());
}

TEST(FrameMoving, SurvivesMovingOntoItself) {
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(7, 5), 3);
  const std::string pixels = test::packedBytes(frame);
  Frame& same = frame;
  frame = std::move(same);
  EXPECT_EQ(pixels, test::packedBytes(frame));
}

}  // namespace
}  // namespace zo
