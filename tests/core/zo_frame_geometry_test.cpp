// Where the planes of a frame lie and how large they are.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <tuple>

#include "zo_core/zo_frame.h"
#include "zo_test_support.h"

namespace zo {
namespace {

// A plane in samples: width and height divided by these, times bytes per sample.
struct PlaneShape {
  unsigned bytes;
  unsigned horizontal;
  unsigned vertical;
};

struct FormatShape {
  FrameFormat format;
  unsigned plane_count;
  PlaneShape planes[3];
};

// 4:2:2 packed formats hold two pixels in four bytes: as many samples as there are pairs.
const FormatShape SHAPES[] = {
    {ZO_FRAME_FORMAT_GRAY8, 1, {{1, 1, 1}}},
    {ZO_FRAME_FORMAT_RGB24, 1, {{3, 1, 1}}},
    {ZO_FRAME_FORMAT_BGR24, 1, {{3, 1, 1}}},
    {ZO_FRAME_FORMAT_YUV420_PLANAR_I420, 3, {{1, 1, 1}, {1, 2, 2}, {1, 2, 2}}},
    {ZO_FRAME_FORMAT_YUV420_PLANAR_YV12, 3, {{1, 1, 1}, {1, 2, 2}, {1, 2, 2}}},
    {ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, 2, {{1, 1, 1}, {2, 2, 2}}},
    {ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21, 2, {{1, 1, 1}, {2, 2, 2}}},
    {ZO_FRAME_FORMAT_YUV422_PLANAR, 3, {{1, 1, 1}, {1, 2, 1}, {1, 2, 1}}},
    {ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, 1, {{4, 2, 1}}},
    {ZO_FRAME_FORMAT_YUV422_PACKED_UYVY, 1, {{4, 2, 1}}},
    {ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16, 2, {{1, 1, 1}, {2, 2, 1}}},
    {ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, 1, {{3, 1, 1}}},
    {ZO_FRAME_FORMAT_YUV444_PLANAR, 3, {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}},
};

const Size SIZES[] = {Size(1, 1), Size(2, 1), Size(1, 2),  Size(3, 3),   Size(2, 2),
                      Size(5, 4), Size(4, 5), Size(64, 3), Size(65, 33), Size(640, 480)};

unsigned divideUp(int length, unsigned divisor) {
  return (static_cast<unsigned>(length) + divisor - 1) / divisor;
}

using GeometryParam = std::tuple<FormatShape, Size, unsigned>;

class FrameGeometry : public testing::TestWithParam<GeometryParam> {};

TEST_P(FrameGeometry, FollowsTheFormat) {
  const auto& [shape, size, alignment] = GetParam();
  Frame frame;
  frame.reuse(shape.format, size, DeviceContext(), alignment);
  ASSERT_TRUE(frame.initialized());
  EXPECT_EQ(shape.format, frame.format());
  EXPECT_EQ(size, frame.size());
  ASSERT_EQ(shape.plane_count, frame.planeCount());
  for (unsigned i = 0; i < shape.plane_count; ++i) {
    const PlaneShape& plane = shape.planes[i];
    EXPECT_EQ(plane.bytes * divideUp(size.width, plane.horizontal), frame.planeRowBytes(i));
    EXPECT_EQ(divideUp(size.height, plane.vertical), frame.planeRows(i));
    ASSERT_NE(nullptr, frame.planeData(i));
    EXPECT_GE(frame.planeStride(i), frame.planeRowBytes(i));
    EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(frame.planeData(i)) % 64);
  }
}

TEST_P(FrameGeometry, AlignsRowsWithoutWaste) {
  const auto& [shape, size, alignment] = GetParam();
  const unsigned row_alignment = alignment == 0 ? 64 : alignment;  // the widest vector unit by default
  Frame frame;
  frame.reuse(shape.format, size, DeviceContext(), alignment);
  for (unsigned i = 0; i < frame.planeCount(); ++i) {
    EXPECT_EQ(0U, frame.planeStride(i) % row_alignment);
    EXPECT_LT(frame.planeStride(i), frame.planeRowBytes(i) + row_alignment);
  }
}

// A coder may write past a row's end and one row more than the plane has. Sanitizers see it when that memory
// does not exist; the pattern shows when it belongs to another plane.
TEST_P(FrameGeometry, LeavesRoomBehindEachPlane) {
  const auto& [shape, size, alignment] = GetParam();
  Frame frame;
  frame.reuse(shape.format, size, DeviceContext(), alignment);
  std::vector<std::size_t> writable;
  for (unsigned i = 0; i < frame.planeCount(); ++i) {
    writable.push_back(static_cast<std::size_t>(frame.planeStride(i)) * (frame.planeRows(i) + 1) + 64);
    std::fill_n(frame.planeData(i), writable[i], static_cast<unsigned char>(i + 1));
  }
  for (unsigned i = 0; i < frame.planeCount(); ++i) {
    const unsigned char value = static_cast<unsigned char>(i + 1);
    const unsigned char* p_plane = frame.planeData(i);
    EXPECT_EQ(static_cast<std::ptrdiff_t>(writable[i]), std::count(p_plane, p_plane + writable[i], value));
  }
}

TEST_P(FrameGeometry, HasNothingBeyondThePlaneCount) {
  const auto& [shape, size, alignment] = GetParam();
  Frame frame;
  frame.reuse(shape.format, size, DeviceContext(), alignment);
  const Frame& constant = frame;
  for (const unsigned index : {frame.planeCount(), 3U, 4U, 1000U, 0xFFFFFFFFU}) {
    if (index < frame.planeCount()) {
      continue;
    }
    EXPECT_EQ(nullptr, frame.planeData(index));
    EXPECT_EQ(nullptr, constant.planeData(index));
    EXPECT_EQ(0U, frame.planeStride(index));
    EXPECT_EQ(0U, frame.planeRowBytes(index));
    EXPECT_EQ(0U, frame.planeRows(index));
  }
}

std::string geometryName(const testing::TestParamInfo<GeometryParam>& test_case) {
  const auto& [shape, size, alignment] = test_case.param;
  return test::shortName(shape.format) + "_" + test::shortName(size) + "_aligned" + std::to_string(alignment);
}

INSTANTIATE_TEST_SUITE_P(AllFormats, FrameGeometry,
                         testing::Combine(testing::ValuesIn(SHAPES), testing::ValuesIn(SIZES),
                                          testing::Values(0U, 1U, 16U, 24U, 128U)),
                         geometryName);

TEST(FrameTest, IsEmptyByDefault) {
  const Frame frame;
  EXPECT_FALSE(frame.initialized());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, frame.format());
  EXPECT_EQ(Size(0, 0), frame.size());
  EXPECT_EQ(0U, frame.planeCount());
  EXPECT_EQ(nullptr, frame.planeData(0));
  EXPECT_EQ(0U, frame.planeStride(0));
  EXPECT_EQ(0, frame.timestamp());
}

}  // namespace
}  // namespace zo
