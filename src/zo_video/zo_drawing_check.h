#ifndef ZO_VIDEO_SRC_ZO_DRAWING_CHECK_H
#define ZO_VIDEO_SRC_ZO_DRAWING_CHECK_H

#include "zo_core/zo_exception.h"
#include "zo_core/zo_frame.h"

namespace zo {

/// Throws zo::Exception for a frame that has not 3 bytes per pixel, in the name of the drawing function.
inline void checkDrawable(const Frame& frame, const char* function, int line) {
  if (frame.format() != ZO_FRAME_FORMAT_BGR24 && frame.format() != ZO_FRAME_FORMAT_RGB24) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, function, "src/zo_video/zo_image_io", line,
                    "Assertion failed: %s",
                    "bgr_frame.format() == ZO_FRAME_FORMAT_BGR24 || "
                    "bgr_frame.format() == ZO_FRAME_FORMAT_RGB24");
  }
}

}  // namespace zo

#endif
