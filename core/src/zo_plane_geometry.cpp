#include "zo_plane_geometry.h"

#include <climits>
#include <new>

namespace zo {
namespace {

// Strides travel as int through FFmpeg and TurboJPEG, and a block must be addressable with ptrdiff_t.
constexpr uint64_t MAX_STRIDE = INT_MAX;
constexpr uint64_t MAX_BLOCK_BYTES = PTRDIFF_MAX;

// The scaler makes packed pixels in blocks, and leaves out one that a row has no room for.
constexpr uint64_t BLOCK_PIXELS = 16;

uint64_t half(int length) {
  return (static_cast<uint64_t>(length) + 1) / 2;
}

uint64_t alignUp(uint64_t value, uint64_t alignment) {
  return (value + alignment - 1) / alignment * alignment;
}

unsigned usedStrides(const std::array<unsigned, 4>& strides) {
  unsigned count = 0;
  while (count < strides.size() && strides[count] != 0) {
    ++count;
  }
  return count;
}

}  // namespace

unsigned formatPlaneCount(FrameFormat format) noexcept {
  switch (format) {
    case ZO_FRAME_FORMAT_GRAY8:
    case ZO_FRAME_FORMAT_RGB24:
    case ZO_FRAME_FORMAT_BGR24:
    case ZO_FRAME_FORMAT_YUV422_PACKED_YUY2:
    case ZO_FRAME_FORMAT_YUV422_PACKED_UYVY:
    case ZO_FRAME_FORMAT_YUV444_PACKED_IYU2:
      return 1;
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12:
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21:
    case ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16:
      return 2;
    case ZO_FRAME_FORMAT_YUV420_PLANAR_I420:
    case ZO_FRAME_FORMAT_YUV420_PLANAR_YV12:
    case ZO_FRAME_FORMAT_YUV422_PLANAR:
    case ZO_FRAME_FORMAT_YUV444_PLANAR:
      return 3;
    default:
      return 0;
  }
}

PlaneExtent planeExtent(FrameFormat format, Size size, unsigned plane) noexcept {
  const uint64_t width = static_cast<uint64_t>(size.width);
  const uint64_t height = static_cast<uint64_t>(size.height);
  switch (format) {
    case ZO_FRAME_FORMAT_RGB24:
    case ZO_FRAME_FORMAT_BGR24:
    case ZO_FRAME_FORMAT_YUV444_PACKED_IYU2:
      return {3 * width, height};
    case ZO_FRAME_FORMAT_YUV422_PACKED_YUY2:
    case ZO_FRAME_FORMAT_YUV422_PACKED_UYVY:
      return {4 * half(size.width), height};
    case ZO_FRAME_FORMAT_YUV420_PLANAR_I420:
    case ZO_FRAME_FORMAT_YUV420_PLANAR_YV12:
      return plane == 0 ? PlaneExtent{width, height} : PlaneExtent{half(size.width), half(size.height)};
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12:
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21:
      return plane == 0 ? PlaneExtent{width, height} : PlaneExtent{2 * half(size.width), half(size.height)};
    case ZO_FRAME_FORMAT_YUV422_PLANAR:
      return plane == 0 ? PlaneExtent{width, height} : PlaneExtent{half(size.width), height};
    case ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16:
      return plane == 0 ? PlaneExtent{width, height} : PlaneExtent{2 * half(size.width), height};
    default:
      return {width, height};
  }
}

BlockLayout allocationLayout(FrameFormat format, Size size, unsigned alignment) {
  BlockLayout layout;
  layout.plane_count = formatPlaneCount(format);
  const uint64_t row_alignment = alignment == 0 ? PLANE_ALIGNMENT : alignment;
  uint64_t bytes = 0;
  for (unsigned i = 0; i < layout.plane_count; ++i) {
    const PlaneExtent extent = planeExtent(format, size, i);
    uint64_t row_bytes = extent.row_bytes;
    if (alignment == 0) {
      const uint64_t width = static_cast<uint64_t>(size.width);
      row_bytes += (alignUp(width, BLOCK_PIXELS) - width) * (row_bytes / width);
    }
    const uint64_t stride = alignUp(row_bytes, row_alignment);
    if (stride > MAX_STRIDE) {
      throw std::bad_alloc();
    }
    layout.strides[i] = static_cast<unsigned>(stride);
    layout.offsets[i] = static_cast<std::size_t>(bytes);
    bytes += alignUp(stride * (extent.rows + 1) + PLANE_ALIGNMENT, PLANE_ALIGNMENT);
    if (bytes > MAX_BLOCK_BYTES) {
      throw std::bad_alloc();
    }
  }
  layout.bytes = static_cast<std::size_t>(bytes);
  return layout;
}

BlockLayout packedLayout(FrameFormat format, Size size, const std::array<unsigned, 4>& strides) noexcept {
  BlockLayout layout;
  uint64_t bytes = 0;
  const unsigned known_planes = formatPlaneCount(format);
  const unsigned plane_count =
      size.width < 1 || size.height < 1 ? 0 : (known_planes != 0 ? known_planes : usedStrides(strides));
  for (unsigned i = 0; i < plane_count; ++i) {
    const PlaneExtent extent = known_planes != 0
                                   ? planeExtent(format, size, i)
                                   : PlaneExtent{strides[i], static_cast<uint64_t>(size.height)};
    if (strides[i] < extent.row_bytes || strides[i] > MAX_STRIDE) {
      return BlockLayout();
    }
    layout.strides[i] = strides[i];
    layout.offsets[i] = static_cast<std::size_t>(bytes);
    bytes += strides[i] * extent.rows;
    if (bytes > MAX_BLOCK_BYTES) {
      return BlockLayout();
    }
  }
  layout.plane_count = plane_count;
  layout.bytes = static_cast<std::size_t>(bytes);
  return layout;
}

}  // namespace zo
