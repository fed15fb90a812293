#include "resize.h"

#include <cmath>
#include <vector>

namespace Simd {
namespace Detail {
namespace {

constexpr unsigned FRACTION_RANGE = 16;
constexpr unsigned RESULT_SHIFT = 8;  // both passes multiply by the range
constexpr unsigned ROUND = 1u << (RESULT_SHIFT - 1);

// Which two source pixels make a destination pixel, and how much of the second one.
struct Tap {
  size_t index;
  unsigned fraction;
};

std::vector<Tap> makeTaps(size_t source_size, size_t size) {
  std::vector<Tap> taps(size);
  const float scale = static_cast<float>(source_size) / static_cast<float>(size);
  for (size_t i = 0; i < size; ++i) {
    const float position = (static_cast<float>(i) + 0.5f) * scale - 0.5f;
    const float floor = std::floor(position);
    const auto index = static_cast<ptrdiff_t>(floor);
    if (index < 0) {
      taps[i] = {0, 0};
    } else if (static_cast<size_t>(index) > source_size - 2) {
      taps[i] = {source_size - 2, FRACTION_RANGE};
    } else {
      const float fraction = (position - floor) * FRACTION_RANGE;
      taps[i] = {static_cast<size_t>(index), static_cast<unsigned>(fraction + 0.5f)};
    }
  }
  return taps;
}

unsigned mix(unsigned first, unsigned second, unsigned fraction) {
  return first * (FRACTION_RANGE - fraction) + second * fraction;
}

}  // namespace

void resizeBilinear(const uint8_t* p_source, size_t source_width, size_t source_height,
                    uint8_t* p_destination, size_t width, size_t height) {
  const std::vector<Tap> columns = makeTaps(source_width, width);
  const std::vector<Tap> rows = makeTaps(source_height, height);
  for (size_t y = 0; y < height; ++y) {
    const uint8_t* p_upper = p_source + rows[y].index * source_width;
    const uint8_t* p_lower = p_upper + source_width;
    for (size_t x = 0; x < width; ++x) {
      const Tap tap = columns[x];
      const unsigned upper = mix(p_upper[tap.index], p_upper[tap.index + 1], tap.fraction);
      const unsigned lower = mix(p_lower[tap.index], p_lower[tap.index + 1], tap.fraction);
      *p_destination++ = static_cast<uint8_t>((mix(upper, lower, rows[y].fraction) + ROUND) >> RESULT_SHIFT);
    }
  }
}

void reduce2x2(const uint8_t* p_source, size_t width, size_t height, uint8_t* p_destination) {
  const size_t source_width = 2 * width;
  for (size_t y = 0; y < height; ++y, p_source += 2 * source_width) {
    for (size_t x = 0; x < width; ++x) {
      const uint8_t* p_block = p_source + 2 * x;
      const unsigned sum = p_block[0] + p_block[1] + p_block[source_width] + p_block[source_width + 1];
      *p_destination++ = static_cast<uint8_t>((sum + 2) >> 2);
    }
  }
}

}  // namespace Detail
}  // namespace Simd
