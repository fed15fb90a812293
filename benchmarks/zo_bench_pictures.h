#ifndef ZO_BENCHMARKS_ZO_BENCH_PICTURES_H
#define ZO_BENCHMARKS_ZO_BENCH_PICTURES_H

#include <memory>

#include "zo_core/zo_frame.h"

namespace zo {
namespace bench {

/// A picture with edges, gradients and some grain, the same every time.
std::shared_ptr<Frame> makePicture(FrameFormat format, Size size);

/// The planes of a frame as FFmpeg's functions take them.
struct Planes {
  explicit Planes(Frame& frame);
  unsigned char* data[4] = {};
  int strides[4] = {};
};

}  // namespace bench
}  // namespace zo

#endif
