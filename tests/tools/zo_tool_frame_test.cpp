#include "zo_tool_program.h"

namespace {

using zo::test::failedWith;
using zo::test::makeToolClip;
using zo::test::numberInFile;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

class ToolFrameTest : public testing::TestWithParam<int> {};

TEST_P(ToolFrameTest, WritesExactlyThatFrame) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(35));
  const std::string image = directory.file("frame.png");
  const ToolRun run = runTool({"frame", clip, "--index", std::to_string(GetParam()), "--out", image});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(GetParam(), numberInFile(image));
  EXPECT_EQ(0U, run.out.find("frame " + std::to_string(GetParam()) + " at ")) << run.out;
}

INSTANTIATE_TEST_SUITE_P(Indices, ToolFrameTest, testing::Values(0, 1, 9, 10, 11, 33, 34));

class ToolFrameZerosTest : public testing::TestWithParam<const char*> {};

TEST_P(ToolFrameZerosTest, LeadingZerosChangeNothing) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(35));
  const std::string image = directory.file("frame.png");
  const ToolRun run = runTool({"frame", clip, "--index", GetParam(), "--out", image});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(std::stoi(GetParam()), numberInFile(image));
}

INSTANTIATE_TEST_SUITE_P(Indices, ToolFrameZerosTest,
                         testing::Values("00", "08", "010", "000019", "0000000000000000000000034"));

TEST(ToolFrameErrorTest, TheLargestNumberIsANumber) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(5));
  const ToolRun run =
      runTool({"frame", clip, "--index", "9223372036854775807", "--out", directory.file("frame.png")});
  EXPECT_TRUE(failedWith(run, "ZO_STATUS_OUT_OF_RANGE", 5, "there is no frame 9223372036854775807: "));
}

TEST(ToolFrameErrorTest, IndexBehindTheLastIsOutOfRange) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(5));
  const ToolRun run = runTool({"frame", clip, "--index", "5", "--out", directory.file("frame.png")});
  EXPECT_TRUE(failedWith(run, "ZO_STATUS_OUT_OF_RANGE", 5, "there is no frame 5: '" + clip + "' has 5,"));
  EXPECT_EQ(std::vector<std::string>{"clip.mp4"}, zo::test::filesIn(directory.path()));
}

TEST(ToolFrameErrorTest, UnknownKindOfImageIsRefusedBeforeAnythingIsRead) {
  const ToolRun run = runTool({"frame", "/nowhere/clip.mp4", "--index", "0", "--out", "frame.bmp"});
  EXPECT_TRUE(failedWith(run, "ZO_STATUS_NOT_SUPPORTED", 8, "frame.bmp"));
}

struct KindCase {
  const char* name;
  const char* file;
  const char* magic;
};

class ToolFrameKindTest : public testing::TestWithParam<KindCase> {};

TEST_P(ToolFrameKindTest, TheNameTellsTheKindOfImage) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(3));
  const std::string image = directory.file(GetParam().file);
  const ToolRun run = runTool({"frame", clip, "--index", "2", "--out", image});
  ASSERT_EQ(0, run.status) << run.err;
  const std::string magic = GetParam().magic;
  EXPECT_EQ(magic, zo::test::readFile(image).substr(0, magic.size()));
  EXPECT_EQ(2, numberInFile(image));
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolFrameKindTest,
                         testing::Values(KindCase{"Jpg", "a.jpg", "\xFF\xD8\xFF"},
                                         KindCase{"Jpeg", "a.JPEG", "\xFF\xD8\xFF"},
                                         KindCase{"Png", "a.png", "\x89PNG"}, KindCase{"Pgm", "a.pgm", "P5"},
                                         KindCase{"Ppm", "a.b.Ppm", "P6"}),
                         zo::test::CaseName());

TEST(ToolFrameUprightTest, PictureIsTurnedBeforeItIsScaled) {
  TempDir directory;
  zo::test::ClipOptions options = toolClipOptions(2);
  options.rotation = 90;
  const std::string clip = makeToolClip(directory, "clip.mp4", options);
  const std::string image = directory.file("a.png");
  const ToolRun run = runTool({"frame", clip, "--index", "1", "--upright", "--size", "32x", "--out", image});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(zo::Size(32, 48), zo::imageLoad(image)->size());
}

}  // namespace
