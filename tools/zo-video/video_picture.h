#ifndef ZO_TOOL_VIDEO_PICTURE_H
#define ZO_TOOL_VIDEO_PICTURE_H

#include "options.h"
#include "zo_video/zo_video.h"

namespace zo_tool {

/// Turns decoded frames into ZO_FRAME_FORMAT_BGR24 pictures of a size, upright where wanted. The result is
/// valid until the next call.
class PictureMaker {
 public:
  /// As stored.
  zo::Frame& make(
      const zo::Frame& frame, const zo::Size& size,
      zo::VideoConverter::ScaleAlgorithm algorithm = zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  /// Turned by `rotation`; `size` is that of the upright picture.
  zo::Frame& makeUpright(
      const zo::Frame& frame, zo::VideoRotation rotation, const zo::Size& size,
      zo::VideoConverter::ScaleAlgorithm algorithm = zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);

 private:
  zo::VideoConverter _converter;
  zo::Frame _converted;
  zo::Frame _turned;
};

}  // namespace zo_tool

#endif
