#ifndef SIMD_DOUBLE_SIMD_LIB_HPP
#define SIMD_DOUBLE_SIMD_LIB_HPP

#include "Simd/SimdLib.h"

namespace Simd {

template <typename T>
struct Point {
  T x, y;
  Point() : x(0), y(0) {}
  template <typename TX, typename TY>
  Point(TX tx, TY ty) : x(static_cast<T>(tx)), y(static_cast<T>(ty)) {}
};

template <class T>
struct Allocator {};

// Views over outside pixels only.
template <template <class> class A>
struct View {
  enum Format {
    None = 0,
    Gray8,
    Uv16,
    Bgr24,
    Bgra32,
    Rgb24 = 16,
  };

  const size_t width;
  const size_t height;
  const ptrdiff_t stride;
  const Format format;
  uint8_t* const data;

  View(size_t w, size_t h, ptrdiff_t s, Format f, void* d)
      : width(w), height(h), stride(s), format(f), data(static_cast<uint8_t*>(d)) {}
};

}  // namespace Simd

#endif
