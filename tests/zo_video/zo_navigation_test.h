// What the tests of frame navigation share: reading a clip in sequence, jumping about in it, comparing.
#ifndef ZO_TESTS_ZO_NAVIGATION_TEST_H
#define ZO_TESTS_ZO_NAVIGATION_TEST_H

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "zo_core/zo_frame.h"
#include "zo_core/zo_interrupt.h"
#include "zo_ffmpeg_calls.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_reader_impl.h"

namespace zo {
namespace test {

/// The implementation itself: what VideoReader forwards to, and a little more.
using Reader = VideoReader::Impl;

/// A frame as the reader delivered it.
struct SeenFrame {
  bool empty = false;
  long long index = -1;
  long long timestamp = 0;
  FrameFormat format = ZO_FRAME_FORMAT_UNDEFINED;
  Size size;
  std::string pixels;      ///< or their digest, where the pictures are large
  int number = -1;         ///< painted into it; -1 for an empty frame
  bool concealed = false;  ///< set by tests: the picture may look different, its place and time may not
};

enum class Pixels { WHOLE, DIGEST };

/// Opens with navigation and without its file.
void openIndexed(Reader& reader, const std::string& path, bool skip_errors = false);

/// The next frame; fails the test when there is none.
SeenFrame nextFrame(Reader& reader, Pixels pixels = Pixels::WHOLE);

/// Reads until got_frame is false.
std::vector<SeenFrame> readAll(Reader& reader, Pixels pixels = Pixels::WHOLE);

/// The numbers painted into the frames, -1 for empty ones.
std::vector<int> numbersOf(const std::vector<SeenFrame>& frames);
/// 0, 1, ... count - 1.
std::vector<int> countingUp(int count);

testing::AssertionResult sameFrame(const SeenFrame& expected, const SeenFrame& actual);

/// Interrupts from the first poll on.
class AlwaysInterrupts : public IInterruptable {
 public:
  int isInterrupted() override { return 1; }
};

/// How a read was interrupted: while it waited for a packet, or when the packet was there, which is lost
/// then.
enum class Interruption { NONE, BEFORE_THE_PACKET, BEHIND_THE_PACKET };

/// An order in which to visit frames.
struct JumpOrder {
  const char* name;
  /// Frame indices below `frames`, one after the other.
  std::vector<long long> (*indices)(long long frames);
  int frames_read;            ///< after each jump
  bool to_the_end;            ///< read to the end of the stream before each jump
  Interruption interruption;  ///< of a read before each jump
};

/// Every order: shuffled, backward, forward, in short steps, after the end, after interrupted reads.
const std::vector<JumpOrder>& jumpOrders();

/// Jumps through `reader` in that order and compares every frame with `sequence`, which the same file gave
/// when it was read from start to end. Stops at the first few differences.
/// @param most_jumps  Of a longer order, this many are taken; in an emulator fewer.
void expectJumpsGiveTheSequence(Reader& reader, const std::vector<SeenFrame>& sequence,
                                const JumpOrder& order, Pixels pixels = Pixels::WHOLE,
                                std::size_t most_jumps = 1000);

}  // namespace test
}  // namespace zo

#endif
