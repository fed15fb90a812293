// Media for tests that are no C++ programs: those of the examples and of the Python package.
//   zo_example_media clip FILE     30 pictures, 64 x 48, one every 40 ms, a key frame every 12; picture i
//                                  carries the number i
//   zo_example_media odd FILE      the same with 35 x 27 pixels
//   zo_example_media rotated FILE  2 pictures, to be turned by 90 degrees clockwise
//   zo_example_media gap FILE      10 pictures, of which the decoder does not produce number 4
//   zo_example_media damaged FILE  10 JPEG pictures, of which number 2 is damaged
//   zo_example_media number IMAGE  prints size and number of the picture in a JPEG file
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "zo_test_not_coded.h"
#include "zo_test_support.h"
#include "zo_video/zo_image_io.h"

namespace {

using zo::test::ClipOptions;

bool optionsOf(const std::string& kind, ClipOptions& options) {
  if (kind == "odd") {
    options.codec = "ffv1";
    options.width = 35;
    options.height = 27;
  } else if (kind == "rotated") {
    options.frames = 2;
    options.rotation = 90;
  } else if (kind == "gap") {
    options.frames = 10;
    options.edit_packet = [](int i, AVPacket* p_packet) {
      if (i == 4) {
        zo::test::makePictureNotCoded(p_packet);
      }
      return true;
    };
  } else if (kind == "damaged") {
    options.codec = "mjpeg";
    options.pixel_format = AV_PIX_FMT_YUVJ420P;
    options.frames = 10;
    options.edit_packet = [](int i, AVPacket* p_packet) {
      if (i == 2) {
        std::memset(p_packet->data, 0, static_cast<std::size_t>(p_packet->size));
      }
      return true;
    };
  } else {
    return kind == "clip";
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    ClipOptions options;
    if (argc == 3 && optionsOf(argv[1], options)) {
      zo::test::makeClip(argv[2], options);
      return 0;
    }
    if (argc == 3 && std::strcmp(argv[1], "number") == 0) {
      zo::Frame frame;
      zo::imageRead(argv[2], frame);
      std::printf("%d x %d number %d\n", frame.size().width, frame.size().height,
                  zo::test::paintedNumber(frame));
      return 0;
    }
    std::fprintf(stderr, "usage: zo_example_media KIND FILE\n");
    return 2;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "zo_example_media: %s\n", exception.what());
    return 1;
  }
}
