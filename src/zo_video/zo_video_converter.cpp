#include "zo_video/zo_video_converter.h"

#include "zo_video_converter_impl.h"

namespace zo {

VideoConverter::VideoConverter() : _p_impl(new Impl()) {}

VideoConverter::~VideoConverter() {
  delete _p_impl;
}

void VideoConverter::convert(const Frame& src, FrameFormat dst_format, Size dst_size, Frame& dst,
                             ScaleAlgorithm algorithm) {
  _p_impl->convert(src, dst_format, dst_size, dst, algorithm);
}

}  // namespace zo
