#include "zo_navigation_test.h"

#include <algorithm>
#include <random>

namespace zo {
namespace test {
namespace {

constexpr unsigned SEED = 12345;
constexpr std::size_t MOST_DIFFERENCES = 3;

std::vector<long long> upwards(long long frames) {
  std::vector<long long> indices;
  for (long long i = 0; i < frames; ++i) {
    indices.push_back(i);
  }
  return indices;
}

std::vector<long long> downwards(long long frames) {
  std::vector<long long> indices = upwards(frames);
  std::reverse(indices.begin(), indices.end());
  return indices;
}

std::vector<long long> shuffled(long long frames) {
  std::vector<long long> indices = upwards(frames);
  std::shuffle(indices.begin(), indices.end(), std::mt19937(SEED));
  return indices;
}

// Back and forth by a few frames at a time, drifting towards the end.
std::vector<long long> shortSteps(long long frames) {
  const long long steps[] = {3, -1, 2, 2, -4, 5, 0, 1, -2, 4, -3};
  std::vector<long long> indices;
  long long at = 0;
  for (std::size_t i = 0; at < frames; at += steps[i++ % 11]) {
    indices.push_back(std::max(at, 0LL));
  }
  return indices;
}

// Reads without looking at the pixels.
void readToTheEnd(Reader& reader) {
  Frame frame;
  bool got_frame = true;
  while (got_frame) {
    ASSERT_EQ(0, reader.read(frame, got_frame, nullptr));
  }
}

void interruptARead(Reader& reader, Interruption interruption) {
  AlwaysInterrupts interrupts;
  Frame frame;
  bool got_frame = false;
  ffmpegCalls().poll_before_reading = interruption == Interruption::BEFORE_THE_PACKET;
  ffmpegCalls().poll_after_reading = interruption == Interruption::BEHIND_THE_PACKET;
  reader.read(frame, got_frame, &interrupts);
  ffmpegCalls().poll_before_reading = ffmpegCalls().poll_after_reading = false;
}

}  // namespace

void openIndexed(Reader& reader, const std::string& path, bool skip_errors) {
  ASSERT_EQ(0, reader.open(path.c_str(), -1, nullptr, true, skip_errors, false));
}

SeenFrame nextFrame(Reader& reader, Pixels pixels) {
  Frame frame;
  bool got_frame = false;
  SeenFrame seen;
  EXPECT_EQ(0, reader.read(frame, got_frame, nullptr));
  EXPECT_TRUE(got_frame);
  EXPECT_EQ(reader.timestamp(), frame.timestamp());
  seen.empty = !frame.initialized();
  seen.index = reader.frameIndex();
  seen.timestamp = frame.timestamp();
  if (!seen.empty) {
    seen.format = frame.format();
    seen.size = frame.size();
    seen.pixels = pixels == Pixels::WHOLE ? packedBytes(frame) : md5Hex(packedBytes(frame));
    seen.number = paintedNumber(frame);
  }
  return seen;
}

std::vector<SeenFrame> readAll(Reader& reader, Pixels pixels) {
  std::vector<SeenFrame> frames;
  while (reader.frameIndex() + 1 < reader.frameCount()) {
    frames.push_back(nextFrame(reader, pixels));
  }
  Frame frame;
  bool got_frame = true;
  EXPECT_EQ(0, reader.read(frame, got_frame, nullptr));
  EXPECT_FALSE(got_frame);
  return frames;
}

std::vector<int> numbersOf(const std::vector<SeenFrame>& frames) {
  std::vector<int> numbers;
  for (const SeenFrame& frame : frames) {
    numbers.push_back(frame.number);
  }
  return numbers;
}

std::vector<int> countingUp(int count) {
  std::vector<int> numbers;
  for (int i = 0; i < count; ++i) {
    numbers.push_back(i);
  }
  return numbers;
}

testing::AssertionResult sameFrame(const SeenFrame& expected, const SeenFrame& actual) {
  if (expected.empty == actual.empty && expected.index == actual.index &&
      expected.timestamp == actual.timestamp && expected.format == actual.format &&
      expected.size == actual.size && (expected.concealed || expected.pixels == actual.pixels)) {
    return testing::AssertionSuccess();
  }
  const auto describe = [](const SeenFrame& frame) {
    return (frame.empty ? std::string("an empty frame")
                        : "picture " + std::to_string(frame.number) + " (" + shortName(frame.size) + ")") +
           " with index " + std::to_string(frame.index) + " at " + std::to_string(frame.timestamp) + " ms";
  };
  return testing::AssertionFailure() << "expected " << describe(expected) << ", got " << describe(actual);
}

const std::vector<JumpOrder>& jumpOrders() {
  static const std::vector<JumpOrder> ORDERS = {
      {"Shuffled", &shuffled, 3, false, Interruption::NONE},
      {"Backward", &downwards, 1, false, Interruption::NONE},
      {"BackwardReadingOn", &downwards, 2, false, Interruption::NONE},
      {"Forward", &upwards, 1, false, Interruption::NONE},
      {"ForwardWithoutReading", &upwards, 0, false, Interruption::NONE},
      {"ShortSteps", &shortSteps, 1, false, Interruption::NONE},
      {"AfterTheEnd", &shuffled, 2, true, Interruption::NONE},
      {"AfterInterruptedReads", &shuffled, 2, false, Interruption::BEFORE_THE_PACKET},
      {"AfterLostPackets", &shuffled, 2, false, Interruption::BEHIND_THE_PACKET},
      {"ForwardAfterLostPackets", &upwards, 1, false, Interruption::BEHIND_THE_PACKET},
  };
  return ORDERS;
}

void expectJumpsGiveTheSequence(Reader& reader, const std::vector<SeenFrame>& sequence,
                                const JumpOrder& order, Pixels pixels, std::size_t most_jumps) {
  SCOPED_TRACE(std::string("jumps in the order ") + order.name);
  const long long count = static_cast<long long>(sequence.size());
  ASSERT_EQ(count, reader.frameCount());
  std::size_t differences = 0;
  long long before = -1;
  const std::vector<long long> indices = order.indices(count);
  most_jumps = repetitions(most_jumps, std::min<std::size_t>(most_jumps, 11));
  const std::size_t stride = (indices.size() + most_jumps - 1) / most_jumps;
  for (std::size_t jump = 0; jump < indices.size(); jump += stride) {
    const long long index = indices[jump];
    if (order.to_the_end) {
      readToTheEnd(reader);
    }
    if (order.interruption != Interruption::NONE) {
      interruptARead(reader, order.interruption);
    }
    reader.moveByIndex(index);
    ASSERT_EQ(index - 1, reader.frameIndex());
    // Frames are also reached without reading each: every seventh of those is looked at.
    const int frames_read = order.frames_read == 0 && index % 7 == 0 ? 1 : order.frames_read;
    for (long long i = index; i < std::min(index + frames_read, count); ++i) {
      const testing::AssertionResult same =
          sameFrame(sequence[static_cast<std::size_t>(i)], nextFrame(reader, pixels));
      EXPECT_TRUE(same) << "jump from " << before << " to " << index << ", frame " << i;
      differences += same ? 0 : 1;
      if (differences >= MOST_DIFFERENCES) {
        return;
      }
    }
    before = index;
  }
}

}  // namespace test
}  // namespace zo
