#ifndef ZO_TESTS_SIMD_SYSTEM_DOUBLE_FONT_H
#define ZO_TESTS_SIMD_SYSTEM_DOUBLE_FONT_H

#include <cstddef>
#include <cstdint>
#include <string>

// The bundled font behind plain types: its headers and those of the stand-in cannot meet in one source file.
struct PlainCanvas {
  size_t width;
  size_t height;
  ptrdiff_t stride;
  uint8_t* p_pixels;
};

void* createBundledFont(size_t height);
void deleteBundledFont(void* p_font);
bool drawBundledFont(const void* p_font, const PlainCanvas& canvas, const std::string& text, ptrdiff_t x,
                     ptrdiff_t y, const void* p_color);

#endif
