// The input is a video file, but for its last four bytes: which switches to open it with, where to jump
// first, how much to read before and after that, and where to jump then.
#include <chrono>
#include <vector>

#include "zo_fuzz.h"
#include "zo_video/zo_video_reader.h"

extern "C" {
#include <libavutil/mem.h>
}

namespace {

using namespace zo::fuzz;

constexpr size_t OPTION_BYTES = 4;
constexpr int MOST_READS = 15;
constexpr int LAST_READS = 4;
constexpr auto LONGEST_TIME = std::chrono::milliseconds(800);

class Deadline : public zo::IInterruptable {
 public:
  int isInterrupted() override {
    _hit = _hit || std::chrono::steady_clock::now() - _start > LONGEST_TIME;
    return _hit ? 1 : 0;
  }
  bool hit() { return isInterrupted() != 0; }

 private:
  std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
  bool _hit = false;
};

struct Answers {
  std::vector<Outcome> outcomes;
  std::vector<uint64_t> digests;
  bool interrupted = false;
};

void readSome(zo::VideoReader& reader, zo::Frame& frame, int reads, Deadline& deadline, Answers& answers) {
  for (int i = 0; i < reads && !deadline.hit(); ++i) {
    bool got_frame = false;
    const Outcome outcome = outcomeOf([&] { reader.read(frame, got_frame, &deadline); });
    answers.outcomes.push_back(outcome);
    if (got_frame) {
      require(frame.timestamp() == reader.timestamp(), "the frame carries the reader's time");
      answers.digests.push_back(digest(frame));
      answers.digests.push_back(static_cast<uint64_t>(frame.timestamp()));
    } else if (outcome.status == zo::ZO_STATUS_OK) {
      return;
    }
  }
}

// A byte that names a frame: by its index, or by its place in the whole.
void jump(zo::VideoReader& reader, uint8_t where, bool by_index, zo::Frame& frame, int reads,
          Deadline& deadline, Answers& answers) {
  const long long target = by_index ? where : reader.frameCount() * where / 256;
  const Outcome moved = outcomeOf([&] { reader.moveByIndex(target); });
  answers.outcomes.push_back(moved);
  require(moved.status != zo::ZO_STATUS_OK || reader.frameIndex() == target - 1,
          "after a move the target is the next frame");
  if (moved.status != zo::ZO_STATUS_SEEK_ERROR) {  // move again or reopen, says the contract
    readSome(reader, frame, reads, deadline, answers);
  }
}

Answers readFile(const std::string& path, Arguments options) {
  Answers answers;
  Deadline deadline;
  zo::VideoReader reader;
  zo::Frame frame;
  const uint8_t switches = options.byte();
  const uint8_t first = options.byte();
  const uint8_t not_read = options.byte();
  const uint8_t second = options.byte();
  const Outcome opened = outcomeOf(
      [&] { reader.open(path.c_str(), 2000, &deadline, (switches & 1) == 0, (switches & 2) != 0, false); });
  answers.outcomes.push_back(opened);
  if (opened.status == zo::ZO_STATUS_OK && !deadline.hit()) {
    readSome(reader, frame, MOST_READS - not_read % 16, deadline, answers);
    jump(reader, first, (switches & 4) != 0, frame, MOST_READS - not_read / 16, deadline, answers);
    jump(reader, second, (switches & 8) != 0, frame, LAST_READS, deadline, answers);
  } else {
    require(opened.status == zo::ZO_STATUS_OK || reader.format() == zo::ZO_FRAME_FORMAT_UNDEFINED,
            "a reader that could not open is closed");
  }
  answers.interrupted = deadline.hit();
  return answers;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  av_max_alloc(size_t{256} << 20);  // what a decoder may want at once
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  if (size < OPTION_BYTES) {
    return 0;
  }
  const std::string path = scratchDirectory() + "/clip";
  writeScratchFile(path, p_data, size - OPTION_BYTES);
  const Arguments options(p_data + size - OPTION_BYTES, OPTION_BYTES);
  const Answers first = readFile(path, options);
  if (first.interrupted) {
    return 0;
  }
  const Answers second = readFile(path, options);
  require(second.interrupted || (first.outcomes == second.outcomes && first.digests == second.digests),
          "the same file gives the same answers twice");
  return 0;
}
