// Compiled like the bundled sources, in which the namespace Simd has another name.

#include <cstring>

#include "Simd/SimdFont.hpp"
#include "double_font.h"

void* createBundledFont(size_t height) {
  return new Simd::Font(height);
}

void deleteBundledFont(void* p_font) {
  delete static_cast<Simd::Font*>(p_font);
}

bool drawBundledFont(const void* p_font, const PlainCanvas& canvas, const std::string& text, ptrdiff_t x,
                     ptrdiff_t y, const void* p_color) {
  struct Color {
    uint8_t bytes[3];
  } color;
  memcpy(&color, p_color, sizeof color);
  Simd::Font::View view(canvas.width, canvas.height, canvas.stride, Simd::Font::View::Bgr24, canvas.p_pixels);
  return static_cast<const Simd::Font*>(p_font)->Draw(view, text, Simd::Font::Point(x, y), color);
}
