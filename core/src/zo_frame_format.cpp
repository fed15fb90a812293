#include "zo_core/zo_frame_format.h"

namespace zo {

static_assert(sizeof(FrameFormat) == 4 && sizeof(ZoFrameFormat) == 4, "format values are 32 bits wide");

const char* toString(FrameFormat format) noexcept {
#define ZO_NAME(enumerator) \
  case enumerator:          \
    return #enumerator
  switch (format) {
    ZO_NAME(ZO_FRAME_FORMAT_UNDEFINED);
    ZO_NAME(ZO_FRAME_FORMAT_GRAY8);
    ZO_NAME(ZO_FRAME_FORMAT_RGB24);
    ZO_NAME(ZO_FRAME_FORMAT_RESERVED_3);
    ZO_NAME(ZO_FRAME_FORMAT_BGR24);
    ZO_NAME(ZO_FRAME_FORMAT_RESERVED_5);
    ZO_NAME(ZO_FRAME_FORMAT_YUV420_PLANAR_I420);
    ZO_NAME(ZO_FRAME_FORMAT_YUV420_PLANAR_YV12);
    ZO_NAME(ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12);
    ZO_NAME(ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21);
    ZO_NAME(ZO_FRAME_FORMAT_YUV422_PLANAR);
    ZO_NAME(ZO_FRAME_FORMAT_YUV422_PACKED_YUY2);
    ZO_NAME(ZO_FRAME_FORMAT_YUV422_PACKED_UYVY);
    ZO_NAME(ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16);
    ZO_NAME(ZO_FRAME_FORMAT_YUV444_PACKED_IYU2);
    ZO_NAME(ZO_FRAME_FORMAT_YUV444_PLANAR);
    ZO_NAME(ZO_FRAME_FORMAT_CUSTOM_1);
    ZO_NAME(ZO_FRAME_FORMAT_RESERVED_17);
    ZO_NAME(ZO_FRAME_FORMAT_RESERVED_18);
    ZO_NAME(ZO_FRAME_FORMAT_CUSTOM_2);
    ZO_NAME(ZO_FRAME_FORMAT_CUSTOM_3);
  }
#undef ZO_NAME
  return "ZO_FRAME_FORMAT_UNKNOWN";
}

FrameFormat toFrameFormat(ZoFrameFormat format) noexcept {
  return static_cast<FrameFormat>(format);
}

ZoFrameFormat toZoFrameFormat(FrameFormat format) noexcept {
  return static_cast<ZoFrameFormat>(format);
}

}  // namespace zo
