#include "alpha_fill.h"

namespace Simd {
namespace Detail {
namespace {

constexpr size_t CHANNELS = 3;
constexpr unsigned OPAQUE = 255;

// value / 255, rounded down, for values up to 255 * 255.
unsigned divideBy255(unsigned value) {
  return (value + 1 + (value >> 8)) >> 8;
}

}  // namespace

void fillRowByAlpha(const uint8_t* p_mask, size_t width, const uint8_t* p_color, uint8_t* p_pixels) {
  for (size_t x = 0; x < width; ++x, p_pixels += CHANNELS) {
    const unsigned alpha = p_mask[x];
    if (alpha == 0) {
      continue;
    }
    for (size_t channel = 0; channel < CHANNELS; ++channel) {
      const unsigned mixed = p_color[channel] * alpha + p_pixels[channel] * (OPAQUE - alpha);
      p_pixels[channel] = static_cast<uint8_t>(divideBy255(mixed));
    }
  }
}

}  // namespace Detail
}  // namespace Simd
