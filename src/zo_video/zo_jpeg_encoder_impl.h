#ifndef ZO_VIDEO_SRC_ZO_JPEG_ENCODER_IMPL_H
#define ZO_VIDEO_SRC_ZO_JPEG_ENCODER_IMPL_H

#include "zo_turbojpeg_handles.h"
#include "zo_video/zo_jpeg_encoder.h"
#include "zo_video/zo_video_converter.h"

namespace zo {

/// Compresses frames through TurboJPEG, which takes packed grey and colour and planar YUV as they are; other
/// YUV layouts are converted to planar ones first.
class JpegEncoder::Impl {
 public:
  Impl();
  /// `p_compressor` may be null: that is reported by encode().
  explicit Impl(TurboJpegCompressorPtr p_compressor);

  /// See JpegEncoder::encode().
  void encode(const Frame& frame, int quality, Buffer& out);

  /// The second half of encode(), for arguments that have been checked: how each format is compressed, or
  /// why it is not.
  void encodeByFormat(const Frame& frame, int quality, Buffer& out);

 private:
  /// Which of planes 1 and 2 holds which chroma channel.
  enum class ChromaOrder { CB_CR, CR_CB };

  void encodeConverted(const Frame& frame, FrameFormat planar_format, int subsampling, ChromaOrder order,
                       int quality, Buffer& out);
  void encodePacked(const Frame& frame, int pixel_format, int subsampling, int quality, Buffer& out);
  void encodePlanar(const Frame& frame, int subsampling, ChromaOrder order, int quality, Buffer& out);
  void extendLuma(const Frame& frame, int width, int height);

  VideoConverter _converter;
  Frame _scratch;  // destination of conversions
  Buffer _luma;    // luma of odd-sized pictures, extended to the size that TurboJPEG reads
  TurboJpegCompressorPtr _p_compressor;
};

}  // namespace zo

#endif
