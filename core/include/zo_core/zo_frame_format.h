#ifndef ZO_CORE_ZO_FRAME_FORMAT_H
#define ZO_CORE_ZO_FRAME_FORMAT_H

#include <cstdint>

#include "zo_core/zo_export.h"
#include "zo_core/zo_types_c.h"

namespace zo {

/// Pixel layouts. An odd width or height rounds chroma sizes up, (n + 1) / 2.
/// The numbers are part of the binary interface and never change.
enum FrameFormat : int32_t {
  ZO_FRAME_FORMAT_UNDEFINED = 0,                ///< no format set
  ZO_FRAME_FORMAT_GRAY8 = 1,                    ///< one plane, 8-bit luma
  ZO_FRAME_FORMAT_RGB24 = 2,                    ///< one plane, packed R, G, B bytes
  ZO_FRAME_FORMAT_RESERVED_3 = 3,               ///< not accepted by any operation
  ZO_FRAME_FORMAT_BGR24 = 4,                    ///< one plane, packed B, G, R bytes
  ZO_FRAME_FORMAT_RESERVED_5 = 5,               ///< not accepted by any operation
  ZO_FRAME_FORMAT_YUV420_PLANAR_I420 = 6,       ///< planes Y, U, V; chroma halved both ways
  ZO_FRAME_FORMAT_YUV420_PLANAR_YV12 = 7,       ///< planes Y, V, U; chroma halved both ways
  ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12 = 8,   ///< plane Y and one interleaved U/V plane
  ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21 = 9,   ///< plane Y and one interleaved V/U plane
  ZO_FRAME_FORMAT_YUV422_PLANAR = 10,           ///< three planes; chroma halved horizontally
  ZO_FRAME_FORMAT_YUV422_PACKED_YUY2 = 11,      ///< one plane, Y0 U Y1 V
  ZO_FRAME_FORMAT_YUV422_PACKED_UYVY = 12,      ///< one plane, U Y0 V Y1
  ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16 = 13,  ///< plane Y and one U/V plane, chroma halved horizontally
  ZO_FRAME_FORMAT_YUV444_PACKED_IYU2 = 14,      ///< one plane, packed 4:4:4, 3 bytes per pixel
  ZO_FRAME_FORMAT_YUV444_PLANAR = 15,           ///< planes Y, U, V at full size
  ZO_FRAME_FORMAT_CUSTOM_1 = 16,                ///< caller-defined content
  ZO_FRAME_FORMAT_RESERVED_17 = 17,             ///< not accepted by any operation
  ZO_FRAME_FORMAT_RESERVED_18 = 18,             ///< not accepted by any operation
  ZO_FRAME_FORMAT_CUSTOM_2 = 19,                ///< caller-defined content
  ZO_FRAME_FORMAT_CUSTOM_3 = 20                 ///< caller-defined content
};

/// The enumerator's name, "ZO_FRAME_FORMAT_UNKNOWN" for a value that has none. Static text, never null.
ZO_CORE_API const char* toString(FrameFormat format) noexcept;

/// The same value in the other enumeration. Unknown values pass through unchanged.
ZO_CORE_API FrameFormat toFrameFormat(ZoFrameFormat format) noexcept;
ZO_CORE_API ZoFrameFormat toZoFrameFormat(FrameFormat format) noexcept;

}  // namespace zo

#endif
