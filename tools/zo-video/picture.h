#ifndef ZO_TOOL_PICTURE_H
#define ZO_TOOL_PICTURE_H

#include <string>

#include "zo_video/zo_video.h"

namespace zo_tool {

/// Colours in the channel order of ZO_FRAME_FORMAT_BGR24.
struct Colour {
  unsigned char bytes[3];
};

/// The largest size of the picture's shape that fits into a box, at least 1 x 1.
zo::Size fitInto(const zo::Size& picture, const zo::Size& box);

/// The size of a picture once it stands upright.
zo::Size uprightSize(const zo::Size& picture, zo::VideoRotation rotation);

/// Turns a ZO_FRAME_FORMAT_BGR24 picture clockwise by 90, 180 or 270 degrees into `out`; any other rotation
/// copies.
void turn(const zo::Frame& picture, zo::VideoRotation rotation, zo::Frame& out);

/// Paints a rectangle of a ZO_FRAME_FORMAT_BGR24 picture, cropped to it.
void fill(zo::Frame& picture, zo::Rect area, const Colour& colour);

/// Copies a ZO_FRAME_FORMAT_BGR24 picture into another, which must be large enough.
void paste(const zo::Frame& picture, const zo::Point& position, zo::Frame& canvas);

/// Width in pixels of a line of text as zo::drawText() sets it.
int textWidth(const std::string& text, int height);

/// Writes text whose first letter starts at `position`, without the gap that zo::drawText() leaves on its
/// left.
void write(zo::Frame& picture, const std::string& text, const zo::Point& position, const Colour& colour,
           int height);

/// Writes a frame's index and time into the top left corner, light on a dark band.
void stamp(zo::Frame& picture, long long index, long long timestamp);

}  // namespace zo_tool

#endif
