#ifndef SIMD_SRC_RESIZE_H
#define SIMD_SRC_RESIZE_H

#include <cstddef>
#include <cstdint>

namespace Simd {
namespace Detail {

/// Grey images of bytes, without padding between rows.

/// Scales bilinearly, in sixteenths of a pixel. Both images have at least 2 columns and 2 rows.
/// Throws std::bad_alloc.
void resizeBilinear(const uint8_t* p_source, size_t source_width, size_t source_height,
                    uint8_t* p_destination, size_t width, size_t height);

/// Averages blocks of 2 x 2 pixels, rounded up at one half. The destination may be the source.
/// @param width   Of the result.
/// @param height  Of the result.
void reduce2x2(const uint8_t* p_source, size_t width, size_t height, uint8_t* p_destination);

}  // namespace Detail
}  // namespace Simd

#endif
