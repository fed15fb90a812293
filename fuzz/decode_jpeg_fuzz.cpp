// The input is image data for zo::decodeJpeg().
#include "zo_fuzz.h"
#include "zo_video/zo_image_io.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  using namespace zo::fuzz;
  if (size == 0) {
    return 0;
  }
  uint64_t digests[2] = {};
  Outcome outcomes[2];
  for (int run = 0; run < 2; ++run) {
    outcomes[run] = outcomeOf([&] {
      const std::shared_ptr<zo::Frame> p_frame = zo::decodeJpeg(p_data, static_cast<unsigned>(size));
      require(p_frame != nullptr && p_frame->initialized(), "a decoded frame has pixels");
      require(p_frame->format() == zo::ZO_FRAME_FORMAT_BGR24, "a decoded frame is BGR");
      digests[run] = digest(*p_frame);
    });
  }
  require(outcomes[0] == outcomes[1] && digests[0] == digests[1],
          "the same data gives the same answer twice");
  return 0;
}
