#ifndef ZO_TESTS_ZO_VIDEO_ZO_LINE_RULE_H
#define ZO_TESTS_ZO_VIDEO_ZO_LINE_RULE_H

#include <cstdint>
#include <cstdlib>
#include <utility>

#include "zo_guarded_canvas.h"

namespace zo {
namespace test {

/// The line rule written down pixel by pixel, in 32-bit numbers that wrap around, with a check in front of
/// every write. Slow: one step for every place along the line, in the picture or not.
class LineRule {
 public:
  /// Places along the line that the rule would visit; painting is only sensible for a number that is not
  /// huge.
  static int64_t placesToWalk(Size size, Point p1, Point p2) {
    LineRule rule(p1, p2);
    return rule.clip(size.width - 1, size.height - 1) ? rule.orient() : 0;
  }

  static void paint(GuardedCanvas& target, Point p1, Point p2, Color color, int thickness) {
    LineRule rule(p1, p2);
    const int32_t w = target.size().width - 1;
    const int32_t h = target.size().height - 1;
    if (rule.clip(w, h)) {
      rule.orient();
      rule.walk(target, w, h, color, static_cast<uint32_t>(thickness));
    }
  }

 private:
  LineRule(Point p1, Point p2) : x1(p1.x), y1(p1.y), x2(p2.x), y2(p2.y) {}

  static int32_t low(int64_t value) { return static_cast<int32_t>(static_cast<uint32_t>(value)); }
  static int32_t minus(int32_t a, int32_t b) { return low(static_cast<int64_t>(a) - b); }
  static int32_t plus(int32_t a, int32_t b) { return low(static_cast<int64_t>(a) + b); }
  static int32_t times(int32_t a, int32_t b) { return low(static_cast<int64_t>(a) * b); }
  static int32_t over(int32_t a, int32_t b) { return low(static_cast<int64_t>(a) / b); }
  static int32_t size(int32_t a) { return low(std::llabs(a)); }

  bool clip(int32_t w, int32_t h) {
    if (0 <= x1 && x1 <= w && 0 <= x2 && x2 <= w && 0 <= y1 && y1 <= h && 0 <= y2 && y2 <= h) return true;
    if (x1 < 0 && x2 < 0) return false;
    if (y1 < 0 && y2 < 0) return false;
    if (x1 > w && x2 > w) return false;
    if (y1 > h && y2 > h) return false;
    if (y1 == y2) {
      x1 = x1 < 0 ? 0 : x1 > w ? w : x1;
      x2 = x2 < 0 ? 0 : x2 > w ? w : x2;
    } else if (x1 == x2) {
      y1 = y1 < 0 ? 0 : y1 > h ? h : y1;
      y2 = y2 < 0 ? 0 : y2 > h ? h : y2;
    } else {
      const int32_t y0 = over(minus(times(x2, y1), times(x1, y2)), minus(x2, x1));
      const int32_t yw =
          over(plus(minus(times(x2, y1), times(x1, y2)), times(w, minus(y2, y1))), minus(x2, x1));
      const int32_t x0 = over(minus(times(x1, y2), times(x2, y1)), minus(y2, y1));
      const int32_t xh =
          over(plus(minus(times(x1, y2), times(x2, y1)), times(h, minus(x2, x1))), minus(y2, y1));
      if (x1 < 0) x1 = 0, y1 = y0;
      if (x2 < 0) x2 = 0, y2 = y0;
      if (x1 > w) x1 = w, y1 = yw;
      if (x2 > w) x2 = w, y2 = yw;
      if ((y1 < 0 && y2 < 0) || (y1 > h && y2 > h)) return false;
      if (y1 < 0) x1 = x0, y1 = 0;
      if (y2 < 0) x2 = x0, y2 = 0;
      if (y1 > h) x1 = xh, y1 = h;
      if (y2 > h) x2 = xh, y2 = h;
    }
    return true;
  }

  int64_t orient() {
    steep = size(minus(y2, y1)) > size(minus(x2, x1));
    if (steep) {
      std::swap(x1, y1);
      std::swap(x2, y2);
    }
    if (x1 > x2) {
      std::swap(x1, x2);
      std::swap(y1, y2);
    }
    return static_cast<int64_t>(x2) - x1 + 1;
  }

  void walk(GuardedCanvas& target, int32_t w, int32_t h, Color color, uint32_t t) const {
    const double dx = minus(x2, x1);
    const double dy = size(minus(y2, y1));
    double error = dx * 0.5;
    const int32_t ystep = y2 > y1 ? 1 : -1;
    int32_t s = minus(y1, static_cast<int32_t>(t / 2));
    const int32_t along_limit = steep ? h : w;
    const int32_t cross_limit = steep ? w : h;
    for (int64_t x = x1; x <= x2; ++x) {
      if (x >= 0 && x <= along_limit) {
        // The same as counting i from 0 to t - 1 and skipping s + i outside the picture.
        for (int32_t y = 0; y <= cross_limit; ++y) {
          if (static_cast<uint32_t>(minus(y, s)) < t) {
            steep ? target.setPixel(y, static_cast<int>(x), color)
                  : target.setPixel(static_cast<int>(x), y, color);
          }
        }
      }
      error -= dy;
      if (error < 0) {
        s = plus(s, ystep);
        error += dx;
      }
    }
  }

  int32_t x1, y1, x2, y2;
  bool steep = false;
};

}  // namespace test
}  // namespace zo

#endif
