#include <signal.h>

#include "zo_tool_program.h"

namespace {

using zo::test::makeToolClip;
using zo::test::Pipe;
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

TEST(ToolTerminalTest, OpeningAndPassingFramesShowHowFarTheyAre) {
  TempDir directory;
  zo::test::ClipOptions options = toolClipOptions(300);
  options.width = 320;
  options.height = 240;
  const std::string bytes = zo::test::readFile(zo::test::makeEndlessClip(directory, options));
  Pipe pipe(directory.file("pipe.mkv"));
  RunningTool tool({"frame", pipe.path(), "--index", "299", "--out", directory.file("frame.png")},
                   RunOptions(), true);
  ASSERT_TRUE(pipe.open(tool));
  std::size_t sent = 0;
  // A little at a time, until both have been seen.
  for (const char* p_text : {"opening  0:0", "/299 frames passed  "}) {
    const std::size_t step = *p_text == 'o' ? 16 : 1024;
    ASSERT_TRUE(tool.waitUntil([&] {
      sent += pipe.write(bytes.substr(sent, step));
      return tool.terminalText().find(p_text) != std::string::npos;
    })) << tool.terminalText();
  }
  ASSERT_LT(sent, bytes.size()) << "the clip is too short for this test";
  pipe.write(bytes.substr(sent));
  pipe.close();
  const ToolRun run = tool.wait();
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ(299, zo::test::numberInFile(directory.file("frame.png")));
}

TEST(ToolTerminalTest, NothingIsShownWhereStandardErrorIsNoTerminal) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(100));
  EXPECT_EQ("", zo::test::runTool({"verify", clip, "--samples", "3000"}).err);
}

}  // namespace
