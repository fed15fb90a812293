#include <sys/stat.h>

#include "zo_tool_program.h"

namespace {

using zo::test::ClipOptions;
using zo::test::failedWith;
using zo::test::filesIn;
using zo::test::makeToolClip;
using zo::test::numberInFile;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

class ToolFramesTest : public testing::Test {
 protected:
  /// Runs "frames" with further arguments into the folder "out".
  ToolRun extract(const std::string& clip, const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"frames", clip, "--out", out()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runTool(arguments);
  }

  std::string out() const { return directory.file("out"); }
  std::string picture(const std::string& name) const { return out() + "/" + name; }

  TempDir directory;
};

TEST_F(ToolFramesTest, EveryFrameIsWrittenUnderItsIndex) {
  const ToolRun run = extract(makeToolClip(directory, "clip.mp4", toolClipOptions(25)), {});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ("", run.err);
  EXPECT_NE(std::string::npos, run.out.find("25 pictures")) << run.out;
  const std::vector<std::string> files = filesIn(out());
  ASSERT_EQ(25U, files.size());
  for (int i = 0; i < 25; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "frame_%06d.jpg", i);
    EXPECT_EQ(name, files[static_cast<std::size_t>(i)]);
    EXPECT_EQ(i, numberInFile(picture(name)));
  }
}

TEST_F(ToolFramesTest, FromAndCountChooseFrames) {
  const ToolRun run = extract(makeToolClip(directory, "clip.mp4", toolClipOptions(25)),
                              {"--from", "17", "--count", "3", "--ext", "png"});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ((std::vector<std::string>{"frame_000017.png", "frame_000018.png", "frame_000019.png"}),
            filesIn(out()));
  EXPECT_EQ(17, numberInFile(picture("frame_000017.png")));
  EXPECT_EQ(19, numberInFile(picture("frame_000019.png")));
}

TEST_F(ToolFramesTest, NumbersMayBeginWithZeros) {
  const ToolRun run = extract(makeToolClip(directory, "clip.mp4", toolClipOptions(25)),
                              {"--from", "08", "--count", "02", "--ext", "png", "--quality", "090"});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ((std::vector<std::string>{"frame_000008.png", "frame_000009.png"}), filesIn(out()));
}

TEST_F(ToolFramesTest, CountBeyondTheEndWritesWhatThereIs) {
  const ToolRun run =
      extract(makeToolClip(directory, "clip.mp4", toolClipOptions(25)), {"--from", "23", "--count", "9"});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(2U, filesIn(out()).size());
}

TEST_F(ToolFramesTest, FromBeyondTheEndIsOutOfRange) {
  EXPECT_TRUE(failedWith(extract(makeToolClip(directory, "clip.mp4", toolClipOptions(25)), {"--from", "25"}),
                         "ZO_STATUS_OUT_OF_RANGE", 5, "25"));
  EXPECT_TRUE(filesIn(out()).empty());
}

TEST_F(ToolFramesTest, HighestRateKeepsTheFirstFrameAtOrAfterEachDueTime) {
  // One frame every 40 ms, due at 0, 100, 200, ...
  const ToolRun run =
      extract(makeToolClip(directory, "clip.mp4", toolClipOptions(12)), {"--max-fps", "10", "--ext", "ppm"});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ((std::vector<std::string>{"frame_000000.ppm", "frame_000003.ppm", "frame_000005.ppm",
                                      "frame_000008.ppm", "frame_000010.ppm"}),
            filesIn(out()));
}

TEST_F(ToolFramesTest, RateBelowOneIsOneFrameInSeveralSeconds) {
  ClipOptions options = toolClipOptions(12);
  options.frame_rate = AVRational{1, 1};
  const ToolRun run =
      extract(makeToolClip(directory, "clip.mp4", options), {"--max-fps", "0.25", "--ext", "ppm"});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ((std::vector<std::string>{"frame_000000.ppm", "frame_000004.ppm", "frame_000008.ppm"}),
            filesIn(out()));
}

struct SizeCase {
  const char* name;
  const char* size;
  int width;
  int height;
};

class ToolFramesSizeTest : public ToolFramesTest, public testing::WithParamInterface<SizeCase> {};

TEST_P(ToolFramesSizeTest, ScalesThePictures) {
  const ToolRun run = extract(makeToolClip(directory, "clip.mp4", toolClipOptions(2)),
                              {"--size", GetParam().size, "--ext", "ppm"});
  ASSERT_EQ(0, run.status) << run.err;
  const zo::Size size = zo::imageLoad(picture("frame_000001.ppm"))->size();
  EXPECT_EQ(GetParam().width, size.width);
  EXPECT_EQ(GetParam().height, size.height);
  EXPECT_EQ(1, numberInFile(picture("frame_000001.ppm")));
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolFramesSizeTest,
                         testing::Values(SizeCase{"BothSides", "50x70", 50, 70},
                                         SizeCase{"WidthOnly", "48x", 48, 32},
                                         SizeCase{"HeightOnly", "x33", 50, 33},
                                         SizeCase{"Larger", "201X135", 201, 135}),
                         zo::test::CaseName());

TEST_F(ToolFramesTest, HigherQualityMakesLargerJpegFiles) {
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(1));
  ASSERT_EQ(0, extract(clip, {"--quality", "20"}).status);
  const std::size_t low = zo::test::readFile(picture("frame_000000.jpg")).size();
  ASSERT_EQ(0, extract(clip, {"--quality", "100"}).status);
  const std::size_t high = zo::test::readFile(picture("frame_000000.jpg")).size();
  EXPECT_LT(low, high);
}

TEST_F(ToolFramesTest, FullRangeColoursOfAPictureSurvive) {
  // Black and white stay black and white in the JPEG: video keeps them as 16 and 235, JPEG as 0 and 255.
  ClipOptions options = toolClipOptions(1);
  ASSERT_EQ(0, extract(makeToolClip(directory, "clip.mp4", options), {"--ext", "ppm"}).status);
  ASSERT_EQ(0, extract(directory.file("clip.mp4"), {"--quality", "100"}).status);
  const auto p_ppm = zo::imageLoad(picture("frame_000000.ppm"));
  const auto p_jpg = zo::imageLoad(picture("frame_000000.jpg"));
  EXPECT_GT(zo::test::psnr(*p_ppm, *p_jpg), 40.0);
}

TEST_F(ToolFramesTest, StampIsDrawnIntoTheTopLeftCornerOnly) {
  ClipOptions options = toolClipOptions(1);
  options.width = 320;
  options.height = 240;
  const std::string clip = makeToolClip(directory, "clip.mp4", options);
  ASSERT_EQ(0, extract(clip, {"--ext", "ppm"}).status);
  const auto p_plain = zo::imageLoad(picture("frame_000000.ppm"));
  ASSERT_EQ(0, extract(clip, {"--ext", "ppm", "--stamp"}).status);
  const auto p_stamped = zo::imageLoad(picture("frame_000000.ppm"));
  int changed_inside = 0;
  int changed_outside = 0;
  int bright = 0;
  for (int y = 0; y < 240; ++y) {
    for (int x = 0; x < 320 * 3; ++x) {
      const unsigned char plain = p_plain->planeData(
          0)[static_cast<unsigned>(y) * p_plain->planeStride(0) + static_cast<unsigned>(x)];
      const unsigned char stamped = p_stamped->planeData(
          0)[static_cast<unsigned>(y) * p_stamped->planeStride(0) + static_cast<unsigned>(x)];
      const bool inside = y < 30 && x < 200 * 3;
      if (plain != stamped) ++(inside ? changed_inside : changed_outside);
      if (inside && stamped > 240 && plain != stamped) ++bright;
    }
  }
  EXPECT_EQ(0, changed_outside);
  EXPECT_GT(changed_inside, 500);
  EXPECT_GT(bright, 50) << "the writing";
}

struct TurnCase {
  const char* name;
  double rotation;
};

class ToolFramesTurnTest : public ToolFramesTest, public testing::WithParamInterface<TurnCase> {};

TEST_P(ToolFramesTurnTest, UprightTurnsEveryPixel) {
  ClipOptions options = toolClipOptions(1);
  options.width = 46;
  options.height = 34;
  options.rotation = GetParam().rotation;
  const std::string clip = makeToolClip(directory, "clip.mp4", options);
  ASSERT_EQ(0, extract(clip, {"--ext", "ppm"}).status);
  const auto p_stored = zo::imageLoad(picture("frame_000000.ppm"));
  ASSERT_EQ(0, extract(clip, {"--ext", "ppm", "--upright"}).status);
  const auto p_upright = zo::imageLoad(picture("frame_000000.ppm"));
  const int turns = static_cast<int>(GetParam().rotation) / 90;
  ASSERT_EQ(turns % 2 == 0 ? zo::Size(46, 34) : zo::Size(34, 46), p_upright->size());
  const int w = 46;
  const int h = 34;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const zo::Point to = turns == 1   ? zo::Point(h - 1 - y, x)
                           : turns == 2 ? zo::Point(w - 1 - x, h - 1 - y)
                                        : zo::Point(y, w - 1 - x);
      const unsigned char* p_from = p_stored->planeData(0) +
                                    static_cast<unsigned>(y) * p_stored->planeStride(0) +
                                    static_cast<unsigned>(x) * 3;
      const unsigned char* p_to = p_upright->planeData(0) +
                                  static_cast<unsigned>(to.y) * p_upright->planeStride(0) +
                                  static_cast<unsigned>(to.x) * 3;
      ASSERT_TRUE(p_from[0] == p_to[0] && p_from[1] == p_to[1] && p_from[2] == p_to[2]) << x << ", " << y;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolFramesTurnTest,
                         testing::Values(TurnCase{"Quarter", 90}, TurnCase{"Half", 180},
                                         TurnCase{"ThreeQuarters", 270}),
                         zo::test::CaseName());

TEST_F(ToolFramesTest, StreamWithoutTimestampsFailsAndSaysWhy) {
  if (!zo::test::haveEncoder("libx264")) GTEST_SKIP() << "no H.264 encoder";
  ClipOptions options = toolClipOptions(10);
  options.codec = "libx264";
  EXPECT_TRUE(failedWith(extract(makeToolClip(directory, "clip.h264", options), {}),
                         "ZO_STATUS_UNEXPECTED_RESULT", 12, "none of the 10 frames has a picture"));
}

TEST_F(ToolFramesTest, FramesWithoutAPictureLeaveAGap) {
  ClipOptions options = toolClipOptions(12);
  options.b_frames = 0;
  options.gop = 4;
  options.dropped_packets = {5};
  const ToolRun run = extract(makeToolClip(directory, "clip.mkv", options), {"--ext", "ppm"});
  ASSERT_EQ(0, run.status) << run.err;
  // Eleven packets are left, so there are eleven frames.
  EXPECT_EQ(11U, filesIn(out()).size());
  EXPECT_EQ(4, numberInFile(picture("frame_000004.ppm")));
  EXPECT_EQ(8, numberInFile(picture("frame_000007.ppm")));
}

TEST_F(ToolFramesTest, DamageEndsTheWorkUnlessErrorsAreSkipped) {
  ClipOptions options = toolClipOptions(12);
  options.codec = "ffv1";
  options.b_frames = 0;
  options.gop = 1;
  options.edit_packet = [](int index, AVPacket* p_packet) {
    if (index == 5) av_shrink_packet(p_packet, 3);
    return true;
  };
  const std::string clip = makeToolClip(directory, "clip.mkv", options);
  EXPECT_TRUE(failedWith(extract(clip, {}), "ZO_STATUS_READ_ERROR", 21, ""));
  const ToolRun run = extract(clip, {"--skip-errors"});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(11U, filesIn(out()).size());
}

TEST_F(ToolFramesTest, FoldersAreMadeAsDeepAsAskedFor) {
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(1));
  const std::string deep = directory.file("a/b/c");
  const ToolRun run = runTool({"frames", clip, "--out", deep});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(std::vector<std::string>{"frame_000000.jpg"}, filesIn(deep));
}

TEST_F(ToolFramesTest, FileInPlaceOfTheFolderIsAWriteError) {
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(1));
  zo::test::writeFile(out(), "text");
  EXPECT_TRUE(failedWith(extract(clip, {}), "ZO_STATUS_WRITE_ERROR", 22, "there is a file of that name"));
  EXPECT_EQ("text", zo::test::readFile(out()));
}

TEST_F(ToolFramesTest, FolderThatCannotBeMadeIsAWriteErrorWithTheFirstReason) {
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(1));
  const ToolRun run = runTool({"frames", clip, "--out", "/sys/zo-video/pictures"});
  EXPECT_TRUE(failedWith(run, "ZO_STATUS_WRITE_ERROR", 22, "cannot make the folder"));
  EXPECT_EQ(std::string::npos, run.err.find("No such file")) << run.err;
}

TEST_F(ToolFramesTest, MissingClipLeavesNoPictures) {
  EXPECT_TRUE(failedWith(extract(directory.file("none.mp4"), {}), "ZO_STATUS_OPEN_ERROR", 20, "none.mp4"));
  EXPECT_TRUE(filesIn(out()).empty());
}

}  // namespace
