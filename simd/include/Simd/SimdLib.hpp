#ifndef SIMD_SIMD_LIB_HPP
#define SIMD_SIMD_LIB_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "Simd/SimdLib.h"

namespace Simd {

template <class T>
struct Point {
  T x = 0;
  T y = 0;

  Point() = default;
  Point(T x_, T y_) : x(x_), y(y_) {}
};

/// Aligned memory for images.
template <class T>
struct Allocator {
  static void* Allocate(size_t size, size_t alignment) {
    void* p_memory = nullptr;
    if (posix_memalign(&p_memory, alignment, size) != 0) {
      throw std::bad_alloc();
    }
    return p_memory;
  }

  static void Free(void* p_memory) { free(p_memory); }

  /// Suits every vector unit in use.
  static size_t Alignment() { return 64; }
};

/// An image: its size, its format and where its pixels are.
template <template <class> class A>
struct View {
  enum Format {
    None = SimdPixelFormatNone,
    Gray8 = SimdPixelFormatGray8,
    Uv16 = SimdPixelFormatUv16,
    Bgr24 = SimdPixelFormatBgr24,
    Bgra32 = SimdPixelFormatBgra32,
    Rgb24 = SimdPixelFormatRgb24
  };

  const size_t width;
  const size_t height;
  const ptrdiff_t stride;
  const Format format;
  uint8_t* const data;

  /// A view over outside pixels. With a null pointer and nothing else zero, the view gets pixels of its own
  /// for its lifetime. Throws std::bad_alloc.
  View(size_t width_, size_t height_, ptrdiff_t stride_, Format format_, void* data_)
      : width(width_),
        height(height_),
        stride(stride_),
        format(format_),
        data(static_cast<uint8_t*>(data_ ? data_ : ownPixels(width_, height_, stride_, format_))),
        _owner(data_ == nullptr) {}

  View(const View&) = delete;
  View& operator=(const View&) = delete;

  ~View() {
    if (_owner) {
      A<uint8_t>::Free(data);
    }
  }

  static size_t PixelSize(Format format) {
    switch (format) {
      case Gray8:
        return 1;
      case Uv16:
        return 2;
      case Bgr24:
      case Rgb24:
        return 3;
      case Bgra32:
        return 4;
      case None:
        break;
    }
    return 0;
  }

 private:
  static void* ownPixels(size_t width, size_t height, ptrdiff_t stride, Format format) {
    if (width == 0 || height == 0 || stride <= 0 || format == None) {
      return nullptr;
    }
    if (height > SIZE_MAX / static_cast<size_t>(stride)) {
      throw std::bad_alloc();
    }
    return A<uint8_t>::Allocate(height * static_cast<size_t>(stride), A<uint8_t>::Alignment());
  }

  bool _owner;
};

}  // namespace Simd

#endif
