// What jumping costs in decoded pictures, and what the file that keeps the index saves.
//
//   navigation_benchmark [CLIP...]
//
// Without clips it makes its own: one of every kind, 400 frames, a key frame every 50.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "zo_ffmpeg_calls.h"
#include "zo_test_clip.h"
#include "zo_test_files.h"
#include "zo_video/zo_navigation_cache.h"
#include "zo_video/zo_video_reader_impl.h"

namespace {

using Reader = zo::VideoReader::Impl;
using zo::test::ClipOptions;
using zo::test::ffmpegCalls;

constexpr int JUMPS = 200;
constexpr std::size_t TWO_HOURS = 216000;  // frames, 30 a second

double processorSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Median milliseconds of processor time.
double milliseconds(int rounds, const std::function<void()>& work) {
  std::vector<double> times;
  for (int round = 0; round < rounds; ++round) {
    const double start = processorSeconds();
    work();
    times.push_back(1000 * (processorSeconds() - start));
  }
  std::nth_element(times.begin(), times.begin() + rounds / 2, times.end());
  return times[static_cast<std::size_t>(rounds / 2)];
}

// --- Jumps -----------------------------------------------------------------------------------------------

struct Cost {
  double seeks, packets, pictures, ms;
};

Cost jump(Reader& reader, const std::vector<long long>& indices) {
  ffmpegCalls().resetCounts();
  zo::Frame frame;
  bool got_frame = false;
  const double start = processorSeconds();
  for (const long long index : indices) {
    reader.moveByIndex(index);
    reader.read(frame, got_frame, nullptr);
  }
  const double jumps = static_cast<double>(indices.size());
  return {static_cast<double>(ffmpegCalls().seeks.size()) / jumps, ffmpegCalls().packets_sent / jumps,
          ffmpegCalls().pictures_received / jumps, 1000 * (processorSeconds() - start) / jumps};
}

void printJumps(const std::string& name, const std::string& path) {
  Reader reader;
  reader.open(path.c_str(), -1, nullptr, true, true, false);
  const long long count = reader.frameCount();
  if (count < 2) {
    std::printf("%-28s cannot be navigated\n", name.c_str());
    return;
  }
  std::mt19937 random(1);
  std::vector<long long> anywhere, forward, backward;
  for (int i = 0; i < JUMPS; ++i) {
    anywhere.push_back(static_cast<long long>(random()) % count);
    forward.push_back(i % count);
    backward.push_back(count - 1 - i % count);
  }
  const struct {
    const char* name;
    const std::vector<long long>& indices;
  } orders[] = {{"anywhere", anywhere}, {"next frame", forward}, {"previous frame", backward}};
  for (const auto& order : orders) {
    const Cost cost = jump(reader, order.indices);
    reader.decodeEveryPicture();
    const Cost whole = jump(reader, order.indices);
    reader.open(path.c_str(), -1, nullptr, true, true, false);
    std::printf("%-28s %-15s %7.2f %9.1f %9.1f %12.1f %9.3f\n", name.c_str(), order.name, cost.seeks,
                cost.packets, cost.pictures, whole.pictures, cost.ms);
  }
}

struct Kind {
  const char* name;
  const char* file;
  const char* codec;
  int b_frames;
  bool open_gop;
};

void printAllJumps(const std::vector<std::string>& clips) {
  std::printf("Per jump, its read included\n%-28s %-15s %7s %9s %9s %12s %9s\n", "file", "jump", "seeks",
              "packets", "pictures", "undiscarded", "ms");
  for (const std::string& clip : clips) {
    printJumps(clip.substr(clip.rfind('/') + 1), clip);
  }
  if (!clips.empty()) {
    return;
  }
  const zo::test::TempDir directory;
  for (const Kind& kind :
       {Kind{"MPEG-4 in AVI", "a.avi", "mpeg4", 0, false}, Kind{"H.264 in MP4", "a.mp4", "libx264", 0, false},
        Kind{"H.264, B, MP4", "b.mp4", "libx264", 2, false},
        Kind{"H.264, B, Matroska", "b.mkv", "libx264", 2, false},
        Kind{"H.264, B, transport stream", "b.ts", "libx264", 2, false},
        Kind{"H.264, open groups, MP4", "c.mp4", "libx264", 3, true},
        Kind{"HEVC, open groups, MP4", "d.mp4", "libx265", 3, true},
        Kind{"VP9 in WebM", "e.webm", "libvpx-vp9", 0, false}}) {
    if (!zo::test::haveEncoder(kind.codec)) {
      continue;
    }
    ClipOptions options;
    options.codec = kind.codec;
    options.width = 320;
    options.height = 240;
    options.frames = 400;
    options.gop = 50;
    options.b_frames = kind.b_frames;
    options.open_gop = kind.open_gop;
    printJumps(kind.name, makeClip(directory.file(kind.file), options).path);
  }
}

// --- The file that keeps the index -----------------------------------------------------------------------

void printCache() {
  const zo::test::TempDir directory;
  // Two hours of tiny pictures: scanning a real film costs more, as it reads its bytes.
  ClipOptions options;
  options.width = 16;
  options.height = 16;
  options.frames = static_cast<int>(TWO_HOURS);
  options.frame_rate = {30, 1};
  options.gop = 250;
  const std::string clip = makeClip(directory.file("long.mp4"), options).path;
  const std::string sidecar = clip + ".zo";
  Reader reader;
  const double bare = milliseconds(5, [&] { reader.open(clip.c_str(), -1, nullptr, false, false, false); });
  const double scan =
      milliseconds(5, [&] { reader.open(clip.c_str(), -1, nullptr, true, false, false); }) - bare;
  reader.open(clip.c_str(), -1, nullptr, true, false, true);
  const double cached =
      milliseconds(5, [&] { reader.open(clip.c_str(), -1, nullptr, true, false, true); }) - bare;

  std::vector<unsigned> words;
  const double load = milliseconds(21, [&] {
    words.clear();
    zo::loadNavigationCache(sidecar, words);
  });
  const double save = milliseconds(21, [&] { zo::saveNavigationCache(sidecar, words); });
  const double extraction = milliseconds(5, [&] {
    std::ifstream stream(sidecar);
    words.clear();
    for (unsigned word; stream >> word;) {
      words.push_back(word);
    }
  });
  const double insertion = milliseconds(5, [&] {
    std::ofstream stream(sidecar);
    for (const unsigned word : words) {
      stream << word << '\n';
    }
  });
  const auto print = [&](const char* p_name, double ms, double against) {
    std::printf("%-44s %9.2f ms %8.1f ns an entry  %6.2f\n", p_name, ms, 1e6 * ms / TWO_HOURS, ms / against);
  };
  std::printf("\nIndex of %zu frames, processor time; the last column is relative to scanning\n", TWO_HOURS);
  print("opening, without what follows", bare, scan);
  print("scanning the packets", scan, scan);
  print("taking the index from its file, as a whole", cached, scan);
  print("loading the file", load, scan);
  print("loading by formatted stream extraction", extraction, scan);
  print("saving the file", save, scan);
  print("saving by formatted stream insertion", insertion, scan);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    printAllJumps({argv + 1, argv + argc});
    if (argc == 1) {
      printCache();
    }
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "navigation_benchmark: %s\n", exception.what());
    return 1;
  }
}
