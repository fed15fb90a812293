// Many readers in many threads, the first ones of the process among them. Made for the thread sanitizer; the
// results are looked at everywhere.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "zo_test_support.h"
#include "zo_video/zo_video_reader.h"

namespace zo {
namespace test {
namespace {

constexpr int THREADS = 8;
constexpr int FRAMES = 40;

/// Lets all threads go at the same moment.
class StartingLine {
 public:
  void wait() {
    ++_arrived;
    while (_arrived < THREADS) {
      std::this_thread::yield();
    }
  }

 private:
  std::atomic<int> _arrived{0};
};

template <class Body>
void inThreads(const Body& body) {
  StartingLine line;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < THREADS; ++thread) {
    threads.emplace_back([&, thread] {
      line.wait();
      body(thread);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// Stands first: here FFmpeg is set up, by whichever thread is first.
TEST(ReaderThreads, ConstructTheFirstReadersOfTheProcessTogether) {
  std::atomic<int> closed{0};
  inThreads([&](int) {
    for (int i = 0; i < 20; ++i) {
      const VideoReader reader;
      closed += reader.format() == ZO_FRAME_FORMAT_UNDEFINED ? 1 : 0;
    }
  });
  EXPECT_EQ(20 * THREADS, closed);
}

TEST(ReaderThreads, ReadAndJumpInTheSameFileIndependently) {
  const TempDir directory;
  ClipOptions options;
  options.frames = FRAMES;
  options.gop = 8;
  options.b_frames = 2;
  const std::string path = makeClip(directory.file("a.mp4"), options).path;
  std::atomic<int> right{0};
  inThreads([&](int thread) {
    VideoReader reader;
    Frame frame;
    for (int round = 0; round < 3; ++round) {
      // Some of them also write and load the file with the index, at the same time.
      reader.open(path.c_str(), -1, nullptr, true, false, thread % 2 == 0);
      bool got_frame = false;
      for (int i = 0; i < FRAMES; ++i) {
        const int index = (i * 17 + thread * 5) % FRAMES;
        if (thread % 3 != 0) {
          reader.moveByIndex(index);
        }
        reader.read(frame, got_frame, nullptr);
        const int expected = thread % 3 != 0 ? index : i;
        right += got_frame && frame.initialized() && paintedNumber(frame) == expected ? 1 : 0;
      }
    }
  });
  EXPECT_EQ(3 * FRAMES * THREADS, right);
}

class StopFlag : public IInterruptable {
 public:
  int isInterrupted() override { return _stop ? 1 : 0; }
  void stop() { _stop = true; }

 private:
  std::atomic<bool> _stop{false};
};

TEST(ReaderThreads, InterruptAnOpeningFromAnotherThread) {
  StalledServer server;
  const std::string url = server.url("http", "clip.ts");
  inThreads([&](int) {
    StopFlag flag;
    VideoReader reader;
    std::thread stopper([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      flag.stop();
    });
    EXPECT_EQ(1, reader.open(url.c_str(), 60000, &flag, true, false, false));
    stopper.join();
  });
}

TEST(ReaderThreads, HandAReaderFromThreadToThread) {
  const TempDir directory;
  const std::string path = makeClip(directory.file("a.mp4"), ClipOptions()).path;
  VideoReader reader;
  reader.open(path.c_str(), -1, nullptr, true, false, false);
  for (const int index : {20, 3, 29, 0}) {
    std::thread([&] {
      Frame frame;
      bool got_frame = false;
      reader.moveByIndex(index);
      reader.read(frame, got_frame, nullptr);
      EXPECT_EQ(index, paintedNumber(frame));
    }).join();
  }
}

}  // namespace
}  // namespace test
}  // namespace zo
