#include "zo_core/zo_geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

#include "zo_test_support.h"

namespace zo {
namespace {

TEST(SizeTest, IsZeroByDefaultAndComparesBothSides) {
  EXPECT_EQ(0, Size().width);
  EXPECT_EQ(0, Size().height);
  EXPECT_EQ(3, Size(3, 4).width);
  EXPECT_EQ(4, Size(3, 4).height);
  EXPECT_TRUE(Size(3, 4) == Size(3, 4));
  EXPECT_FALSE(Size(3, 4) == Size(3, 5));
  EXPECT_FALSE(Size(3, 4) == Size(2, 4));
  EXPECT_TRUE(Size(3, 4) != Size(4, 3));
  EXPECT_FALSE(Size(3, 4) != Size(3, 4));
}

TEST(PointTest, IsTheOriginByDefault) {
  EXPECT_EQ(0, Point().x);
  EXPECT_EQ(0, Point().y);
  EXPECT_EQ(-3, Point(-3, 4).x);
  EXPECT_EQ(4, Point(-3, 4).y);
}

TEST(RectTest, IsEmptyByDefault) {
  const Rect rect;
  EXPECT_EQ(0, rect.x);
  EXPECT_EQ(0, rect.y);
  EXPECT_EQ(0, rect.width);
  EXPECT_EQ(0, rect.height);
}

struct CropCase {
  const char* name;
  Rect rect;
  Size size;
  Rect expected;
};

class RectCrop : public testing::TestWithParam<CropCase> {};

TEST_P(RectCrop, KeepsThePartInsideTheImage) {
  Rect rect = GetParam().rect;
  rect.crop(GetParam().size);
  EXPECT_EQ(GetParam().expected.x, rect.x);
  EXPECT_EQ(GetParam().expected.y, rect.y);
  EXPECT_EQ(GetParam().expected.width, rect.width);
  EXPECT_EQ(GetParam().expected.height, rect.height);
}

INSTANTIATE_TEST_SUITE_P(
    Partly, RectCrop,
    testing::Values(CropCase{"Inside", Rect(2, 3, 4, 5), Size(20, 10), Rect(2, 3, 4, 5)},
                    CropCase{"Whole", Rect(0, 0, 20, 10), Size(20, 10), Rect(0, 0, 20, 10)},
                    CropCase{"OverTheLeft", Rect(-2, 3, 4, 5), Size(20, 10), Rect(0, 3, 2, 5)},
                    CropCase{"OverTheTop", Rect(2, -3, 4, 5), Size(20, 10), Rect(2, 0, 4, 2)},
                    CropCase{"OverTheRight", Rect(18, 3, 4, 5), Size(20, 10), Rect(18, 3, 2, 5)},
                    CropCase{"OverTheBottom", Rect(2, 8, 4, 5), Size(20, 10), Rect(2, 8, 4, 2)},
                    CropCase{"OverAllSides", Rect(-5, -5, 100, 100), Size(20, 10), Rect(0, 0, 20, 10)},
                    CropCase{"Corner", Rect(19, 9, 5, 5), Size(20, 10), Rect(19, 9, 1, 1)},
                    CropCase{"OfGreatestExtent", Rect(INT_MIN, INT_MIN, INT_MAX, INT_MAX), Size(20, 10),
                             Rect(0, 0, 0, 0)},
                    CropCase{"ReachingBeyondTheNumbers", Rect(10, 5, INT_MAX, INT_MAX), Size(20, 10),
                             Rect(10, 5, 10, 5)},
                    CropCase{"OnAnEndlessImage", Rect(INT_MAX - 1, 0, INT_MAX, 1), Size(INT_MAX, INT_MAX),
                             Rect(INT_MAX - 1, 0, 1, 1)}),
    test::CaseName());

struct OutsideCase {
  const char* name;
  Rect rect;
  Size size;
};

class RectOutside : public testing::TestWithParam<OutsideCase> {};

TEST_P(RectOutside, BecomesAnEmptyRectangleWithinTheImage) {
  Rect rect = GetParam().rect;
  rect.crop(GetParam().size);
  EXPECT_TRUE(rect.width == 0 || rect.height == 0);
  EXPECT_GE(rect.width, 0);
  EXPECT_GE(rect.height, 0);
  EXPECT_GE(rect.x, 0);
  EXPECT_GE(rect.y, 0);
  EXPECT_LE(rect.x + rect.width, std::max(0, GetParam().size.width));
  EXPECT_LE(rect.y + rect.height, std::max(0, GetParam().size.height));
}

INSTANTIATE_TEST_SUITE_P(Places, RectOutside,
                         testing::Values(OutsideCase{"Left", Rect(-10, 3, 4, 5), Size(20, 10)},
                                         OutsideCase{"JustLeft", Rect(-4, 3, 4, 5), Size(20, 10)},
                                         OutsideCase{"Right", Rect(20, 3, 4, 5), Size(20, 10)},
                                         OutsideCase{"FarRight", Rect(INT_MAX, 3, INT_MAX, 5), Size(20, 10)},
                                         OutsideCase{"Above", Rect(3, -10, 4, 5), Size(20, 10)},
                                         OutsideCase{"Below", Rect(3, 10, 4, 5), Size(20, 10)},
                                         OutsideCase{"NoWidth", Rect(3, 3, 0, 5), Size(20, 10)},
                                         OutsideCase{"NegativeWidth", Rect(3, 3, -2, 5), Size(20, 10)},
                                         OutsideCase{"LeastWidth", Rect(INT_MIN, 3, INT_MIN, 5),
                                                     Size(20, 10)},
                                         OutsideCase{"NegativeHeight", Rect(3, 3, 5, INT_MIN), Size(20, 10)},
                                         OutsideCase{"OfAnEmptyImage", Rect(0, 0, 5, 5), Size(0, 0)},
                                         OutsideCase{"OfANegativeImage", Rect(-3, -3, 5, 5), Size(-1, -1)}),
                         test::CaseName());

}  // namespace
}  // namespace zo
