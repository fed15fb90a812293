#ifndef ZO_VIDEO_SRC_ZO_VIDEO_CONVERTER_IMPL_H
#define ZO_VIDEO_SRC_ZO_VIDEO_CONVERTER_IMPL_H

#include <cstdint>
#include <vector>

#include "zo_ffmpeg_handles.h"
#include "zo_video/zo_video_converter.h"

namespace zo {

/// The one place where pixel formats are changed and images resized: a cached scaler set-up and two ways in,
/// for frames and for decoded pictures.
class VideoConverter::Impl {
 public:
  /// The first converter of the process turns FFmpeg's log output off.
  Impl();

  /// See VideoConverter::convert().
  void convert(const Frame& src, FrameFormat dst_format, Size dst_size, Frame& dst, ScaleAlgorithm algorithm);

  /// Converts a decoded picture at its own size; `dst_format` is the decoder's pixel format, and the frame
  /// gets the format that it maps to. The timestamp of `dst` is left alone. Returns the number of rows that
  /// the scaler reported.
  int convertAvFrame(const AVFrame* p_src_frame, AVPixelFormat dst_format, Frame& dst);

 private:
  // What a scaler was asked to be made for. The scaler does not keep it as it was asked: it puts an algorithm
  // of its own in the place of none, and would be made anew for every picture if it were compared with that.
  struct ScalerKey {
    Size src_size;
    Size dst_size;
    AVPixelFormat src_format = AV_PIX_FMT_NONE;
    AVPixelFormat dst_format = AV_PIX_FMT_NONE;
    int flags = 0;

    bool operator==(const ScalerKey& other) const {
      return src_size == other.src_size && dst_size == other.dst_size && src_format == other.src_format &&
             dst_format == other.dst_format && flags == other.flags;
    }
  };

  void prepareScaler(Size src_size, AVPixelFormat src_format, Size dst_size, AVPixelFormat dst_format,
                     int flags, const char* function);

  // The plane arguments of one image as the scaler takes them.
  struct ScalerPlanes {
    uint8_t* data[4];
    int strides[4];
  };

  static ScalerPlanes planesOf(const Frame& frame);

  // The scaler reads and writes up to a vector's width beyond rows, also beyond the last one. Memory from
  // outside may end there: what is in it is read from a copy, and what goes into it is written into a frame
  // of our own first.
  ScalerPlanes readablePlanes(const Frame& src);
  Frame& writable(Frame& dst);

  ScalerPtr _p_sws_ctx;
  ScalerKey _scaler_key;
  std::vector<uint8_t> _source_copy;
  Frame _destination_copy;
};

}  // namespace zo

#endif
