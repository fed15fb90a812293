#ifndef ZO_VIDEO_ZO_DRAWING_H
#define ZO_VIDEO_ZO_DRAWING_H

#include <string>

#include "zo_core/zo_frame.h"
#include "zo_video/zo_video_export.h"

namespace zo {

// Drawing into frames in ZO_FRAME_FORMAT_BGR24 or ZO_FRAME_FORMAT_RGB24. Pixels are changed in place; nothing
// outside the frame is touched, whatever the coordinates. A colour is 3 bytes in the frame's own channel
// order. Every function throws zo::Exception ZO_STATUS_INTERNAL_ERROR for another format and draws nothing
// into a frame without pixels. Different frames may be drawn into from different threads.

/// Draws a line, both end points included.
/// @param thickness  Pixels across the line, counted down the column of a shallow line and along the row of a
///                   steep one: half of them (rounded down) before the line. 0 draws nothing; a negative
///                   value counts as an unsigned one.
/// Cost: one clip, then the pixels painted.
ZO_VIDEO_API void drawLine(Frame& frame, Point p1, Point p2, const unsigned char* color, int thickness);

/// Draws the outline of a rectangle, cropped to the frame first, as four lines between its corner pixels.
/// With a thickness of 2 and more the outer corner squares stay unpainted. An empty rectangle draws nothing.
ZO_VIDEO_API void drawRect(Frame& frame, Rect rect, const unsigned char* color, int thickness);

/// Writes ASCII text, anti-aliased, blended over the picture.
/// @param text      Codes 32 to 126 are drawn, 127 is a blank; a line feed starts the next line; other
///                  bytes are skipped.
/// @param position  Top left corner of the text box, pixels.
/// @param height    Height of a line in pixels, 4 to 924; others draw nothing. A character is
///                  127 * height / 231 pixels wide, rounded down.
/// Throws std::bad_alloc; nothing has been drawn then.
/// Cost: letters are scaled when they are first drawn at a height, and the last four heights up to 140 stay
/// with the thread; larger letters are scaled in every call.
ZO_VIDEO_API void drawText(Frame& frame, const std::string& text, Point position, const unsigned char* color,
                           int height);

}  // namespace zo

#endif
