#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "zo_core/zo_frame.h"
#include "zo_test_support.h"

namespace zo {
namespace {

// Each thread copies and drops frames over the same pixels and reshapes its own copies. The last one out
// frees the memory, once; nobody sees pixels change.
TEST(FrameThreads, ShareAndDropPixelsSafely) {
  const Frame shared = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(33, 7), 2);
  const std::string pixels = test::packedBytes(shared);
  std::atomic<int> differences(0);
  std::vector<std::thread> threads;
  for (unsigned char id = 1; id <= 4; ++id) {
    threads.emplace_back([&, id] {
      std::vector<Frame> frames;
      for (int round = 0; round < 300; ++round) {
        frames.emplace_back(shared);
        Frame mine = frames.back();
        mine.reuse(ZO_FRAME_FORMAT_GRAY8, Size(33, 7), DeviceContext(), 0);
        test::fillFrame(mine, id);
        if (test::packedBytes(frames.back()) != pixels) {
          ++differences;
        }
        if (round % 10 == 9) {
          frames.clear();
        }
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(0, differences);
  EXPECT_EQ(pixels, test::packedBytes(shared));
}

// The owner may write again as soon as it is the only holder, however lately the other thread let go.
TEST(FrameThreads, WriteAgainAfterAnotherThreadLetGo) {
  for (int round = 0; round < 100; ++round) {
    Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(16, 4), 2);
    std::thread reader([copy = frame]() mutable {
      EXPECT_FALSE(test::packedBytes(copy).empty());
      copy.clear();
    });
    for (int i = 0; i < 20; ++i) {
      frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(16, 4), DeviceContext(), 0);
      test::fillFrame(frame, static_cast<unsigned char>(i));
    }
    reader.join();
  }
}

}  // namespace
}  // namespace zo
