// Files in which counting packets by their times cannot tell every picture from every other, or in which the
// start cannot be sought. What happens there is known and stays as it is.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

class InexactFiles : public testing::Test {
 protected:
  // 46 pictures, a key frame every 12.
  std::string clip(const std::string& file, const std::string& codec, ClipOptions options) {
    options.codec = codec;
    options.width = 64;
    options.height = 64;
    options.frames = 46;
    return makeClip(_directory.file(file), options).path;
  }

  static std::vector<int> numbersFrom(int first, int end) {
    std::vector<int> numbers;
    for (int i = first; i < end; ++i) {
      numbers.push_back(i);
    }
    return numbers;
  }

  static void expectExact(Reader& reader, const std::vector<SeenFrame>& sequence) {
    for (const JumpOrder& order : jumpOrders()) {
      expectJumpsGiveTheSequence(reader, sequence, order);
    }
  }

  TempDir _directory;
};

ClipOptions withBFrames() {
  ClipOptions options;
  options.b_frames = 2;
  return options;
}

ClipOptions startingLate(int packets) {
  ClipOptions options;
  options.skipped_packets = packets;
  return options;
}

ClipOptions startingAt(int64_t first_pts) {
  ClipOptions options;
  options.first_pts = first_pts;
  return options;
}

// AVI keeps no presentation times, so packets count by their decoding times: the first picture comes one
// frame late, and the last one finds no index left.
class AviWithBFrames : public InexactFiles, public testing::WithParamInterface<const char*> {};

TEST_P(AviWithBFrames, IsShiftedByTheDecodersDelay) {
  if (!haveEncoder(GetParam())) {
    GTEST_SKIP() << "this FFmpeg cannot encode " << GetParam();
  }
  Reader reader;
  openIndexed(reader, clip("a.avi", GetParam(), withBFrames()));
  ASSERT_EQ(46, reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader);
  EXPECT_EQ(numbersFrom(-1, 45), numbersOf(sequence));
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    EXPECT_EQ(40 * static_cast<long long>(i), sequence[i].timestamp);
  }
  expectExact(reader, sequence);
}

INSTANTIATE_TEST_SUITE_P(InexactFiles, AviWithBFrames, testing::Values("mpeg4", "libx264"),
                         [](const auto& test) { return std::string(test.param); });

// Matroska is sought through its list of key frames, so what comes before the first one is out of reach.
TEST_F(InexactFiles, MkvWithoutKeyFrameAtTheStartBeginsAtItsFirstKeyFrame) {
  Reader reader;
  openIndexed(reader, clip("a.mkv", "mpeg4", startingLate(5)));
  ASSERT_EQ(34, reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader);
  EXPECT_EQ(numbersFrom(12, 46), numbersOf(sequence));
  expectExact(reader, sequence);
}

// Its list of key frames has no negative times.
TEST_F(InexactFiles, MkvWithNegativeTimesBeginsAtItsFirstKeyFrameFromZeroOn) {
  Reader reader;
  openIndexed(reader, clip("a.mkv", "mpeg4", startingAt(-20)));
  ASSERT_EQ(22, reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader);
  EXPECT_EQ(numbersFrom(24, 46), numbersOf(sequence));
  EXPECT_EQ(160, sequence[0].timestamp);
  expectExact(reader, sequence);
}

TEST_F(InexactFiles, MkvWithoutAnyKeyFrameFromZeroOnCannotBeOpenedWithNavigation) {
  ClipOptions options = startingAt(-20);
  options.gop = 1000;
  const std::string path = clip("a.mkv", "mpeg4", options);
  Reader reader;
  const Exception exception =
      caughtZoException([&] { reader.open(path.c_str(), -1, nullptr, true, false, false); });
  EXPECT_EQ(ZO_STATUS_SEEK_ERROR, exception.status());
  EXPECT_STREQ("_seekToStart", exception.function());
  EXPECT_EQ(0, reader.open(path.c_str(), -1, nullptr, false, false, false));
}

// An edit list makes the demuxer deliver packets from before the start. They all count as time 0, so only one
// of them can be told: the others stay empty.
TEST_F(InexactFiles, Mp4PacketsBeforeItsEditListBeginsShareTheTimeZero) {
  Reader reader;
  openIndexed(reader, clip("a.mp4", "mpeg4", startingAt(-3)));
  ASSERT_EQ(46, reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader);
  std::vector<int> expected = {3, -1, -1, -1};
  const std::vector<int> rest = numbersFrom(4, 46);
  expected.insert(expected.end(), rest.begin(), rest.end());
  EXPECT_EQ(expected, numbersOf(sequence));
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    EXPECT_EQ(i < 4 ? 0 : 40 * static_cast<long long>(i - 3), sequence[i].timestamp);
  }
  // From the first frame with a time of its own on, jumps are exact.
  for (const long long index : {4LL, 45LL, 17LL, 5LL, 12LL, 33LL}) {
    reader.moveByIndex(index);
    EXPECT_TRUE(sameFrame(sequence[static_cast<std::size_t>(index)], nextFrame(reader)));
  }
}

// Program streams give times to some packets only. Two packets share the first one.
TEST_F(InexactFiles, ProgramStreamsGiveTwoPacketsTheSameTime) {
  if (!haveEncoder("mpeg2video")) {
    GTEST_SKIP() << "this FFmpeg cannot encode mpeg2video";
  }
  Reader reader;
  openIndexed(reader, clip("a.mpg", "mpeg2video", ClipOptions()));
  ASSERT_EQ(46, reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader);
  EXPECT_EQ(sequence[0].timestamp, sequence[1].timestamp);
  EXPECT_EQ(0, sequence[0].number);
  EXPECT_TRUE(sequence[1].empty);
  EXPECT_EQ(numbersFrom(1, 45), numbersOf({sequence.begin() + 2, sequence.end()}));
}

// Where a decoder makes up pictures and delivers them out of the order of their times, reading on counts them
// as it goes, one frame each, and stays ahead of the index. A jump counts afresh by the picture's time, so it
// gives the frame that the index means.
TEST_F(InexactFiles, JumpsFollowTheIndexWherePicturesComeOutOfOrder) {
  ClipOptions options = startingLate(5);
  options.b_frames = 2;
  Reader reader;
  openIndexed(reader, clip("a.mp4", "mpeg4", options), true);
  ASSERT_EQ(41, reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader);
  EXPECT_NE(45, sequence.back().number) << "read in sequence, the last pictures find no index left";
  reader.moveByIndex(40);
  EXPECT_EQ(45, nextFrame(reader).number);
  Reader fresh;
  openIndexed(fresh, reader.url(), true);
  // The first key frame left is picture 12, and packets 0 to 4 are missing.
  for (const int number : {30, 12, 45, 20, 13, 44}) {
    fresh.moveByIndex(number - 5);
    const SeenFrame frame = nextFrame(fresh);
    EXPECT_EQ(number, frame.number);
    EXPECT_EQ(40 * number, frame.timestamp);
  }
}

}  // namespace
}  // namespace test
}  // namespace zo
