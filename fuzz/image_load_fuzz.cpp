// The first byte chooses the extension, the rest is the file that zo::imageLoad() and zo::imageRead() are
// given.
#include "zo_fuzz.h"
#include "zo_video/zo_image_io.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  using namespace zo::fuzz;
  if (size == 0) {
    return 0;
  }
  static const char* const EXTENSIONS[] = {".pgm", ".ppm", ".png", ".jpg"};
  const unsigned kind = p_data[0] % 4;
  const std::string path = scratchDirectory() + "/image" + EXTENSIONS[kind];
  writeScratchFile(path, p_data + 1, size - 1);
  uint64_t digests[2] = {};
  Outcome outcomes[2];
  for (int run = 0; run < 2; ++run) {
    outcomes[run] = outcomeOf([&] {
      const std::shared_ptr<zo::Frame> p_frame = zo::imageLoad(path);
      require(p_frame != nullptr && p_frame->initialized(), "a loaded frame has pixels");
      require(p_frame->format() == (kind == 0 ? zo::ZO_FRAME_FORMAT_GRAY8 : zo::ZO_FRAME_FORMAT_BGR24),
              "the extension decides the format");
      digests[run] = digest(*p_frame);
    });
  }
  require(outcomes[0] == outcomes[1] && digests[0] == digests[1],
          "the same file gives the same answer twice");
  return 0;
}
