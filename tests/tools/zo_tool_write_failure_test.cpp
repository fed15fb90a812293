#include <sys/stat.h>
#include <unistd.h>

#include "zo_tool_program.h"

namespace {

using zo::test::failedWith;
using zo::test::filesIn;
using zo::test::makeToolClip;
using zo::test::RunOptions;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

/// A limit on the size of files stands for a full disk: both fail in the middle of writing.
class ToolWriteFailureTest : public testing::TestWithParam<const char*> {};

TEST_P(ToolWriteFailureTest, IsReportedAndLeavesTheOldPictureAsItWas) {
  TempDir directory;
  const std::string image = directory.file(std::string("frame") + GetParam());
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(3));
  zo::test::writeFile(image, "kept");
  RunOptions options;
  options.file_size_limit = 600;
  const ToolRun run = runTool({"frame", clip, "--index", "1", "--out", image}, options);
  EXPECT_TRUE(failedWith(run, "ZO_STATUS_WRITE_ERROR", 22, image));
  EXPECT_EQ("kept", zo::test::readFile(image));
  EXPECT_EQ(2U, filesIn(directory.path()).size());
}

INSTANTIATE_TEST_SUITE_P(Kinds, ToolWriteFailureTest, testing::Values(".jpg", ".png", ".ppm", ".pgm"),
                         [](const testing::TestParamInfo<const char*>& test_case) {
                           return std::string(test_case.param).substr(1);
                         });

TEST(ToolFullDeviceTest, StandardOutputIsReported) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(3));
  RunOptions options;
  options.out_path = "/dev/full";
  EXPECT_TRUE(failedWith(runTool({"info", clip}, options), "ZO_STATUS_WRITE_ERROR", 22, "standard output"));
  EXPECT_TRUE(failedWith(runTool({"--help"}, options), "ZO_STATUS_WRITE_ERROR", 22, "standard output"));
}

TEST(ToolFullDeviceTest, ImageIsReportedAndTheDeviceStays) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(3));
  const std::string image = directory.file("full.png");
  ASSERT_EQ(0, symlink("/dev/full", image.c_str()));
  EXPECT_TRUE(failedWith(runTool({"frame", clip, "--index", "1", "--out", image}), "ZO_STATUS_WRITE_ERROR",
                         22, image));
  char target[64] = {};
  EXPECT_EQ(9, readlink(image.c_str(), target, sizeof target));
}

TEST(ToolWriteTest, LinkToAnImageStaysALink) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(3));
  zo::test::writeFile(directory.file("real.png"), "old");
  ASSERT_EQ(0, symlink("real.png", directory.file("link.png").c_str()));
  ASSERT_EQ(0, runTool({"frame", clip, "--index", "2", "--out", directory.file("link.png")}).status);
  EXPECT_EQ(2, zo::test::numberInFile(directory.file("real.png")));
  char target[64] = {};
  EXPECT_EQ(8, readlink(directory.file("link.png").c_str(), target, sizeof target));
}

class ToolWriteModeTest : public testing::TestWithParam<mode_t> {};

TEST_P(ToolWriteModeTest, ReplacedPictureKeepsItsPermissions) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(3));
  const std::string image = directory.file("frame.png");
  zo::test::writeFile(image, "old");
  ASSERT_EQ(0, chmod(image.c_str(), GetParam()));
  const ToolRun run = runTool({"frame", clip, "--index", "2", "--out", image});
  ASSERT_EQ(0, run.status) << run.err;
  struct stat status;
  ASSERT_EQ(0, stat(image.c_str(), &status));
  EXPECT_EQ(GetParam(), status.st_mode & 07777);
  EXPECT_EQ(2, zo::test::numberInFile(image));
}

INSTANTIATE_TEST_SUITE_P(Modes, ToolWriteModeTest, testing::Values(0600, 0640, 0644, 0666, 0755));

TEST(ToolWriteTest, PictureThatMayNotBeWrittenIsNotReplaced) {
  if (geteuid() == 0) GTEST_SKIP() << "the administrator may write everything";
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(3));
  const std::string image = directory.file("frame.png");
  zo::test::writeFile(image, "kept");
  ASSERT_EQ(0, chmod(image.c_str(), 0400));
  EXPECT_TRUE(failedWith(runTool({"frame", clip, "--index", "2", "--out", image}), "ZO_STATUS_OPEN_ERROR", 20,
                         "cannot write '" + image + "': Permission denied"));
  EXPECT_EQ("kept", zo::test::readFile(image));
}

TEST(ToolWriteTest, MissingFolderIsAnOpenError) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(3));
  EXPECT_TRUE(failedWith(runTool({"frame", clip, "--index", "1", "--out", "/nowhere/a.png"}),
                         "ZO_STATUS_OPEN_ERROR", 20, "cannot write '/nowhere/a.png'"));
}

}  // namespace
