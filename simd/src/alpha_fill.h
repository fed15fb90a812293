#ifndef SIMD_SRC_ALPHA_FILL_H
#define SIMD_SRC_ALPHA_FILL_H

#include <cstddef>
#include <cstdint>

namespace Simd {
namespace Detail {

/// Blends a colour of 3 bytes over a row of pixels of 3 bytes, each in the proportion that the mask gives: 0
/// leaves the pixel as it is, 255 replaces it.
void fillRowByAlpha(const uint8_t* p_mask, size_t width, const uint8_t* p_color, uint8_t* p_pixels);

}  // namespace Detail
}  // namespace Simd

#endif
