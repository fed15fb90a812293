#include <signal.h>

#include <fstream>

#include "zo_tool_program.h"

namespace {

using zo::test::filesIn;
using zo::test::makeToolClip;
using zo::test::RunningTool;
using zo::test::RunOptions;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

struct SignalCase {
  const char* name;
  int number;
  int status;
};

class ToolSignalTest : public testing::TestWithParam<SignalCase> {};

TEST_P(ToolSignalTest, EndsTheWorkAndLeavesWholePicturesOnly) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(400));
  const std::string out = directory.file("out");
  RunningTool tool({"frames", clip, "--out", out, "--ext", "png", "--size", "800x600"}, RunOptions(), false);
  ASSERT_TRUE(tool.waitUntil([&] { return filesIn(out).size() > 3; }));
  tool.sendSignal(GetParam().number);
  const ToolRun run = tool.wait();
  EXPECT_EQ(GetParam().status, run.status);
  EXPECT_EQ("zo-video: interrupted\n", run.err);
  const std::vector<std::string> files = filesIn(out);
  EXPECT_LT(files.size(), 400U);
  for (const std::string& file : files) {
    EXPECT_EQ(0U, file.find("frame_")) << file;
    EXPECT_NO_THROW(zo::imageLoad(out + "/" + file)) << file;
  }
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolSignalTest,
                         testing::Values(SignalCase{"CtrlC", SIGINT, 130},
                                         SignalCase{"Terminate", SIGTERM, 143},
                                         SignalCase{"HangUp", SIGHUP, 129}),
                         zo::test::CaseName());

/// Bytes that a program has read so far.
long long bytesReadBy(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/io");
  std::string name;
  long long count = 0;
  return file >> name >> count ? count : 0;
}

/// A file that takes a while to be indexed: packets of a transport stream may be repeated.
std::string makeLongClip(const TempDir& directory) {
  zo::test::ClipOptions options = toolClipOptions(20);
  options.codec = "mpeg2video";
  options.b_frames = 0;
  const std::string clip = makeToolClip(directory, "clip.ts", options);
  const std::string part = zo::test::readFile(clip);
  std::string whole;
  while (whole.size() < (64U << 20)) whole += part;
  zo::test::writeFile(clip, whole);
  return clip;
}

class ToolSignalIndexTest : public testing::TestWithParam<const char*> {};

TEST_P(ToolSignalIndexTest, CtrlCLeavesNoPartOfAnIndex) {
  TempDir directory;
  const std::string clip = makeLongClip(directory);
  const bool was_there = std::string(GetParam()) == "EmptyFile";
  if (was_there) zo::test::writeFile(clip + ".zo", "");
  RunningTool tool({"index", clip, "--skip-errors"}, RunOptions(), false);
  ASSERT_TRUE(tool.waitUntil([&] { return bytesReadBy(tool.pid()) > (16 << 20); }));
  tool.sendSignal(SIGINT);
  const ToolRun run = tool.wait();
  if (run.status == 0) GTEST_SKIP() << "the index was there before the signal";
  EXPECT_EQ(130, run.status);
  EXPECT_EQ("zo-video: interrupted\n", run.err);
  EXPECT_EQ(was_there ? 2U : 1U, filesIn(directory.path()).size());
  if (was_there) {
    EXPECT_EQ("", zo::test::readFile(clip + ".zo"));
  }
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolSignalIndexTest, testing::Values("NoFile", "EmptyFile"),
                         [](const testing::TestParamInfo<const char*>& test_case) {
                           return std::string(test_case.param);
                         });

TEST(ToolSignalServerTest, CtrlCEndsTheWaitForASilentServer) {
  zo::test::StalledServer server;
  RunningTool tool({"info", server.url("http", "clip.ts")}, RunOptions(), false);
  ASSERT_TRUE(tool.waitUntil([&] { return server.connections() > 0; }));
  tool.sendSignal(SIGINT);
  EXPECT_EQ(130, tool.wait().status);
}

}  // namespace
