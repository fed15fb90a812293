/// Writes the pictures of a short clip to standard output as uncompressed YUV4MPEG2, for an encoder to read.
#include <cstdio>
#include <exception>

#include "scene.h"
#include "zo_video/zo_video.h"

namespace {

constexpr int WIDTH = 640;
constexpr int HEIGHT = 360;
constexpr int FRAMES_PER_SECOND = 25;
constexpr int FRAMES = 250;

bool writePlane(const zo::Frame& frame, unsigned plane) {
  const unsigned char* p_row = frame.planeData(plane);
  for (unsigned row = 0; row < frame.planeRows(plane); ++row, p_row += frame.planeStride(plane)) {
    const std::size_t bytes = frame.planeRowBytes(plane);
    if (std::fwrite(p_row, 1, bytes, stdout) != bytes) {
      return false;
    }
  }
  return true;
}

bool writeClip() {
  zo::VideoConverter converter;
  zo::Frame picture;
  zo::Frame yuv;
  picture.reuse(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(WIDTH, HEIGHT), zo::DeviceContext(), 0);
  std::printf("YUV4MPEG2 W%d H%d F%d:1 Ip A1:1 C420jpeg\n", WIDTH, HEIGHT, FRAMES_PER_SECOND);
  for (int i = 0; i < FRAMES; ++i) {
    paintScene(picture, static_cast<double>(i) / (FRAMES - 1));
    converter.convert(picture, zo::ZO_FRAME_FORMAT_YUV420_PLANAR_I420, picture.size(), yuv,
                      zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
    std::fputs("FRAME\n", stdout);
    for (unsigned plane = 0; plane < yuv.planeCount(); ++plane) {
      if (!writePlane(yuv, plane)) {
        return false;
      }
    }
  }
  return std::fflush(stdout) == 0;
}

}  // namespace

int main() {
  try {
    if (writeClip()) {
      return 0;
    }
    std::fputs("demo-clip: cannot write\n", stderr);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "demo-clip: %s\n", e.what());
  }
  return 1;
}
