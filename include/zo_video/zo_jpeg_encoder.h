#ifndef ZO_VIDEO_ZO_JPEG_ENCODER_H
#define ZO_VIDEO_ZO_JPEG_ENCODER_H

#include "zo_core/zo_buffer.h"
#include "zo_core/zo_frame.h"
#include "zo_video/zo_video_export.h"

namespace zo {

/// Compresses frames to JPEG. Planar YUV goes to the coder as it is, without a colour conversion; other YUV
/// layouts take one conversion of the layout. Keeps its memory between calls. One thread at a time.
class ZO_VIDEO_API JpegEncoder {
 public:
  class ZO_VIDEO_PRIVATE Impl;

  /// Throws std::bad_alloc. A coder that cannot be set up is reported by encode().
  JpegEncoder();
  ~JpegEncoder();
  JpegEncoder(const JpegEncoder&) = delete;
  JpegEncoder& operator=(const JpegEncoder&) = delete;

  /// Compresses `frame` into `out`, which then holds exactly the JPEG bytes. Grey frames give a grey JPEG,
  /// RGB and BGR 4:4:4, YUV the subsampling that the frame has. In a ZO_FRAME_FORMAT_YUV422_PLANAR frame
  /// plane 1 is taken as V and plane 2 as U, as JpegDecoder delivers them. Those of a VideoReader or
  /// converter have them the other way, and so have YUY2, UYVY and NV16 frames, which pass through that
  /// format: convert such frames to I420 or BGR24 first, or their colours are exchanged.
  ///
  /// @param quality  1 to 100.
  /// @throws zo::Exception  ZO_STATUS_NOT_INITIALIZED: the frame holds no planes. ZO_STATUS_INVALID_ARGUMENT:
  ///                        quality out of range. ZO_STATUS_NULL_POINTER: the coder could not be set up.
  ///                        ZO_STATUS_NOT_SUPPORTED, ZO_STATUS_OUT_OF_RANGE, ZO_STATUS_OUT_OF_MEMORY: a
  ///                        format that cannot be compressed. ZO_STATUS_CODEC_ERROR: compression failed.
  ///                        std::bad_alloc. `out` may have been resized, its content is undefined then.
  void encode(const Frame& frame, int quality, Buffer& out);

 private:
  Impl* _p_impl;
};

}  // namespace zo

#endif
