#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "zo_core/zo_clock.h"
#include "zo_core/zo_path.h"

namespace zo {
namespace {

TEST(FileExtensionTest, IsWhatFollowsTheLastDotWithTheDot) {
  EXPECT_EQ(".jpg", fileExtension("picture.jpg"));
  EXPECT_EQ(".gz", fileExtension("dir/archive.tar.gz"));
}

TEST(FileExtensionTest, IsTheWholeNameWhenThatBeginsWithItsOnlyDot) {
  EXPECT_EQ(".jpg", fileExtension(".jpg"));
  EXPECT_EQ(".jpg", fileExtension("dir/.jpg"));
}

TEST(FileExtensionTest, IsTheDotOfANameThatEndsWithIt) {
  EXPECT_EQ(".", fileExtension("name."));
  EXPECT_EQ(".", fileExtension("dir/name.jpg."));
}

TEST(FileExtensionTest, KeepsTheCase) {
  EXPECT_EQ(".JpG", fileExtension("/a/b.JpG"));
}

TEST(FileExtensionTest, IsEmptyWithoutADot) {
  EXPECT_EQ("", fileExtension("picture"));
  EXPECT_EQ("", fileExtension("dir/picture"));
  EXPECT_EQ("", fileExtension(""));
}

TEST(FileExtensionTest, IgnoresDotsOfDirectories) {
  EXPECT_EQ("", fileExtension("dir.d/picture"));
  EXPECT_EQ("", fileExtension("../picture"));
  EXPECT_EQ("", fileExtension("/a.b/"));
  EXPECT_EQ(".png", fileExtension("dir.d/picture.png"));
}

TEST(MonotonicClockTest, CountsMillisecondsAndNeverGoesBack) {
  const long long start = getMonotonicTimeMs();
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  const long long end = getMonotonicTimeMs();
  EXPECT_GE(end - start, 29);
  EXPECT_LT(end - start, 60000);
  long long last = end;
  for (int i = 0; i < 1000; ++i) {
    const long long now = getMonotonicTimeMs();
    ASSERT_GE(now, last);
    last = now;
  }
}

}  // namespace
}  // namespace zo
