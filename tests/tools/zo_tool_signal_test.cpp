#include <signal.h>

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

TEST(ToolSignalServerTest, CtrlCEndsTheWaitForASilentServer) {
  zo::test::StalledServer server;
  RunningTool tool({"info", server.url("http", "clip.ts")}, RunOptions(), false);
  ASSERT_TRUE(tool.waitUntil([&] { return server.connections() > 0; }));
  tool.sendSignal(SIGINT);
  EXPECT_EQ(130, tool.wait().status);
}

}  // namespace
