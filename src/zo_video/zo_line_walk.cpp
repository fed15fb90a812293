#include "zo_line_walk.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zo {
namespace {

// 32-bit arithmetic that wraps around.
int32_t wrap(uint32_t value) {
  return static_cast<int32_t>(value);
}
int32_t add(int32_t a, int32_t b) {
  return wrap(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
int32_t subtract(int32_t a, int32_t b) {
  return wrap(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
int32_t multiply(int32_t a, int32_t b) {
  return wrap(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
int32_t divide(int32_t a, int32_t b) {
  return b == -1 ? subtract(0, a) : a / b;
}
int32_t absolute(int32_t a) {
  return a < 0 ? subtract(0, a) : a;
}

// The coordinate at which the line through two points meets an edge of the image: the one across the edge's
// direction, of which p, q are the same and a, b the other coordinates of the points.
int32_t crossing(int32_t a1, int32_t b1, int32_t a2, int32_t b2, int32_t edge) {
  const int32_t at_zero = subtract(multiply(a2, b1), multiply(a1, b2));
  const int32_t rise = multiply(edge, subtract(b2, b1));
  return divide(add(at_zero, rise), subtract(a2, a1));
}

// Moves the points of a slanting line to the borders of the image, as far as its rule goes: they may still
// lie outside afterwards. False when nothing of the line is inside.
bool clipSlanting(Point& p1, Point& p2, int32_t w, int32_t h) {
  const int32_t y_left = crossing(p1.x, p1.y, p2.x, p2.y, 0);
  const int32_t y_right = crossing(p1.x, p1.y, p2.x, p2.y, w);
  const int32_t x_top = crossing(p1.y, p1.x, p2.y, p2.x, 0);
  const int32_t x_bottom = crossing(p1.y, p1.x, p2.y, p2.x, h);
  for (Point* p_point : {&p1, &p2}) {
    if (p_point->x < 0) {
      *p_point = Point(0, y_left);
    }
  }
  for (Point* p_point : {&p1, &p2}) {
    if (p_point->x > w) {
      *p_point = Point(w, y_right);
    }
  }
  if ((p1.y < 0 && p2.y < 0) || (p1.y > h && p2.y > h)) {
    return false;
  }
  for (Point* p_point : {&p1, &p2}) {
    if (p_point->y < 0) {
      *p_point = Point(x_top, 0);
    }
  }
  for (Point* p_point : {&p1, &p2}) {
    if (p_point->y > h) {
      *p_point = Point(x_bottom, h);
    }
  }
  return true;
}

bool isInside(Point point, int32_t w, int32_t h) {
  return point.x >= 0 && point.x <= w && point.y >= 0 && point.y <= h;
}

bool clip(Point& p1, Point& p2, int32_t w, int32_t h) {
  if (isInside(p1, w, h) && isInside(p2, w, h)) {
    return true;
  }
  if ((p1.x < 0 && p2.x < 0) || (p1.y < 0 && p2.y < 0) || (p1.x > w && p2.x > w) || (p1.y > h && p2.y > h)) {
    return false;
  }
  if (p1.y == p2.y) {
    p1.x = std::clamp(p1.x, 0, w);
    p2.x = std::clamp(p2.x, 0, w);
    return true;
  }
  if (p1.x == p2.x) {
    p1.y = std::clamp(p1.y, 0, h);
    p2.y = std::clamp(p2.y, 0, h);
    return true;
  }
  return clipSlanting(p1, p2, w, h);
}

}  // namespace

bool LineWalk::start(Point p1, Point p2, Size image, uint32_t thickness) {
  const int32_t w = image.width - 1;
  const int32_t h = image.height - 1;
  if (thickness == 0 || !clip(p1, p2, w, h)) {
    return false;
  }
  _steep = absolute(subtract(p2.y, p1.y)) > absolute(subtract(p2.x, p1.x));
  if (_steep) {
    std::swap(p1.x, p1.y);
    std::swap(p2.x, p2.y);
  }
  if (p1.x > p2.x) {
    std::swap(p1, p2);
  }
  _from = p1.x;
  _to = p2.x;
  _cross_from = p1.y;
  _length = subtract(p2.x, p1.x);
  _cross_length = absolute(subtract(p2.y, p1.y));
  _step = p2.y > p1.y ? 1 : -1;
  _cross_limit = _steep ? w : h;
  _first = std::max(_from, 0);
  _last = std::min(_to, _steep ? h : w);
  _thickness = thickness;
  return _first <= _last;
}

// The rule starts with half the length as error, takes the cross length off at every place, and moves across,
// adding the length, whenever that gives a negative number. Written for twice the error, in whole numbers.
int64_t LineWalk::moves(int32_t along) const {
  const int64_t places = static_cast<int64_t>(along) - _from;
  if (_cross_length < 0) {  // the smallest number of all, which has no absolute value: the error only grows
    return 0;
  }
  if (_length < 0) {  // longer than numbers reach: the error only shrinks
    return places;
  }
  const int64_t owed = 2 * places * _cross_length - _length;
  return owed <= 0 ? 0 : (owed - 1) / (2 * static_cast<int64_t>(_length)) + 1;
}

int32_t LineWalk::crossStart(int32_t along) const {
  const int32_t base = subtract(_cross_from, wrap(_thickness >> 1));
  return add(base, multiply(_step, wrap(static_cast<uint32_t>(moves(along)))));
}

bool LineWalk::isPlain() const {
  if (_length < 0 || _cross_length < 0) {
    return false;
  }
  for (const int32_t along : {_first, _last}) {
    const int64_t start = plainCrossStart(along);
    const int64_t most = _thickness > 0x7FFFFFFF ? 0 : std::numeric_limits<int32_t>::max();
    if (start < std::numeric_limits<int32_t>::min() || start > most) {
      return false;
    }
  }
  return true;
}

int64_t LineWalk::plainCrossStart(int32_t along) const {
  return plainBase() + _step * moves(along);
}

int64_t LineWalk::movesToReach(int64_t cross_start) const {
  return (cross_start - plainBase()) * _step;
}

int64_t LineWalk::doubledErrorAt(int32_t along) const {
  const int64_t places = static_cast<int64_t>(along) - _from;
  return _length - 2 * places * _cross_length + 2 * moves(along) * _length;
}

// Move m happens after place p when 2 * p * cross_length first exceeds (2 * m - 1) * length.
LineWalk::Move LineWalk::move(int64_t number) const {
  if (number <= 0) {
    return {number, _from, 0};
  }
  if (number > _cross_length) {
    return {number, static_cast<int64_t>(_to) + 1, 0};
  }
  const int64_t divisor = 2 * static_cast<int64_t>(_cross_length);
  const int64_t dividend = (2 * number - 1) * _length;
  return {number, _from + dividend / divisor + 1, dividend % divisor};
}

LineWalk::Pace LineWalk::pace() const {
  if (_cross_length == 0) {
    return {0, 0, 0, 0};
  }
  return {_length / _cross_length, 2 * static_cast<int64_t>(_length % _cross_length),
          2 * static_cast<int64_t>(_cross_length), _cross_length};
}

}  // namespace zo
