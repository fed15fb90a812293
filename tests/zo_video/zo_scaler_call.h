#ifndef ZO_TESTS_ZO_VIDEO_ZO_SCALER_CALL_H
#define ZO_TESTS_ZO_VIDEO_ZO_SCALER_CALL_H

#include <gtest/gtest.h>

#include "zo_core/zo_frame.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

namespace zo {
namespace test {

/// The planes of one image as the scaler takes them.
struct ScalerImage {
  ScalerImage(Frame& frame, AVPixelFormat format_);
  ScalerImage(const AVFrame* p_frame, AVPixelFormat format_);

  AVPixelFormat format;
  Size size;
  uint8_t* data[4];
  int strides[4];
};

/// The scaler's own result, without our converter: returns what sws_scale returned, or -1000 when there is no
/// context for these parameters.
int callScaler(const ScalerImage& source, const ScalerImage& destination, int flags);

/// Equality of all bytes that the scaler wrote: `one` and `other` are its results in frames that held
/// different bytes before.
testing::AssertionResult sameWhereWritten(const Frame& one, const Frame& other, const Frame& actual);

/// How many scale contexts sws_getCachedContext() has set up anew since this object was made, in a program
/// that is linked with --wrap for it.
class ScaleContextCount {
 public:
  ScaleContextCount();
  int setUp() const;

 private:
  const int _before;
};

/// Formats that the scaler both reads and writes.
extern const FrameFormat SCALABLE_FORMATS[10];

}  // namespace test
}  // namespace zo

#endif
