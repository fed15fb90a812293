#include <sstream>

#include "zo_tool_program.h"

namespace {

using zo::test::makeToolClip;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

TEST(ToolBenchTest, PrintsATableWithALineForEachKindOfWork) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(20));
  const ToolRun run = runTool({"bench", clip, "--seconds", "0.05"});
  ASSERT_EQ(0, run.status) << run.err;
  for (const char* p_work :
       {"open and index", "decode in order", "jump to", "convert to BGR24", "encode as JPEG"})
    EXPECT_NE(std::string::npos, run.out.find(p_work)) << run.out;
  std::istringstream lines(run.out);
  std::string line;
  std::getline(lines, line);
  EXPECT_NE(std::string::npos, line.find("per second")) << line;
  int rows = 0;
  while (std::getline(lines, line)) {
    std::istringstream numbers(line.substr(34));
    long long count = 0;
    double seconds = -1;
    double rate = -1;
    EXPECT_TRUE(numbers >> count >> seconds >> rate) << line;
    EXPECT_GE(count, 1) << line;
    EXPECT_GE(seconds, 0) << line;
    EXPECT_GT(rate, 0) << line;
    ++rows;
  }
  EXPECT_EQ(7, rows);
}

TEST(ToolBenchTest, MissingFileIsAnOpenError) {
  EXPECT_TRUE(zo::test::failedWith(runTool({"bench", "/nowhere/clip.mp4"}), "ZO_STATUS_OPEN_ERROR", 20,
                                   "/nowhere/clip.mp4"));
}

}  // namespace
