#ifndef SIMD_DOUBLE_SIMD_FONT_HPP
#define SIMD_DOUBLE_SIMD_FONT_HPP

#include <string>

#include "Simd/SimdLib.hpp"

namespace Simd {

class Font {
 public:
  typedef std::string String;
  typedef Simd::View<Simd::Allocator> View;
  typedef Simd::Point<ptrdiff_t> Point;

  Font(size_t height = 16);
  ~Font();
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;

  template <class Color>
  bool Draw(View& canvas, const String& text, const Point& position, const Color& color) const {
    static_assert(sizeof(Color) == 3, "3 channels");
    return drawBytes(canvas, text, position, &color);
  }

 private:
  bool drawBytes(View& canvas, const String& text, const Point& position, const void* p_color) const;

  void* _p_font;
};

}  // namespace Simd

#endif
