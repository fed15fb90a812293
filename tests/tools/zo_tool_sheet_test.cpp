#include <cstring>

#include "zo_tool_program.h"

namespace {

using zo::test::ClipOptions;
using zo::test::failedWith;
using zo::test::makeToolClip;
using zo::test::runTool;
using zo::test::TempDir;
using zo::test::toolClipOptions;
using zo::test::ToolRun;

/// Finds the pictures on a sheet: stretches of rows, and in them of columns, that are hardly background.
class SheetReader {
 public:
  explicit SheetReader(const std::string& path) : _p_sheet(zo::imageLoad(path)) {}

  zo::Size size() const { return _p_sheet->size(); }

  std::vector<zo::Rect> pictures() const {
    std::vector<zo::Rect> found;
    const int width = size().width;
    for (const auto& band : stretches(size().height, [&](int y) { return share(0, y, width, 1) > 0.6; })) {
      const int height = band.second - band.first;
      for (const auto& columns :
           stretches(width, [&](int x) { return share(x, band.first, 1, height) > 0.9; }))
        found.emplace_back(columns.first, band.first, columns.second - columns.first, height);
    }
    return found;
  }

  int number(const zo::Rect& area) const {
    zo::Frame picture;
    picture.reuse(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(area.width, area.height), zo::DeviceContext(), 0);
    for (int y = 0; y < area.height; ++y)
      std::memcpy(picture.planeData(0) + static_cast<unsigned>(y) * picture.planeStride(0),
                  pixel(area.x, area.y + y), static_cast<unsigned>(area.width) * 3);
    return zo::test::paintedNumber(picture);
  }

  /// Share of an area that is not background.
  double share(int left, int top, int width, int height) const {
    int other = 0;
    for (int y = top; y < top + height; ++y)
      for (int x = left; x < left + width; ++x) other += std::memcmp(pixel(x, y), pixel(0, 0), 3) != 0;
    return static_cast<double>(other) / (static_cast<double>(width) * height);
  }

 private:
  const unsigned char* pixel(int x, int y) const {
    return _p_sheet->planeData(0) + static_cast<unsigned>(y) * _p_sheet->planeStride(0) +
           static_cast<unsigned>(x) * 3;
  }

  template <class Predicate>
  static std::vector<std::pair<int, int>> stretches(int end, Predicate&& holds) {
    std::vector<std::pair<int, int>> found;
    for (int i = 0; i < end; ++i) {
      if (!holds(i)) continue;
      const int first = i;
      while (i < end && holds(i)) ++i;
      if (i - first > 7) found.emplace_back(first, i);
    }
    return found;
  }

  std::shared_ptr<zo::Frame> _p_sheet;
};

class ToolSheetTest : public testing::Test {
 protected:
  ToolRun makeSheet(const std::string& clip, const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"sheet", clip, "--out", image()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runTool(arguments);
  }
  std::string image() const { return directory.file("sheet.png"); }

  TempDir directory;
};

TEST_F(ToolSheetTest, ShowsTheMiddleFrameOfEqualStretches) {
  const ToolRun run = makeSheet(makeToolClip(directory, "clip.mp4", toolClipOptions(30)),
                                {"--columns", "3", "--rows", "2", "--width", "640"});
  ASSERT_EQ(0, run.status) << run.err;
  EXPECT_EQ(0U, run.out.find("6 frames of 30")) << run.out;
  const SheetReader sheet(image());
  EXPECT_EQ(640, sheet.size().width);
  const std::vector<zo::Rect> pictures = sheet.pictures();
  ASSERT_EQ(6U, pictures.size());
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(2 + 5 * static_cast<int>(i), sheet.number(pictures[i]));
}

TEST_F(ToolSheetTest, PicturesKeepTheirShapeAndHaveALabelUnderneath) {
  const ToolRun run = makeSheet(makeToolClip(directory, "clip.mp4", toolClipOptions(30)),
                                {"--columns", "3", "--rows", "2", "--width", "640"});
  ASSERT_EQ(0, run.status) << run.err;
  const SheetReader sheet(image());
  for (const zo::Rect& picture : sheet.pictures()) {
    EXPECT_NEAR(picture.width * 64.0 / 96.0, picture.height, 1.0);
    EXPECT_GT(sheet.share(picture.x, picture.y + picture.height + 1, picture.width / 2, 12), 0.02)
        << "the index";
    EXPECT_GT(
        sheet.share(picture.x + picture.width / 2, picture.y + picture.height + 1, picture.width / 2, 12),
        0.02)
        << "the time";
  }
}

TEST_F(ToolSheetTest, ShortClipFillsASmallerSheet) {
  const ToolRun run = makeSheet(makeToolClip(directory, "clip.mp4", toolClipOptions(3)), {"--width", "640"});
  ASSERT_EQ(0, run.status) << run.err;
  const SheetReader sheet(image());
  const std::vector<zo::Rect> pictures = sheet.pictures();
  ASSERT_EQ(3U, pictures.size());
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(static_cast<int>(i), sheet.number(pictures[i]));
}

TEST_F(ToolSheetTest, PicturesStandUpright) {
  ClipOptions options = toolClipOptions(2);
  options.rotation = 90;
  ASSERT_EQ(0, makeSheet(makeToolClip(directory, "clip.mp4", options), {"--width", "300"}).status);
  const std::vector<zo::Rect> pictures = SheetReader(image()).pictures();
  ASSERT_EQ(2U, pictures.size());
  EXPECT_NEAR(pictures[0].width * 96.0 / 64.0, pictures[0].height, 1.5);
}

TEST_F(ToolSheetTest, ContainerWithoutDurationIsCountedFirst) {
  ASSERT_EQ(0, makeSheet(zo::test::makeEndlessClip(directory, toolClipOptions(8)),
                         {"--columns", "2", "--rows", "2", "--width", "400"})
                   .status);
  EXPECT_EQ(4U, SheetReader(image()).pictures().size());
}

TEST_F(ToolSheetTest, TooManyColumnsForTheWidthAreRefused) {
  EXPECT_TRUE(failedWith(makeSheet(makeToolClip(directory, "clip.mp4", toolClipOptions(30)),
                                   {"--columns", "20", "--width", "100"}),
                         "ZO_STATUS_INVALID_ARGUMENT", 6, "20 columns"));
}

TEST_F(ToolSheetTest, UnknownKindOfImageIsRefusedBeforeAnythingIsRead) {
  EXPECT_TRUE(failedWith(runTool({"sheet", "/nowhere/clip.mp4", "--out", "sheet.tiff"}),
                         "ZO_STATUS_NOT_SUPPORTED", 8, "sheet.tiff"));
}

}  // namespace
