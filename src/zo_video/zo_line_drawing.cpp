#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zo_drawing_check.h"
#include "zo_line_walk.h"
#include "zo_video/zo_drawing.h"

namespace zo {
namespace {

constexpr std::size_t PIXEL_BYTES = 3;

// Paints rows of pixels in one colour.
class Brush {
 public:
  Brush(Frame& frame, const unsigned char* p_color)
      : _p_pixels(frame.planeData(0)), _stride(frame.planeStride(0)), _size(frame.size()) {
    for (std::size_t i = 0; i < sizeof _block; ++i) {
      _block[i] = i < PIXEL_BYTES ? p_color[i] : _block[i - PIXEL_BYTES];
    }
  }

  void drawLine(Point p1, Point p2, int thickness) const;

 private:
  void paintSteep(const LineWalk& walk) const;
  void paintShallow(const LineWalk& walk) const;
  void paintWrapping(const LineWalk& walk) const;

  unsigned char* pixel(int64_t x, int64_t y) const {
    return _p_pixels + static_cast<std::size_t>(y) * _stride + static_cast<std::size_t>(x) * PIXEL_BYTES;
  }

  // Columns x_first to x_last of a row.
  void paintRow(int64_t x_first, int64_t x_last, int64_t y) const {
    if (x_first > x_last) {
      return;
    }
    unsigned char* p_next = pixel(x_first, y);
    std::size_t bytes = static_cast<std::size_t>(x_last - x_first + 1) * PIXEL_BYTES;
    for (; bytes >= sizeof _block; bytes -= sizeof _block, p_next += sizeof _block) {
      std::memcpy(p_next, _block, sizeof _block);
    }
    for (; bytes != 0; bytes -= PIXEL_BYTES, p_next += PIXEL_BYTES) {
      std::memcpy(p_next, _block, PIXEL_BYTES);
    }
  }

  void paintColumn(int64_t x, int64_t y_first, int64_t y_last) const {
    for (int64_t y = y_first; y <= y_last; ++y) {
      std::memcpy(pixel(x, y), _block, PIXEL_BYTES);
    }
  }

  unsigned char* _p_pixels;
  std::size_t _stride;
  Size _size;
  unsigned char _block[16 * PIXEL_BYTES];
};

// One row of pixels at every place along the line.
void Brush::paintSteep(const LineWalk& walk) const {
  int64_t start = walk.plainCrossStart(walk.first());
  int64_t error = walk.doubledErrorAt(walk.first());
  const int64_t length = static_cast<int64_t>(walk.thickness()) - 1;
  for (int64_t y = walk.first(); y <= walk.last(); ++y) {
    paintRow(std::max<int64_t>(start, 0), std::min<int64_t>(start + length, walk.crossLimit()), y);
    if (walk.advance(error)) {
      start += walk.step();
    }
  }
}

// Along the rows of the image instead of the line: a row is painted at those places where it is among the
// pixels across, which lie side by side.
void Brush::paintShallow(const LineWalk& walk) const {
  const int64_t length = static_cast<int64_t>(walk.thickness()) - 1;
  const int64_t first_start = walk.plainCrossStart(walk.first());
  const int64_t last_start = walk.plainCrossStart(walk.last());
  const bool down = walk.step() > 0;
  const int64_t y_first =
      down ? std::max<int64_t>(first_start, 0) : std::min<int64_t>(first_start + length, walk.crossLimit());
  const int64_t y_last =
      down ? std::min<int64_t>(last_start + length, walk.crossLimit()) : std::max<int64_t>(last_start, 0);
  // The row is the front pixel of the band after the one number of moves and no longer part of it after the
  // other.
  const int64_t front = walk.movesToReach(down ? y_first - length : y_first);
  LineWalk::Moves entry(walk, front);
  LineWalk::Moves exit(walk, front + length + 1);
  for (int64_t y = y_first; down ? y <= y_last : y >= y_last; y += walk.step()) {
    paintRow(std::max<int64_t>(entry.place(), walk.first()), std::min<int64_t>(exit.place() - 1, walk.last()),
             y);
    entry.next();
    exit.next();
  }
}

// Where coordinates wrap around, the pixels across may be two separate stretches of the image.
void Brush::paintWrapping(const LineWalk& walk) const {
  constexpr int64_t ALL_NUMBERS = int64_t(1) << 32;
  const auto paint = [&](int64_t along, int64_t cross_first, int64_t cross_last) {
    const int64_t last = std::min<int64_t>(cross_last, walk.crossLimit());
    walk.steep() ? paintRow(cross_first, last, along) : paintColumn(along, cross_first, last);
  };
  for (int64_t along = walk.first(); along <= walk.last(); ++along) {
    const int64_t start = static_cast<uint32_t>(walk.crossStart(static_cast<int32_t>(along)));
    const int64_t end = start + walk.thickness();
    paint(along, start, std::min(end, ALL_NUMBERS) - 1);
    paint(along, 0, end - ALL_NUMBERS - 1);
  }
}

void Brush::drawLine(Point p1, Point p2, int thickness) const {
  LineWalk walk;
  if (!walk.start(p1, p2, _size, static_cast<uint32_t>(thickness))) {
    return;
  }
  if (!walk.isPlain()) {
    paintWrapping(walk);
  } else if (walk.steep()) {
    paintSteep(walk);
  } else {
    paintShallow(walk);
  }
}

}  // namespace

void drawLine(Frame& frame, Point p1, Point p2, const unsigned char* color, int thickness) {
  checkDrawable(frame, "drawLine", 601);
  if (frame.initialized()) {
    Brush(frame, color).drawLine(p1, p2, thickness);
  }
}

void drawRect(Frame& frame, Rect rect, const unsigned char* color, int thickness) {
  checkDrawable(frame, "drawRect", 618);
  rect.crop(frame.size());
  if (!frame.initialized() || rect.width <= 0 || rect.height <= 0) {
    return;
  }
  const Brush brush(frame, color);
  const Point left_top(rect.x, rect.y);
  const Point right_top(rect.x + rect.width - 1, rect.y);
  const Point right_bottom(rect.x + rect.width - 1, rect.y + rect.height - 1);
  const Point left_bottom(rect.x, rect.y + rect.height - 1);
  brush.drawLine(left_top, right_top, thickness);
  brush.drawLine(right_top, right_bottom, thickness);
  brush.drawLine(right_bottom, left_bottom, thickness);
  brush.drawLine(left_bottom, left_top, thickness);
}

}  // namespace zo
