#ifndef ZO_TOOL_CONTACT_SHEET_H
#define ZO_TOOL_CONTACT_SHEET_H

#include <string>

#include "zo_video/zo_video.h"

namespace zo_tool {

/// A dark page with a heading, and pictures in rows, each with its index and time underneath.
class ContactSheet {
 public:
  /// @param width    Width of the page in pixels.
  /// @param columns  Pictures in a row.
  /// @param count    Pictures in all.
  /// @param shape    Size of an upright picture; only its shape matters.
  ContactSheet(int width, int columns, int count, const zo::Size& shape);

  /// Room for a picture on the page.
  zo::Size cellSize() const { return _cell; }

  void setHeading(const std::string& title, const std::string& details);
  /// Places a ZO_FRAME_FORMAT_BGR24 picture that is no larger than cellSize().
  void place(int position, const zo::Frame& picture, long long index, long long timestamp);
  /// Marks a place whose frame has no picture.
  void placeNothing(int position, long long index, long long timestamp);

  const zo::Frame& page() const { return _page; }

 private:
  zo::Point corner(int position) const;
  void label(int position, long long index, long long timestamp);

  int _width;
  int _columns;
  int _margin;
  int _font;
  int _heading;  // rows that the heading takes
  zo::Size _cell;
  zo::Frame _page;
};

}  // namespace zo_tool

#endif
