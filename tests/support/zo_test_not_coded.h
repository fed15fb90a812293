#ifndef ZO_TESTS_SUPPORT_ZO_TEST_NOT_CODED_H
#define ZO_TESTS_SUPPORT_ZO_TEST_NOT_CODED_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace zo {
namespace test {

/// Makes an MPEG-4 picture "not coded": the packet stays, but the decoder produces no picture for it and
/// reports no error. Works for P pictures of clips whose frame rate is 25 (5 bits of time increment).
inline void makePictureNotCoded(AVPacket* p_packet) {
  static const std::uint8_t START[] = {0, 0, 1, 0xB6};
  for (int at = 0; at + 8 < p_packet->size; ++at) {
    if (std::memcmp(p_packet->data + at, START, sizeof(START)) != 0) {
      continue;
    }
    std::size_t bit = static_cast<std::size_t>(at + 4) * 8 + 2;  // behind the picture type
    const auto isSet = [&](std::size_t i) { return (p_packet->data[i / 8] >> (7 - i % 8) & 1) != 0; };
    while (isSet(bit)) {
      ++bit;  // whole seconds
    }
    bit += 1 + 1 + 5 + 1;  // end of the seconds, marker, time increment, marker
    p_packet->data[bit / 8] = static_cast<std::uint8_t>(p_packet->data[bit / 8] & ~(0x80 >> bit % 8));
    return;
  }
  throw std::runtime_error("no MPEG-4 picture in the packet");
}

}  // namespace test
}  // namespace zo

#endif
