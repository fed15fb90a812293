#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "Simd/SimdFont.hpp"
#include "alpha_fill.h"
#include "font_glyphs.h"
#include "resize.h"

namespace {

using View = Simd::View<Simd::Allocator>;
using Bytes = std::vector<uint8_t>;

struct Color {
  uint8_t bytes[3];
};

TEST(View, LiesOverOutsidePixels) {
  uint8_t pixels[64] = {};
  {
    const View view(4, 3, 16, View::Bgr24, pixels);
    EXPECT_EQ(pixels, view.data);
    EXPECT_EQ(4u, view.width);
    EXPECT_EQ(3u, view.height);
    EXPECT_EQ(16, view.stride);
    EXPECT_EQ(View::Bgr24, view.format);
  }
  EXPECT_EQ(0, pixels[0]);
}

TEST(View, HasPixelsOfItsOwnWithoutOutsideOnes) {
  const View view(4, 3, 16, View::Bgr24, nullptr);
  ASSERT_NE(nullptr, view.data);
  memset(view.data, 1, 16 * 3);
}

TEST(View, StaysWithoutPixelsWhenASizeIsZero) {
  EXPECT_EQ(nullptr, View(0, 3, 16, View::Bgr24, nullptr).data);
  EXPECT_EQ(nullptr, View(4, 0, 16, View::Bgr24, nullptr).data);
  EXPECT_EQ(nullptr, View(4, 3, 0, View::Bgr24, nullptr).data);
  EXPECT_EQ(nullptr, View(4, 3, 16, View::None, nullptr).data);
}

TEST(View, ThrowsWithoutMemory) {
  EXPECT_THROW(View(4, SIZE_MAX / 2, 16, View::Bgr24, nullptr), std::bad_alloc);
}

TEST(Font, DrawsIntoThreeBytePixelsOnly) {
  const std::string text = "A";
  const Color color{{255, 255, 255}};
  const Simd::Font font(16);
  Bytes pixels(64 * 64 * 4);
  for (const View::Format format : {View::Gray8, View::Uv16, View::Bgra32, View::None}) {
    View canvas(64, 64, 256, format, pixels.data());
    EXPECT_FALSE(font.Draw(canvas, text, Simd::Font::Point(0, 0), color));
  }
  EXPECT_EQ(Bytes(pixels.size()), pixels);
  for (const View::Format format : {View::Bgr24, View::Rgb24}) {
    View canvas(64, 64, 256, format, pixels.data());
    EXPECT_TRUE(font.Draw(canvas, text, Simd::Font::Point(0, 0), color));
    EXPECT_NE(Bytes(pixels.size()), pixels);
  }
}

TEST(Font, OfAnUnusableHeightDrawsNothing) {
  Bytes pixels(64 * 64 * 3);
  View canvas(64, 64, 192, View::Bgr24, pixels.data());
  for (const size_t height : {size_t(0), size_t(3), size_t(925), SIZE_MAX}) {
    EXPECT_FALSE(Simd::Font(height).Draw(canvas, "A", Simd::Font::Point(0, 0), Color{{1, 1, 1}}));
  }
  EXPECT_EQ(Bytes(pixels.size()), pixels);
}

TEST(Font, HoldsGlyphsOfTwoLevelsInsideTheirCells) {
  for (size_t index = 0; index < Simd::Detail::SYMBOL_COUNT; ++index) {
    // Guards in front and behind.
    Bytes cell(Simd::Detail::SOURCE_WIDTH * Simd::Detail::SOURCE_HEIGHT + 2, 7);
    Simd::Detail::unpackGlyph(index, cell.data() + 1);
    EXPECT_EQ(7, cell.front());
    EXPECT_EQ(7, cell.back());
    size_t ink = 0;
    for (size_t i = 1; i + 1 < cell.size(); ++i) {
      ASSERT_TRUE(cell[i] == 0 || cell[i] == 255);
      ink += cell[i] == 255 ? 1 : 0;
    }
    EXPECT_EQ(index == 0, ink == 0) << index;
  }
}

TEST(AlphaFilling, FollowsTheFormulaForAllValues) {
  for (unsigned alpha = 0; alpha < 256; ++alpha) {
    Bytes mask(256, static_cast<uint8_t>(alpha));
    for (unsigned color = 0; color < 256; color += 5) {
      const uint8_t bytes[3] = {static_cast<uint8_t>(color), static_cast<uint8_t>(255 - color), 128};
      Bytes pixels(256 * 3);
      for (size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<uint8_t>(i / 3);
      }
      Simd::Detail::fillRowByAlpha(mask.data(), 256, bytes, pixels.data());
      for (unsigned i = 0; i < pixels.size(); ++i) {
        const unsigned v = bytes[i % 3] * alpha + i / 3 * (255 - alpha);
        ASSERT_EQ((v + 1 + (v >> 8)) >> 8, pixels[i]) << alpha << " " << color << " " << i;
      }
    }
  }
}

TEST(Reduction, RoundsTheMeanOfFour) {
  const uint8_t source[] = {0, 1, 255, 255, 7, 7,  //
                            0, 1, 255, 255, 7, 9};
  uint8_t result[3];
  Simd::Detail::reduce2x2(source, 3, 1, result);
  EXPECT_EQ(1, result[0]);  // 2 / 4, rounded up
  EXPECT_EQ(255, result[1]);
  EXPECT_EQ(8, result[2]);  // 30 / 4
}

TEST(Resizing, KeepsAnImageOfTheSameSize) {
  std::mt19937 random(3);
  Bytes source(17 * 9);
  for (uint8_t& value : source) {
    value = static_cast<uint8_t>(random());
  }
  Bytes result(source.size());
  Simd::Detail::resizeBilinear(source.data(), 17, 9, result.data(), 17, 9);
  EXPECT_EQ(source, result);
}

TEST(Resizing, TakesEachDestinationFromItsPlaceInSixteenths) {
  // 4 to 3 columns: places 1/6, 3/2 and 17/6; in sixteenths 3, 8 and 13 of the way. All rows are the same.
  const uint8_t source[] = {0, 160, 32, 96, 0, 160, 32, 96};
  uint8_t result[6];
  Simd::Detail::resizeBilinear(source, 4, 2, result, 3, 2);
  EXPECT_EQ(30, result[0]);
  EXPECT_EQ(96, result[1]);
  EXPECT_EQ(84, result[2]);
  EXPECT_EQ(0, memcmp(result, result + 3, 3));
}

TEST(Resizing, RepeatsTheEdges) {
  // 2 to 8: the first two places lie before the first pixel, the last two behind the last one.
  const uint8_t source[] = {16, 240, 16, 240};
  uint8_t result[16];
  Simd::Detail::resizeBilinear(source, 2, 2, result, 8, 2);
  EXPECT_EQ(16, result[0]);
  EXPECT_EQ(16, result[1]);
  EXPECT_EQ(16 + 224 / 8, result[2]);
  EXPECT_EQ(240, result[6]);
  EXPECT_EQ(240, result[7]);
}

}  // namespace
