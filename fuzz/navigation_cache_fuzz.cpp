// The input is the navigation file beside a sound clip.
#include <vector>

#include "zo_fuzz.h"
#include "zo_test_clip.h"
#include "zo_video/zo_navigation_cache.h"
#include "zo_video/zo_video_reader.h"

namespace {

using namespace zo::fuzz;

std::string makeSoundClip() {
  zo::test::ClipOptions options;
  options.width = 32;
  options.height = 32;
  options.frames = 20;
  options.gop = 6;
  options.b_frames = 2;
  const std::string path = scratchDirectory() + "/clip.mp4";
  zo::test::makeClip(path, options);
  return path;
}

void checkLoader(const std::string& path, size_t size) {
  std::vector<unsigned> words;
  if (zo::loadNavigationCache(path, words) != zo::CacheLoad::LOADED) {
    require(false, "a file that is there is loaded");
  }
  require(words.size() <= size / 2 + 1, "no more numbers than the text can hold");
  std::vector<unsigned> again;
  zo::saveNavigationCache(path + "-copy", words);
  zo::loadNavigationCache(path + "-copy", again);
  require(words == again, "what was loaded is saved and loaded again");
}

std::vector<uint64_t> useWithClip(const std::string& clip) {
  std::vector<uint64_t> answers;
  zo::VideoReader reader;
  zo::Frame frame;
  const Outcome opened = outcomeOf([&] { reader.open(clip.c_str(), -1, nullptr, true, false, true); });
  answers.push_back(static_cast<uint64_t>(opened.status));
  if (opened.status != zo::ZO_STATUS_OK) {
    return answers;
  }
  const long long count = reader.frameCount();
  answers.push_back(static_cast<uint64_t>(count));
  bool lost = false;
  for (long long index : {count - 1, count / 2, 0LL, count, -1LL, 7LL, 8LL}) {
    const Outcome moved = outcomeOf([&] { reader.moveByIndex(index); });
    require((index >= 0 && index < count) || moved.status == zo::ZO_STATUS_OUT_OF_RANGE,
            "only frames of the index can be reached");
    // A failed seek leaves no position to read at until the next successful move, says the contract.
    lost = moved.status == zo::ZO_STATUS_SEEK_ERROR || (lost && moved.status != zo::ZO_STATUS_OK);
    if (lost) {
      answers.push_back(static_cast<uint64_t>(moved.status));
      continue;
    }
    bool got_frame = false;
    const Outcome read = outcomeOf([&] { reader.read(frame, got_frame, nullptr); });
    answers.push_back(static_cast<uint64_t>(moved.status) * 100 + static_cast<uint64_t>(read.status));
    if (got_frame) {
      answers.push_back(digest(frame));
    }
  }
  return answers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  if (size > 65536) {
    return 0;
  }
  static const std::string CLIP = makeSoundClip();
  const std::string path = CLIP + zo::VideoReader::NAVIGATION_FILE_EXTENSION;
  writeScratchFile(path, p_data, size);
  checkLoader(path, size);
  const std::vector<uint64_t> answers = useWithClip(CLIP);
  writeScratchFile(path, p_data, size);  // an index of nothing has been replaced
  require(useWithClip(CLIP) == answers, "the same index gives the same answers twice");
  return 0;
}
