// What the tests of the examples need around them:
//   zo_example_media clip FILE     makes a clip of 30 pictures, 64 x 48, one every 40 ms; picture i carries i
//   zo_example_media number IMAGE  prints size and number of the picture in a JPEG file
#include <cstdio>
#include <cstring>
#include <exception>

#include "zo_test_support.h"
#include "zo_video/zo_image_io.h"

int main(int argc, char** argv) {
  try {
    if (argc == 3 && std::strcmp(argv[1], "clip") == 0) {
      zo::test::makeClip(argv[2], zo::test::ClipOptions());
      return 0;
    }
    if (argc == 3 && std::strcmp(argv[1], "number") == 0) {
      zo::Frame frame;
      zo::imageRead(argv[2], frame);
      std::printf("%d x %d number %d\n", frame.size().width, frame.size().height,
                  zo::test::paintedNumber(frame));
      return 0;
    }
    std::fprintf(stderr, "usage: zo_example_media clip FILE | number IMAGE\n");
    return 2;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "zo_example_media: %s\n", exception.what());
    return 1;
  }
}
