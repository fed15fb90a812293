#include "fingerprint.h"

#include <cstring>

namespace zo_tool {

namespace {

uint64_t mix(uint64_t sum, uint64_t word) {
  sum = (sum ^ word) * 0x9E3779B97F4A7C15ULL;
  return sum ^ (sum >> 29);
}

uint64_t mixBytes(uint64_t sum, const unsigned char* p_bytes, std::size_t count) {
  uint64_t word;
  for (; count >= sizeof word; count -= sizeof word, p_bytes += sizeof word) {
    std::memcpy(&word, p_bytes, sizeof word);
    sum = mix(sum, word);
  }
  word = count;
  std::memcpy(&word, p_bytes, count);
  return mix(sum, word);
}

}  // namespace

Fingerprint::Fingerprint(const zo::Frame& frame)
    : timestamp(frame.timestamp()), format(frame.format()), size(frame.size()) {
  for (unsigned plane = 0; plane < frame.planeCount(); ++plane) {
    const unsigned char* p_row = frame.planeData(plane);
    for (unsigned row = 0; row < frame.planeRows(plane); ++row, p_row += frame.planeStride(plane)) {
      pixels = mixBytes(pixels, p_row, frame.planeRowBytes(plane));
    }
  }
}

}  // namespace zo_tool
