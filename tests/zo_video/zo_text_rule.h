#ifndef ZO_TESTS_ZO_VIDEO_ZO_TEXT_RULE_H
#define ZO_TESTS_ZO_VIDEO_ZO_TEXT_RULE_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "zo_guarded_canvas.h"
#include "zo_video/zo_drawing.h"

namespace zo {
namespace test {

/// The rules of text drawing written down step by step: scaling of the source glyphs, layout of the text, an
/// alpha image over the box around all visible letters, and blending under it. The source glyphs are taken
/// from drawText() itself, at the one height where they are not scaled.
class TextRule {
 public:
  static constexpr int SOURCE_WIDTH = 127;
  static constexpr int SOURCE_HEIGHT = 231;

  static int width(int height) { return SOURCE_WIDTH * height / SOURCE_HEIGHT; }
  static int indentX(int height) { return 33 * height / SOURCE_HEIGHT; }
  static int indentY(int height) { return 12 * height / SOURCE_HEIGHT; }

  struct Mask {
    int width = 0;
    int height = 0;
    std::vector<int> values;
    int at(int x, int y) const { return values[static_cast<std::size_t>(y * width + x)]; }
  };

  static Mask sourceGlyph(char symbol) {
    GuardedCanvas canvas({SOURCE_WIDTH, SOURCE_HEIGHT});
    for (int y = 0; y < SOURCE_HEIGHT; ++y) {
      for (int x = 0; x < SOURCE_WIDTH; ++x) {
        canvas.setPixel(x, y, {0, 0, 0});
      }
    }
    const Color white{255, 255, 255};
    drawText(canvas.frame, std::string(1, symbol), {-33, -12}, white.data(), SOURCE_HEIGHT);
    Mask mask{SOURCE_WIDTH, SOURCE_HEIGHT, {}};
    for (int y = 0; y < SOURCE_HEIGHT; ++y) {
      for (int x = 0; x < SOURCE_WIDTH; ++x) {
        mask.values.push_back(canvas.pixel(x, y)[0]);
      }
    }
    return mask;
  }

  const Mask& glyph(char symbol, int height) {
    Mask& mask = _scaled[{symbol, height}];
    if (mask.values.empty()) {
      Mask& source = _source[symbol];
      if (source.values.empty()) {
        source = sourceGlyph(symbol);
      }
      int level = 0;
      while (height * (1 << (level + 1)) < SOURCE_HEIGHT) {
        ++level;
      }
      mask = bilinear(source, width(height) << level, height << level);
      for (; level > 0; --level) {
        mask = halved(mask);
      }
    }
    return mask;
  }

  void paint(GuardedCanvas& target, const std::string& text, Point position, Color color, int height) {
    if (height < 4 || height > 4 * SOURCE_HEIGHT) {
      return;
    }
    struct Placed {
      char symbol;
      int64_t left, top;
    };
    std::vector<Placed> kept;
    int64_t cursor_x = 0;
    int64_t cursor_y = 0;
    for (const char character : text) {
      const auto code = static_cast<unsigned char>(character);
      if (code == 10) {
        cursor_x = 0;
        cursor_y += height;
      } else if (code >= 32 && code <= 127) {
        const int64_t left = int64_t(position.x) + indentX(height) + cursor_x;
        const int64_t top = int64_t(position.y) + indentY(height) + cursor_y;
        if (left < target.size().width && left + width(height) > 0 && top < target.size().height &&
            top + height > 0 && code != 127) {
          kept.push_back({character, left, top});
        }
        cursor_x += width(height);
      }
    }
    std::map<std::pair<int, int>, int> alpha;
    for (const Placed& placed : kept) {
      const Mask& mask = glyph(placed.symbol, height);
      for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < mask.width; ++x) {
          const int64_t at_x = placed.left + x;
          const int64_t at_y = placed.top + y;
          if (at_x >= 0 && at_x < target.size().width && at_y >= 0 && at_y < target.size().height) {
            alpha[{static_cast<int>(at_x), static_cast<int>(at_y)}] = mask.at(x, y);
          }
        }
      }
    }
    for (const auto& [at, a] : alpha) {
      Color pixel = target.pixel(at.first, at.second);
      for (std::size_t i = 0; i < 3; ++i) {
        const int v = color[i] * a + pixel[i] * (255 - a);
        pixel[i] = static_cast<unsigned char>((v + 1 + (v >> 8)) >> 8);
      }
      target.setPixel(at.first, at.second, pixel);
    }
  }

 private:
  struct Tap {
    int index;
    int fraction;
  };

  static Tap tap(int i, int source_size, int size) {
    const float scale = float(source_size) / float(size);
    const float p = (float(i) + 0.5f) * scale - 0.5f;
    const int index = static_cast<int>(std::floor(p));
    if (index < 0) {
      return {0, 0};
    }
    if (index > source_size - 2) {
      return {source_size - 2, 16};
    }
    return {index, static_cast<int>(std::floor((p - float(index)) * 16.0f + 0.5f))};
  }

  static Mask bilinear(const Mask& source, int width, int height) {
    Mask result{width, height, {}};
    for (int y = 0; y < height; ++y) {
      const Tap row = tap(y, source.height, height);
      for (int x = 0; x < width; ++x) {
        const Tap column = tap(x, source.width, width);
        const auto horizontal = [&](int at_y) {
          return source.at(column.index, at_y) * (16 - column.fraction) +
                 source.at(column.index + 1, at_y) * column.fraction;
        };
        const int sum =
            horizontal(row.index) * (16 - row.fraction) + horizontal(row.index + 1) * row.fraction;
        result.values.push_back((sum + 128) >> 8);
      }
    }
    return result;
  }

  static Mask halved(const Mask& source) {
    Mask result{source.width / 2, source.height / 2, {}};
    for (int y = 0; y < result.height; ++y) {
      for (int x = 0; x < result.width; ++x) {
        result.values.push_back((source.at(2 * x, 2 * y) + source.at(2 * x + 1, 2 * y) +
                                 source.at(2 * x, 2 * y + 1) + source.at(2 * x + 1, 2 * y + 1) + 2) >>
                                2);
      }
    }
    return result;
  }

  std::map<char, Mask> _source;
  std::map<std::pair<char, int>, Mask> _scaled;
};

}  // namespace test
}  // namespace zo

#endif
