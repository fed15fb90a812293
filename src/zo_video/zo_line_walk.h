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

  /// Moves across after which the pixels across begin at the given coordinate.
  int64_t movesToReach(int64_t cross_start) const;

  /// For a walk place by place: twice the error that the line has to make up for, kept by the caller from
  /// place to place.
  int64_t doubledErrorAt(int32_t along) const;
  /// Goes to the next place; true when the line moves across on the way.
  bool advance(int64_t& doubled_error) const;

  /// Goes through the moves across of a plain walk and tells where along the line they happen.
  class Moves {
   public:
    /// @param number  Counted from the line's own beginning; it may be negative or larger than all moves.
    Moves(const LineWalk& walk, int64_t number);
    void next();
    /// First place after the move: the line's beginning for a move before the first one, and one behind its
    /// end for a move after the last one.
    int64_t place() const { return _place; }

   private:
    void locate();

    const LineWalk& _walk;
    const int64_t _places;     // from one move to the next,
    const int64_t _remainder;  // and what is left of the division, in 1 / _divisor
    const int64_t _divisor;
    int64_t _number;
    int64_t _place = 0;
    int64_t _fraction = 0;
  };

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
