#include "video_picture.h"

#include "picture.h"

namespace zo_tool {

zo::Frame& PictureMaker::make(const zo::Frame& frame, const zo::Size& size,
                              zo::VideoConverter::ScaleAlgorithm algorithm) {
  _converter.convert(frame, zo::ZO_FRAME_FORMAT_BGR24, size, _converted, algorithm);
  return _converted;
}

zo::Frame& PictureMaker::makeUpright(const zo::Frame& frame, zo::VideoRotation rotation, const zo::Size& size,
                                     zo::VideoConverter::ScaleAlgorithm algorithm) {
  zo::Frame& picture = make(frame, uprightSize(size, rotation), algorithm);
  const bool stands = rotation == zo::ZO_VIDEO_ROTATION_0 || rotation == zo::ZO_VIDEO_ROTATION_OTHER;
  if (stands) {
    return picture;
  }
  turn(picture, rotation, _turned);
  return _turned;
}

}  // namespace zo_tool
