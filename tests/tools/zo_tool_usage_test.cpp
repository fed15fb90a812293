#include "zo_tool_program.h"

namespace {

using zo::test::runTool;
using zo::test::ToolRun;

struct WrongUsage {
  const char* name;
  std::vector<std::string> arguments;
  const char* message;
};

class WrongUsageTest : public testing::TestWithParam<WrongUsage> {};

TEST_P(WrongUsageTest, ExitsWithTwoAndSaysWhatIsWrongAndWhereToLook) {
  const ToolRun run = runTool(GetParam().arguments);
  EXPECT_EQ(2, run.status);
  EXPECT_EQ("", run.out);
  EXPECT_EQ(0U, run.err.find("zo-video: ")) << run.err;
  EXPECT_NE(std::string::npos, run.err.find(GetParam().message)) << run.err;
  EXPECT_NE(std::string::npos, run.err.find(" --help'.\n")) << run.err;
}

INSTANTIATE_TEST_SUITE_P(
    Tool, WrongUsageTest,
    testing::Values(
        WrongUsage{"UnknownCommand", {"play", "clip.mp4"}, "unknown command 'play'"},
        WrongUsage{"MisspeltCommand", {"fraems", "clip.mp4"}, "did you mean 'frames'?"},
        WrongUsage{"OneLetterMissing", {"inf", "clip.mp4"}, "did you mean 'info'?"},
        WrongUsage{"UnknownOptionBeforeTheCommand", {"--verbose", "info"}, "unknown option '--verbose'"},
        WrongUsage{"MisspeltOption", {"info", "clip.mp4", "--jsn"}, "did you mean '--json'?"},
        WrongUsage{"MisspeltRequiredOption", {"frames", "clip.mp4", "--uot", "x"}, "did you mean '--out'?"},
        WrongUsage{"MisspeltOptionWithValue",
                   {"sheet", "a", "--out=b.jpg", "--colums=3"},
                   "did you mean '--columns'?"},
        WrongUsage{"NoFile", {"info"}, "FILE is required"},
        WrongUsage{"TwoFiles", {"info", "a.mp4", "b.mp4"}, "unexpected argument 'b.mp4'"},
        WrongUsage{"FramesWithoutFolder", {"frames", "a.mp4"}, "--out is required"},
        WrongUsage{"FrameWithoutIndex", {"frame", "a.mp4", "--out", "b.png"}, "--index is required"},
        WrongUsage{"FrameWithoutImage", {"frame", "a.mp4", "--index", "1"}, "--out is required"},
        WrongUsage{"SheetWithoutImage", {"sheet", "a.mp4"}, "--out is required"},
        WrongUsage{"ConvertWithoutOutput", {"convert", "a.png"}, "OUT is required"},
        WrongUsage{
            "IndexIsText", {"frame", "a", "--index", "ten", "--out", "b.png"}, "'ten' is no whole number"},
        WrongUsage{
            "IndexIsNegative", {"frame", "a", "--index", "-1", "--out", "b.png"}, "'-1' is no whole number"},
        WrongUsage{"IndexIsHuge",
                   {"frame", "a", "--index", "99999999999999999999", "--out", "b.png"},
                   "is no whole number"},
        WrongUsage{"IndexIsOneTooLarge",
                   {"frame", "a", "--index", "9223372036854775808", "--out", "b.png"},
                   "is no whole number"},
        WrongUsage{
            "IndexIsHexadecimal", {"frame", "a", "--index", "0x10", "--out", "b.png"}, "is no whole number"},
        WrongUsage{
            "IndexIsFraction", {"frame", "a", "--index", "1.5", "--out", "b.png"}, "is no whole number"},
        WrongUsage{"OptionWithoutValue", {"frames", "a", "--out"}, "--out needs a value"},
        WrongUsage{"OptionWithEmptyValue", {"frames", "a", "--out=", "--stamp"}, "--out needs a value"},
        WrongUsage{"OptionWithEmptyText", {"frames", "a", "--out", ""}, "--out needs a value"},
        WrongUsage{"OptionBeforeAnOption", {"frames", "a", "--out", "--stamp"}, "--out needs a value"},
        WrongUsage{"OptionBeforeHelp", {"frames", "a", "--out", "-h"}, "--out needs a value"},
        WrongUsage{"SecondOptionWithoutValue",
                   {"frames", "--out", "b", "a", "--size=", "--stamp"},
                   "--size needs a value"},
        WrongUsage{"VersionWithMore", {"--version", "extra"}, "unexpected argument 'extra'"},
        WrongUsage{"HelpWithMore", {"help", "info", "extra"}, "unexpected argument 'extra'"},
        WrongUsage{"SizeIsText", {"frames", "a", "--out", "b", "--size", "big"}, "'big' is no size"},
        WrongUsage{"SizeHasZero", {"frames", "a", "--out", "b", "--size", "0x10"}, "'0x10' is no size"},
        WrongUsage{"SizeIsNegative", {"frames", "a", "--out", "b", "--size", "-5x10"}, "is no size"},
        WrongUsage{"SizeIsEmpty", {"frames", "a", "--out", "b", "--size", "x"}, "'x' is no size"},
        WrongUsage{"SizeIsTooLarge", {"frames", "a", "--out", "b", "--size", "65536x1"}, "is no size"},
        WrongUsage{"SizeHasThreeSides", {"frames", "a", "--out", "b", "--size", "1x2x3"}, "is no size"},
        WrongUsage{"UnknownExtension", {"frames", "a", "--out", "b", "--ext", "bmp"}, "bmp"},
        WrongUsage{"QualityZero",
                   {"frames", "a", "--out", "b", "--quality", "0"},
                   "'0' is no whole number from 1 to 100"},
        WrongUsage{"QualityTooHigh", {"convert", "a.png", "b.jpg", "--quality", "101"}, "from 1 to 100"},
        WrongUsage{"RateZero", {"frames", "a", "--out", "b", "--max-fps", "0"}, "'0' is no number"},
        WrongUsage{"RateIsText", {"frames", "a", "--out", "b", "--max-fps", "fast"}, "'fast' is no number"},
        WrongUsage{"CountZero", {"frames", "a", "--out", "b", "--count", "0"}, "'0' is no whole number"},
        WrongUsage{"NoColumns", {"sheet", "a", "--out", "b.png", "--columns", "0"}, "'0' is no whole number"},
        WrongUsage{"NoRows", {"sheet", "a", "--out", "b.png", "--rows", "0"}, "'0' is no whole number"},
        WrongUsage{"NarrowSheet", {"sheet", "a", "--out", "b.png", "--width", "5"}, "'5' is no whole number"},
        WrongUsage{"NoSamples", {"verify", "a", "--samples", "0"}, "'0' is no whole number"},
        WrongUsage{"UnknownAlgorithm", {"convert", "a.png", "b.png", "--algorithm", "magic"}, "magic"},
        WrongUsage{"NoTimeout", {"info", "a", "--timeout", "0"}, "'0' is no number"}),
    zo::test::CaseName());

TEST(ToolUsageTest, ValuesMayLookLikeOptionsWhereTheyCanBeNoOthers) {
  zo::test::TempDir directory;
  zo::test::RunOptions options;
  options.directory = directory.path();
  zo::test::makeToolClip(directory, "clip.mkv", zo::test::toolClipOptions(1));
  EXPECT_EQ(0, runTool({"frame", "clip.mkv", "--index=0", "--out", "-o.png"}, options).status);
  EXPECT_EQ(0, runTool({"frame", "clip.mkv", "--index=0", "--out=--stamp.png"}, options).status);
  EXPECT_EQ((std::vector<std::string>{"--stamp.png", "-o.png", "clip.mkv"}),
            zo::test::filesIn(directory.path()));
  rename(directory.file("clip.mkv").c_str(), directory.file("--out=").c_str());
  EXPECT_EQ(0, runTool({"info", "--", "--out="}, options).status);
}

TEST(ToolHelpTest, NoArgumentsShowTheCommandsAsWrongUsage) {
  const ToolRun run = runTool({});
  EXPECT_EQ(2, run.status);
  EXPECT_EQ("", run.out);
  EXPECT_NE(std::string::npos, run.err.find("Usage: zo-video COMMAND"));
}

TEST(ToolHelpTest, TheVersionIsPrinted) {
  const ToolRun run = runTool({"--version"});
  EXPECT_EQ(0, run.status);
  EXPECT_EQ(0U, run.out.find("zo-video ")) << run.out;
  EXPECT_NE(std::string::npos, run.out.find('.')) << run.out;
}

class CommandHelpTest : public testing::TestWithParam<const char*> {};

TEST_P(CommandHelpTest, ExplainsTheCommandWithExamples) {
  const std::string command = GetParam();
  const ToolRun run = runTool({command, "--help"});
  EXPECT_EQ(0, run.status);
  EXPECT_EQ("", run.err);
  EXPECT_NE(std::string::npos, run.out.find("Usage: zo-video " + command)) << run.out;
  EXPECT_NE(std::string::npos, run.out.find("Examples:\n  zo-video " + command + " ")) << run.out;
  EXPECT_EQ(run.out, runTool({"help", command}).out);
}

TEST_P(CommandHelpTest, IsListedInTheGeneralHelp) {
  const ToolRun run = runTool({"--help"});
  EXPECT_EQ(0, run.status);
  EXPECT_NE(std::string::npos, run.out.find(std::string("\n  ") + GetParam() + " ")) << run.out;
}

INSTANTIATE_TEST_SUITE_P(Tool, CommandHelpTest,
                         testing::Values("info", "frames", "frame", "sheet", "index", "verify", "convert",
                                         "bench"),
                         [](const testing::TestParamInfo<const char*>& test_case) {
                           return std::string(test_case.param);
                         });

}  // namespace
