#ifndef ZO_VIDEO_ZO_VIDEO_CONVERTER_H
#define ZO_VIDEO_ZO_VIDEO_CONVERTER_H

#include <cstdint>

#include "zo_core/zo_frame.h"
#include "zo_video/zo_video_export.h"

namespace zo {

/// Converts frames between pixel formats and sizes.
///
/// Keeps the scaler's set-up between calls, so converting a series of like frames through one object is
/// cheap. One thread at a time per converter; different converters are independent.
class ZO_VIDEO_API VideoConverter {
 public:
  class ZO_VIDEO_PRIVATE Impl;

  /// How pictures are resized (libswscale's algorithms, with no other flag). The numbers never change.
  enum ScaleAlgorithm : int32_t {
    ZO_SCALE_ALGORITHM_DEFAULT = 0,   ///< the scaler's own choice
    ZO_SCALE_ALGORITHM_NEAREST = 1,   ///< nearest neighbour
    ZO_SCALE_ALGORITHM_BILINEAR = 2,  ///< bilinear
    ZO_SCALE_ALGORITHM_BICUBIC = 3,   ///< bicubic
    ZO_SCALE_ALGORITHM_AREA = 4,      ///< area averaging, good for shrinking
    ZO_SCALE_ALGORITHM_LANCZOS = 5    ///< Lanczos
  };

  /// Throws std::bad_alloc.
  VideoConverter();
  ~VideoConverter();
  VideoConverter(const VideoConverter&) = delete;
  VideoConverter& operator=(const VideoConverter&) = delete;

  /// Converts `src` into `dst`, which is reused: first `dst` is given that format and size, then everything
  /// is checked, so `dst` has been reshaped when this throws, except for std::bad_alloc, where it is
  /// unchanged. The timestamp is copied.
  ///
  /// Same format and size: a plain deep copy. `src` and `dst` may be the same frame.
  ///
  /// @param src         The frame to convert, with pixels.
  /// @param dst_format  Where format or size differ from those of `src`, any format but
  ///                    ZO_FRAME_FORMAT_UNDEFINED, ZO_FRAME_FORMAT_YUV420_PLANAR_YV12,
  ///                    ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, the custom and the reserved ones; the same holds
  ///                    for the format of `src`.
  /// @param dst_size    Pixels, both above 0.
  /// @throws zo::Exception  ZO_STATUS_NOT_SUPPORTED: a format that the scaler does not know.
  ///                        ZO_STATUS_INVALID_ARGUMENT: no such format or algorithm.
  ///                        ZO_STATUS_OUT_OF_MEMORY: the scaler cannot be set up, also for a pair of formats
  ///                        or a size that it refuses. ZO_STATUS_UNEXPECTED_RESULT: scaling failed.
  ///                        std::bad_alloc.
  void convert(const Frame& src, FrameFormat dst_format, Size dst_size, Frame& dst, ScaleAlgorithm algorithm);

 private:
  Impl* _p_impl;
};

}  // namespace zo

#endif
