// Frames over memory that somebody else made.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <vector>

#include "zo_core/zo_frame.h"
#include "zo_test_support.h"

namespace zo {
namespace {

using Strides = std::array<unsigned, 4>;

Frame wrap(FrameFormat format, Size size, const Strides& strides, void* p_memory) {
  return Frame(FrameLayout(format, size, strides), DeviceContext(), DevicePtr(p_memory));
}

TEST(FrameLayoutTest, KeepsWhatItWasMadeOf) {
  const FrameLayout layout(ZO_FRAME_FORMAT_BGR24, Size(3, 2), Strides{{12, 0, 0, 0}});
  EXPECT_EQ(ZO_FRAME_FORMAT_BGR24, layout.format());
  EXPECT_EQ(Size(3, 2), layout.size());
  EXPECT_EQ((Strides{{12, 0, 0, 0}}), layout.strides());
}

TEST(OutsideMemory, HoldsThePlanesOneAfterAnother) {
  std::vector<unsigned char> memory(8 * 5 + 6 * 3 + 4 * 3);
  Frame frame = wrap(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(7, 5), Strides{{8, 6, 4, 0}}, memory.data());
  ASSERT_EQ(3U, frame.planeCount());
  EXPECT_EQ(memory.data(), frame.planeData(0));
  EXPECT_EQ(memory.data() + 40, frame.planeData(1));
  EXPECT_EQ(memory.data() + 40 + 18, frame.planeData(2));
  EXPECT_EQ(8U, frame.planeStride(0));
  EXPECT_EQ(6U, frame.planeStride(1));
  EXPECT_EQ(4U, frame.planeStride(2));
  EXPECT_EQ(0U, frame.planeStride(3));
  EXPECT_EQ(0, frame.timestamp());
  EXPECT_TRUE(frame.initialized());
}

TEST(OutsideMemory, IsNotCopied) {
  std::vector<unsigned char> memory(9, 1);
  Frame frame = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{3, 0, 0, 0}}, memory.data());
  memory[4] = 200;
  EXPECT_EQ(200, frame.planeData(0)[4]);
}

TEST(OutsideMemory, LivesAsLongAsAFrameOverItWhenItHasAnOwner) {
  bool released = false;
  Frame last;
  {
    std::shared_ptr<void> p_owner(new unsigned char[9], [&released](void* p_memory) {
      released = true;
      delete[] static_cast<unsigned char*>(p_memory);
    });
    const Frame frame(FrameLayout(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{3, 0, 0, 0}}), DeviceContext(),
                      DevicePtr(std::move(p_owner)));
    last = frame;
  }
  EXPECT_FALSE(released);
  last.planeData(0)[8] = 1;
  last.clear();
  EXPECT_TRUE(released);
}

TEST(OutsideMemory, IsKeptWhenFormatAndSizeAreUnchanged) {
  std::vector<unsigned char> memory(5 * 3, 1);
  Frame frame = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{5, 0, 0, 0}}, memory.data());
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), DeviceContext(), 0);
  EXPECT_EQ(memory.data(), frame.planeData(0));
  EXPECT_EQ(5U, frame.planeStride(0));
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), DeviceContext(), 32);
  EXPECT_EQ(memory.data(), frame.planeData(0));
}

TEST(OutsideMemory, ReceivesACopyOfTheSameShape) {
  std::vector<unsigned char> memory(5 * 3, 1);
  Frame frame = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{5, 0, 0, 0}}, memory.data());
  Frame source;
  source.reuse(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), DeviceContext(), 0);
  test::fillFrame(source, 7);
  source.copyTo(frame);
  const std::vector<unsigned char> expected = {7, 7, 7, 1, 1, 7, 7, 7, 1, 1, 7, 7, 7, 1, 1};
  EXPECT_EQ(expected, memory);
}

TEST(OutsideMemory, IsLeftWhenTheShapeChangesEvenToASmallerOne) {
  std::vector<unsigned char> memory(9, 1);
  for (const Size size : {Size(2, 2), Size(3, 4)}) {
    Frame frame = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{3, 0, 0, 0}}, memory.data());
    frame.reuse(ZO_FRAME_FORMAT_GRAY8, size, DeviceContext(), 0);
    ASSERT_NE(memory.data(), frame.planeData(0));
    test::fillFrame(frame, 9);
    EXPECT_EQ(std::vector<unsigned char>(9, 1), memory);
  }
  Frame frame = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{3, 0, 0, 0}}, memory.data());
  frame.reuse(ZO_FRAME_FORMAT_YUV444_PLANAR, Size(3, 3), DeviceContext(), 0);
  EXPECT_NE(memory.data(), frame.planeData(0));
}

TEST(OutsideMemory, IsLeftWhenAnotherFrameSharesIt) {
  std::vector<unsigned char> memory(9, 1);
  Frame frame = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{3, 0, 0, 0}}, memory.data());
  const Frame kept = frame;
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), DeviceContext(), 0);
  test::fillFrame(frame, 9);
  EXPECT_EQ(std::vector<unsigned char>(9, 1), memory);
  EXPECT_EQ(memory.data(), kept.planeData(0));
}

TEST(OutsideMemory, CanBeCopiedBetweenTwoFramesOverTheSameBlock) {
  std::vector<unsigned char> memory = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  const std::vector<unsigned char> before = memory;
  Frame a = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{3, 0, 0, 0}}, memory.data());
  Frame b = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), Strides{{3, 0, 0, 0}}, memory.data());
  a.setTimestamp(6);
  a.copyTo(b);
  EXPECT_EQ(before, memory);
  EXPECT_EQ(6, b.timestamp());
}

struct UnusableCase {
  const char* name;
  FrameFormat format;
  Size size;
  unsigned first_stride;
  bool null_memory;
};

class UnusableLayouts : public testing::TestWithParam<UnusableCase> {};

TEST_P(UnusableLayouts, GiveAFrameWithoutPlanes) {
  unsigned char memory[64] = {};
  const UnusableCase& param = GetParam();
  const Frame frame = wrap(param.format, param.size, Strides{{param.first_stride, 0, 0, 0}},
                           param.null_memory ? nullptr : memory);
  EXPECT_FALSE(frame.initialized());
  EXPECT_EQ(param.format, frame.format());
  EXPECT_EQ(param.size, frame.size());
  EXPECT_EQ(0U, frame.planeCount());
}

INSTANTIATE_TEST_SUITE_P(
    All, UnusableLayouts,
    testing::Values(UnusableCase{"NullMemory", ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 3, true},
                    UnusableCase{"StrideBelowTheRow", ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 2, false},
                    UnusableCase{"SecondStrideMissing", ZO_FRAME_FORMAT_YUV444_PLANAR, Size(3, 3), 3, false},
                    UnusableCase{"NoFormatAndNoStride", ZO_FRAME_FORMAT_UNDEFINED, Size(3, 3), 0, false},
                    UnusableCase{"CustomFormatAndNoStride", ZO_FRAME_FORMAT_CUSTOM_1, Size(3, 3), 0, false},
                    UnusableCase{"NoWidth", ZO_FRAME_FORMAT_GRAY8, Size(0, 3), 3, false},
                    UnusableCase{"NegativeHeight", ZO_FRAME_FORMAT_GRAY8, Size(3, -3), 3, false},
                    UnusableCase{"StrideBeyondInt", ZO_FRAME_FORMAT_GRAY8, Size(3, 3), UINT_MAX, false}),
    test::CaseName());

TEST(OutsideMemory, HasNoPlanesWhenNoMemoryCouldHoldThem) {
  unsigned char memory[4] = {};
  const Frame frame =
      wrap(ZO_FRAME_FORMAT_YUV444_PLANAR, Size(1, INT_MAX), Strides{{INT_MAX, INT_MAX, INT_MAX, 0}}, memory);
  EXPECT_FALSE(frame.initialized());
  EXPECT_EQ(Size(1, INT_MAX), frame.size());
}

TEST(OutsideMemory, ReceivesACopyFromPaddedRowsWithoutAByteToSpare) {
  const Frame source = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(3, 2), 5);
  ASSERT_GT(source.planeStride(0), 3U);
  std::vector<unsigned char> memory(6);
  Frame frame = wrap(ZO_FRAME_FORMAT_GRAY8, Size(3, 2), Strides{{3, 0, 0, 0}}, memory.data());
  source.copyTo(frame);
  EXPECT_EQ(test::packedBytes(source), std::string(memory.begin(), memory.end()));
}

class OutsideMemoryOfUnknownLayout : public testing::TestWithParam<int> {};

TEST_P(OutsideMemoryOfUnknownLayout, HasAPlaneForEachStrideAndIsCopiedDeeply) {
  const auto format = static_cast<FrameFormat>(GetParam());
  unsigned char block[2 * (7 + 4)];
  for (unsigned i = 0; i < sizeof(block); ++i) {
    block[i] = static_cast<unsigned char>(i);
  }
  const Frame frame(FrameLayout(format, Size(5, 2), Strides{{7, 4, 0, 9}}), DeviceContext(),
                    DevicePtr(block));
  ASSERT_TRUE(frame.initialized());
  ASSERT_EQ(2U, frame.planeCount());
  EXPECT_EQ(block, frame.planeData(0));
  EXPECT_EQ(block + 14, frame.planeData(1));
  EXPECT_EQ(7U, frame.planeRowBytes(0));
  EXPECT_EQ(2U, frame.planeRows(1));
  EXPECT_EQ(0U, frame.planeStride(2));

  Frame copy;
  frame.copyTo(copy);
  ASSERT_EQ(2U, copy.planeCount());
  EXPECT_EQ(format, copy.format());
  EXPECT_NE(frame.planeData(0), copy.planeData(0));
  EXPECT_EQ(0, std::memcmp(block, copy.planeData(0), 14));
  EXPECT_EQ(0, std::memcmp(block + 14, copy.planeData(1), 8));
}

TEST_P(OutsideMemoryOfUnknownLayout, HasUpToFourPlanes) {
  unsigned char block[10] = {};
  const Frame frame = wrap(static_cast<FrameFormat>(GetParam()), Size(1, 1), Strides{{1, 2, 3, 4}}, block);
  ASSERT_EQ(4U, frame.planeCount());
  EXPECT_EQ(block + 6, frame.planeData(3));
}

TEST_P(OutsideMemoryOfUnknownLayout, IsKeptByACopyOfTheSameShapeAsMemoryOfOursIs) {
  const auto format = static_cast<FrameFormat>(GetParam());
  std::vector<unsigned char> pixels(16, 9);
  std::vector<unsigned char> memory(16, 1);
  const Frame source = wrap(format, Size(4, 4), Strides{{4, 0, 0, 0}}, pixels.data());
  Frame outside = wrap(format, Size(4, 4), Strides{{4, 0, 0, 0}}, memory.data());
  source.copyTo(outside);
  EXPECT_EQ(pixels, memory);
  EXPECT_EQ(memory.data(), outside.planeData(0));

  Frame own;
  source.copyTo(own);
  const unsigned char* const p_own = own.planeData(0);
  source.copyTo(own);
  EXPECT_EQ(p_own, own.planeData(0));
  const Frame smaller = wrap(format, Size(4, 2), Strides{{4, 4, 0, 0}}, pixels.data());
  smaller.copyTo(own);
  EXPECT_EQ(p_own, own.planeData(0)) << "large enough";
  EXPECT_EQ(2U, own.planeCount());
  const Frame kept = own;
  source.copyTo(own);
  EXPECT_NE(p_own, own.planeData(0)) << "another frame shares it";
  EXPECT_EQ(2U, kept.planeCount());
}

TEST_P(OutsideMemoryOfUnknownLayout, IsLeftByACopyWithOtherStrides) {
  const auto format = static_cast<FrameFormat>(GetParam());
  std::vector<unsigned char> pixels(20, 9);
  std::vector<unsigned char> memory(16, 1);
  const Frame source = wrap(format, Size(4, 4), Strides{{5, 0, 0, 0}}, pixels.data());
  Frame outside = wrap(format, Size(4, 4), Strides{{4, 0, 0, 0}}, memory.data());
  source.copyTo(outside);
  EXPECT_EQ(std::vector<unsigned char>(16, 1), memory);
  EXPECT_EQ(5U, outside.planeStride(0));
}

INSTANTIATE_TEST_SUITE_P(Formats, OutsideMemoryOfUnknownLayout,
                         testing::Values(0, 3, 5, 16, 17, 18, 19, 20, 21, -1));

}  // namespace
}  // namespace zo
