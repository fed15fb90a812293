// Files that change under an open reader, and what readers leave behind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

class ChangingFile : public testing::Test {
 protected:
  void SetUp() override {
    ffmpegCalls().reset();
    // Pictures large enough that the demuxer cannot have read the file ahead.
    ClipOptions options;
    options.codec = "rawvideo";
    options.width = 160;
    options.height = 120;
    options.gop = 1;
    options.frames = 40;
    _path = makeClip(_directory.file("a.avi"), options).path;
  }

  TempDir _directory;
  std::string _path;
};

TEST_F(ChangingFile, ThatIsRemovedIsReadToItsEnd) {
  Reader reader;
  openIndexed(reader, _path);
  ASSERT_EQ(0, nextFrame(reader).number);
  std::filesystem::remove(_path);
  reader.moveByIndex(30);
  EXPECT_EQ(30, nextFrame(reader).number);
  reader.moveByIndex(1);
  EXPECT_EQ(1, nextFrame(reader).number);
  EXPECT_EQ(ZO_STATUS_OPEN_ERROR,
            caughtZoException([&] { reader.open(_path.c_str(), -1, nullptr, true, false, false); }).status());
}

class ShrinkingFile : public ChangingFile, public testing::WithParamInterface<bool> {};

TEST_P(ShrinkingFile, GivesThePicturesThatAreLeftAndThenReportsOrGivesEmptyFrames) {
  const bool skip_errors = GetParam();
  const std::string whole = readFile(_path);
  Reader reader;
  openIndexed(reader, _path, skip_errors);
  ASSERT_EQ(40, reader.frameCount());
  ASSERT_EQ(0, nextFrame(reader).number);
  ASSERT_EQ(0, ::truncate(_path.c_str(), static_cast<off_t>(whole.size() / 2)));
  for (const long long index : {1, 10, 18, 19, 20, 21, 30, 39, 5, 38, 2}) {
    try {
      reader.moveByIndex(index);
      const SeenFrame frame = nextFrame(reader);
      EXPECT_EQ(index, frame.index);
      if (index <= 18) {
        EXPECT_EQ(index, frame.number);
      } else if (index >= 21) {
        EXPECT_TRUE(frame.empty) << index;
      }
    } catch (const Exception& exception) {
      EXPECT_GE(index, 19);
      EXPECT_TRUE(exception.status() == ZO_STATUS_READ_ERROR || exception.status() == ZO_STATUS_SEEK_ERROR ||
                  exception.status() == ZO_STATUS_DECODER_ERROR)
          << exception.what();
    }
  }
  writeFile(_path, whole);
  openIndexed(reader, _path, skip_errors);
  EXPECT_EQ(countingUp(40), numbersOf(readAll(reader)));
}

INSTANTIATE_TEST_SUITE_P(SkippingErrors, ShrinkingFile, testing::Bool(),
                         [](const auto& test) { return test.param ? "On" : "Off"; });

TEST_F(ChangingFile, ThatIsCutAnywhereNeverBreaksAReader) {
  const std::string whole = readFile(_path);
  const std::string cut_path = _directory.file("cut.avi");
  for (std::size_t bytes = 0; bytes < whole.size(); bytes += bytes < 6000 ? 97 : 20011) {
    writeFile(cut_path, whole.substr(0, bytes));
    Reader reader;
    try {
      reader.open(cut_path.c_str(), -1, nullptr, true, true, false);
      if (reader.frameCount() == 0) {
        continue;  // too little is left for an index
      }
      for (const SeenFrame& frame : readAll(reader)) {
        EXPECT_TRUE(frame.empty || frame.number == frame.index) << "cut at " << bytes;
      }
    } catch (const Exception& exception) {
      EXPECT_NE(ZO_STATUS_INTERNAL_ERROR, exception.status()) << exception.what() << ", cut at " << bytes;
    }
  }
}

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

TEST_F(ChangingFile, LeavesNoDescriptorBehind) {
  const std::string broken = _directory.file("broken.avi");
  writeFile(broken, readFile(_path).substr(0, 3000));
  const std::ptrdiff_t before = openDescriptors();
  Reader reader;
  for (int i = 0; i < 50; ++i) {
    ASSERT_EQ(0, reader.open(_path.c_str(), -1, nullptr, true, false, i % 2 == 0));
    reader.moveByIndex(i % 40);
    nextFrame(reader);
    for (const std::string& path : {broken, _directory.path(), _directory.file("missing.avi")}) {
      try {
        Reader().open(path.c_str(), -1, nullptr, true, false, true);
      } catch (const Exception&) {
        continue;
      }
    }
  }
  reader.close();
  EXPECT_EQ(before, openDescriptors());
}

}  // namespace
}  // namespace test
}  // namespace zo
