#include <cstdio>
#include <cstdlib>

#include "Simd/SimdFont.hpp"
#include "double_font.h"

namespace Simd {

Font::Font(size_t height) : _p_font(createBundledFont(height)) {}

Font::~Font() {
  deleteBundledFont(_p_font);
}

// Installed fonts are not as careful as the bundled one: a text may end at a zero byte, and for byte 127
// there is no glyph.
bool Font::drawBytes(View& canvas, const String& text, const Point& position, const void* p_color) const {
  const String visible(text.c_str());
  if (visible.find('\x7F') != String::npos) {
    fprintf(stderr, "Simd::Font: no glyph for byte 127\n");
    abort();
  }
  return drawBundledFont(_p_font, {canvas.width, canvas.height, canvas.stride, canvas.data}, visible,
                         position.x, position.y, p_color);
}

}  // namespace Simd
