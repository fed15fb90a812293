#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "zo_guarded_canvas.h"
#include "zo_test_effort.h"
#include "zo_test_exception.h"
#include "zo_test_names.h"
#include "zo_test_picture.h"
#include "zo_text_rule.h"
#include "zo_video/zo_drawing.h"

namespace {

using namespace std::string_literals;
using zo::Point;
using zo::Size;
using zo::test::Color;
using zo::test::GuardedCanvas;
using zo::test::TextRule;

constexpr Color WHITE{255, 255, 255};
constexpr char ASSERTION[] =
    "Assertion failed: bgr_frame.format() == ZO_FRAME_FORMAT_BGR24 || bgr_frame.format() == "
    "ZO_FRAME_FORMAT_RGB24";

using Memory = std::vector<unsigned char>;

Memory drawn(Size size, const std::string& text, Point position, int height, Color color = WHITE) {
  GuardedCanvas target(size);
  zo::drawText(target.frame, text, position, color.data(), height);
  EXPECT_TRUE(target.guardsAreIntact());
  return target.memory();
}

Memory untouched(Size size) {
  return GuardedCanvas(size).memory();
}

// The smallest box around all pixels that are no longer background.
struct Box {
  int left = INT_MAX, top = INT_MAX, right = INT_MIN, bottom = INT_MIN;
};

Box inkBox(Size size, const std::string& text, Point position, int height) {
  GuardedCanvas target(size);
  zo::drawText(target.frame, text, position, WHITE.data(), height);
  Box box;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      if (!target.isBackground(x, y)) {
        box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x), std::max(box.bottom, y)};
      }
    }
  }
  return box;
}

TEST(TextDrawing, PutsTheBoxBehindTheIndentAndTheNextLineBelow) {
  // Height 16: letters are 8 wide, the indent is (2, 0).
  const Box a = inkBox({100, 60}, "A", {10, 10}, 16);
  EXPECT_GE(a.left, 12);
  EXPECT_LE(a.right, 19);
  EXPECT_GE(a.top, 10);
  EXPECT_LE(a.bottom, 25);
  EXPECT_GE(a.right - a.left, 5);
  EXPECT_GE(a.bottom - a.top, 9);
  const Box b = inkBox({100, 60}, "\nB", {10, 10}, 16);
  EXPECT_GE(b.left, 12);
  EXPECT_LE(b.right, 19);
  EXPECT_GE(b.top, 26);
  EXPECT_LE(b.bottom, 41);
  GuardedCanvas separately({100, 60});
  zo::drawText(separately.frame, "A", {10, 10}, WHITE.data(), 16);
  zo::drawText(separately.frame, "B", {10, 26}, WHITE.data(), 16);
  EXPECT_EQ(separately.memory(), drawn({100, 60}, "A\nB", {10, 10}, 16));
}

TEST(TextDrawing, LineFeedGoesBackToTheLeft) {
  GuardedCanvas separately({100, 60});
  zo::drawText(separately.frame, "abc", {5, 5}, WHITE.data(), 16);
  zo::drawText(separately.frame, "d", {5, 37}, WHITE.data(), 16);
  EXPECT_EQ(separately.memory(), drawn({100, 60}, "abc\n\nd", {5, 5}, 16));
}

TEST(TextDrawing, DrawsNothingBelowHeightFourAndAboveFourTimesTheSource) {
  for (const int height : {INT_MIN, -16, -1, 0, 1, 2, 3, 925, 10000, INT_MAX}) {
    EXPECT_EQ(untouched({60, 40}), drawn({60, 40}, "A", {-10, -10}, height)) << height;
  }
  EXPECT_NE(untouched({60, 40}), drawn({60, 40}, "A", {0, 0}, 4));
  EXPECT_NE(untouched({600, 900}), drawn({600, 900}, "A", {0, 0}, 924));
}

TEST(TextDrawing, DrawsLettersTwoPixelsWideAtHeightFour) {
  // One letter, no indent: columns 0 and 1, rows 0 to 3.
  const Box box = inkBox({60, 40}, "M", {0, 0}, 4);
  EXPECT_EQ(0, box.left);
  EXPECT_EQ(1, box.right);
  EXPECT_GE(box.top, 0);
  EXPECT_LE(box.bottom, 3);
  const Box second = inkBox({60, 40}, " M", {0, 0}, 4);
  EXPECT_EQ(2, second.left);
  EXPECT_EQ(3, second.right);
}

TEST(TextDrawing, DrawsTheVisiblePartOfTextThatStartsOutside) {
  GuardedCanvas large({200, 120});
  zo::drawText(large.frame, "Wq@\ngjM", {40, 30}, WHITE.data(), 30);
  GuardedCanvas small({30, 40});
  zo::drawText(small.frame, "Wq@\ngjM", {40 - 55, 30 - 45}, WHITE.data(), 30);
  int ink = 0;
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 30; ++x) {
      ASSERT_EQ(large.pixel(x + 55, y + 45), small.pixel(x, y)) << x << ", " << y;
      ink += small.isBackground(x, y) ? 0 : 1;
    }
  }
  EXPECT_GT(ink, 100);
  EXPECT_TRUE(small.guardsAreIntact());
}

TEST(TextDrawing, SpaceAdvancesAndDrawsNothing) {
  EXPECT_EQ(untouched({60, 40}), drawn({60, 40}, "   ", {0, 0}, 24));
  EXPECT_EQ(drawn({90, 40}, "A", {5 + 2 * TextRule::width(24), 0}, 24), drawn({90, 40}, "  A", {5, 0}, 24));
}

TEST(TextDrawing, SkipsBytesThatAreNotPrintable) {
  const Memory expected = drawn({120, 40}, "AB", {0, 0}, 24);
  EXPECT_EQ(expected, drawn({120, 40}, "A\tB", {0, 0}, 24));
  EXPECT_EQ(expected, drawn({120, 40}, "\0A\0\0B\0"s, {0, 0}, 24));
  EXPECT_EQ(expected, drawn({120, 40}, "A\x80\xC3\xA4\xFF\x1F\r\vB", {0, 0}, 24));
}

TEST(TextDrawing, LeavesABlankForByte127) {
  EXPECT_EQ(drawn({120, 40}, "A B", {0, 0}, 24), drawn({120, 40},
                                                       "A\x7F"
                                                       "B",
                                                       {0, 0}, 24));
  EXPECT_EQ(untouched({120, 40}), drawn({120, 40}, "\x7F\x7F\n\x7F", {0, 0}, 24));
}

TEST(TextDrawing, DrawsNothingForEmptyOrInvisibleText) {
  const Size size(60, 40);
  EXPECT_EQ(untouched(size), drawn(size, "", {0, 0}, 24));
  EXPECT_EQ(untouched(size), drawn(size, "\n\t\x01\xF0", {0, 0}, 24));
  for (const Point position :
       {Point(60, 0), Point(0, 40), Point(INT_MAX, 0), Point(0, INT_MAX), Point(-1000, 0), Point(0, -25),
        Point(INT_MIN, INT_MIN), Point(INT_MAX, INT_MAX), Point(INT_MIN, 0)}) {
    EXPECT_EQ(untouched(size), drawn(size, "Text", position, 24)) << position.x << ", " << position.y;
  }
}

TEST(TextDrawing, ThrowsForOtherFormatsAndChangesNothing) {
  for (int value = -1; value <= 21; ++value) {
    if (value == zo::ZO_FRAME_FORMAT_BGR24 || value == zo::ZO_FRAME_FORMAT_RGB24) {
      continue;
    }
    zo::Frame frame;
    frame.reuse(static_cast<zo::FrameFormat>(value), Size(64, 32), zo::DeviceContext(), 0);
    if (frame.initialized()) {
      zo::test::fillFrame(frame, 0x40);
    }
    EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_image_io", zo::drawText(frame, "A", {0, 0}, WHITE.data(), 24),
                             zo::ZO_STATUS_INTERNAL_ERROR, ASSERTION, "drawText");
    for (unsigned plane = 0; plane < frame.planeCount(); ++plane) {
      const unsigned char* p_data = frame.planeData(plane);
      const std::size_t size = static_cast<std::size_t>(frame.planeStride(plane)) * frame.planeRows(plane);
      EXPECT_EQ(std::string(size, 0x40), std::string(p_data, p_data + size));
    }
  }
  zo::Frame frame;
  EXPECT_EQ(643, zo::test::caughtZoException([&] { zo::drawText(frame, "", {}, WHITE.data(), 0); }).line());
}

TEST(TextDrawing, DrawsNothingIntoAFrameWithoutPixels) {
  zo::Frame frame(zo::FrameLayout(zo::ZO_FRAME_FORMAT_BGR24, Size(64, 32), {192, 0, 0, 0}),
                  zo::DeviceContext(), zo::DevicePtr(static_cast<void*>(nullptr)));
  ASSERT_FALSE(frame.initialized());
  zo::drawText(frame, "A", {0, 0}, WHITE.data(), 24);
  EXPECT_FALSE(frame.initialized());
}

TEST(TextDrawing, AppliesTheColorBytesInTheirOrder) {
  for (const zo::FrameFormat format : {zo::ZO_FRAME_FORMAT_BGR24, zo::ZO_FRAME_FORMAT_RGB24}) {
    GuardedCanvas target({127, 231}, format);
    const Color color{255, 9, 0};
    zo::drawText(target.frame, "|", {-33, -12}, color.data(), 231);
    int solid = 0;
    for (int y = 0; y < 231; ++y) {
      for (int x = 0; x < 127; ++x) {
        ASSERT_TRUE(target.isBackground(x, y) || target.pixel(x, y) == color);
        solid += target.pixel(x, y) == color ? 1 : 0;
      }
    }
    EXPECT_GT(solid, 1000);
  }
}

TEST(TextDrawing, HasATwoLevelPictureOfItsOwnForEveryPrintableCode) {
  std::set<std::vector<int>> pictures;
  for (char symbol = 32; symbol < 127; ++symbol) {
    const std::vector<int> picture = TextRule::sourceGlyph(symbol).values;
    EXPECT_TRUE(pictures.insert(picture).second) << symbol;
    std::set<int> levels(picture.begin(), picture.end());
    EXPECT_EQ(symbol == ' ' ? std::set<int>({0}) : std::set<int>({0, 255}), levels) << symbol;
  }
}

struct RandomText {
  std::string text;
  Size size;
  Point position;
  Color color;
  int height;

  explicit RandomText(std::mt19937& random) {
    const auto between = [&](int low, int high) {
      return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int i = between(0, 12); i > 0; --i) {
      text += static_cast<char>(between(0, 7) == 0    ? between(0, 255)
                                : between(0, 12) == 0 ? 10
                                                      : between(32, 126));
    }
    size = Size(between(1, 90), between(1, 60));
    position = Point(between(-60, 90), between(-60, 60));
    color = {static_cast<unsigned char>(between(0, 255)), static_cast<unsigned char>(between(0, 255)),
             static_cast<unsigned char>(between(0, 255))};
    height = between(0, 19) == 0 ? between(60, 400) : between(2, 60);
  }
};

TEST(TextDrawing, GivesThePixelsOfAFreshFontForRandomTexts) {
  std::mt19937 random(5);
  TextRule rule;
  const std::size_t calls = zo::test::repetitions(3000, 200);
  for (std::size_t call = 0; call < calls && !HasFailure(); ++call) {
    const RandomText text(random);
    GuardedCanvas expected(text.size);
    for (int y = 0; y < text.size.height; ++y) {
      for (int x = 0; x < text.size.width; ++x) {
        const auto noise = static_cast<unsigned>(random());
        expected.setPixel(x, y,
                          {static_cast<unsigned char>(noise), static_cast<unsigned char>(noise >> 8),
                           static_cast<unsigned char>(noise >> 16)});
      }
    }
    GuardedCanvas actual(text.size);
    for (int y = 0; y < text.size.height; ++y) {
      for (int x = 0; x < text.size.width; ++x) {
        actual.setPixel(x, y, expected.pixel(x, y));
      }
    }
    rule.paint(expected, text.text, text.position, text.color, text.height);
    zo::drawText(actual.frame, text.text, text.position, text.color.data(), text.height);
    ASSERT_EQ(expected.memory(), actual.memory())
        << "call " << call << " '" << text.text << "' height " << text.height << " at " << text.position.x
        << ", " << text.position.y;
  }
}

class LargeText : public testing::TestWithParam<int> {};

// Around the source's own height and twice that, up to the largest one: scaled up.
TEST_P(LargeText, GivesThePixelsOfAFreshFont) {
  const int height = GetParam();
  const Size size(150, 100);
  const Color color{255, 9, 100};
  TextRule rule;
  bool ink = false;
  for (const std::string text : {"g&", "M\n#", "||"}) {
    // The middle of the first letter, and the corner where four of them meet.
    for (const int part : {2, 1}) {
      const Point position(40 - TextRule::width(height) / part, 30 - height / part);
      GuardedCanvas expected(size);
      GuardedCanvas actual(size);
      rule.paint(expected, text, position, color, height);
      zo::drawText(actual.frame, text, position, color.data(), height);
      EXPECT_EQ(expected.memory(), actual.memory()) << text << " part " << part;
      EXPECT_TRUE(actual.guardsAreIntact());
      ink = ink || actual.memory() != untouched(size);
    }
  }
  EXPECT_TRUE(ink);
}

INSTANTIATE_TEST_SUITE_P(Heights, LargeText, testing::Values(230, 232, 401, 462, 463, 700, 923, 924),
                         [](const auto& test_case) { return std::to_string(test_case.param); });

TEST(TextDrawing, GivesTheSamePixelsInManyThreads) {
  const Memory expected = drawn({200, 60}, "Frame 1234", {3, 3}, 21);
  std::vector<std::thread> threads;
  std::vector<Memory> results(6);
  for (Memory& result : results) {
    threads.emplace_back([&result] {
      for (int height = 10; height < 30; ++height) {
        drawn({200, 60}, "Frame 1234", {3, 3}, height);
      }
      result = drawn({200, 60}, "Frame 1234", {3, 3}, 21);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const Memory& result : results) {
    EXPECT_EQ(expected, result);
  }
}

}  // namespace
