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

nlohmann::json infoOf(const std::string& path) {
  const ToolRun run = runTool({"info", path, "--json"});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ("", run.err);
  return nlohmann::json::parse(run.out);
}

TEST(ToolInfoTest, JsonHasExactlyTheDocumentedKeys) {
  TempDir directory;
  const nlohmann::json info = infoOf(makeToolClip(directory, "clip.mkv", toolClipOptions(12)));
  std::vector<std::string> keys;
  for (const auto& entry : info.items()) keys.push_back(entry.key());
  EXPECT_EQ((std::vector<std::string>{"first_timestamp_ms", "format", "fps", "frame_count", "height",
                                      "last_timestamp_ms", "metadata", "rotation", "url", "width"}),
            keys);
}

TEST(ToolInfoTest, JsonDescribesTheClip) {
  TempDir directory;
  ClipOptions options = toolClipOptions(30);
  options.rotation = 90;
  options.metadata["title"] = "A \"title\"\nof two lines";
  const std::string path = makeToolClip(directory, "clip.mp4", options);
  const nlohmann::json info = infoOf(path);
  EXPECT_EQ(path, info["url"]);
  EXPECT_EQ(96, info["width"]);
  EXPECT_EQ(64, info["height"]);
  EXPECT_EQ("ZO_FRAME_FORMAT_YUV420_PLANAR_I420", info["format"]);
  EXPECT_DOUBLE_EQ(25.0, info["fps"].get<double>());
  EXPECT_EQ(90, info["rotation"]);
  EXPECT_EQ(30, info["frame_count"]);
  // FFmpeg before 3.4 lets MP4 files with B-frames begin later by the delay.
  const zo::test::ReferenceStream bare = zo::test::decodeReference(path, false);
  const long long first =
      zo::test::timestampToMs(bare.pictures.front().best_effort_timestamp, bare.time_base);
  EXPECT_EQ(first, info["first_timestamp_ms"]);
  EXPECT_EQ(first + 29 * 40, info["last_timestamp_ms"]);
  EXPECT_EQ("A \"title\"\nof two lines", info["metadata"]["title"]);
}

TEST(ToolInfoTest, TextShowsTheSameOnLinesOfTheirOwn) {
  TempDir directory;
  ClipOptions options = toolClipOptions(30);
  options.b_frames = 0;
  options.rotation = 270;
  options.metadata["title"] = "first\x1b[31m\nsecond";
  const ToolRun run = runTool({"info", makeToolClip(directory, "clip.mp4", options)});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_NE(std::string::npos, run.out.find("Size:         96 x 64\n")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("Frame rate:   25 frames per second\n")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("Rotation:     270 degrees clockwise")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("Frames:       30\n")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("First frame:  0:00.000\n")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("Last frame:   0:01.160\n")) << run.out;
  // Nothing of the file's own text reaches the terminal as a control character.
  EXPECT_NE(std::string::npos, run.out.find("  title: first?[31m second\n")) << run.out;
}

TEST(ToolInfoTest, StreamWithoutDurationIsCountedByReading) {
  TempDir directory;
  const nlohmann::json info = infoOf(zo::test::makeEndlessClip(directory, toolClipOptions(17)));
  EXPECT_EQ(17, info["frame_count"]);
}

TEST(ToolInfoTest, NoIndexFileIsLeftBehind) {
  TempDir directory;
  infoOf(makeToolClip(directory, "clip.mp4", toolClipOptions(5)));
  EXPECT_EQ(std::vector<std::string>{"clip.mp4"}, zo::test::filesIn(directory.path()));
}

TEST(ToolInfoTest, DamagedClipIsStillDescribed) {
  TempDir directory;
  ClipOptions options = toolClipOptions(20);
  options.b_frames = 0;
  options.corrupted_packets = {0, 5, 19};
  const nlohmann::json info = infoOf(makeToolClip(directory, "clip.mp4", options));
  EXPECT_EQ(20, info["frame_count"]);
}

TEST(ToolInfoTest, MissingFileIsAnOpenError) {
  EXPECT_TRUE(
      failedWith(runTool({"info", "/nowhere/clip.mp4"}), "ZO_STATUS_OPEN_ERROR", 20, "/nowhere/clip.mp4"));
}

TEST(ToolInfoTest, NameWithLineFeedStaysOnOneLine) {
  EXPECT_TRUE(failedWith(runTool({"info", "/nowhere/a\nb"}), "ZO_STATUS_OPEN_ERROR", 20, "/nowhere/a b"));
}

struct LineCase {
  const char* name;
  const char* text;
  const char* shown;
};

class ToolInfoLineTest : public testing::TestWithParam<LineCase> {};

TEST_P(ToolInfoLineTest, NothingInATextReachesTheTerminalAsAControlCharacter) {
  const ToolRun run = runTool({"info", std::string("/nowhere/") + GetParam().text});
  EXPECT_TRUE(failedWith(run, "ZO_STATUS_OPEN_ERROR", 20, std::string("/nowhere/") + GetParam().shown + '"'));
}

INSTANTIATE_TEST_SUITE_P(
    Tool, ToolInfoLineTest,
    testing::Values(LineCase{"Escape", "a\x1b[31m", "a?[31m"}, LineCase{"Delete", "a\x7f", "a?"},
                    LineCase{"FirstOfC1", "a\xC2\x80z", "a?z"}, LineCase{"LastOfC1", "a\xC2\x9Fz", "a?z"},
                    LineCase{"AfterC1", "a\xC2\xA0z", "a\xC2\xA0z"},
                    LineCase{"LoneByteOfC1", "a\x9B[31m", "a?[31m"},
                    LineCase{"LineSeparator", "a\xE2\x80\xA8z", "a?z"},
                    LineCase{"ParagraphSeparator", "a\xE2\x80\xA9z", "a?z"},
                    LineCase{"Dash", "a\xE2\x80\x93z", "a\xE2\x80\x93z"},
                    LineCase{"BytesOfC1InsideCharacters", "\xC4\x9B\xE1\x80\x9B\xF0\x9F\x98\x80",
                             "\xC4\x9B\xE1\x80\x9B\xF0\x9F\x98\x80"},
                    LineCase{"TooLongForTwoBytes", "\xC1\x9Bz", "\xC1?z"},
                    LineCase{"TooLongForThreeBytes", "\xE0\x82\x9Bz", "\xE0??z"},
                    LineCase{"TooLongForFourBytes", "\xF0\x80\x82\x9Bz", "\xF0???z"},
                    LineCase{"Surrogate", "\xED\xA0\x9Bz", "\xED\xA0?z"},
                    LineCase{"BeyondTheLastCharacter", "\xF4\x90\x80\x80z", "\xF4???z"},
                    LineCase{"CutOff", "a\xE2\x80", "a\xE2?"}, LineCase{"Latin1", "caf\xE9", "caf\xE9"}),
    zo::test::CaseName());

TEST(ToolInfoTest, NameThatLooksLikeAProtocolIsAFileWhereThereIsOne) {
  TempDir directory;
  const std::string name = "cam1-12:30.mkv";
  makeToolClip(directory, "clip.mkv", toolClipOptions(3));
  ASSERT_EQ(0, rename(directory.file("clip.mkv").c_str(), directory.file(name).c_str()));
  zo::test::RunOptions options;
  options.directory = directory.path();
  const ToolRun run = runTool({"info", name}, options);
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ(0U, run.out.find("File:         " + name + "\n")) << run.out;
  const ToolRun index = runTool({"index", name}, options);
  EXPECT_EQ("Frames:      3\nKey frames:  1\nIndex file:  " + name + ".zo (built)\n", index.out);
  EXPECT_TRUE(
      failedWith(runTool({"info", "cam2-12:30.mkv"}, options), "ZO_STATUS_OPEN_ERROR", 20, "cam2-12:30.mkv"));
}

TEST(ToolInfoTest, SoundOnlyIsADecoderError) {
  TempDir directory;
  ClipOptions options = toolClipOptions(10);
  options.video = false;
  options.audio = true;
  const std::string sound = makeToolClip(directory, "sound.mkv", options);
  const ToolRun run = runTool({"info", sound});
  EXPECT_TRUE(
      failedWith(run, "ZO_STATUS_DECODER_ERROR", 27, "'" + sound + "' has no video that can be decoded"));
  EXPECT_TRUE(failedWith(run, "ZO_STATUS_DECODER_ERROR", 27, "Stream not found"));
}

TEST(ToolInfoTest, SilentServerIsATimeoutWhenOneIsAskedFor) {
  zo::test::StalledServer server;
  const std::string url = server.url("http", "clip.ts");
  EXPECT_TRUE(failedWith(runTool({"info", url, "--timeout", "0.3"}), "ZO_STATUS_TIMEOUT", 13, "timeout"));
}

TEST(ToolInfoTest, FileNameThatLooksLikeACommandIsAFile) {
  TempDir directory;
  makeToolClip(directory, "clip.mkv", toolClipOptions(3));
  ASSERT_EQ(0, rename(directory.file("clip.mkv").c_str(), directory.file("frames").c_str()));
  zo::test::RunOptions options;
  options.directory = directory.path();
  const ToolRun run = runTool({"info", "frames"}, options);
  EXPECT_EQ(0, run.status) << run.err;
}

}  // namespace
