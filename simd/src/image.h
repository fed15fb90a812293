#ifndef SIMD_SRC_IMAGE_H
#define SIMD_SRC_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "Simd/SimdLib.h"

namespace Simd {
namespace Detail {

struct FreeMemory {
  void operator()(void* p_memory) const noexcept { free(p_memory); }
};
using Memory = std::unique_ptr<uint8_t, FreeMemory>;

/// Null when there is no memory.
Memory allocate(size_t size) noexcept;

/// Bytes of a pixel; 0 for formats that images in files cannot have.
size_t pixelSize(SimdPixelFormatType format) noexcept;

/// An image in someone else's memory.
struct ImageView {
  const uint8_t* p_pixels;
  size_t stride;
  size_t width;
  size_t height;
  SimdPixelFormatType format;
};

/// An image with pixels of its own.
class Image {
 public:
  /// Longest side of an image. It leaves room to multiply sides, and no real picture is near it.
  static constexpr uint32_t MAX_SIDE = 1u << 24;
  /// Most bytes of pixels, so that sizes and offsets fit 32-bit types everywhere.
  static constexpr uint64_t MAX_BYTES = 0x7FFFFFFF;

  /// False when the size is 0 or beyond the limits, for an unknown format, or without memory.
  bool create(SimdPixelFormatType format, uint64_t width, uint64_t height) noexcept;

  /// Converts into another image with the same size. False without memory or for an unknown format.
  bool convertTo(SimdPixelFormatType format, Image& destination) const noexcept;

  uint8_t* row(size_t y) noexcept { return _pixels.get() + y * _stride; }
  const uint8_t* row(size_t y) const noexcept { return _pixels.get() + y * _stride; }
  size_t stride() const noexcept { return _stride; }
  size_t width() const noexcept { return _width; }
  size_t height() const noexcept { return _height; }
  SimdPixelFormatType format() const noexcept { return _format; }

  /// Hands the pixels over to the caller.
  uint8_t* release() noexcept { return _pixels.release(); }

 private:
  Memory _pixels;
  size_t _stride = 0;
  size_t _width = 0;
  size_t _height = 0;
  SimdPixelFormatType _format = SimdPixelFormatNone;
};

}  // namespace Detail
}  // namespace Simd

#endif
