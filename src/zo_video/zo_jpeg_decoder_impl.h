#ifndef ZO_VIDEO_SRC_ZO_JPEG_DECODER_IMPL_H
#define ZO_VIDEO_SRC_ZO_JPEG_DECODER_IMPL_H

#include "zo_core/zo_buffer.h"
#include "zo_turbojpeg_handles.h"
#include "zo_video/zo_jpeg_decoder.h"

namespace zo {

/// Decompresses JPEG data through TurboJPEG in the image's own colour model.
class JpegDecoder::Impl {
 public:
  Impl();
  /// Throws zo::Exception when `p_decompressor` is null.
  explicit Impl(TurboJpegDecompressorPtr p_decompressor);

  /// See JpegDecoder::decode().
  void decode(const unsigned char* p_buffer, unsigned size, Frame& frame);

 private:
  void checkInstance(const char* function) const;
  void renewInstance();
  static void checkDecoderError(int code);
  // Reshapes the frame, unless so few bytes cannot hold the picture that they claim.
  static void makeRoom(const unsigned char* p_buffer, unsigned size, Size image_size, FrameFormat format,
                       Frame& frame);
  void decodePacked(const unsigned char* p_buffer, unsigned size, Size image_size, FrameFormat format,
                    int pixel_format, Frame& frame);
  void decodeYuv(const unsigned char* p_buffer, unsigned size, Size image_size, int subsampling,
                 Frame& frame);

  TurboJpegDecompressorPtr _p_decompressor;
  bool _used = false;
  Buffer _luma;  // luma of odd-sized pictures whose frame has no room for what TurboJPEG writes
};

}  // namespace zo

#endif
