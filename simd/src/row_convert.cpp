#include "row_convert.h"

#include <cstring>

namespace Simd {
namespace Detail {
namespace {

// Where the channels of a pixel are.
struct Bgr {
  static constexpr size_t SIZE = 3, R = 2, G = 1, B = 0;
};
struct Bgra {
  static constexpr size_t SIZE = 4, R = 2, G = 1, B = 0;
};
struct Rgb {
  static constexpr size_t SIZE = 3, R = 0, G = 1, B = 2;
};

// Weights of the channels in grey (0.299, 0.587, 0.114) in 1/16384.
constexpr unsigned RED_WEIGHT = 4899;
constexpr unsigned GREEN_WEIGHT = 9617;
constexpr unsigned BLUE_WEIGHT = 1868;
constexpr unsigned WEIGHT_SHIFT = 14;
static_assert(RED_WEIGHT + GREEN_WEIGHT + BLUE_WEIGHT == 1u << WEIGHT_SHIFT, "white stays white");

template <class From, class To>
void convert(const uint8_t* p_source, size_t width, uint8_t* p_destination) {
  for (size_t x = 0; x < width; ++x, p_source += From::SIZE, p_destination += To::SIZE) {
    p_destination[To::R] = p_source[From::R];
    p_destination[To::G] = p_source[From::G];
    p_destination[To::B] = p_source[From::B];
    if (To::SIZE == 4) {
      p_destination[3] = 255;
    }
  }
}

template <class To>
void spreadGray(const uint8_t* p_source, size_t width, uint8_t* p_destination) {
  for (size_t x = 0; x < width; ++x, p_destination += To::SIZE) {
    p_destination[To::R] = p_destination[To::G] = p_destination[To::B] = p_source[x];
    if (To::SIZE == 4) {
      p_destination[3] = 255;
    }
  }
}

template <class From>
void mixGray(const uint8_t* p_source, size_t width, uint8_t* p_destination) {
  for (size_t x = 0; x < width; ++x, p_source += From::SIZE) {
    const unsigned sum = p_source[From::R] * RED_WEIGHT + p_source[From::G] * GREEN_WEIGHT +
                         p_source[From::B] * BLUE_WEIGHT + (1u << (WEIGHT_SHIFT - 1));
    p_destination[x] = static_cast<uint8_t>(sum >> WEIGHT_SHIFT);
  }
}

template <size_t SIZE>
void copy(const uint8_t* p_source, size_t width, uint8_t* p_destination) {
  memcpy(p_destination, p_source, width * SIZE);
}

template <class From>
RowConverter fromColor(SimdPixelFormatType to) {
  switch (to) {
    case SimdPixelFormatGray8:
      return mixGray<From>;
    case SimdPixelFormatBgr24:
      return convert<From, Bgr>;
    case SimdPixelFormatBgra32:
      return convert<From, Bgra>;
    case SimdPixelFormatRgb24:
      return convert<From, Rgb>;
    default:
      return nullptr;
  }
}

RowConverter fromGray(SimdPixelFormatType to) {
  switch (to) {
    case SimdPixelFormatGray8:
      return copy<1>;
    case SimdPixelFormatBgr24:
    case SimdPixelFormatRgb24:
      return spreadGray<Bgr>;
    case SimdPixelFormatBgra32:
      return spreadGray<Bgra>;
    default:
      return nullptr;
  }
}

}  // namespace

RowConverter rowConverter(SimdPixelFormatType from, SimdPixelFormatType to) noexcept {
  switch (from) {
    case SimdPixelFormatGray8:
      return fromGray(to);
    case SimdPixelFormatBgr24:
      return to == from ? copy<3> : fromColor<Bgr>(to);
    case SimdPixelFormatBgra32:
      return to == from ? copy<4> : fromColor<Bgra>(to);
    case SimdPixelFormatRgb24:
      return to == from ? copy<3> : fromColor<Rgb>(to);
    default:
      return nullptr;
  }
}

}  // namespace Detail
}  // namespace Simd
