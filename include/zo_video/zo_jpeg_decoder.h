#ifndef ZO_VIDEO_ZO_JPEG_DECODER_H
#define ZO_VIDEO_ZO_JPEG_DECODER_H

#include "zo_core/zo_frame.h"
#include "zo_video/zo_video_export.h"

namespace zo {

/// Decompresses JPEG data, keeping the image's own colour model. One thread at a time.
class ZO_VIDEO_API JpegDecoder {
 public:
  class ZO_VIDEO_PRIVATE Impl;

  /// @throws zo::Exception  ZO_STATUS_OUT_OF_MEMORY: the coder cannot be set up. std::bad_alloc.
  JpegDecoder();
  ~JpegDecoder();
  JpegDecoder(const JpegDecoder&) = delete;
  JpegDecoder& operator=(const JpegDecoder&) = delete;

  /// Decompresses the image into `frame`, which is reused: grey as ZO_FRAME_FORMAT_GRAY8; YCbCr as planar YUV
  /// of its own subsampling (4:4:4, 4:2:2 or 4:2:0) without colour conversion; RGB as ZO_FRAME_FORMAT_BGR24.
  /// In a ZO_FRAME_FORMAT_YUV422_PLANAR frame plane 1 is V and plane 2 is U. The timestamp is kept.
  ///
  /// @param p_buffer  The JPEG data, `size` bytes; not kept.
  /// @throws zo::Exception  ZO_STATUS_NULL_POINTER: p_buffer is null. ZO_STATUS_CODEC_ERROR: no JPEG data,
  ///                        damaged, or CMYK. ZO_STATUS_NOT_SUPPORTED: 4:4:0 or 4:1:1 (rarer subsamplings,
  ///                        which the coder does not know, are ZO_STATUS_CODEC_ERROR).
  ///                        ZO_STATUS_OUT_OF_MEMORY: the coder cannot be set up for a further picture.
  ///                        std::bad_alloc. `frame` is unchanged, except where decompression itself fails
  ///                        (data damaged behind its header, CMYK): then it has been reshaped and its pixels
  ///                        are undefined. The decoder can be used again in any case; what it decoded before
  ///                        makes no difference.
  void decode(const unsigned char* p_buffer, unsigned size, Frame& frame);

 private:
  Impl* _p_impl;
};

}  // namespace zo

#endif
