#include "image.h"

#include "row_convert.h"

namespace Simd {
namespace Detail {
namespace {

// Rows and pixels start at multiples of this, for the vector units of whoever works on the pixels.
constexpr size_t ALIGNMENT = 64;

}  // namespace

Memory allocate(size_t size) noexcept {
  void* p_memory = nullptr;
  if (posix_memalign(&p_memory, ALIGNMENT, size) != 0) {
    return nullptr;
  }
  return Memory(static_cast<uint8_t*>(p_memory));
}

size_t pixelSize(SimdPixelFormatType format) noexcept {
  switch (format) {
    case SimdPixelFormatGray8:
      return 1;
    case SimdPixelFormatBgr24:
    case SimdPixelFormatRgb24:
      return 3;
    case SimdPixelFormatBgra32:
      return 4;
    default:
      return 0;
  }
}

bool Image::create(SimdPixelFormatType format, uint64_t width, uint64_t height) noexcept {
  const size_t pixel_size = pixelSize(format);
  if (pixel_size == 0 || width == 0 || height == 0 || width > MAX_SIDE || height > MAX_SIDE) {
    return false;
  }
  const uint64_t stride = (width * pixel_size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
  if (stride * height > MAX_BYTES) {
    return false;
  }
  _pixels = allocate(static_cast<size_t>(stride * height));
  _stride = static_cast<size_t>(stride);
  _width = static_cast<size_t>(width);
  _height = static_cast<size_t>(height);
  _format = format;
  return _pixels != nullptr;
}

bool Image::convertTo(SimdPixelFormatType format, Image& destination) const noexcept {
  const RowConverter convert = rowConverter(_format, format);
  if (convert == nullptr || !destination.create(format, _width, _height)) {
    return false;
  }
  for (size_t y = 0; y < _height; ++y) {
    convert(row(y), _width, destination.row(y));
  }
  return true;
}

}  // namespace Detail
}  // namespace Simd
