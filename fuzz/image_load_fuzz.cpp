// The first byte chooses the extension, the rest is the file that zo::imageLoad() and zo::imageRead() are
// given.
#include "zo_fuzz.h"
#include "zo_video/zo_image_io.h"

namespace {

using namespace zo::fuzz;

const char* const EXTENSIONS[] = {".pgm", ".ppm", ".png", ".jpg"};

struct Answer {
  Outcome outcome;
  uint64_t pixels = 0;

  bool operator==(const Answer& other) const { return outcome == other.outcome && pixels == other.pixels; }
};

Answer load(const std::string& path, zo::FrameFormat format) {
  Answer answer;
  answer.outcome = outcomeOf([&] {
    const std::shared_ptr<zo::Frame> p_frame = zo::imageLoad(path);
    require(p_frame != nullptr && p_frame->initialized(), "a loaded frame has pixels");
    require(p_frame->format() == format, "the extension decides the format");
    answer.pixels = digest(*p_frame);
  });
  require(answer.outcome.status == zo::ZO_STATUS_OK || answer.outcome.status == zo::ZO_STATUS_CODEC_ERROR,
          "a bad image is a codec error");
  return answer;
}

Answer read(const std::string& path, zo::Frame& frame) {
  Answer answer;
  answer.outcome = outcomeOf([&] {
    zo::imageRead(path, frame);
    require(frame.initialized(), "a read frame has pixels");
    answer.pixels = digest(frame);
  });
  const int status = answer.outcome.status;
  require(status == zo::ZO_STATUS_OK || status == zo::ZO_STATUS_CODEC_ERROR ||
              status == zo::ZO_STATUS_NOT_SUPPORTED,
          "a bad JPEG file is a codec error or not supported");
  return answer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  if (size == 0) {
    return 0;
  }
  const unsigned kind = p_data[0] % 4;
  const zo::FrameFormat format = kind == 0 ? zo::ZO_FRAME_FORMAT_GRAY8 : zo::ZO_FRAME_FORMAT_BGR24;
  const std::string path = scratchDirectory() + "/image" + EXTENSIONS[kind];
  writeScratchFile(path, p_data + 1, size - 1);
  const Answer loaded = load(path, format);
  require(load(path, format) == loaded, "the same file is loaded alike twice");
  zo::Frame frame;
  const Answer first = read(path, frame);
  require(read(path, frame) == first, "the same file is read alike twice");
  return 0;
}
