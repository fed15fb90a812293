#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <tuple>
#include <utility>

#include "zo_core/zo_frame.h"
#include "zo_test_support.h"

namespace zo {
namespace {

Frame grayFrame(int width, int height) {
  return test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(width, height), 1);
}

void reuse(Frame& frame, FrameFormat format, Size size, unsigned alignment = 0) {
  frame.reuse(format, size, DeviceContext(), alignment);
}

using EmptyParam = std::tuple<int, Size>;
class ReuseWithoutLayout : public testing::TestWithParam<EmptyParam> {};

TEST_P(ReuseWithoutLayout, RecordsFormatAndSizeAndHoldsNoPlanes) {
  const FrameFormat format = static_cast<FrameFormat>(std::get<0>(GetParam()));
  const Size size = std::get<1>(GetParam());
  Frame fresh;
  Frame used = grayFrame(10, 10);
  used.setTimestamp(77);
  for (Frame* p_frame : {&fresh, &used}) {
    reuse(*p_frame, format, size);
    EXPECT_FALSE(p_frame->initialized());
    EXPECT_EQ(format, p_frame->format());
    EXPECT_EQ(size, p_frame->size());
    EXPECT_EQ(0U, p_frame->planeCount());
    EXPECT_EQ(nullptr, p_frame->planeData(0));
    EXPECT_EQ(0U, p_frame->planeStride(0));
  }
  EXPECT_EQ(77, used.timestamp());
}

TEST_P(ReuseWithoutLayout, CanBeFollowedByOneWithALayout) {
  Frame frame;
  reuse(frame, static_cast<FrameFormat>(std::get<0>(GetParam())), std::get<1>(GetParam()));
  reuse(frame, ZO_FRAME_FORMAT_BGR24, Size(4, 3));
  EXPECT_TRUE(frame.initialized());
  EXPECT_EQ(1U, frame.planeCount());
}

std::string emptyName(const testing::TestParamInfo<EmptyParam>& test_case) {
  std::string name = "Format" + std::to_string(std::get<0>(test_case.param)) + "_" +
                     test::shortName(std::get<1>(test_case.param));
  std::replace(name.begin(), name.end(), '-', 'm');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Formats, ReuseWithoutLayout,
                         testing::Combine(testing::Values(0, 3, 5, 16, 17, 18, 19, 20, 21, -1, INT_MAX,
                                                          INT_MIN),
                                          testing::Values(Size(4, 3))),
                         emptyName);
INSTANTIATE_TEST_SUITE_P(Sizes, ReuseWithoutLayout,
                         testing::Combine(testing::Values(4, 6),
                                          testing::Values(Size(0, 0), Size(0, 5), Size(5, 0), Size(-1, 5),
                                                          Size(5, -1), Size(INT_MIN, INT_MIN))),
                         emptyName);

TEST(FrameReuse, KeepsMemoryAndPixelsWhenNothingChanges) {
  Frame frame = grayFrame(10, 10);
  const std::string pixels = test::packedBytes(frame);
  const unsigned char* p_data = frame.planeData(0);
  reuse(frame, ZO_FRAME_FORMAT_GRAY8, Size(10, 10));
  EXPECT_EQ(p_data, frame.planeData(0));
  EXPECT_EQ(pixels, test::packedBytes(frame));
}

TEST(FrameReuse, KeepsMemoryThatIsLargeEnough) {
  Frame frame;
  reuse(frame, ZO_FRAME_FORMAT_BGR24, Size(640, 480));
  const unsigned char* p_data = frame.planeData(0);
  reuse(frame, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(320, 240));
  EXPECT_EQ(p_data, frame.planeData(0));
  EXPECT_EQ(3U, frame.planeCount());
  reuse(frame, ZO_FRAME_FORMAT_BGR24, Size(640, 480));
  EXPECT_EQ(p_data, frame.planeData(0));
}

TEST(FrameReuse, AllocatesWhenTheMemoryIsTooSmall) {
  Frame frame = grayFrame(10, 10);
  reuse(frame, ZO_FRAME_FORMAT_BGR24, Size(1000, 1000));
  test::fillFrame(frame, 9);
  EXPECT_EQ(Size(1000, 1000), frame.size());
  EXPECT_EQ(9, frame.planeData(0)[2999 + 999 * static_cast<std::size_t>(frame.planeStride(0))]);
}

TEST(FrameReuse, ChangesTheStridesWhenOnlyTheAlignmentChanges) {
  Frame frame;
  reuse(frame, ZO_FRAME_FORMAT_GRAY8, Size(10, 10), 1);
  EXPECT_EQ(10U, frame.planeStride(0));
  reuse(frame, ZO_FRAME_FORMAT_GRAY8, Size(10, 10), 0);
  EXPECT_EQ(64U, frame.planeStride(0));
  reuse(frame, ZO_FRAME_FORMAT_GRAY8, Size(10, 10), 4);
  EXPECT_EQ(12U, frame.planeStride(0));
}

TEST(FrameReuse, KnowsTheAlignmentOfFramesThatWereMovedAndCopied) {
  Frame tight;
  reuse(tight, ZO_FRAME_FORMAT_GRAY8, Size(10, 10), 1);
  Frame copied_once(tight);
  tight.clear();
  Frame copied_twice;
  copied_twice = copied_once;
  copied_once.clear();
  Frame moved(std::move(copied_twice));
  EXPECT_EQ(10U, moved.planeStride(0));
  reuse(moved, ZO_FRAME_FORMAT_GRAY8, Size(10, 10), 0);
  EXPECT_EQ(64U, moved.planeStride(0));
}

TEST(FrameReuse, KeepsTheTimestamp) {
  Frame frame;
  frame.setTimestamp(-5);
  reuse(frame, ZO_FRAME_FORMAT_GRAY8, Size(10, 10));
  EXPECT_EQ(-5, frame.timestamp());
  reuse(frame, ZO_FRAME_FORMAT_BGR24, Size(100, 100));
  EXPECT_EQ(-5, frame.timestamp());
}

TEST(FrameReuse, NeverOverwritesPixelsThatAnotherFrameShares) {
  Frame frame = grayFrame(10, 10);
  const Frame kept = frame;
  const std::string pixels = test::packedBytes(kept);
  for (const Size size : {Size(10, 10), Size(5, 5), Size(20, 20)}) {
    Frame reshaped = kept;
    reuse(reshaped, ZO_FRAME_FORMAT_GRAY8, size);
    ASSERT_NE(kept.planeData(0), reshaped.planeData(0));
    test::fillFrame(reshaped, 0);
    EXPECT_EQ(pixels, test::packedBytes(kept));
  }
}

TEST(FrameReuse, TakesTheMemoryUpAgainWhenTheOtherFrameIsGone) {
  Frame frame = grayFrame(10, 10);
  const unsigned char* p_data = frame.planeData(0);
  {
    const Frame copy = frame;
    EXPECT_EQ(p_data, copy.planeData(0));
  }
  reuse(frame, ZO_FRAME_FORMAT_GRAY8, Size(9, 9));
  EXPECT_EQ(p_data, frame.planeData(0));
}

// What lies beside the pixels of a frame, between and behind the rows of a plane of its own memory.
std::string besideThePixels(const Frame& frame) {
  std::string bytes;
  for (unsigned i = 0; i < frame.planeCount(); ++i) {
    const char* p_row = reinterpret_cast<const char*>(frame.planeData(i));
    for (unsigned row = 0; row < frame.planeRows(i); ++row) {
      bytes.append(p_row + frame.planeRowBytes(i), frame.planeStride(i) - frame.planeRowBytes(i));
      p_row += frame.planeStride(i);
    }
    bytes.append(p_row, frame.planeStride(i) + 64);
  }
  return bytes;
}

class BesideThePixels : public testing::TestWithParam<FrameFormat> {};

TEST_P(BesideThePixels, NothingIsLeftOfWhatTheMemoryHeldBefore) {
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_BGR24, Size(100, 100), DeviceContext(), 0);
  test::fillFrame(frame, 0xA5);
  const unsigned char* p_data = frame.planeData(0);
  for (const Size size : {Size(33, 17), Size(1, 1), Size(64, 5), Size(21, 3)}) {
    for (const unsigned alignment : {0U, 1U, 16U}) {
      frame.reuse(GetParam(), size, DeviceContext(), alignment);
      ASSERT_EQ(p_data, frame.planeData(0)) << "the same memory";
      EXPECT_TRUE(frame.hasSlack());
      const std::string bytes = besideThePixels(frame);
      EXPECT_EQ(std::string(bytes.size(), '\0'), bytes);
      test::fillFrame(frame, 0xA5);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, BesideThePixels,
                         testing::Values(ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_BGR24,
                                         ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                                         ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12,
                                         ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, ZO_FRAME_FORMAT_YUV444_PLANAR),
                         [](const auto& test) { return test::shortName(test.param); });

TEST(FrameSlack, BelongsToFramesThatAllocatedTheirMemory) {
  Frame frame;
  EXPECT_FALSE(frame.hasSlack());
  reuse(frame, ZO_FRAME_FORMAT_GRAY8, Size(4, 4), 0);
  EXPECT_TRUE(frame.hasSlack());
  unsigned char pixels[16] = {};
  const Frame outside(FrameLayout(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), {{4, 0, 0, 0}}), DeviceContext(),
                      DevicePtr(static_cast<void*>(pixels)));
  EXPECT_FALSE(outside.hasSlack());
  outside.copyTo(frame);
  EXPECT_TRUE(frame.hasSlack());
  frame.clear();
  EXPECT_FALSE(frame.hasSlack());
}

// Nobody knows what the bytes of such a format mean, so none of them is beside the pixels.
TEST(FrameSlack, IsNotThereInDeepCopiesOfFormatsWithoutALayout) {
  unsigned char pixels[16] = {};
  for (const int value : {0, 3, 5, 16, 17, 18, 19, 20, 21, -1}) {
    const Frame outside(FrameLayout(static_cast<FrameFormat>(value), Size(4, 4), {{4, 0, 0, 0}}),
                        DeviceContext(), DevicePtr(static_cast<void*>(pixels)));
    Frame copy = grayFrame(10, 10);
    outside.copyTo(copy);
    EXPECT_TRUE(copy.initialized()) << value;
    EXPECT_NE(outside.planeData(0), copy.planeData(0)) << value;
    EXPECT_FALSE(copy.hasSlack()) << value;
  }
}

// The first two fields of a frame, which programs have compiled in: its format, and next to it one that is 0
// exactly when no pixels are attached.
struct FirstFields {
  int32_t format;
  uint32_t presence;
};

FirstFields firstFields(const Frame& frame) {
  FirstFields fields;
  std::memcpy(&fields, static_cast<const void*>(&frame), sizeof(fields));
  return fields;
}

TEST(FramePresence, IsTheFieldBehindTheFormat) {
  Frame frame;
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, firstFields(frame).format);
  EXPECT_EQ(0U, firstFields(frame).presence);
  for (const FrameFormat format :
       {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, ZO_FRAME_FORMAT_YUV444_PLANAR}) {
    reuse(frame, format, Size(8, 6));
    EXPECT_EQ(format, firstFields(frame).format);
    EXPECT_NE(0U, firstFields(frame).presence);
    reuse(frame, format, Size(0, 6));
    EXPECT_EQ(format, firstFields(frame).format);
    EXPECT_EQ(0U, firstFields(frame).presence);
  }
  unsigned char pixels[16] = {};
  const Frame outside(FrameLayout(ZO_FRAME_FORMAT_CUSTOM_1, Size(4, 4), {{4, 0, 0, 0}}), DeviceContext(),
                      DevicePtr(static_cast<void*>(pixels)));
  EXPECT_EQ(ZO_FRAME_FORMAT_CUSTOM_1, firstFields(outside).format);
  EXPECT_NE(0U, firstFields(outside).presence);
  outside.copyTo(frame);
  EXPECT_NE(0U, firstFields(frame).presence);
  frame.clear();
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, firstFields(frame).format);
  EXPECT_EQ(0U, firstFields(frame).presence);
}

struct HugeCase {
  const char* name;
  FrameFormat format;
  Size size;
  unsigned alignment;
};

class HugeFrames : public testing::TestWithParam<HugeCase> {};

TEST_P(HugeFrames, AreRefusedAndLeaveTheFrameAsItWas) {
  Frame frame = grayFrame(10, 10);
  frame.setTimestamp(12);
  const std::string pixels = test::packedBytes(frame);
  const unsigned char* p_data = frame.planeData(0);
  EXPECT_THROW(reuse(frame, GetParam().format, GetParam().size, GetParam().alignment), std::bad_alloc);
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
  EXPECT_EQ(Size(10, 10), frame.size());
  EXPECT_EQ(p_data, frame.planeData(0));
  EXPECT_EQ(pixels, test::packedBytes(frame));
  EXPECT_EQ(12, frame.timestamp());
}

TEST_P(HugeFrames, AreRefusedByAFreshFrameToo) {
  Frame frame;
  EXPECT_THROW(reuse(frame, GetParam().format, GetParam().size, GetParam().alignment), std::bad_alloc);
  EXPECT_FALSE(frame.initialized());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, frame.format());
  EXPECT_EQ(Size(0, 0), frame.size());
}

// Products that do not fit 32 bits, that do not fit 64 bits, that just fit but exist on no machine.
INSTANTIATE_TEST_SUITE_P(
    Sizes, HugeFrames,
    testing::Values(HugeCase{"GreatestGray", ZO_FRAME_FORMAT_GRAY8, Size(INT_MAX, INT_MAX), 0},
                    HugeCase{"GreatestGrayWithoutAlignment", ZO_FRAME_FORMAT_GRAY8, Size(INT_MAX, INT_MAX),
                             1},
                    HugeCase{"LongRow", ZO_FRAME_FORMAT_BGR24, Size(INT_MAX, 1), 1},
                    HugeCase{"LongPairs", ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, Size(INT_MAX, 1), 1},
                    HugeCase{"GreatestPlanar", ZO_FRAME_FORMAT_YUV444_PLANAR, Size(INT_MAX - 63, INT_MAX), 0},
                    HugeCase{"GreatestSemiPlanar", ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12,
                             Size(INT_MAX - 63, INT_MAX), 0},
                    HugeCase{"GreatestAlignment", ZO_FRAME_FORMAT_GRAY8, Size(1, 1), UINT_MAX}),
    test::CaseName());

TEST(FrameClear, LeavesTheFrameAsAFreshOne) {
  Frame frame = grayFrame(10, 10);
  frame.setTimestamp(5);
  frame.clear();
  EXPECT_FALSE(frame.initialized());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, frame.format());
  EXPECT_EQ(Size(0, 0), frame.size());
  EXPECT_EQ(0, frame.timestamp());
  EXPECT_EQ(nullptr, frame.planeData(0));
  frame.clear();
  EXPECT_FALSE(frame.initialized());
}

TEST(FrameClear, LeavesFramesThatSharedThePixelsAlone) {
  Frame frame = grayFrame(10, 10);
  const std::string pixels = test::packedBytes(frame);
  const Frame copy = frame;
  frame.clear();
  EXPECT_EQ(pixels, test::packedBytes(copy));
}

}  // namespace
}  // namespace zo
