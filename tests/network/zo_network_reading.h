#ifndef ZO_TESTS_NETWORK_ZO_NETWORK_READING_H
#define ZO_TESTS_NETWORK_ZO_NETWORK_READING_H

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "zo_core/zo_core.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_reader.h"

namespace zo {
namespace test {

/// Milliseconds that `body` takes.
template <class Body>
long long elapsedMs(Body&& body) {
  const long long start = getMonotonicTimeMs();
  body();
  return getMonotonicTimeMs() - start;
}

/// Far above every budget used here, far below a hang.
constexpr long long HANG_MS = 8000;

/// Stops the call that polls it once the time has come.
class StopAfter : public IInterruptable {
 public:
  explicit StopAfter(long long ms) : _end_ms(getMonotonicTimeMs() + ms) {}
  int isInterrupted() override { return getMonotonicTimeMs() >= _end_ms ? 1 : 0; }

 private:
  long long _end_ms;
};

/// Reads up to `most` frames and returns how many there were. Throws what read() throws.
inline int readFrames(VideoReader& reader, int most) {
  Frame frame;
  bool got_frame = true;
  int count = 0;
  while (count < most && reader.read(frame, got_frame, nullptr) == 0 && got_frame) {
    ++count;
  }
  return count;
}

/// The status that `body` throws, ZO_STATUS_OK when it throws nothing.
template <class Body>
Status statusOf(Body&& body) {
  try {
    body();
  } catch (const Exception& exception) {
    return exception.status();
  }
  return ZO_STATUS_OK;
}

/// Notes a figure in the test's report.
inline void report(const std::string& name, long long value) {
  testing::Test::RecordProperty(name, static_cast<int>(value));
}

}  // namespace test
}  // namespace zo

#endif
