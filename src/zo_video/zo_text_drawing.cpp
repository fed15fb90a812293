#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "Simd/SimdFont.hpp"
#include "Simd/SimdLib.hpp"
#include "zo_drawing_check.h"
#include "zo_video/zo_drawing.h"

namespace zo {
namespace {

constexpr int MIN_HEIGHT = 4;
constexpr int MAX_HEIGHT = 924;

struct Color {
  unsigned char bytes[3];
};

// The fonts of the heights that a thread used last. Scaling glyphs costs far more than drawing them.
class FontCache {
 public:
  // Larger fonts take too much memory to be kept: up to this height all glyphs together stay below a
  // megabyte.
  static constexpr int MAX_KEPT_HEIGHT = 140;

  const Simd::Font& get(int height) {
    const auto found = std::find_if(_entries.begin(), _entries.end(),
                                    [height](const Entry& entry) { return entry.height == height; });
    const auto place = found != _entries.end() ? found : _entries.end() - 1;
    if (found == _entries.end()) {
      place->height = 0;
      place->p_font = makeFont(height);
      place->height = height;
    }
    std::rotate(_entries.begin(), place, place + 1);
    return *_entries.front().p_font;
  }

  static std::unique_ptr<Simd::Font> makeFont(int height) {
    return std::unique_ptr<Simd::Font>(new Simd::Font(static_cast<std::size_t>(height)));
  }

 private:
  struct Entry {
    int height = 0;
    std::unique_ptr<Simd::Font> p_font;
  };

  std::array<Entry, 4> _entries;  // last used first
};

enum class Byte { DRAWN, BLANK, SKIPPED };

Byte kindOf(char character) {
  const auto code = static_cast<unsigned char>(character);
  if (code == 127) {
    return Byte::BLANK;  // printable, but no font has a picture of it
  }
  return code == '\n' || (code >= 32 && code < 127) ? Byte::DRAWN : Byte::SKIPPED;
}

// Leaves only bytes that every font can take: an installed one may stop at a zero, or look for a picture of
// 127.
std::string drawableText(const std::string& text) {
  std::string result;
  result.reserve(text.size());
  for (const char character : text) {
    switch (kindOf(character)) {
      case Byte::DRAWN:
        result += character;
        break;
      case Byte::BLANK:
        result += ' ';
        break;
      case Byte::SKIPPED:
        break;
    }
  }
  return result;
}

void draw(Frame& frame, const std::string& text, Point position, Color color, const Simd::Font& font) {
  // The colour is in the frame's own channel order, so any format of 3 bytes will do.
  Simd::Font::View canvas(
      static_cast<std::size_t>(frame.size().width), static_cast<std::size_t>(frame.size().height),
      static_cast<std::ptrdiff_t>(frame.planeStride(0)), Simd::Font::View::Bgr24, frame.planeData(0));
  const Simd::Font::Point at(position.x, position.y);
  const bool drawable =
      std::all_of(text.begin(), text.end(), [](char c) { return kindOf(c) == Byte::DRAWN; });
  font.Draw(canvas, drawable ? text : drawableText(text), at, color);
}

}  // namespace

void drawText(Frame& frame, const std::string& text, Point position, const unsigned char* color, int height) {
  checkDrawable(frame, "drawText", 643);
  // Text only goes right and down from its position.
  const Size size = frame.size();
  if (!frame.initialized() || height < MIN_HEIGHT || height > MAX_HEIGHT || position.x >= size.width ||
      position.y >= size.height) {
    return;
  }
  const Color bytes = {{color[0], color[1], color[2]}};
  if (height > FontCache::MAX_KEPT_HEIGHT) {
    draw(frame, text, position, bytes, *FontCache::makeFont(height));
    return;
  }
  static thread_local FontCache cache;
  draw(frame, text, position, bytes, cache.get(height));
}

}  // namespace zo
