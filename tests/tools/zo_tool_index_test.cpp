#include <nlohmann/json.hpp>

#include "zo_tool_program.h"

namespace {

using zo::test::ClipOptions;
using zo::test::failedWith;
using zo::test::makeToolClip;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

nlohmann::json indexOf(const std::string& path) {
  const ToolRun run = runTool({"index", path, "--json"});
  EXPECT_EQ(0, run.status) << run.err;
  return nlohmann::json::parse(run.out);
}

TEST(ToolIndexTest, BuildsTheIndexAndThenLoadsIt) {
  TempDir directory;
  ClipOptions options = toolClipOptions(30);
  options.b_frames = 0;
  const std::string clip = makeToolClip(directory, "clip.mp4", options);
  nlohmann::json index = indexOf(clip);
  EXPECT_EQ(clip, index["url"]);
  EXPECT_EQ(30, index["frame_count"]);
  EXPECT_EQ(3, index["key_frame_count"]);
  EXPECT_EQ(clip + ".zo", index["index_file"]);
  EXPECT_EQ(false, index["loaded"]);
  index = indexOf(clip);
  EXPECT_EQ(30, index["frame_count"]);
  EXPECT_EQ(3, index["key_frame_count"]);
  EXPECT_EQ(true, index["loaded"]);
}

TEST(ToolIndexTest, TextSaysTheSame) {
  TempDir directory;
  ClipOptions options = toolClipOptions(30);
  options.b_frames = 0;
  const std::string clip = makeToolClip(directory, "clip.mp4", options);
  EXPECT_EQ("Frames:      30\nKey frames:  3\nIndex file:  " + clip + ".zo (built)\n",
            runTool({"index", clip}).out);
  EXPECT_EQ("Frames:      30\nKey frames:  3\nIndex file:  " + clip + ".zo (loaded)\n",
            runTool({"index", clip}).out);
}

TEST(ToolIndexTest, IndexFileThatCannotBeWrittenIsNoError) {
  TempDir directory;
  const std::string clip = makeToolClip(directory, "clip.mp4", toolClipOptions(10));
  ASSERT_EQ(0, symlink("/nowhere/at/all", (clip + ".zo").c_str()));
  const nlohmann::json index = indexOf(clip);
  EXPECT_EQ(10, index["frame_count"]);
  EXPECT_TRUE(index["key_frame_count"].is_null());
  EXPECT_TRUE(index["index_file"].is_null());
}

TEST(ToolIndexTest, ContainerWithoutDurationCannotBeIndexed) {
  TempDir directory;
  const std::string clip = zo::test::makeEndlessClip(directory, toolClipOptions(10));
  EXPECT_TRUE(failedWith(runTool({"index", clip}), "ZO_STATUS_NOT_ALLOWED", 11, "no duration"));
}

}  // namespace
