#include "zo_scaler_call.h"

#include "zo_video/zo_ffmpeg_handles.h"

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
