#include <algorithm>
#include <array>
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
  template <class Paint>
  void paintInside(const LineWalk& walk, const Paint& paint) const;
  bool paintThin(const LineWalk& walk) const;
  template <std::size_t THICKNESS>
  bool paintThinOf(const LineWalk& walk) const;

  template <std::size_t BYTES>
  std::array<unsigned char, BYTES> blockOf() const {
    std::array<unsigned char, BYTES> result;
    std::memcpy(result.data(), _block, BYTES);
    return result;
  }

  unsigned char* pixel(int64_t x, int64_t y) const {
    return _p_pixels + static_cast<std::size_t>(y) * _stride + static_cast<std::size_t>(x) * PIXEL_BYTES;
  }

  // Columns x_first to x_last of a row.
  void paintRow(int64_t x_first, int64_t x_last, int64_t y) const {
    if (x_first <= x_last) {
      fill(pixel(x_first, y), static_cast<std::size_t>(x_last - x_first + 1) * PIXEL_BYTES);
    }
  }

  // Whole pixels, in pieces of fixed sizes. The last piece may overlap the one before: all sizes are whole
  // pixels, so both write the same there.
  void fill(unsigned char* p_begin, std::size_t bytes) const {
    if (bytes >= sizeof _block) {
      std::size_t done = 0;
      for (; done + sizeof _block <= bytes; done += sizeof _block) {
        put<sizeof _block>(p_begin + done);
      }
      put<sizeof _block>(p_begin + bytes - sizeof _block);
    } else if (bytes >= 8 * PIXEL_BYTES) {
      putTwice<8 * PIXEL_BYTES>(p_begin, bytes);
    } else if (bytes >= 4 * PIXEL_BYTES) {
      putTwice<4 * PIXEL_BYTES>(p_begin, bytes);
    } else if (bytes >= 2 * PIXEL_BYTES) {
      putTwice<2 * PIXEL_BYTES>(p_begin, bytes);
    } else {
      put<PIXEL_BYTES>(p_begin);
    }
  }

  template <std::size_t BYTES>
  void put(unsigned char* p_begin) const {
    std::memcpy(p_begin, _block, BYTES);
  }
  template <std::size_t BYTES>
  void putTwice(unsigned char* p_begin, std::size_t bytes) const {
    put<BYTES>(p_begin);
    put<BYTES>(p_begin + bytes - BYTES);
  }

  void paintColumn(int64_t x, int64_t y_first, int64_t y_last) const {
    for (int64_t y = y_first; y <= y_last; ++y) {
      put<PIXEL_BYTES>(pixel(x, y));
    }
  }

  unsigned char* _p_pixels;
  std::size_t _stride;
  Size _size;
  unsigned char _block[16 * PIXEL_BYTES];
};

// Goes along a line that lies inside the image with all its pixels across, and calls paint(first pixel
// across).
template <class Paint>
void Brush::paintInside(const LineWalk& walk, const Paint& paint) const {
  const auto stride = static_cast<std::ptrdiff_t>(_stride);
  const auto pixel_bytes = static_cast<std::ptrdiff_t>(PIXEL_BYTES);
  const std::ptrdiff_t along = walk.steep() ? stride : pixel_bytes;
  const std::ptrdiff_t across = walk.step() * (walk.steep() ? pixel_bytes : stride);
  const int64_t start = walk.plainCrossStart(walk.first());
  int64_t error = walk.doubledErrorAt(walk.first());
  unsigned char* p_next = walk.steep() ? pixel(start, walk.first()) : pixel(walk.first(), start);
  for (int64_t places = static_cast<int64_t>(walk.last()) - walk.first();; --places) {
    paint(p_next);
    if (places == 0) {
      return;
    }
    p_next += along;
    if (walk.advance(error)) {
      p_next += across;
    }
  }
}

// Lines inside the image that are best painted place by place. False for all others.
bool Brush::paintThin(const LineWalk& walk) const {
  const int64_t length = static_cast<int64_t>(walk.thickness()) - 1;
  for (const int32_t along : {walk.first(), walk.last()}) {
    const int64_t start = walk.plainCrossStart(along);
    if (start < 0 || start + length > walk.crossLimit()) {
      return false;
    }
  }
  switch (walk.thickness()) {
    case 1:
      return paintThinOf<1>(walk);
    case 2:
      return paintThinOf<2>(walk);
    case 3:
      return paintThinOf<3>(walk);
    case 4:
      return paintThinOf<4>(walk);
    case 5:
      return paintThinOf<5>(walk);
    case 6:
      return paintThinOf<6>(walk);
    case 7:
      return paintThinOf<7>(walk);
    default:
      break;
  }
  if (walk.steep()) {
    const std::size_t bytes = walk.thickness() * PIXEL_BYTES;
    paintInside(walk, [this, bytes](unsigned char* p) { fill(p, bytes); });
  }
  return walk.steep();
}

template <std::size_t THICKNESS>
bool Brush::paintThinOf(const LineWalk& walk) const {
  constexpr uint32_t WORTH_A_ROW = 8;
  const std::array<unsigned char, THICKNESS* PIXEL_BYTES> color = blockOf<THICKNESS * PIXEL_BYTES>();
  if (walk.steep()) {
    paintInside(walk, [color](unsigned char* p) { std::memcpy(p, color.data(), color.size()); });
    return true;
  }
  if (walk.meetsInARow(WORTH_A_ROW)) {
    return false;
  }
  paintInside(walk, [color, stride = _stride](unsigned char* p) {
    for (std::size_t i = 0; i < THICKNESS; ++i) {
      std::memcpy(p + i * stride, color.data(), PIXEL_BYTES);
    }
  });
  return true;
}

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
  int64_t rows = (y_last - y_first) * walk.step() + 1;
  if (rows <= 0) {
    return;
  }
  // The row is the front pixel of the band after the one number of moves and no longer part of it after the
  // other.
  const int64_t front = walk.movesToReach(down ? y_first - length : y_first);
  const LineWalk::Pace pace = walk.pace();
  LineWalk::Move entry = walk.move(front);
  LineWalk::Move exit = walk.move(front + length + 1);
  const int64_t first = walk.first();
  const int64_t behind = static_cast<int64_t>(walk.last()) + 1;
  const std::ptrdiff_t row_step = walk.step() * static_cast<std::ptrdiff_t>(_stride);
  unsigned char* p_row = pixel(0, y_first);
  for (; rows > 0; --rows, p_row += row_step) {
    const int64_t begin = std::max(entry.place, first);
    const int64_t end = std::min(exit.place, behind);
    if (begin < end) {
      fill(p_row + static_cast<std::size_t>(begin) * PIXEL_BYTES,
           static_cast<std::size_t>(end - begin) * PIXEL_BYTES);
    }
    walk.next(entry, pace);
    walk.next(exit, pace);
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
  } else if (paintThin(walk)) {
    return;
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
