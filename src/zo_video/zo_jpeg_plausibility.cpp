#include "zo_jpeg_plausibility.h"

#include <algorithm>
#include <cstdint>

namespace zo {
namespace {

// Smaller pictures do no harm when their data turns out to be short.
constexpr uint64_t LARGE_PICTURE_PIXELS = uint64_t{4096} * 4096;

// What is let through where nothing tells how little data such a picture may have: arithmetic coding has no
// least number of bits per block, and what has no header to be found cannot be judged.
constexpr uint64_t FREE_PIXELS = uint64_t{1} << 25;
constexpr uint64_t PIXELS_PER_BYTE = uint64_t{1} << 14;

constexpr unsigned MARKER_SOF0 = 0xC0;  // Huffman-coded frame headers: from baseline ...
constexpr unsigned MARKER_SOF2 = 0xC2;  // ... to progressive
constexpr unsigned MARKER_SOF15 = 0xCF;
constexpr unsigned MARKER_DHT = 0xC4;
constexpr unsigned MARKER_JPG = 0xC8;
constexpr unsigned MARKER_DAC = 0xCC;
constexpr unsigned MARKER_RST0 = 0xD0;
constexpr unsigned MARKER_SOI = 0xD8;
constexpr unsigned MARKER_SOS = 0xDA;
constexpr unsigned MARKER_TEM = 0x01;

struct FrameHeader {
  unsigned marker = 0;
  const unsigned char* p_body = nullptr;  // from the sample precision on
  unsigned length = 0;
};

unsigned big16(const unsigned char* p) {
  return static_cast<unsigned>(p[0]) << 8 | p[1];
}

bool isFrameHeader(unsigned marker) {
  return marker >= MARKER_SOF0 && marker <= MARKER_SOF15 && marker != MARKER_DHT && marker != MARKER_JPG &&
         marker != MARKER_DAC;
}

// Walks the segments up to the frame header; a header with marker 0 when there is none.
FrameHeader findFrameHeader(const unsigned char* p_data, unsigned size) {
  unsigned at = 0;
  while (at + 4 <= size) {
    if (p_data[at] != 0xFF || p_data[at + 1] == 0xFF) {
      ++at;  // the decoder skips stray and fill bytes between segments as well
      continue;
    }
    const unsigned marker = p_data[at + 1];
    at += 2;
    if (marker == 0 || marker == MARKER_TEM || (marker >= MARKER_RST0 && marker <= MARKER_SOI)) {
      continue;
    }
    const unsigned length = big16(p_data + at);
    if (marker == MARKER_SOS || length < 2 || length > size - at) {
      break;
    }
    if (isFrameHeader(marker)) {
      return {marker, p_data + at + 2, length - 2};
    }
    at += length;
  }
  return FrameHeader();
}

uint64_t ceilDiv(uint64_t value, uint64_t divisor) {
  return (value + divisor - 1) / divisor;
}

// 8 x 8 blocks of the component that has the fewest; 0 for a header that makes no sense.
uint64_t blocksOfSmallestComponent(const FrameHeader& header) {
  const uint64_t height = big16(header.p_body + 1);
  const uint64_t width = big16(header.p_body + 3);
  const unsigned components = header.p_body[5];
  if (components == 0 || header.length < 6 + 3 * components) {
    return 0;
  }
  uint64_t max_horizontal = 1;
  uint64_t max_vertical = 1;
  for (unsigned i = 0; i < components; ++i) {
    const unsigned factors = header.p_body[7 + 3 * i];
    max_horizontal = std::max<uint64_t>(max_horizontal, factors >> 4);
    max_vertical = std::max<uint64_t>(max_vertical, factors & 15);
  }
  uint64_t fewest = UINT64_MAX;
  for (unsigned i = 0; i < components; ++i) {
    const unsigned factors = header.p_body[7 + 3 * i];
    const uint64_t columns = ceilDiv(ceilDiv(width * (factors >> 4), max_horizontal), 8);
    const uint64_t rows = ceilDiv(ceilDiv(height * (factors & 15), max_vertical), 8);
    fewest = std::min(fewest, columns * rows);
  }
  return fewest;
}

}  // namespace

bool jpegDataCanHold(const unsigned char* p_data, unsigned size, Size picture) noexcept {
  const uint64_t width = static_cast<uint64_t>(picture.width);
  const uint64_t height = static_cast<uint64_t>(picture.height);
  if (width * height < LARGE_PICTURE_PIXELS) {
    return true;
  }
  const FrameHeader header = findFrameHeader(p_data, size);
  const bool judged = header.marker >= MARKER_SOF0 && header.marker <= MARKER_SOF2 && header.length >= 6 &&
                      big16(header.p_body + 3) == width && big16(header.p_body + 1) == height;
  if (!judged) {
    return width * height <= FREE_PIXELS + PIXELS_PER_BYTE * size;
  }
  // The first scan codes each block of at least one component, with at least one bit for its mean value
  // and, unless progressive, one more for the end of the block.
  const uint64_t bits_per_block = header.marker == MARKER_SOF2 ? 1 : 2;
  return blocksOfSmallestComponent(header) * bits_per_block <= uint64_t{size} * 8;
}

}  // namespace zo
