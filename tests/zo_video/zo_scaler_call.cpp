#include "zo_scaler_call.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "zo_test_compare.h"
#include "zo_video/zo_ffmpeg_handles.h"

namespace {

int contexts_set_up = 0;  // NOLINT: by the function below

}  // namespace

extern "C" {

SwsContext* __real_sws_getCachedContext(SwsContext* p_context, int src_width, int src_height,
                                        AVPixelFormat src_format, int dst_width, int dst_height,
                                        AVPixelFormat dst_format, int flags, SwsFilter* p_src_filter,
                                        SwsFilter* p_dst_filter, const double* p_parameters);
SwsContext* __wrap_sws_getCachedContext(SwsContext* p_context, int src_width, int src_height,
                                        AVPixelFormat src_format, int dst_width, int dst_height,
                                        AVPixelFormat dst_format, int flags, SwsFilter* p_src_filter,
                                        SwsFilter* p_dst_filter, const double* p_parameters);

SwsContext* __wrap_sws_getCachedContext(SwsContext* p_context, int src_width, int src_height,
                                        AVPixelFormat src_format, int dst_width, int dst_height,
                                        AVPixelFormat dst_format, int flags, SwsFilter* p_src_filter,
                                        SwsFilter* p_dst_filter, const double* p_parameters) {
  static int last[7] = {};
  const int wanted[7] = {src_width, src_height, src_format, dst_width, dst_height, dst_format, flags};
  // A context for other parameters may get the address of the one that it replaces. With a flag word of 0 the
  // scaler sets each one up anew, also for the parameters of before.
  const bool keeps = p_context != nullptr && flags != 0 && std::equal(wanted, wanted + 7, last);
  std::copy(wanted, wanted + 7, last);
  contexts_set_up += keeps ? 0 : 1;
  return __real_sws_getCachedContext(p_context, src_width, src_height, src_format, dst_width, dst_height,
                                     dst_format, flags, p_src_filter, p_dst_filter, p_parameters);
}

}  // extern "C"

namespace zo {
namespace test {

const FrameFormat SCALABLE_FORMATS[10] = {
    ZO_FRAME_FORMAT_GRAY8,
    ZO_FRAME_FORMAT_RGB24,
    ZO_FRAME_FORMAT_BGR24,
    ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
    ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12,
    ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21,
    ZO_FRAME_FORMAT_YUV422_PLANAR,
    ZO_FRAME_FORMAT_YUV422_PACKED_YUY2,
    ZO_FRAME_FORMAT_YUV422_PACKED_UYVY,
    ZO_FRAME_FORMAT_YUV444_PLANAR,
};

ScalerImage::ScalerImage(Frame& frame, AVPixelFormat format_) : format(format_), size(frame.size()) {
  for (unsigned i = 0; i < 4; ++i) {
    data[i] = frame.planeData(i);
    strides[i] = static_cast<int>(frame.planeStride(i));
  }
}

ScalerImage::ScalerImage(const AVFrame* p_frame, AVPixelFormat format_)
    : format(format_), size(p_frame->width, p_frame->height) {
  for (unsigned i = 0; i < 4; ++i) {
    data[i] = p_frame->data[i];
    strides[i] = p_frame->linesize[i];
  }
}

testing::AssertionResult sameWhereWritten(const Frame& one, const Frame& other, const Frame& actual) {
  const std::string one_bytes = packedBytes(one);
  const std::string other_bytes = packedBytes(other);
  const std::string bytes = packedBytes(actual);
  if (one_bytes.size() != bytes.size() || other_bytes.size() != bytes.size()) {
    return testing::AssertionFailure() << "frames of different shapes";
  }
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (one_bytes[i] == other_bytes[i] && one_bytes[i] != bytes[i]) {
      return testing::AssertionFailure() << "byte " << i << " of " << bytes.size() << " is not the scaler's";
    }
  }
  return testing::AssertionSuccess();
}

ScaleContextCount::ScaleContextCount() : _before(contexts_set_up) {}

int ScaleContextCount::setUp() const {
  return contexts_set_up - _before;
}

int callScaler(const ScalerImage& source, const ScalerImage& destination, int flags) {
  const ScalerPtr p_context(sws_getContext(source.size.width, source.size.height, source.format,
                                           destination.size.width, destination.size.height,
                                           destination.format, flags, nullptr, nullptr, nullptr));
  if (p_context == nullptr) {
    return -1000;
  }
  return sws_scale(p_context.get(), source.data, source.strides, 0, source.size.height, destination.data,
                   destination.strides);
}

}  // namespace test
}  // namespace zo
