#include "zo_bench_pictures.h"

#include <cstdint>

#include "zo_video/zo_video_converter.h"

namespace zo {
namespace bench {
namespace {

void paint(Frame& frame) {
  uint32_t noise = 12345;
  for (int y = 0; y < frame.size().height; ++y) {
    unsigned char* p_row = frame.planeData(0) + static_cast<std::size_t>(y) * frame.planeStride(0);
    for (int x = 0; x < frame.size().width; ++x, p_row += 3) {
      noise = noise * 1664525U + 1013904223U;
      const int block = ((x / 80) ^ (y / 60)) & 3;
      p_row[0] = static_cast<unsigned char>((x / 8 + block * 40 + static_cast<int>(noise >> 29)) & 255);
      p_row[1] = static_cast<unsigned char>((y / 5 + block * 25 + static_cast<int>((noise >> 26) & 7)) & 255);
      p_row[2] = static_cast<unsigned char>(((x + y) / 12 + static_cast<int>((noise >> 23) & 7)) & 255);
    }
  }
}

}  // namespace

std::shared_ptr<Frame> makePicture(FrameFormat format, Size size) {
  auto p_bgr = std::make_shared<Frame>();
  p_bgr->reuse(ZO_FRAME_FORMAT_BGR24, size, DeviceContext(), 0);
  paint(*p_bgr);
  if (format == ZO_FRAME_FORMAT_BGR24) {
    return p_bgr;
  }
  auto p_frame = std::make_shared<Frame>();
  VideoConverter().convert(*p_bgr, format, size, *p_frame, VideoConverter::ZO_SCALE_ALGORITHM_BILINEAR);
  return p_frame;
}

Planes::Planes(Frame& frame) {
  for (unsigned i = 0; i < 4; ++i) {
    data[i] = frame.planeData(i);
    strides[i] = static_cast<int>(frame.planeStride(i));
  }
}

}  // namespace bench
}  // namespace zo
