#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "zo_guarded_canvas.h"
#include "zo_line_rule.h"
#include "zo_test_exception.h"
#include "zo_test_names.h"
#include "zo_test_picture.h"
#include "zo_video/zo_drawing.h"

namespace {

using zo::Point;
using zo::Rect;
using zo::Size;
using zo::test::Color;
using zo::test::GuardedCanvas;
using zo::test::LineRule;
using Pixels = std::set<std::pair<int, int>>;

constexpr Color RED{1, 2, 250};
constexpr char ASSERTION[] =
    "Assertion failed: bgr_frame.format() == ZO_FRAME_FORMAT_BGR24 || bgr_frame.format() == "
    "ZO_FRAME_FORMAT_RGB24";
constexpr char FILE_TEXT[] = "src/zo_video/zo_image_io";

// The pixels that are no longer background; fails for one that has another colour than RED or for a damaged
// guard.
Pixels painted(const GuardedCanvas& target) {
  Pixels result;
  for (int y = 0; y < target.size().height; ++y) {
    for (int x = 0; x < target.size().width; ++x) {
      if (!target.isBackground(x, y)) {
        EXPECT_EQ(RED, target.pixel(x, y)) << x << ", " << y;
        result.emplace(x, y);
      }
    }
  }
  EXPECT_TRUE(target.guardsAreIntact());
  return result;
}

Pixels line(Size size, Point p1, Point p2, int thickness) {
  GuardedCanvas target(size);
  zo::drawLine(target.frame, p1, p2, RED.data(), thickness);
  return painted(target);
}

Pixels rectangle(Size size, Rect rect, int thickness) {
  GuardedCanvas target(size);
  zo::drawRect(target.frame, rect, RED.data(), thickness);
  return painted(target);
}

Pixels block(int left, int top, int right, int bottom) {
  Pixels result;
  for (int y = top; y <= bottom; ++y) {
    for (int x = left; x <= right; ++x) {
      result.emplace(x, y);
    }
  }
  return result;
}

Pixels operator+(Pixels a, const Pixels& b) {
  a.insert(b.begin(), b.end());
  return a;
}

TEST(LineDrawing, ClampsAHorizontalLineToTheFrame) {
  EXPECT_EQ(block(0, 3, 9, 3), line({10, 10}, {-5, 3}, {100, 3}, 1));
}

TEST(LineDrawing, ClampsAVerticalLineToTheFrame) {
  EXPECT_EQ(block(4, 0, 4, 9), line({10, 10}, {4, 1000}, {4, -7}, 1));
}

TEST(LineDrawing, PaintsNothingWhenBothEndsAreBeyondTheSameEdge) {
  EXPECT_EQ(Pixels(), line({10, 10}, {-5, -5}, {-1, 20}, 3));
  EXPECT_EQ(Pixels(), line({10, 10}, {10, -5}, {11, 20}, 3));
  EXPECT_EQ(Pixels(), line({10, 10}, {-5, -1}, {20, -3}, 5));
  EXPECT_EQ(Pixels(), line({10, 10}, {-5, 10}, {20, 12}, 5));
}

TEST(LineDrawing, PaintsExactlyTheDiagonalWithThicknessOne) {
  Pixels diagonal;
  for (int i = 0; i < 10; ++i) {
    diagonal.emplace(i, i);
  }
  EXPECT_EQ(diagonal, line({10, 10}, {0, 0}, {9, 9}, 1));
  EXPECT_EQ(diagonal, line({10, 10}, {9, 9}, {0, 0}, 1));
}

TEST(LineDrawing, AddsThePixelAboveWithThicknessTwo) {
  Pixels expected;
  for (int i = 0; i < 10; ++i) {
    expected.emplace(i, i);
    if (i > 0) {
      expected.emplace(i, i - 1);
    }
  }
  EXPECT_EQ(expected, line({10, 10}, {0, 0}, {9, 9}, 2));
}

TEST(LineDrawing, SpreadsThicknessThreeToBothSides) {
  EXPECT_EQ(block(2, 4, 7, 6), line({10, 10}, {2, 5}, {7, 5}, 3));
}

TEST(LineDrawing, SpreadsASteepLineAlongItsRows) {
  // The error term moves from column 2 to 3 when it turns negative: 4.5 - 5 * 1 before row 5.
  EXPECT_EQ(block(2, 0, 2, 4) + block(3, 5, 3, 9), line({10, 10}, {2, 0}, {3, 9}, 1));
  EXPECT_EQ(block(0, 0, 4, 4) + block(1, 5, 5, 9), line({10, 10}, {2, 0}, {3, 9}, 5));
  EXPECT_EQ(block(0, 0, 3, 4) + block(0, 5, 3, 9), line({4, 10}, {2, 0}, {3, 9}, 6));
}

TEST(LineDrawing, TreatsEqualSidesAsShallow) {
  // Thickness goes up and down the columns then, not along the rows.
  EXPECT_EQ(block(2, 1, 2, 3) + block(3, 2, 3, 4), line({10, 10}, {2, 2}, {3, 3}, 3));
}

TEST(LineDrawing, PaintsASinglePixelForTwoEqualPoints) {
  EXPECT_EQ(block(4, 5, 4, 5), line({10, 10}, {4, 5}, {4, 5}, 1));
  EXPECT_EQ(block(4, 3, 4, 6), line({10, 10}, {4, 5}, {4, 5}, 4));
}

TEST(LineDrawing, PaintsNothingWithThicknessZero) {
  EXPECT_EQ(Pixels(), line({10, 10}, {0, 0}, {9, 9}, 0));
}

TEST(LineDrawing, CountsNegativeAndHugeThicknessAsUnsigned) {
  for (const int thickness : {INT_MAX, INT_MIN, -1, -2}) {
    EXPECT_EQ(block(2, 0, 6, 9), line({10, 10}, {2, 3}, {6, 5}, thickness)) << thickness;
    EXPECT_EQ(block(0, 2, 9, 6), line({10, 10}, {3, 2}, {5, 6}, thickness)) << thickness;
  }
}

TEST(LineDrawing, KeepsTheHalfOfAnEvenHugeThicknessExact) {
  // 2^31 + 7 rows from -2^30 on end before row 2^30 + 7 + 3: all rows. 7 rows from 9 - 3 on: rows 6 to 9.
  EXPECT_EQ(block(2, 6, 6, 9), line({10, 10}, {2, 9}, {6, 9}, 7));
  EXPECT_EQ(block(2, 0, 6, 9), line({10, 10}, {2, 9}, {6, 9}, INT_MIN + 7));
}

TEST(LineDrawing, PaintsWhatIsInsideOfALineThatTheClippingLeavesOutside) {
  // The clipping rule makes (166666, 0)-(39, 0) of it.
  EXPECT_EQ(block(39, 0, 39, 0), line({40, 30}, {0, -1}, {1000000, 5}, 1));
}

TEST(LineDrawing, ReachesTheLastRowAndColumn) {
  EXPECT_EQ(block(0, 9, 9, 9) + block(0, 8, 9, 8), line({10, 10}, {0, 9}, {9, 9}, 3));
  EXPECT_EQ(block(8, 0, 9, 9), line({10, 10}, {9, 0}, {9, 9}, 3));
}

// The three bytes of RED within the picture, from the second byte of pixel `x` of row 0 on: once either of
// the two pixels is painted, they are another color.
const unsigned char* colorWithinThePicture(GuardedCanvas& target, int x) {
  target.setPixel(x, 0, {GuardedCanvas::BACKGROUND, RED[0], RED[1]});
  target.setPixel(x + 1, 0, {RED[2], GuardedCanvas::BACKGROUND, GuardedCanvas::BACKGROUND});
  return target.frame.planeData(0) + 3 * x + 1;
}

TEST(LineDrawing, ReadsTheColorBeforeItWrites) {
  for (const int thickness : {1, 2, 7}) {
    GuardedCanvas target({10, 10});
    zo::drawLine(target.frame, {0, 0}, {9, 0}, colorWithinThePicture(target, 3), thickness);
    EXPECT_EQ(block(0, 0, 9, thickness - thickness / 2 - 1), painted(target)) << thickness;
  }
}

struct ColorCase {
  const char* name;
  zo::FrameFormat format;
};
class ColorOrder : public testing::TestWithParam<ColorCase> {};

TEST_P(ColorOrder, WritesTheColorBytesAsGiven) {
  GuardedCanvas target({4, 4}, GetParam().format);
  const Color color{255, 0, 7};
  zo::drawLine(target.frame, {1, 1}, {1, 1}, color.data(), 1);
  EXPECT_EQ(color, target.pixel(1, 1));
  zo::drawRect(target.frame, {2, 2, 1, 1}, color.data(), 1);
  EXPECT_EQ(color, target.pixel(2, 2));
}

INSTANTIATE_TEST_SUITE_P(Formats, ColorOrder,
                         testing::Values(ColorCase{"Bgr24", zo::ZO_FRAME_FORMAT_BGR24},
                                         ColorCase{"Rgb24", zo::ZO_FRAME_FORMAT_RGB24}),
                         zo::test::CaseName());

class RefusedFormat : public testing::TestWithParam<int> {};

TEST_P(RefusedFormat, ThrowsAndChangesNothing) {
  const auto format = static_cast<zo::FrameFormat>(GetParam());
  zo::Frame frame;
  frame.reuse(format, Size(16, 16), zo::DeviceContext(), 0);
  if (frame.initialized()) {
    zo::test::fillFrame(frame, 0x40);
  }
  EXPECT_ZO_EXCEPTION_FROM(FILE_TEXT, zo::drawLine(frame, {0, 0}, {9, 9}, RED.data(), 1),
                           zo::ZO_STATUS_INTERNAL_ERROR, ASSERTION, "drawLine");
  EXPECT_ZO_EXCEPTION_FROM(FILE_TEXT, zo::drawRect(frame, {0, 0, 9, 9}, RED.data(), 1),
                           zo::ZO_STATUS_INTERNAL_ERROR, ASSERTION, "drawRect");
  EXPECT_EQ(601, zo::test::caughtZoException([&] { zo::drawLine(frame, {}, {}, RED.data(), 1); }).line());
  EXPECT_EQ(618, zo::test::caughtZoException([&] { zo::drawRect(frame, {}, RED.data(), 1); }).line());
  for (unsigned plane = 0; plane < frame.planeCount(); ++plane) {
    const unsigned char* p_data = frame.planeData(plane);
    const std::size_t size = static_cast<std::size_t>(frame.planeStride(plane)) * frame.planeRows(plane);
    EXPECT_EQ(std::string(size, 0x40), std::string(p_data, p_data + size));
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, RefusedFormat,
                         testing::Values(0, 1, 3, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20,
                                         21, -1, INT_MAX, INT_MIN));

TEST(LineDrawing, PaintsNothingIntoAFrameWithoutPixels) {
  for (zo::FrameFormat format : {zo::ZO_FRAME_FORMAT_BGR24, zo::ZO_FRAME_FORMAT_RGB24}) {
    zo::Frame frame(zo::FrameLayout(format, Size(20, 20), {60, 0, 0, 0}), zo::DeviceContext(),
                    zo::DevicePtr(static_cast<void*>(nullptr)));
    ASSERT_FALSE(frame.initialized());
    zo::drawLine(frame, {0, 0}, {19, 19}, RED.data(), 3);
    zo::drawRect(frame, {0, 0, 19, 19}, RED.data(), 3);
    EXPECT_FALSE(frame.initialized());
  }
}

TEST(RectDrawing, PaintsTheOutlineWithInclusiveCorners) {
  EXPECT_EQ(block(2, 2, 5, 2) + block(2, 4, 5, 4) + block(2, 2, 2, 4) + block(5, 2, 5, 4),
            rectangle({10, 10}, {2, 2, 4, 3}, 1));
}

TEST(RectDrawing, ReadsTheColorOnceForItsFourLines) {
  // It lies under the first of them.
  GuardedCanvas target({10, 10});
  zo::drawRect(target.frame, {0, 0, 10, 8}, colorWithinThePicture(target, 4), 1);
  EXPECT_EQ(block(0, 0, 9, 0) + block(9, 0, 9, 7) + block(0, 7, 9, 7) + block(0, 0, 0, 7), painted(target));
}

TEST(RectDrawing, LeavesTheOuterCornersOfAThickOutlineUnpainted) {
  // Rows 2..4 and 9..11 between columns 3 and 10, columns 2..4 and 9..11 between rows 3 and 10.
  EXPECT_EQ(block(3, 2, 10, 4) + block(3, 9, 10, 11) + block(2, 3, 4, 10) + block(9, 3, 11, 10),
            rectangle({14, 14}, {3, 3, 8, 8}, 3));
}

TEST(RectDrawing, DrawsTheCutEdgesOfARectangleThatSticksOut) {
  EXPECT_EQ(block(0, 0, 4, 0) + block(4, 0, 4, 9) + block(0, 9, 4, 9) + block(0, 0, 0, 9),
            rectangle({10, 10}, {-3, -8, 8, 100}, 1));
}

TEST(RectDrawing, DrawsOnePixelAndOneRowAndOneColumn) {
  EXPECT_EQ(block(3, 4, 3, 4), rectangle({10, 10}, {3, 4, 1, 1}, 1));
  EXPECT_EQ(block(3, 4, 7, 4), rectangle({10, 10}, {3, 4, 5, 1}, 1));
  EXPECT_EQ(block(3, 4, 3, 8), rectangle({10, 10}, {3, 4, 1, 5}, 1));
}

TEST(RectDrawing, DrawsNothingForAnEmptyRectangle) {
  const Rect empty[] = {{2, 2, 0, 5},   {2, 2, 5, 0},     {2, 2, -3, 5},           {10, 0, 5, 5},
                        {0, 10, 5, 5},  {-5, 2, 5, 5},    {2, -5, 5, 5},           {INT_MIN, INT_MIN, 5, 5},
                        {50, 50, 9, 9}, {9, 9, -20, -20}, {INT_MAX, 0, INT_MAX, 5}};
  for (const Rect& rect : empty) {
    EXPECT_EQ(Pixels(), rectangle({10, 10}, rect, 3))
        << rect.x << " " << rect.y << " " << rect.width << " " << rect.height;
  }
}

TEST(RectDrawing, DrawsTheFrameBorderForAHugeRectangle) {
  EXPECT_EQ(block(0, 0, 9, 0) + block(0, 9, 9, 9) + block(0, 0, 0, 9) + block(9, 0, 9, 9),
            rectangle({10, 10}, {INT_MIN / 2, INT_MIN / 2, INT_MAX, INT_MAX}, 1));
}

// Random points: mostly around the frame, some far away, some as far as numbers go.
class RandomPoints {
 public:
  explicit RandomPoints(unsigned seed) : _random(seed) {}

  int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(_random); }

  Point point(int reach) { return {between(-reach, reach), between(-reach, reach)}; }

  int extreme() {
    static const int values[] = {INT_MIN, INT_MIN + 1, -(1 << 30), -65536,      -1,     0,
                                 1,       65535,       1 << 30,    INT_MAX - 1, INT_MAX};
    const int near = between(-3, 3);
    const int value = values[between(0, 10)];
    return static_cast<int>(static_cast<unsigned>(value) + static_cast<unsigned>(near));
  }

  int thickness() {
    switch (between(0, 9)) {
      case 0:
        return extreme();
      case 1:
        return between(0, 200);
      case 2:
        return 1;
      default:
        return between(0, 12);
    }
  }

 private:
  std::mt19937 _random;
};

void compareWithTheRule(Size size, Point p1, Point p2, int thickness) {
  GuardedCanvas expected(size);
  GuardedCanvas actual(size);
  LineRule::paint(expected, p1, p2, RED, thickness);
  zo::drawLine(actual.frame, p1, p2, RED.data(), thickness);
  ASSERT_EQ(expected.memory(), actual.memory())
      << size.width << "x" << size.height << " (" << p1.x << ", " << p1.y << ")-(" << p2.x << ", " << p2.y
      << ") thickness " << thickness;
}

TEST(LineDrawing, PaintsWhatTheRuleSaysForRandomLinesAroundTheFrame) {
  RandomPoints random(1);
  for (int call = 0; call < 80000 && !HasFailure(); ++call) {
    const Size size(random.between(1, 40), random.between(1, 30));
    const int reach = call % 2 == 0 ? 40 : 120;
    compareWithTheRule(size, random.point(reach), random.point(reach), random.thickness());
  }
}

TEST(LineDrawing, PaintsWhatTheRuleSaysForRandomLinesThatWrapAround) {
  RandomPoints random(2);
  int compared = 0;
  for (int call = 0; call < 60000 && !HasFailure(); ++call) {
    const Size size(random.between(1, 40), random.between(1, 30));
    const int reach = random.between(0, 3) == 0 ? INT_MAX : 200000;
    Point p1 = random.point(reach);
    Point p2 = random.between(0, 1) == 0 ? random.point(60) : random.point(reach);
    if (random.between(0, 5) == 0) {
      p1 = {random.extreme(), random.extreme()};
    }
    const int thickness = random.thickness();
    if (LineRule::placesToWalk(size, p1, p2) < 20000) {
      compareWithTheRule(size, p1, p2, thickness);
      ++compared;
    } else {
      GuardedCanvas target(size);
      zo::drawLine(target.frame, p1, p2, RED.data(), thickness);
      ASSERT_TRUE(target.guardsAreIntact());
    }
  }
  EXPECT_GT(compared, 20000);
}

TEST(RectDrawing, KeepsInsideTheFrameForRandomRectangles) {
  RandomPoints random(3);
  for (int call = 0; call < 20000 && !HasFailure(); ++call) {
    const Size size(random.between(1, 40), random.between(1, 30));
    const bool far = random.between(0, 2) == 0;
    const Point at = far ? Point{random.extreme(), random.extreme()} : random.point(60);
    const Rect rect(at.x, at.y, far ? random.extreme() : random.between(-5, 60),
                    far ? random.extreme() : random.between(-5, 60));
    const int thickness = random.thickness();
    GuardedCanvas expected(size);
    GuardedCanvas actual(size);
    Rect cropped = rect;
    cropped.crop(size);
    if (cropped.width > 0 && cropped.height > 0) {
      const int right = cropped.x + cropped.width - 1;
      const int bottom = cropped.y + cropped.height - 1;
      LineRule::paint(expected, {cropped.x, cropped.y}, {right, cropped.y}, RED, thickness);
      LineRule::paint(expected, {right, cropped.y}, {right, bottom}, RED, thickness);
      LineRule::paint(expected, {right, bottom}, {cropped.x, bottom}, RED, thickness);
      LineRule::paint(expected, {cropped.x, bottom}, {cropped.x, cropped.y}, RED, thickness);
    }
    zo::drawRect(actual.frame, rect, RED.data(), thickness);
    ASSERT_EQ(expected.memory(), actual.memory())
        << rect.x << " " << rect.y << " " << rect.width << " " << rect.height << " thickness " << thickness;
  }
}

}  // namespace
