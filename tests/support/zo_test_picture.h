#ifndef ZO_TESTS_SUPPORT_ZO_TEST_PICTURE_H
#define ZO_TESTS_SUPPORT_ZO_TEST_PICTURE_H

#include "zo_core/zo_frame.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace zo {
namespace test {

/// Paints a picture that carries `number` in coarse light and dark blocks (a grid of up to 4 x 4, so that
/// 16 bits survive lossy coding) under a pattern that moves with the number. Any pixel format with 8 or more
/// bits, any size from 1 x 1. The frame has to be writable.
void paintNumber(AVFrame* p_frame, int number);

/// The number that a decoded or converted picture carries. It is read modulo 2 to the power of
/// min(width, 4) x min(height, 4). Throws std::invalid_argument for a frame without pixels.
int paintedNumber(const Frame& frame);

/// A frame of that format and size (memory of its own) that carries the number and the moving pattern.
/// Any format with a layout.
Frame makeNumberedFrame(FrameFormat format, Size size, int number);

/// A frame with pseudo-random bytes in every plane, row padding included; the same for the same seed.
Frame makeNoiseFrame(FrameFormat format, Size size, unsigned seed);

/// Sets every byte of every plane, row padding included.
void fillFrame(Frame& frame, unsigned char value);

}  // namespace test
}  // namespace zo

#endif
