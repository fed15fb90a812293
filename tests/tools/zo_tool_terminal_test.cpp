#include <signal.h>

#include "zo_tool_program.h"

namespace {

using zo::test::makeToolClip;
using zo::test::RunningTool;
using zo::test::RunOptions;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

TEST(ToolTerminalTest, LongWorkShowsHowFarItIsAndErasesTheLineAtItsEnd) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(100));
  RunningTool tool({"verify", clip, "--samples", "100000000"}, RunOptions(), true);
  ASSERT_TRUE(tool.waitUntil([&] { return tool.terminalText().find(" left") != std::string::npos; }));
  tool.sendSignal(SIGINT);
  const ToolRun run = tool.wait();
  EXPECT_EQ(130, run.status);
  EXPECT_NE(std::string::npos, run.err.find("/100000000 jumps  0%  ")) << run.err;
  EXPECT_NE(std::string::npos, run.err.find("/s  ")) << run.err;
  const std::string erased_then_message = "\r\x1b[Kzo-video: interrupted\r\n";
  ASSERT_GE(run.err.size(), erased_then_message.size());
  EXPECT_EQ(erased_then_message, run.err.substr(run.err.size() - erased_then_message.size()));
}

TEST(ToolTerminalTest, NothingIsShownWhereStandardErrorIsNoTerminal) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(100));
  EXPECT_EQ("", zo::test::runTool({"verify", clip, "--samples", "3000"}).err);
}

}  // namespace
