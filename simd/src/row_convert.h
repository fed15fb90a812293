#ifndef SIMD_SRC_ROW_CONVERT_H
#define SIMD_SRC_ROW_CONVERT_H

#include <cstddef>
#include <cstdint>

#include "Simd/SimdLib.h"

namespace Simd {
namespace Detail {

/// Converts a row of pixels. Source and destination do not overlap.
using RowConverter = void (*)(const uint8_t* p_source, size_t width, uint8_t* p_destination);

/// Null when one of the formats is not Gray8, Bgr24, Bgra32 or Rgb24.
RowConverter rowConverter(SimdPixelFormatType from, SimdPixelFormatType to) noexcept;

}  // namespace Detail
}  // namespace Simd

#endif
