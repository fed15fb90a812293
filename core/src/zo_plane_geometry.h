#ifndef ZO_CORE_ZO_PLANE_GEOMETRY_H
#define ZO_CORE_ZO_PLANE_GEOMETRY_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "zo_core/zo_frame_format.h"
#include "zo_core/zo_geometry.h"

namespace zo {

/// Number of planes of a format, 0 for a format without a layout.
unsigned formatPlaneCount(FrameFormat format) noexcept;

/// What a plane of an image needs, in 64 bits so that no product can wrap.
struct PlaneExtent {
  uint64_t row_bytes = 0;
  uint64_t rows = 0;
};

/// `plane` is below formatPlaneCount(format), both sides of `size` are above 0.
PlaneExtent planeExtent(FrameFormat format, Size size, unsigned plane) noexcept;

/// Where the planes of an image lie in one block of memory.
struct BlockLayout {
  unsigned plane_count = 0;
  std::array<unsigned, 4> strides{};
  std::array<std::size_t, 4> offsets{};
  std::size_t bytes = 0;
};

/// Boundary that every plane of an allocated block starts at, in bytes; also the default row alignment.
constexpr unsigned PLANE_ALIGNMENT = 64;

/// The layout of a block that the library allocates: rows aligned, planes aligned, one row and
/// PLANE_ALIGNMENT bytes of slack behind each plane. Throws std::bad_alloc when the block cannot exist in
/// memory.
BlockLayout allocationLayout(FrameFormat format, Size size, unsigned alignment);

/// The layout of a block that came from outside: planes packed one after another, stride x rows bytes each. A
/// format that the library knows no layout of has a plane for each stride up to the first 0, as high as the
/// image. No planes when the strides cannot hold the rows or the block cannot exist in memory.
BlockLayout packedLayout(FrameFormat format, Size size, const std::array<unsigned, 4>& strides) noexcept;

}  // namespace zo

#endif
