#include "Simd/SimdFont.hpp"

#include <algorithm>
#include <vector>

#include "alpha_fill.h"
#include "font_glyphs.h"
#include "resize.h"

namespace Simd {
namespace {

using namespace Detail;

constexpr size_t MIN_HEIGHT = 4;
constexpr size_t MAX_HEIGHT = 4 * SOURCE_HEIGHT;
constexpr size_t PIXEL_BYTES = 3;
constexpr uint8_t LINE_FEED = 10;
constexpr unsigned BLANK_SYMBOL = LAST_SYMBOL + 1;

using Mask = std::unique_ptr<uint8_t[]>;

// Scales a glyph down in steps: bilinearly to a size between the full and the half one, then by halves.
Mask scaleGlyph(size_t index, size_t width, size_t height) {
  unsigned level = 0;
  while (height << (level + 1) < SOURCE_HEIGHT) {
    ++level;
  }
  std::vector<uint8_t> source(SOURCE_WIDTH * SOURCE_HEIGHT);
  unpackGlyph(index, source.data());
  const size_t scaled_width = width << level;
  const size_t scaled_height = height << level;
  Mask mask(new uint8_t[scaled_width * scaled_height]);
  resizeBilinear(source.data(), SOURCE_WIDTH, SOURCE_HEIGHT, mask.get(), scaled_width, scaled_height);
  if (level == 0) {
    return mask;
  }
  while (level > 0) {
    --level;
    reduce2x2(mask.get(), width << level, height << level, mask.get());
  }
  Mask small(new uint8_t[width * height]);
  std::copy_n(mask.get(), width * height, small.get());
  return small;
}

// The part of a box of the given size at `start` that lies in 0..limit - 1, relative to the box.
struct Span {
  Span(int64_t start, int64_t size, int64_t limit)
      : first(std::max<int64_t>(0, -start)), last(std::min(size, limit - start)) {}
  bool empty() const { return first >= last; }

  int64_t first;
  int64_t last;  // one behind
};

}  // namespace

struct Font::Impl {
  explicit Impl(size_t font_height)
      : height(font_height),
        width(SOURCE_WIDTH * font_height / SOURCE_HEIGHT),
        indent_x(SOURCE_INDENT_X * font_height / SOURCE_HEIGHT),
        indent_y(SOURCE_INDENT_Y * font_height / SOURCE_HEIGHT) {}

  const uint8_t* glyph(size_t index) {
    if (!glyphs[index]) {
      glyphs[index] = scaleGlyph(index, width, height);
    }
    return glyphs[index].get();
  }

  template <class Visit>
  void layOut(const View& canvas, const std::string& text, const Point& position, const Visit& visit) const;

  const size_t height;
  const size_t width;
  const size_t indent_x;
  const size_t indent_y;
  Mask glyphs[SYMBOL_COUNT];  // scaled when first needed
};

Font::Font(size_t height) {
  if (height >= MIN_HEIGHT && height <= MAX_HEIGHT) {
    _p_impl.reset(new Impl(height));
  }
}

Font::~Font() = default;

// Calls visit(symbol's number, columns, rows, x, y) for every glyph of which something is to be seen.
template <class Visit>
void Font::Impl::layOut(const View& canvas, const std::string& text, const Point& position,
                        const Visit& visit) const {
  const auto glyph_width = static_cast<int64_t>(width);
  const auto glyph_height = static_cast<int64_t>(height);
  const auto canvas_width = static_cast<int64_t>(canvas.width);
  const auto canvas_height = static_cast<int64_t>(canvas.height);
  const int64_t left = static_cast<int64_t>(position.x) + static_cast<int64_t>(indent_x);
  int64_t x = left;
  int64_t y = static_cast<int64_t>(position.y) + static_cast<int64_t>(indent_y);
  for (const char character : text) {
    const auto symbol = static_cast<uint8_t>(character);
    if (symbol == LINE_FEED) {
      x = left;
      y += glyph_height;
      if (y >= canvas_height) {
        break;
      }
    }
    if (symbol < FIRST_SYMBOL || symbol > BLANK_SYMBOL) {
      continue;
    }
    const Span columns(x, glyph_width, canvas_width);
    const Span rows(y, glyph_height, canvas_height);
    if (symbol != FIRST_SYMBOL && symbol != BLANK_SYMBOL && !columns.empty() && !rows.empty()) {
      visit(static_cast<size_t>(symbol - FIRST_SYMBOL), columns, rows, x, y);
    }
    x += glyph_width;
  }
}

bool Font::draw(View& canvas, const std::string& text, const Point& position, const uint8_t* p_color) const {
  if (!_p_impl || canvas.data == nullptr || View::PixelSize(canvas.format) != PIXEL_BYTES) {
    return false;
  }
  Impl& impl = *_p_impl;
  // All glyphs first: where there is no memory for one of them, nothing is drawn.
  impl.layOut(canvas, text, position,
              [&](size_t index, const Span&, const Span&, int64_t, int64_t) { impl.glyph(index); });
  const auto width = static_cast<int64_t>(impl.width);
  const auto drawGlyph = [&](size_t index, const Span& columns, const Span& rows, int64_t x, int64_t y) {
    const uint8_t* p_mask = impl.glyph(index);
    for (int64_t row = rows.first; row < rows.last; ++row) {
      uint8_t* p_pixels = canvas.data + static_cast<ptrdiff_t>(y + row) * canvas.stride +
                          static_cast<ptrdiff_t>(x + columns.first) * static_cast<ptrdiff_t>(PIXEL_BYTES);
      fillRowByAlpha(p_mask + row * width + columns.first, static_cast<size_t>(columns.last - columns.first),
                     p_color, p_pixels);
    }
  };
  impl.layOut(canvas, text, position, drawGlyph);
  return true;
}

}  // namespace Simd
