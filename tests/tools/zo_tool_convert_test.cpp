#include "zo_tool_program.h"

namespace {

using zo::test::failedWith;
using zo::test::numberInFile;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::ToolRun;

class ToolConvertTest : public testing::Test {
 protected:
  void SetUp() override {
    const zo::Frame frame = zo::test::makeNumberedFrame(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(64, 48), 11);
    zo::imageSave(directory.file("in.png"), frame, 0);
  }

  ToolRun convert(const std::string& out, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"convert", directory.file("in.png"), directory.file(out)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runTool(arguments);
  }

  TempDir directory;
};

struct KindCase {
  const char* name;
  const char* file;
  const char* magic;
};

class ToolConvertKindTest : public ToolConvertTest, public testing::WithParamInterface<KindCase> {};

TEST_P(ToolConvertKindTest, TheNameTellsTheKindOfImage) {
  const ToolRun run = convert(GetParam().file);
  ASSERT_EQ(0, run.status) << run.err;
  const std::string magic = GetParam().magic;
  EXPECT_EQ(magic, zo::test::readFile(directory.file(GetParam().file)).substr(0, magic.size()));
  EXPECT_EQ(11, numberInFile(directory.file(GetParam().file)));
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolConvertKindTest,
                         testing::Values(KindCase{"Jpg", "a.jpg", "\xFF\xD8\xFF"},
                                         KindCase{"Png", "a.png", "\x89PNG"}, KindCase{"Pgm", "a.pgm", "P5"},
                                         KindCase{"Ppm", "a.PPM", "P6"}),
                         zo::test::CaseName());

TEST_F(ToolConvertTest, LosslessKindsKeepEveryPixel) {
  ASSERT_EQ(0, convert("a.ppm").status);
  const zo::Frame frame = zo::test::makeNumberedFrame(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(64, 48), 11);
  EXPECT_TRUE(zo::test::samePixels(frame, *zo::imageLoad(directory.file("a.ppm"))));
}

class ToolConvertAlgorithmTest : public ToolConvertTest, public testing::WithParamInterface<int> {};

TEST_P(ToolConvertAlgorithmTest, ScalesAsTheLibraryDoes) {
  const char* const names[] = {"default", "nearest", "bilinear", "bicubic", "area", "lanczos"};
  const int number = GetParam();
  ASSERT_EQ(0, convert("a.ppm", {"--size", "30x20", "--algorithm", names[number]}).status);
  zo::VideoConverter converter;
  zo::Frame expected;
  converter.convert(*zo::imageLoad(directory.file("in.png")), zo::ZO_FRAME_FORMAT_BGR24, zo::Size(30, 20),
                    expected, static_cast<zo::VideoConverter::ScaleAlgorithm>(number));
  EXPECT_TRUE(zo::test::samePixels(expected, *zo::imageLoad(directory.file("a.ppm"))));
}

INSTANTIATE_TEST_SUITE_P(Tool, ToolConvertAlgorithmTest, testing::Range(0, 6));

TEST_F(ToolConvertTest, BicubicIsTheAlgorithmUnlessToldOtherwise) {
  ASSERT_EQ(0, convert("a.ppm", {"--size", "30x20"}).status);
  ASSERT_EQ(0, convert("b.ppm", {"--size", "30x20", "--algorithm", "bicubic"}).status);
  EXPECT_EQ(zo::test::readFile(directory.file("b.ppm")), zo::test::readFile(directory.file("a.ppm")));
}

TEST_F(ToolConvertTest, OneSideOfASizeKeepsTheShape) {
  ASSERT_EQ(0, convert("a.ppm", {"--size", "x24"}).status);
  EXPECT_EQ(zo::Size(32, 24), zo::imageLoad(directory.file("a.ppm"))->size());
}

TEST_F(ToolConvertTest, ContentNotNameTellsTheKindOfTheInput) {
  ASSERT_EQ(0, rename(directory.file("in.png").c_str(), directory.file("in.jpg").c_str()));
  const ToolRun run = runTool({"convert", directory.file("in.jpg"), directory.file("out.ppm")});
  EXPECT_EQ(0, run.status) << run.err;
}

TEST_F(ToolConvertTest, ImageCanBeConvertedInPlace) {
  ASSERT_EQ(0, convert("in.png", {"--size", "32x24"}).status);
  EXPECT_EQ(zo::Size(32, 24), zo::imageLoad(directory.file("in.png"))->size());
  EXPECT_EQ(std::vector<std::string>{"in.png"}, zo::test::filesIn(directory.path()));
}

TEST_F(ToolConvertTest, MissingInputIsAnOpenError) {
  EXPECT_TRUE(failedWith(runTool({"convert", "/nowhere/a.png", directory.file("b.png")}),
                         "ZO_STATUS_OPEN_ERROR", 20, "/nowhere/a.png"));
}

TEST_F(ToolConvertTest, DamagedInputIsACodecErrorAndLeavesTheOutputAlone) {
  zo::test::writeFile(directory.file("in.png"), zo::test::readFile(directory.file("in.png")).substr(0, 40));
  zo::test::writeFile(directory.file("out.png"), "kept");
  EXPECT_TRUE(failedWith(convert("out.png"), "ZO_STATUS_CODEC_ERROR", 28, "in.png"));
  EXPECT_EQ("kept", zo::test::readFile(directory.file("out.png")));
}

TEST_F(ToolConvertTest, UnknownKindsAreNotSupported) {
  EXPECT_TRUE(failedWith(convert("out.bmp"), "ZO_STATUS_NOT_SUPPORTED", 8, "out.bmp"));
  zo::test::writeFile(directory.file("in.bmp"), "BM");
  EXPECT_TRUE(failedWith(runTool({"convert", directory.file("in.bmp"), directory.file("b.png")}),
                         "ZO_STATUS_NOT_SUPPORTED", 8, ".bmp"));
}

}  // namespace
