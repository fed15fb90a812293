#ifndef ZO_VIDEO_SRC_ZO_LINE_WALK_H
#define ZO_VIDEO_SRC_ZO_LINE_WALK_H

#include <cstdint>

#include "zo_core/zo_geometry.h"

namespace zo {

/// The way that a line of a given thickness takes through an image: it runs along the longer of its sides and
/// now and then moves across.
///
/// The line rule computes in 32-bit numbers that wrap around, so far away points can come out of its clipping
/// anywhere. The walk is cut to the image here, which changes nothing of what lies inside.
class LineWalk {
 public:
  /// Clips the line and finds its way. False when nothing is to be painted.
  bool start(Point p1, Point p2, Size image, uint32_t thickness);

  /// Whether the line runs along rows' numbers instead of columns'.
  bool steep() const { return _steep; }
  /// The places along the line that lie in the image, both included.
  int32_t first() const { return _first; }
  int32_t last() const { return _last; }
  /// +1 or -1: the direction of the moves across.
  int32_t step() const { return _step; }
  /// Last coordinate of the image across the line.
  int32_t crossLimit() const { return _cross_limit; }
  uint32_t thickness() const { return _thickness; }

  /// First of the thickness() pixels across at a place along the line. They wrap around after the largest
  /// number.
  int32_t crossStart(int32_t along) const;

  /// Whether nothing wraps around inside the image. The rest of the interface is for such walks.
  bool isPlain() const;

  /// Pixels across at a place are plainCrossStart() up to plainCrossStart() + thickness() - 1.
  int64_t plainCrossStart(int32_t along) const;

  /// Whether a row of the image meets at least so many of the pixels across a shallow line.
  bool meetsInARow(uint32_t pixels) const {
    return static_cast<int64_t>(_length) * _thickness >= static_cast<int64_t>(_cross_length) * pixels;
  }

  /// Moves across after which the pixels across begin at the given coordinate.
  int64_t movesToReach(int64_t cross_start) const;

  /// For a walk place by place: twice the error that the line has to make up for, kept by the caller from
  /// place to place.
  int64_t doubledErrorAt(int32_t along) const;
  /// Goes to the next place; true when the line moves across on the way.
  bool advance(int64_t& doubled_error) const {
    doubled_error -= 2 * static_cast<int64_t>(_cross_length);
    if (doubled_error >= 0) {
      return false;
    }
    doubled_error += 2 * static_cast<int64_t>(_length);
    return true;
  }

  /// A move across, counted from the line's own beginning. The number may be negative or larger than that of
  /// the last move: the place is the line's beginning then, or one behind its end.
  struct Move {
    int64_t number;
    int64_t place;     ///< the first one after the move; it may be anywhere before, in or behind the image
    int64_t fraction;  ///< how far behind the move the place is, in 1 / Pace::divisor
  };
  Move move(int64_t number) const;

  /// From one move to the next: whole places and what is left of the division.
  struct Pace {
    int64_t places;
    int64_t remainder;
    int64_t divisor;
    int64_t moves;
  };
  Pace pace() const;

  /// Goes to the next move. The pace is the caller's copy, so that painting does not make the compiler read
  /// it anew.
  void next(Move& at, const Pace& pace) const {
    if (at.number < 1 || at.number >= pace.moves) {
      at = move(at.number + 1);
      return;
    }
    ++at.number;
    at.place += pace.places;
    at.fraction += pace.remainder;
    if (at.fraction >= pace.divisor) {
      at.fraction -= pace.divisor;
      ++at.place;
    }
  }

 private:
  int64_t moves(int32_t along) const;
  int64_t plainBase() const { return static_cast<int64_t>(_cross_from) - (_thickness >> 1); }

  int32_t _from = 0;  // the whole line along its direction
  int32_t _to = 0;
  int32_t _cross_from = 0;
  int32_t _length = 0;        // along
  int32_t _cross_length = 0;  // across
  int32_t _step = 0;
  int32_t _cross_limit = 0;
  int32_t _first = 0;
  int32_t _last = 0;
  uint32_t _thickness = 0;
  bool _steep = false;
};

}  // namespace zo

#endif
