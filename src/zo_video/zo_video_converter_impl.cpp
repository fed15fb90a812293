#include "zo_video_converter_impl.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "zo_core/zo_exception.h"
#include "zo_video_helpers.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
}

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_converter_impl";

// A picture that already has the wanted format and size is copied row by row. The scaler's own copy loses
// what its row lengths do not cover: chroma of semi-planar pictures, the last pixel of odd packed 4:2:2 rows.
void copyPlanes(const AVFrame* p_source, Frame& dst) {
  for (unsigned i = 0; i < dst.planeCount(); ++i) {
    av_image_copy_plane(dst.planeData(i), static_cast<int>(dst.planeStride(i)), p_source->data[i],
                        p_source->linesize[i], static_cast<int>(dst.planeRowBytes(i)),
                        static_cast<int>(dst.planeRows(i)));
  }
}

// Whether a decoded picture has all the bytes that the frame's planes take; the scaler deals with one that
// has not, or tells about it.
bool coversPlanes(const AVFrame* p_picture, const Frame& dst) {
  for (unsigned i = 0; i < dst.planeCount(); ++i) {
    if (p_picture->data[i] == nullptr ||
        std::abs(static_cast<int64_t>(p_picture->linesize[i])) < static_cast<int64_t>(dst.planeRowBytes(i))) {
      return false;
    }
  }
  return true;
}

AVPixelFormat withoutFullRange(AVPixelFormat format) {
  switch (format) {
    case AV_PIX_FMT_YUVJ420P:
      return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
      return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
      return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
      return AV_PIX_FMT_YUV440P;
    default:
      return format;
  }
}

}  // namespace

VideoConverter::Impl::Impl() {
  // A refused pair of formats is reported by an exception, not by the scaler's log line.
  static const bool SILENCED = (av_log_set_level(AV_LOG_QUIET), true);
  static_cast<void>(SILENCED);
}

void VideoConverter::Impl::prepareScaler(Size src_size, AVPixelFormat src_format, Size dst_size,
                                         AVPixelFormat dst_format, int flags, const char* function) {
  const ScalerKey key{src_size, dst_size, src_format, dst_format, flags};
  if (_p_sws_ctx != nullptr && key == _scaler_key) {
    return;
  }
  // The scaler ends the process when asked about "no format"; that is a refusal like any other.
  const bool known = src_format != AV_PIX_FMT_NONE && dst_format != AV_PIX_FMT_NONE;
  _p_sws_ctx.reset(known ? sws_getCachedContext(_p_sws_ctx.release(), src_size.width, src_size.height,
                                                src_format, dst_size.width, dst_size.height, dst_format,
                                                flags, nullptr, nullptr, nullptr)
                         : nullptr);
  if (_p_sws_ctx == nullptr) {
    throw Exception(nullptr, ZO_STATUS_OUT_OF_MEMORY, function, SOURCE_FILE, __LINE__,
                    "Cannot allocate scale context (SwsContext)");
  }
  _scaler_key = key;
}

void VideoConverter::Impl::convert(const Frame& src, FrameFormat dst_format, Size dst_size, Frame& dst,
                                   ScaleAlgorithm algorithm) {
  static const char FUNCTION[] = "convert";
  if (&src == &dst) {
    if (src.format() == dst_format && src.size() == dst_size) {
      return;
    }
    // Shares the pixels, so that reshaping the destination leaves them alone.
    const Frame source = src;  // NOLINT(performance-unnecessary-copy-initialization)
    convert(source, dst_format, dst_size, dst, algorithm);
    return;
  }
  if (src.format() == dst_format && src.size() == dst_size) {
    src.copyTo(dst);
    return;
  }
  // Before the destination is touched: it is to stay as it is when there is no memory for this.
  const ScalerPlanes src_planes = readablePlanes(src);
  dst.reuse(dst_format, dst_size, DeviceContext(), 0);
  const AVPixelFormat src_av_format = frameFormatToAvPixelFormat(src.format());
  const AVPixelFormat dst_av_format = frameFormatToAvPixelFormat(dst_format);
  const int flags = videoConvertorAlgorithmToAvScaleFlags(algorithm);
  prepareScaler(src.size(), src_av_format, dst_size, dst_av_format, flags, FUNCTION);

  Frame& target = writable(dst);
  const ScalerPlanes dst_planes = planesOf(target);
  const int rows = sws_scale(_p_sws_ctx.get(), src_planes.data, src_planes.strides, 0, src.size().height,
                             dst_planes.data, dst_planes.strides);
  if (rows != dst_size.height) {
    throw Exception(nullptr, ZO_STATUS_UNEXPECTED_RESULT, FUNCTION, SOURCE_FILE, __LINE__,
                    "sws_scale() returned %d, expected height_dst(%d)", rows, dst_size.height);
  }
  if (&target != &dst) {
    target.copyTo(dst);
  }
  dst.setTimestamp(src.timestamp());
}

int VideoConverter::Impl::convertAvFrame(const AVFrame* p_src_frame, AVPixelFormat dst_format, Frame& dst) {
  static const char FUNCTION[] = "convertAvFrame";
  if (p_src_frame == nullptr) {
    throw Exception(nullptr, ZO_STATUS_NULL_POINTER, FUNCTION, SOURCE_FILE, __LINE__,
                    "Parameter 'p_src_frame' is null");
  }
  // There and back, so that frame and scaler agree on the layout of formats without an equivalent.
  const FrameFormat frame_format = avPixelFormatToFrameFormat(dst_format);
  const AVPixelFormat dst_av_format = frameFormatToAvPixelFormat(frame_format);
  const AVPixelFormat src_av_format = withoutFullRange(static_cast<AVPixelFormat>(p_src_frame->format));
  const Size size(p_src_frame->width, p_src_frame->height);
  prepareScaler(size, src_av_format, size, dst_av_format, 0, FUNCTION);
  dst.reuse(frame_format, size, DeviceContext(), 0);
  if (src_av_format == dst_av_format && coversPlanes(p_src_frame, dst)) {
    copyPlanes(p_src_frame, dst);
    return size.height;
  }

  ScalerPlanes src_planes;
  for (unsigned i = 0; i < 4; ++i) {
    src_planes.data[i] = p_src_frame->data[i];
    src_planes.strides[i] = p_src_frame->linesize[i];
  }
  Frame& target = writable(dst);
  const ScalerPlanes dst_planes = planesOf(target);
  const int rows = sws_scale(_p_sws_ctx.get(), src_planes.data, src_planes.strides, 0, size.height,
                             dst_planes.data, dst_planes.strides);
  if (rows != size.height) {
    throw Exception(nullptr, ZO_STATUS_UNEXPECTED_RESULT, FUNCTION, SOURCE_FILE, __LINE__,
                    "sws_scale() returned %d, expected dst_height(%d)", rows, size.height);
  }
  if (&target != &dst) {
    target.setTimestamp(dst.timestamp());
    target.copyTo(dst);
  }
  return rows;
}

// The scaler takes sources as pointers to constant bytes itself; one record serves both sides.
VideoConverter::Impl::ScalerPlanes VideoConverter::Impl::planesOf(const Frame& frame) {
  ScalerPlanes planes;
  for (unsigned i = 0; i < 4; ++i) {
    planes.data[i] = const_cast<uint8_t*>(frame.planeData(i));
    planes.strides[i] = static_cast<int>(frame.planeStride(i));
  }
  return planes;
}

// The copy is laid out as the source is, so that the scaler finds the same bytes beside the rows. Of the last
// one there may be no more than its pixels.
VideoConverter::Impl::ScalerPlanes VideoConverter::Impl::readablePlanes(const Frame& src) {
  ScalerPlanes planes = planesOf(src);
  if (!src.initialized() || src.hasSlack()) {
    return planes;
  }
  constexpr std::size_t SLACK = 512;
  const unsigned last = src.planeCount() - 1;
  const unsigned char* const p_first = src.planeData(0);
  const unsigned char* const p_end = src.planeData(last) +
                                     std::size_t{src.planeStride(last)} * (src.planeRows(last) - 1) +
                                     src.planeRowBytes(last);
  const std::size_t bytes = static_cast<std::size_t>(p_end - p_first);
  _source_copy.resize(bytes + SLACK);
  std::memcpy(_source_copy.data(), p_first, bytes);
  std::memset(_source_copy.data() + bytes, 0, SLACK);
  for (unsigned i = 0; i <= last; ++i) {
    planes.data[i] = _source_copy.data() + (src.planeData(i) - p_first);
  }
  return planes;
}

Frame& VideoConverter::Impl::writable(Frame& dst) {
  if (!dst.initialized() || dst.hasSlack()) {
    return dst;
  }
  _destination_copy.reuse(dst.format(), dst.size(), DeviceContext(), 0);
  // The scaler does not write every byte of every format: what it leaves stays as it was.
  dst.copyTo(_destination_copy);
  return _destination_copy;
}

}  // namespace zo
