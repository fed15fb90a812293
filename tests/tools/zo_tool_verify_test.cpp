#include <fcntl.h>
#include <unistd.h>

#include "zo_tool_program.h"

namespace {

using zo::test::ClipOptions;
using zo::test::failedWith;
using zo::test::makeToolClip;
using zo::test::RunningTool;
using zo::test::RunOptions;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

/// Writes other pixels into the middle of each picture of a file with uncompressed video.
void changeEveryPicture(const std::string& path) {
  const std::string bytes = zo::test::readFile(path);
  const int fd = ::open(path.c_str(), O_WRONLY);
  ASSERT_GE(fd, 0);
  const std::string pixels(100, '\x55');
  for (std::size_t at = bytes.find("movi"); (at = bytes.find("00dc", at + 4)) < bytes.rfind("idx1");)
    EXPECT_EQ(100, pwrite(fd, pixels.data(), pixels.size(), static_cast<off_t>(at + 3000)));
  ::close(fd);
}

TEST(ToolVerifyTest, SoundClipHasNoDifferences) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(40));
  const ToolRun run = runTool({"verify", clip, "--samples", "60"});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ("", run.err);
  EXPECT_NE(std::string::npos, run.out.find("In order:     40 frames\n")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("Jumps:        60 (seed 1)\n")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("Differences:  0\n")) << run.out;
}

TEST(ToolVerifyTest, PicturesThatChangeAreDifferences) {
  TempDir directory;
  ClipOptions options = toolClipOptions(60);
  options.codec = "rawvideo";
  options.b_frames = 0;
  const std::string clip = makeToolClip(directory, "clip.avi", options);
  // Jumps go on until the file is written over with other pixels.
  RunningTool tool({"verify", clip, "--samples", "100000000"}, RunOptions(), true);
  ASSERT_TRUE(tool.waitUntil([&] { return tool.terminalText().find(" jumps ") != std::string::npos; }));
  changeEveryPicture(clip);
  const ToolRun run = tool.wait();
  EXPECT_EQ(1, run.status);
  EXPECT_NE(std::string::npos, run.err.find("zo-video: ZO_STATUS_UNEXPECTED_RESULT (12): ")) << run.err;
  EXPECT_NE(std::string::npos, run.out.find("shows another picture\n")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("Differences:  100\n")) << run.out;
}

TEST(ToolVerifyTest, SameSeedMakesTheSameJumps) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(20));
  const ToolRun run = runTool({"verify", clip, "--samples", "25", "--seed", "7"});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ(run.out, runTool({"verify", clip, "--samples", "25", "--seed", "7"}).out);
  EXPECT_NE(std::string::npos, run.out.find("(seed 7)")) << run.out;
}

TEST(ToolVerifyTest, ContainerWithoutDurationCannotBeVerified) {
  TempDir directory;
  const std::string clip = zo::test::makeEndlessClip(directory, toolClipOptions(10));
  EXPECT_TRUE(failedWith(runTool({"verify", clip}), "ZO_STATUS_NOT_ALLOWED", 11, "no duration"));
}

}  // namespace
