#ifndef ZO_TOOL_PICTURE_FILE_H
#define ZO_TOOL_PICTURE_FILE_H

#include <string>

#include "zo_video/zo_video.h"

namespace zo_tool {

/// Throws ZO_STATUS_NOT_SUPPORTED unless the path ends in .jpg, .jpeg, .png, .pgm or .ppm, in any case.
void checkPictureName(const std::string& path);

/// Saves a ZO_FRAME_FORMAT_BGR24 or ZO_FRAME_FORMAT_GRAY8 picture as what the path's extension says. A file
/// of that name appears, or is replaced, only once it is complete; after a failure or a signal nothing is
/// left behind.
void savePicture(const std::string& path, const zo::Frame& picture, int quality);

}  // namespace zo_tool

#endif
