// Writes one frame of a clip, chosen by its number, as a JPEG file:
//   exact_frame CLIP INDEX IMAGE
#include <zo_video/zo_video.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

void writeFrame(const char* clip, long long index, const char* image) {
  zo::VideoReader reader;
  const bool with_navigation = true;  // counts the frames, so that each can be reached by its number
  reader.open(clip, -1, nullptr, with_navigation, false, false);
  reader.moveByIndex(index);

  zo::Frame frame;
  bool got_frame = false;
  reader.read(frame, got_frame, nullptr);
  if (!got_frame || !frame.initialized()) {
    throw zo::Exception(nullptr, zo::ZO_STATUS_NOT_INITIALIZED, "writeFrame", "exact_frame", __LINE__,
                        "the decoder gives no picture for frame %lld", index);
  }
  zo::imageWrite(image, frame, 90);
  std::printf("frame %lld of %lld at %lld ms, %d x %d: %s\n", index, reader.frameCount(), frame.timestamp(),
              frame.size().width, frame.size().height, image);
}

}  // namespace

int main(int argc, char** argv) {
  char* p_end = nullptr;
  const long long index = argc == 4 ? std::strtoll(argv[2], &p_end, 10) : 0;
  if (argc != 4 || p_end == argv[2] || *p_end != '\0') {
    std::fprintf(stderr, "usage: %s CLIP INDEX IMAGE\n", argv[0]);
    return 2;
  }
  try {
    writeFrame(argv[1], index, argv[3]);
    return 0;
  } catch (const zo::Exception& exception) {
    std::fprintf(stderr, "%s: error %d: %s\n", argv[0], static_cast<int>(exception.status()),
                 exception.what());
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "%s: %s\n", argv[0], exception.what());
  }
  return 1;
}
