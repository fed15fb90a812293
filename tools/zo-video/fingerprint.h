#ifndef ZO_TOOL_FINGERPRINT_H
#define ZO_TOOL_FINGERPRINT_H

#include <cstdint>

#include "zo_core/zo_core.h"

namespace zo_tool {

/// What tells one delivered frame from another: time, format, size and a 64-bit checksum over every pixel.
struct Fingerprint {
  Fingerprint() = default;
  explicit Fingerprint(const zo::Frame& frame);

  bool sameTime(const Fingerprint& other) const { return timestamp == other.timestamp; }
  bool samePicture(const Fingerprint& other) const {
    return format == other.format && size == other.size && pixels == other.pixels;
  }

  long long timestamp = 0;
  zo::FrameFormat format = zo::ZO_FRAME_FORMAT_UNDEFINED;
  zo::Size size;
  uint64_t pixels = 0;
};

}  // namespace zo_tool

#endif
