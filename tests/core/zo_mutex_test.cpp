#include "zo_core/zo_mutex.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace zo {
namespace {

TEST(FastMutexTest, LetsOneThreadInAtATime) {
  FastMutex mutex;
  int counter = 0;  // no atomic: only the mutex keeps the others out between reading and writing it
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 500; ++round) {
        const LockGuard<FastMutex> guard(mutex);
        const int before = counter;
        std::this_thread::yield();
        counter = before + 1;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(2000, counter);
}

TEST(LockGuardTest, LocksForItsLifetimeAlsoWhenAnExceptionEndsIt) {
  struct Recorder {
    int depth = 0;
    int locks = 0;
    void lock() {
      ++depth;
      ++locks;
    }
    void unlock() { --depth; }
  } recorder;
  try {
    const LockGuard<Recorder> guard(recorder);
    EXPECT_EQ(1, recorder.depth);
    throw std::runtime_error("leave");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(0, recorder.depth);
  EXPECT_EQ(1, recorder.locks);
}

}  // namespace
}  // namespace zo
