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

bool isPlanar(FrameFormat format) {
  return format == ZO_FRAME_FORMAT_YUV420_PLANAR_I420 || format == ZO_FRAME_FORMAT_YUV422_PLANAR;
}

bool isPackedYuv(FrameFormat format) {
  return format == ZO_FRAME_FORMAT_YUV422_PACKED_YUY2 || format == ZO_FRAME_FORMAT_YUV422_PACKED_UYVY;
}

// The scaler's routines for pictures that keep their size make packed pixels in pairs, and some of them leave
// out the last one of an odd row, as it was before.
bool leavesLastColumn(FrameFormat from, FrameFormat to, Size size, VideoConverter::ScaleAlgorithm algorithm) {
  if (size.width % 2 == 0 || !isPlanar(from)) {
    return false;
  }
  if (to == ZO_FRAME_FORMAT_RGB24 || to == ZO_FRAME_FORMAT_BGR24) {
    return size.height % 2 == 0;
  }
  return isPackedYuv(to) &&
         (from == ZO_FRAME_FORMAT_YUV422_PLANAR || algorithm == VideoConverter::ZO_SCALE_ALGORITHM_NEAREST);
}

// Others make chroma of pairs of rows, and leave out that of the last one of an odd number.
bool leavesLastChromaRow(FrameFormat from, FrameFormat to, Size size) {
  return size.height % 2 != 0 && isPackedYuv(from) && to == ZO_FRAME_FORMAT_YUV420_PLANAR_I420;
}

// That row has no other to be averaged with.
void makeLastChromaRow(FrameFormat from, const uint8_t* p_last_row, Frame& dst) {
  const unsigned first = from == ZO_FRAME_FORMAT_YUV422_PACKED_YUY2 ? 1 : 0;
  for (unsigned plane = 1; plane < 3; ++plane) {
    const uint8_t* p_source = p_last_row + first + 2 * (plane - 1);
    uint8_t* p_target =
        dst.planeData(plane) + std::size_t{dst.planeStride(plane)} * (dst.planeRows(plane) - 1);
    for (unsigned x = 0; x < dst.planeRowBytes(plane); ++x) {
      p_target[x] = p_source[4 * std::size_t{x}];
    }
  }
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
  Size scaler_src_size = src.size();
  Size scaler_dst_size = dst_size;
  const bool same_size = src.size() == dst_size;
  if (same_size && leavesLastColumn(src.format(), dst_format, dst_size, algorithm)) {
    // There is room beside the pixels on both sides.
    ++scaler_src_size.width;
    ++scaler_dst_size.width;
  }
  prepareScaler(scaler_src_size, src_av_format, scaler_dst_size, dst_av_format, flags, FUNCTION);

  Frame& target = writable(dst);
  const ScalerPlanes dst_planes = planesOf(target);
  const int rows = sws_scale(_p_sws_ctx.get(), src_planes.data, src_planes.strides, 0, src.size().height,
                             dst_planes.data, dst_planes.strides);
  if (rows != dst_size.height) {
    throw Exception(nullptr, ZO_STATUS_UNEXPECTED_RESULT, FUNCTION, SOURCE_FILE, __LINE__,
                    "sws_scale() returned %d, expected height_dst(%d)", rows, dst_size.height);
  }
  if (same_size && leavesLastChromaRow(src.format(), dst_format, dst_size)) {
    makeLastChromaRow(src.format(),
                      src_planes.data[0] + std::ptrdiff_t{src_planes.strides[0]} * (dst_size.height - 1),
                      target);
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
