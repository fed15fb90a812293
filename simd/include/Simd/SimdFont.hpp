#ifndef SIMD_SIMD_FONT_HPP
#define SIMD_SIMD_FONT_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "Simd/SimdLib.hpp"

namespace Simd {

/// The built-in monospaced font at one height, for the codes 32 to 126.
///
/// Glyphs are scaled when they are first drawn and kept as long as the font, so one font object serves one
/// thread at a time.
class Font {
 public:
  typedef Simd::View<Simd::Allocator> View;
  typedef Simd::Point<ptrdiff_t> Point;

  /// @param height  Of a line, in pixels. A font of a height outside 4 to 924 draws nothing.
  /// Throws std::bad_alloc.
  explicit Font(size_t height = 16);
  ~Font();

  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;

  /// Blends text over the canvas. A line feed starts a new line, 127 is a blank, other bytes outside 32 to
  /// 126 are skipped.
  /// @param canvas    3 bytes per pixel.
  /// @param position  Top left corner of the text box; it may lie outside the canvas.
  /// @param color     A structure of 3 bytes in the canvas's channel order.
  /// @return Whether the canvas and the font were fit for drawing.
  /// Throws std::bad_alloc.
  template <class Color>
  bool Draw(View& canvas, const std::string& text, const Point& position, const Color& color) const {
    static_assert(sizeof(Color) == 3, "a colour has one byte per channel");
    return draw(canvas, text, position, reinterpret_cast<const uint8_t*>(&color));
  }

 private:
  struct Impl;

  bool draw(View& canvas, const std::string& text, const Point& position, const uint8_t* p_color) const;

  std::unique_ptr<Impl> _p_impl;
};

}  // namespace Simd

#endif
