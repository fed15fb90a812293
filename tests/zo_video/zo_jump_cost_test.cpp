// What jumps cost, counted in calls into FFmpeg.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

struct CostCase {
  const char* name;
  const char* file;
  const char* codec;
  int b_frames;
  int landings;  ///< seeks that a jump may take once the reader knows the file
};

void PrintTo(const CostCase& param, std::ostream* p_stream) {
  *p_stream << param.name;
}

class JumpCost : public testing::TestWithParam<CostCase> {
 protected:
  static constexpr int FRAMES = 80;
  static constexpr int GOP = 20;

  void SetUp() override {
    const CostCase& param = GetParam();
    if (!haveEncoder(param.codec)) {
      GTEST_SKIP() << "this FFmpeg cannot encode " << param.codec;
    }
    ClipOptions options;
    options.codec = param.codec;
    options.width = 64;
    options.height = 64;
    options.frames = FRAMES;
    options.gop = GOP;
    options.b_frames = param.b_frames;
    openIndexed(_reader, makeClip(_directory.file(param.file), options).path);
    ASSERT_EQ(FRAMES, _reader.frameCount());
    ffmpegCalls().reset();
  }

  // Packets that decoders with reordering hold back before the first picture comes.
  int delay() const { return GetParam().b_frames == 0 ? 1 : GetParam().b_frames + 3; }

  TempDir _directory;
  Reader _reader;
};

TEST_P(JumpCost, ReadingAndSteppingForwardSeekNeverAndDecodeEachPictureOnce) {
  for (int i = 0; i < FRAMES; ++i) {
    _reader.moveByIndex(i);
    EXPECT_EQ(i, nextFrame(_reader).number);
  }
  EXPECT_TRUE(ffmpegCalls().seeks.empty());
  EXPECT_EQ(FRAMES, ffmpegCalls().packets_sent);
  EXPECT_EQ(FRAMES, ffmpegCalls().pictures_received);
}

TEST_P(JumpCost, JumpingForwardInsideAGroupDecodesOnlyForward) {
  _reader.moveByIndex(GOP);
  EXPECT_EQ(GOP, nextFrame(_reader).number);
  int before = GOP;
  for (const int index : {GOP + 2, GOP + 5, GOP + 6, GOP + 15, GOP + 19}) {
    ffmpegCalls().resetCounts();
    _reader.moveByIndex(index);
    EXPECT_EQ(index, nextFrame(_reader).number);
    EXPECT_TRUE(ffmpegCalls().seeks.empty()) << "to " << index;
    EXPECT_EQ(0, ffmpegCalls().flushes);
    EXPECT_LE(ffmpegCalls().packets_sent, index - before + delay());
    before = index;
  }
}

TEST_P(JumpCost, AJumpDecodesNoMoreThanItsGroup) {
  for (const int index :
       {FRAMES - 1, 2 * GOP + 1, GOP / 2}) {  // what is learnt about the file is learnt here
    _reader.moveByIndex(index);
    nextFrame(_reader);
  }
  for (const int index : {73, 5, 45, 40, 39, 20, 79, 0, 61}) {
    ffmpegCalls().resetCounts();
    _reader.moveByIndex(index);
    EXPECT_EQ(index, nextFrame(_reader).number);
    EXPECT_LE(static_cast<int>(ffmpegCalls().seeks.size()), GetParam().landings) << "to " << index;
    EXPECT_LE(ffmpegCalls().packets_sent, index % GOP + 1 + delay()) << "to " << index;
  }
}

TEST_P(JumpCost, PicturesThatNothingRefersToAreLeftOutOnTheWay) {
  if (GetParam().b_frames == 0) {
    GTEST_SKIP() << "every picture is referred to";
  }
  _reader.moveByIndex(3 * GOP + 15);
  const int left_out = ffmpegCalls().packets_sent - ffmpegCalls().packets_decoded_without_skipping;
  EXPECT_GT(left_out, 0);
  const int pictures = ffmpegCalls().pictures_received;
  EXPECT_EQ(3 * GOP + 15, nextFrame(_reader).number);

  Reader whole;
  openIndexed(whole, _reader.url());
  whole.decodeEveryPicture();
  ffmpegCalls().resetCounts();
  whole.moveByIndex(3 * GOP + 15);
  EXPECT_EQ(ffmpegCalls().packets_sent, ffmpegCalls().packets_decoded_without_skipping);
  EXPECT_LT(pictures, ffmpegCalls().pictures_received);
}

TEST_P(JumpCost, JumpingToTheHeldFrameCostsNothing) {
  _reader.moveByIndex(33);
  nextFrame(_reader);
  ffmpegCalls().resetCounts();
  _reader.moveByIndex(33);
  nextFrame(_reader);
  EXPECT_EQ(0, ffmpegCalls().packets_read);
  EXPECT_EQ(0, ffmpegCalls().packets_sent);
  EXPECT_TRUE(ffmpegCalls().seeks.empty());
}

INSTANTIATE_TEST_SUITE_P(Files, JumpCost,
                         testing::Values(CostCase{"Mpeg4Mp4", "a.mp4", "mpeg4", 0, 1},
                                         CostCase{"Mpeg4Mkv", "a.mkv", "mpeg4", 0, 1},
                                         CostCase{"Mpeg4Avi", "a.avi", "mpeg4", 0, 1},
                                         CostCase{"H264Mp4", "a.mp4", "libx264", 0, 1},
                                         CostCase{"H264BFramesMp4", "a.mp4", "libx264", 2, 1},
                                         CostCase{"H264BFramesMkv", "a.mkv", "libx264", 2, 1}),
                         CaseName());

// Where times have holes, a decoder that notices lost pictures allows leaving some out all the same.
TEST(JumpCostAtAVariableRate, IsThatOfThePicturesThatAreReferredTo) {
  if (!haveEncoder("libx264")) {
    GTEST_SKIP() << "this FFmpeg cannot encode H.264";
  }
  const TempDir directory;
  ClipOptions options;
  options.codec = "libx264";
  options.width = 64;
  options.height = 64;
  options.frames = 60;
  options.gop = 20;
  options.b_frames = 3;
  options.time_base = {1, 1000};
  options.pts = [](int i) { return int64_t{40} * (i + i / 4); };  // every fifth picture is missing
  Reader reader;
  openIndexed(reader, makeClip(directory.file("a.mkv"), options).path);
  ffmpegCalls().reset();
  for (const int index : {55, 17, 38}) {
    ffmpegCalls().resetCounts();
    reader.moveByIndex(index);
    EXPECT_GE(ffmpegCalls().packets_sent - ffmpegCalls().packets_decoded_without_skipping, 6)
        << "to " << index;
    EXPECT_EQ(index, nextFrame(reader).number);
  }
}

// Pictures that the decoder never gives must not make every jump there walk back through the file.
TEST(JumpCostOfMissingPictures, IsBounded) {
  const TempDir directory;
  ClipOptions options;
  options.frames = 400;
  options.gop = 10;
  Reader reader;
  openIndexed(reader, makeClip(directory.file("a.mp4"), options).path, true);
  const std::vector<SeenFrame> sequence = readAll(reader);
  ffmpegCalls().reset();
  ffmpegCalls().on_send = [](int& result) {
    result = AVERROR_INVALIDDATA;
    return true;
  };
  for (const long long index : {355, 205, 356}) {
    ffmpegCalls().resetCounts();
    reader.moveByIndex(index);
    EXPECT_LE(ffmpegCalls().seeks.size(), 10U) << "to " << index;
    EXPECT_TRUE(nextFrame(reader).empty);
  }
  ffmpegCalls().reset();
  reader.moveByIndex(105);
  EXPECT_TRUE(sameFrame(sequence[105], nextFrame(reader)));
}

}  // namespace
}  // namespace test
}  // namespace zo
