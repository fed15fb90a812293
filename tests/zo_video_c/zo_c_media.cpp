#include "zo_c_media.h"

#include <cstring>
#include <fstream>
#include <map>
#include <string>

#include "zo_core/zo_frame.h"
#include "zo_test_support.h"

namespace {

using zo::test::ClipOptions;

const zo::test::TempDir& directory() {
  static const zo::test::TempDir DIRECTORY;
  return DIRECTORY;
}

const char* clip(const std::string& name, const ClipOptions& options) {
  static std::map<std::string, std::string> clips;
  std::string& path = clips[name];
  if (path.empty()) {
    path = makeClip(directory().file(name), options).path;
  }
  return path.c_str();
}

}  // namespace

const char* numberedClip() {
  return clip("numbered.mp4", ClipOptions());
}

const char* rotatedClip(int degrees) {
  ClipOptions options;
  options.frames = 2;
  options.rotation = degrees;
  return clip("rotated" + std::to_string(degrees) + ".mp4", options);
}

const char* damagedClip() {
  ClipOptions options;
  options.codec = "mjpeg";
  options.pixel_format = AV_PIX_FMT_YUVJ420P;
  options.frames = 10;
  options.edit_packet = [](int i, AVPacket* p_packet) {
    if (i == 2) {
      std::memset(p_packet->data, 0, static_cast<std::size_t>(p_packet->size));
    }
    return true;
  };
  return clip("damaged.mov", options);
}

const char* missingPath() {
  static const std::string PATH = directory().file("missing.mp4");
  return PATH.c_str();
}

int fileExists(const char* path) {
  return std::ifstream(path).good() ? 1 : 0;
}

int numberOf(const ZoFrame* p_frame) {
  return zo::test::paintedNumber(*static_cast<const zo::Frame*>(p_frame->p_handle));
}

void paintFrame(ZoFrame* p_frame, ZoFrameFormat format, int width, int height, int number) {
  *static_cast<zo::Frame*>(p_frame->p_handle) =
      zo::test::makeNumberedFrame(zo::toFrameFormat(format), zo::Size(width, height), number);
  zo::updateFrame(p_frame);
}
