// Jumps by frame index, every picture checked against what reading in order gives.
#include <algorithm>
#include <map>
#include <memory>
#include <random>

#include "zo_bench_bare.h"
#include "zo_bench_jobs.h"
#include "zo_bench_peers.h"
#include "zo_video/zo_video.h"

namespace zo {
namespace bench {
namespace {

constexpr int JUMPS = 200;
constexpr int SLICES = 10;
constexpr int LONGEST_STEP = 8;

using Indices = std::vector<long long>;
using Hashes = std::vector<uint64_t>;

Indices randomJumps(long long count) {
  std::mt19937 generator(1);
  Indices indices;
  for (int i = 0; i < JUMPS; ++i) {
    indices.push_back(static_cast<long long>(generator() % static_cast<uint64_t>(count)));
  }
  return indices;
}

// Back and forth around places that lie apart.
Indices shortSteps(long long count) {
  std::mt19937 generator(2);
  Indices indices;
  long long at = count / 2;
  for (int i = 0; i < JUMPS; ++i) {
    if (i % 40 == 0) {
      at = static_cast<long long>(generator() % static_cast<uint64_t>(count));
    }
    const int length = 1 + static_cast<int>(generator() % LONGEST_STEP);
    at += generator() % 2 == 0 ? -length : length;
    at = std::max<long long>(0, std::min(at, count - 1));
    indices.push_back(at);
  }
  return indices;
}

class OurReader {
 public:
  explicit OurReader(const std::string& path) { _reader.open(path.c_str(), -1, nullptr, true, false, false); }
  bool next() {
    _reader.read(_frame, _got_frame, nullptr);
    return _got_frame;
  }
  void get(long long index) {
    _reader.moveByIndex(index);
    _reader.read(_frame, _got_frame, nullptr);
  }
  uint64_t pictureHash() const { return _got_frame && _frame.initialized() ? hashFrame(_frame) : 0; }

 private:
  VideoReader _reader;
  Frame _frame;
  bool _got_frame = false;
};

// Every reader is held to what it gives itself when it reads in order; the pictures of others may be
// converted, or counted in another way.
template <class Reader>
Hashes readInOrder(Reader& reader) {
  Hashes hashes;
  while (reader.next()) {
    hashes.push_back(reader.pictureHash());
  }
  return hashes;
}

// The bare reader has no indices of its own: a packet's time stands for the first picture that is not before
// it.
Hashes readInOrder(const std::string& path, const BareReader& index) {
  BareReader reader(path);
  Hashes hashes;
  bool more = reader.next();
  for (long long i = 0; i < index.frameCount(); ++i) {
    while (more && reader.picture()->best_effort_timestamp < index.time(i)) {
      more = reader.next();
    }
    hashes.push_back(more ? reader.pictureHash() : 0);
  }
  return hashes;
}

// Reading in order takes longer than jumping; what it gave serves both jobs with a clip.
template <class Read>
const Hashes& inOrder(const std::string& reader, const std::string& path, const Read& read) {
  static std::map<std::string, Hashes> known;
  const auto inserted = known.emplace(reader + ":" + path, Hashes());
  if (inserted.second) {
    inserted.first->second = read();
  }
  return inserted.first->second;
}

// The reader stays open: only the jumps are measured.
template <class Reader>
Contender contender(const std::string& name, const Indices& indices, const std::shared_ptr<Reader>& p_reader,
                    Hashes expected) {
  expected.resize(std::max(expected.size(),
                           static_cast<std::size_t>(*std::max_element(indices.begin(), indices.end()) + 1)));
  const auto run = [=, slice = std::size_t{0}](Stopwatch& watch) mutable {
    const std::size_t first = slice++ % SLICES * JUMPS / SLICES;
    watch.start();
    for (std::size_t i = first; i < first + JUMPS / SLICES; ++i) {
      p_reader->get(indices[i]);
    }
    watch.stop();
  };
  const auto wrong = [=] {
    long long count = 0;
    for (const long long index : indices) {
      p_reader->get(index);
      count += p_reader->pictureHash() == expected[static_cast<std::size_t>(index)] ? 0 : 1;
    }
    return count;
  };
  return {name, run, wrong};
}

Contender peer(const std::string& name, const Indices& indices,
               std::unique_ptr<PeerReader> (*p_open)(const std::string&), const std::string& path) {
  const Hashes& expected = inOrder(name, path, [&] { return readInOrder(*p_open(path)); });
  return contender(name, indices, std::shared_ptr<PeerReader>(p_open(path)), expected);
}

std::vector<Contender> jumps(const std::string& path, bool random) {
  const auto p_bare = std::make_shared<BareReader>(path);
  p_bare->index();
  const Indices indices = random ? randomJumps(p_bare->frameCount()) : shortSteps(p_bare->frameCount());
  const auto read_bare = [&] { return readInOrder(path, *p_bare); };
  const auto read_ours = [&] {
    OurReader reader(path);
    return readInOrder(reader);
  };
  std::vector<Contender> contenders = {
      contender("bare", indices, p_bare, inOrder("bare", path, read_bare)),
      contender("ours", indices, std::make_shared<OurReader>(path), inOrder("ours", path, read_ours))};
  if (haveFfms()) {
    contenders.push_back(peer("FFMS2", indices, &openFfms, path));
  }
  if (haveOpenCv()) {
    contenders.push_back(peer("OpenCV", indices, &openOpenCv, path));
  }
  return contenders;
}

// Files of the same making but of different length: a jump should cost the same in all of them.
std::vector<Contender> lengths(const std::string& clips) {
  std::vector<Contender> contenders;
  for (const char* p_name : {"group.mp4", "open_10min.mp4", "open_2h.mp4"}) {
    const auto p_reader = std::make_shared<OurReader>(clips + "/" + p_name);
    contenders.push_back({p_name, [=](Stopwatch& watch) {
                            // The first 4 groups of 60 pictures, so that what is decoded is the same.
                            std::mt19937 generator(3);
                            watch.start();
                            for (int i = 0; i < JUMPS; ++i) {
                              p_reader->get(static_cast<long long>(generator() % 240U));
                            }
                            watch.stop();
                          }});
  }
  return contenders;
}

}  // namespace

void addJumpJobs(Jobs& jobs, const std::string& clips) {
  const char* const names[] = {"jump_h264_b.mp4", "jump_h264_long.mp4",     "jump_h264_vfr.mkv",
                               "jump_h264.ts",    "jump_h264_open_gop.mp4", "jump_hevc_open_gop.mp4",
                               "jump_mpeg4.avi",  "jump_mpeg4_b.avi",       "jump_vp9.webm",
                               "jump_mjpeg.avi"};
  for (const bool random : {true, false}) {
    for (const char* p_name : names) {
      const std::string path = clips + "/" + p_name;
      jobs.push_back({random ? "random jumps" : "short steps", p_name, [=] { return jumps(path, random); },
                      Place::SHARED, SLICES});
    }
  }
  jobs.push_back({"jumps and file length", "8 s, 10 min, 2 h", [=] { return lengths(clips); }});
}

}  // namespace bench
}  // namespace zo
