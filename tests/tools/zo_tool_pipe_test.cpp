#include "zo_tool_program.h"

namespace {

using zo::test::failedWith;
using zo::test::filesIn;
using zo::test::Pipe;
using zo::test::RunningTool;
using zo::test::RunOptions;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::ToolRun;

/// What cannot be gone back in is read once, in order.
class ToolPipeTest : public testing::Test {
 protected:
  /// A clip of many clusters and few key frames, larger than what is read ahead.
  std::string clipBytes(int frames) {
    zo::test::ClipOptions options = zo::test::toolClipOptions(frames);
    options.width = 320;
    options.height = 240;
    options.gop = 160;
    options.muxer_options["cluster_time_limit"] = "400";
    return zo::test::readFile(zo::test::makeToolClip(directory, "clip.mkv", options));
  }

  /// Runs the command with the pipe as its file, and these bytes in it.
  ToolRun feed(const std::string& command, const std::vector<std::string>& more, const std::string& bytes) {
    std::vector<std::string> arguments = {command, pipe.path()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    RunningTool tool(arguments, RunOptions(), false);
    if (pipe.open(tool)) pipe.write(bytes);
    pipe.close();
    return tool.wait();
  }

  TempDir directory;
  Pipe pipe{directory.file("pipe")};
};

TEST_F(ToolPipeTest, InfoCountsAllFrames) {
  const ToolRun run = feed("info", {}, clipBytes(310));
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_NE(std::string::npos, run.out.find("\nFrames:       310\n")) << run.out;
}

TEST_F(ToolPipeTest, FramesAreExtractedUpToTheLast) {
  const std::string out = directory.file("out");
  const ToolRun run =
      feed("frames", {"--out", out, "--ext", "ppm", "--from", "300", "--count", "9"}, clipBytes(310));
  EXPECT_EQ(0, run.status) << run.err;
  ASSERT_EQ(9U, filesIn(out).size());
  EXPECT_EQ("frame_000300.ppm", filesIn(out).front());
  EXPECT_EQ(300, zo::test::numberInFile(out + "/frame_000300.ppm"));
  EXPECT_EQ(308, zo::test::numberInFile(out + "/frame_000308.ppm"));
}

TEST_F(ToolPipeTest, FileSchemeChangesNothing) {
  const std::string bytes = clipBytes(310);
  RunningTool tool({"info", "file:" + pipe.path()}, RunOptions(), false);
  ASSERT_TRUE(pipe.open(tool));
  pipe.write(bytes);
  pipe.close();
  EXPECT_NE(std::string::npos, tool.wait().out.find("\nFrames:       310\n"));
}

struct RefusedCase {
  const char* name;
  std::vector<std::string> arguments;
};

class ToolPipeRefusedTest : public testing::TestWithParam<RefusedCase> {};

TEST_P(ToolPipeRefusedTest, WhatHasToStartAgainIsNotAllowed) {
  TempDir directory;
  Pipe pipe(directory.file("pipe"));
  RunOptions options;
  options.directory = directory.path();
  for (const std::string& url : {pipe.path(), std::string("pipe:0"), std::string("/dev/null")}) {
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.push_back(url);
    EXPECT_TRUE(failedWith(runTool(arguments, options), "ZO_STATUS_NOT_ALLOWED", 11,
                           "'" + url + "' can be read only once"));
  }
  EXPECT_EQ(std::vector<std::string>{"pipe"}, filesIn(directory.path()));
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolPipeRefusedTest,
                         testing::Values(RefusedCase{"Verify", {"verify"}}, RefusedCase{"Index", {"index"}},
                                         RefusedCase{"Sheet", {"sheet", "--out", "sheet.png"}}),
                         zo::test::CaseName());

}  // namespace
