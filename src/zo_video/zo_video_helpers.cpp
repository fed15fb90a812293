#include "zo_video_helpers.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "zo_core/zo_exception.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_helpers";

}  // namespace

AVPixelFormat frameFormatToAvPixelFormat(FrameFormat format) {
  static const char FUNCTION[] = "frameFormatToAvPixelFormat";
  switch (format) {
    case ZO_FRAME_FORMAT_UNDEFINED:
      return AV_PIX_FMT_NONE;
    case ZO_FRAME_FORMAT_GRAY8:
      return AV_PIX_FMT_GRAY8;
    case ZO_FRAME_FORMAT_RGB24:
      return AV_PIX_FMT_RGB24;
    case ZO_FRAME_FORMAT_BGR24:
      return AV_PIX_FMT_BGR24;
    case ZO_FRAME_FORMAT_YUV420_PLANAR_I420:
      return AV_PIX_FMT_YUV420P;
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12:
      return AV_PIX_FMT_NV12;
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21:
      return AV_PIX_FMT_NV21;
    case ZO_FRAME_FORMAT_YUV422_PLANAR:
      return AV_PIX_FMT_YUV422P;
    case ZO_FRAME_FORMAT_YUV422_PACKED_YUY2:
      return AV_PIX_FMT_YUYV422;
    case ZO_FRAME_FORMAT_YUV422_PACKED_UYVY:
      return AV_PIX_FMT_UYVY422;
    case ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16:
      return AV_PIX_FMT_NV16;
    case ZO_FRAME_FORMAT_YUV444_PLANAR:
      return AV_PIX_FMT_YUV444P;
    case ZO_FRAME_FORMAT_YUV420_PLANAR_YV12:
      throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, FUNCTION, SOURCE_FILE, __LINE__,
                      "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV420_PLANAR_YV12");
    case ZO_FRAME_FORMAT_YUV444_PACKED_IYU2:
      throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, FUNCTION, SOURCE_FILE, __LINE__,
                      "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV444_PACKED_IYU2");
    case ZO_FRAME_FORMAT_CUSTOM_1:
    case ZO_FRAME_FORMAT_CUSTOM_2:
    case ZO_FRAME_FORMAT_CUSTOM_3:
      throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, FUNCTION, SOURCE_FILE, __LINE__,
                      "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_CUSTOM_*");
    default:
      throw Exception(nullptr, ZO_STATUS_INVALID_ARGUMENT, FUNCTION, SOURCE_FILE, __LINE__,
                      "FrameFormat with value (%d) does not exist", static_cast<int>(format));
  }
}

FrameFormat avPixelFormatToFrameFormat(AVPixelFormat format) {
  static const char FUNCTION[] = "avPixelFormatToFrameFormat";
  const int value = static_cast<int>(format);
  if (value >= static_cast<int>(AV_PIX_FMT_NB)) {
    throw Exception(nullptr, ZO_STATUS_INVALID_ARGUMENT, FUNCTION, SOURCE_FILE, __LINE__,
                    "Failure in %s(...): specified AVPixelFormat (%d) does not exist", FUNCTION, value);
  }
  switch (value) {
    case AV_PIX_FMT_NONE:
      return ZO_FRAME_FORMAT_UNDEFINED;
    case AV_PIX_FMT_YUV420P:
    case AV_PIX_FMT_YUVJ420P:
      return ZO_FRAME_FORMAT_YUV420_PLANAR_I420;
    case AV_PIX_FMT_YUYV422:
      return ZO_FRAME_FORMAT_YUV422_PACKED_YUY2;
    case AV_PIX_FMT_RGB24:
      return ZO_FRAME_FORMAT_RGB24;
    case AV_PIX_FMT_BGR24:
      return ZO_FRAME_FORMAT_BGR24;
    case AV_PIX_FMT_YUV422P:
    case AV_PIX_FMT_YUVJ422P:
      return ZO_FRAME_FORMAT_YUV422_PLANAR;
    case AV_PIX_FMT_GRAY8:
      return ZO_FRAME_FORMAT_GRAY8;
    case AV_PIX_FMT_UYVY422:
      return ZO_FRAME_FORMAT_YUV422_PACKED_UYVY;
    case AV_PIX_FMT_NV12:
      return ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12;
    case AV_PIX_FMT_NV21:
      return ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21;
    case AV_PIX_FMT_NV16:
      return ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16;
    default:
      return ZO_FRAME_FORMAT_YUV444_PLANAR;
  }
}

int videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ScaleAlgorithm algorithm) {
  switch (algorithm) {
    case VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT:
      return 0;
    case VideoConverter::ZO_SCALE_ALGORITHM_NEAREST:
      return 16;  // SWS_POINT
    case VideoConverter::ZO_SCALE_ALGORITHM_BILINEAR:
      return 2;  // SWS_BILINEAR
    case VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC:
      return 4;  // SWS_BICUBIC
    case VideoConverter::ZO_SCALE_ALGORITHM_AREA:
      return 32;  // SWS_AREA
    case VideoConverter::ZO_SCALE_ALGORITHM_LANCZOS:
      return 512;  // SWS_LANCZOS
    default:
      throw Exception(nullptr, ZO_STATUS_INVALID_ARGUMENT, "videoConvertorAlgorithmToAvScaleFlags",
                      SOURCE_FILE, __LINE__, "VideoConverter::ScaleAlgorithm with value (%d) does not exist",
                      static_cast<int>(algorithm));
  }
}

unsigned avFrameAlignment(const AVFrame* p_frame) {
  static const char FUNCTION[] = "avFrameAlignment";
  if (p_frame == nullptr) {
    throw Exception(nullptr, ZO_STATUS_NULL_POINTER, FUNCTION, SOURCE_FILE, __LINE__,
                    "Parameter 'p_frame' is null");
  }
  unsigned alignment = UINT_MAX;
  for (int plane = 0; plane < 4; ++plane) {
    if (p_frame->data[plane] == nullptr) {
      continue;
    }
    // The lowest bit set in either is the largest power of two that divides both; bit 6 bounds it.
    const uint64_t bits = reinterpret_cast<uintptr_t>(p_frame->data[plane]) |
                          static_cast<uint64_t>(static_cast<int64_t>(p_frame->linesize[plane])) | 64U;
    alignment = std::min(alignment, static_cast<unsigned>(bits & (~bits + 1)));
  }
  if (alignment == UINT_MAX) {
    throw Exception(nullptr, ZO_STATUS_NOT_INITIALIZED, FUNCTION, SOURCE_FILE, __LINE__,
                    "Failure in %s(...): frame is not initialized, all planes are empty.", FUNCTION);
  }
  return alignment;
}

}  // namespace zo
