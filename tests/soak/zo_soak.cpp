// Uses the library for a long time and watches what the process holds: zo_soak [OPENS [FRAMES [JUMPS]]]
//
// Opens small clips of many kinds again and again, through the classes and through the plain functions, reads
// and jumps in them, converts, compresses and captures, and opens files that cannot be opened. Prints a table
// of memory, descriptors and threads, and fails when any of them grew after the first fifth.
#include <dirent.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "zo_test_support.h"
#include "zo_video/zo_video.h"
#include "zo_video_c/zo_video_c.h"

namespace {

using zo::test::ClipOptions;

struct Holdings {
  long long memory_kib;
  int descriptors;
  int threads;
};

int entries(const char* directory) {
  int count = 0;
  if (DIR* p_directory = ::opendir(directory)) {
    while (const dirent* p_entry = ::readdir(p_directory)) {
      count += p_entry->d_name[0] != '.' ? 1 : 0;
    }
    ::closedir(p_directory);
  }
  return count;
}

Holdings holdings() {
  std::ifstream statm("/proc/self/statm");
  long long pages = 0;
  long long resident = 0;
  statm >> pages >> resident;
  statm.close();
  return {resident * ::sysconf(_SC_PAGESIZE) / 1024, entries("/proc/self/fd"), entries("/proc/self/task")};
}

struct Work {
  long long opens = 0;
  long long frames = 0;
  long long jumps = 0;
};

std::vector<std::string> makeClips(const zo::test::TempDir& directory) {
  struct Kind {
    const char* file;
    const char* codec;
    int b_frames;
    bool audio;
  };
  const Kind kinds[] = {{"b_frames.mp4", "libx264", 2, true}, {"plain.mkv", "libx264", 0, false},
                        {"open.ts", "mpeg2video", 2, true},   {"b_frames.avi", "mpeg4", 2, false},
                        {"plain.avi", "mpeg4", 0, true},      {"intra.mov", "mjpeg", 0, false},
                        {"hevc.mp4", "libx265", 2, false},    {"vp9.webm", "libvpx-vp9", 0, false}};
  std::vector<std::string> paths;
  for (const Kind& kind : kinds) {
    if (!zo::test::haveEncoder(kind.codec)) {
      continue;
    }
    ClipOptions options;
    options.codec = kind.codec;
    options.b_frames = kind.b_frames;
    options.audio = kind.audio;
    options.frames = 120;
    if (options.codec == "mjpeg") {
      options.pixel_format = AV_PIX_FMT_YUVJ420P;
    }
    paths.push_back(zo::test::makeClip(directory.file(kind.file), options).path);
  }
  ClipOptions damaged;
  damaged.frames = 120;
  damaged.corrupted_packets = {5, 40, 41};
  damaged.dropped_packets = {60};
  paths.push_back(zo::test::makeClip(directory.file("damaged.mkv"), damaged).path);
  return paths;
}

// Counts only what worked: a damaged clip may refuse a frame.
void useClasses(const std::string& path, int frames, int jumps, std::mt19937& random, Work& work) {
  zo::VideoReader reader;
  zo::VideoConverter converter;
  zo::JpegEncoder encoder;
  zo::Frame frame;
  zo::Frame small;
  zo::Buffer jpeg;
  reader.open(path.c_str(), 5000, nullptr, true, true, true);
  ++work.opens;
  bool got_frame = true;
  for (int i = 0; i < frames && got_frame; ++i) {
    reader.read(frame, got_frame, nullptr);
    work.frames += got_frame ? 1 : 0;
    if (got_frame && frame.initialized() && i % 25 == 0) {
      converter.convert(frame, zo::ZO_FRAME_FORMAT_BGR24, zo::Size(40, 30), small,
                        zo::VideoConverter::ZO_SCALE_ALGORITHM_AREA);
      const unsigned char color[3] = {0, 255, 0};
      zo::drawText(small, "12", zo::Point(2, 2), color, 10 + i % 8);
      encoder.encode(small, 80, jpeg);
    }
  }
  for (int i = 0; i < jumps && reader.frameCount() > 0; ++i) {
    reader.moveByIndex(static_cast<long long>(random() % static_cast<unsigned long>(reader.frameCount())));
    reader.read(frame, got_frame, nullptr);
    ++work.jumps;
    work.frames += got_frame ? 1 : 0;
  }
}

void usePlainFunctions(const std::string& path, int frames, int jumps, std::mt19937& random, Work& work) {
  ZoVideoReader* p_reader = nullptr;
  ZoFrame* p_frame = nullptr;
  char message[256];
  if (zoFrame_create(&p_frame, message, sizeof(message)) != 0 ||
      zoVideoReader_create(nullptr, nullptr, path.c_str(), static_cast<unsigned>(path.size()), 5000, 1, 1, 0,
                           &p_reader, message, sizeof(message)) != 0) {
    std::fprintf(stderr, "zo_soak: %s: %s\n", path.c_str(), message);
    std::exit(1);
  }
  ++work.opens;
  int ready = 1;
  for (int i = 0; i < frames && ready != 0; ++i) {
    if (zoVideoReader_read(p_reader, p_frame, &ready, message, sizeof(message)) == 0) {
      work.frames += ready;
    }
  }
  for (int i = 0; i < jumps && p_reader->frame_count > 0; ++i) {
    const long long index =
        static_cast<long long>(random() % static_cast<unsigned long>(p_reader->frame_count));
    if (zoVideoReader_moveByIndex(p_reader, index, message, sizeof(message)) == 0) {
      ++work.jumps;
    }
    if (zoVideoReader_read(p_reader, p_frame, &ready, message, sizeof(message)) == 0) {
      work.frames += ready;
    }
  }
  zoVideoReader_moveByIndex(p_reader, -1, message, sizeof(message));  // refused
  zoVideoReader_release(&p_reader);
  zoFrame_release(&p_frame);
}

void useCapture(const std::string& path, int frames, Work& work) {
  zo::VideoCapture capture(false, true);
  zo::Frame frame;
  zo::Buffer jpeg;
  long long timestamp = 0;
  capture.open(path, 5000);
  ++work.opens;
  try {
    for (int i = 0; i < frames && capture.read(frame); ++i) {
      ++work.frames;
    }
    capture.readJpeg(jpeg, timestamp);
  } catch (const zo::Exception&) {
    // a damaged packet: capture does not skip errors
  }
}

void useWrongly(const std::string& path) {
  zo::VideoReader reader;
  for (const std::string& url : {path + ".missing", std::string("/"), path + ".zo"}) {
    try {
      reader.open(url.c_str(), 1000, nullptr, true, false, false);
    } catch (const zo::Exception&) {
    }
  }
}

long long argument(int argc, char** argv, int position, long long otherwise) {
  return argc > position ? std::atoll(argv[position]) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
  const long long opens = argument(argc, argv, 1, 2000);
  const long long frames = argument(argc, argv, 2, 200000);
  const long long jumps = argument(argc, argv, 3, 20000);
  constexpr int ROWS = 10;

  const zo::test::TempDir directory;
  const std::vector<std::string> clips = makeClips(directory);
  const int jumps_each = static_cast<int>(jumps / opens) + 1;
  std::mt19937 random(20240101);
  Work work;
  std::vector<Holdings> rows;
  std::printf("| opens | frames | jumps | memory KiB | descriptors | threads |\n|---|---|---|---|---|---|\n");
  std::size_t round = 0;
  while (rows.size() < ROWS) {
    const std::string& path = clips[round % clips.size()];
    switch (round++ / clips.size() % 4) {
      case 0:
      case 1:
        useClasses(path, 200, 2 * jumps_each, random, work);
        break;
      case 2:
        usePlainFunctions(path, 200, 2 * jumps_each, random, work);
        break;
      default:
        useCapture(path, 200, work);
        useWrongly(path);
    }
    const long long part = static_cast<long long>(rows.size()) + 1;
    if (work.opens * ROWS >= opens * part && work.frames * ROWS >= frames * part &&
        work.jumps * ROWS >= jumps * part) {
      rows.push_back(holdings());
      std::printf("| %lld | %lld | %lld | %lld | %d | %d |\n", work.opens, work.frames, work.jumps,
                  rows.back().memory_kib, rows.back().descriptors, rows.back().threads);
      std::fflush(stdout);
    }
  }
  // The heap settles in the first fifth; afterwards nothing may grow by more than its noise.
  constexpr long long NOISE_KIB = 2048;
  const Holdings& early = rows[1];
  const Holdings& late = rows.back();
  const bool flat = late.memory_kib <= early.memory_kib + NOISE_KIB &&
                    late.descriptors == early.descriptors && late.threads == early.threads;
  std::printf("%s\n", flat ? "flat" : "NOT flat");
  return flat ? 0 : 1;
}
