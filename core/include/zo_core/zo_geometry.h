#ifndef ZO_CORE_ZO_GEOMETRY_H
#define ZO_CORE_ZO_GEOMETRY_H

#include "zo_core/zo_export.h"

namespace zo {

/// Width and height in pixels. A size counts as set only when both are greater than 0.
struct Size {
  Size() = default;
  /// A size of that many pixels.
  Size(int width_, int height_) : width(width_), height(height_) {}

  int width = 0;   ///< pixels
  int height = 0;  ///< pixels
};

inline bool operator==(const Size& a, const Size& b) {
  return a.width == b.width && a.height == b.height;
}
inline bool operator!=(const Size& a, const Size& b) {
  return !(a == b);
}

/// A position in pixels, from the top left corner. It may lie outside the image.
struct Point {
  Point() = default;
  /// A position of that many pixels from the corner.
  Point(int x_, int y_) : x(x_), y(y_) {}

  int x = 0;  ///< pixels from the left
  int y = 0;  ///< pixels from the top
};

/// A rectangle in pixels: columns x to x + width - 1 and rows y to y + height - 1.
struct Rect {
  Rect() = default;
  /// A rectangle with that corner and size.
  Rect(int x_, int y_, int width_, int height_) : x(x_), y(y_), width(width_), height(height_) {}

  /// Clips this rectangle to an image of that size, in place. A rectangle wholly outside (or an empty one)
  /// becomes an empty one: width or height 0, at a position inside or on the border of the image.
  ZO_CORE_API void crop(const Size& size);

  int x = 0;       ///< pixels from the left
  int y = 0;       ///< pixels from the top
  int width = 0;   ///< pixels
  int height = 0;  ///< pixels
};

}  // namespace zo

#endif
