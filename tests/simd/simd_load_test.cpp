#include <gtest/gtest.h>

#include <cstdio>

#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <string>

#include "simd_test_images.h"
#include "zo_test_files.h"
#include "zo_test_names.h"

namespace {

using namespace simd_test;
using namespace std::string_literals;

constexpr SimdPixelFormatType ALL_FORMATS[] = {SimdPixelFormatGray8, SimdPixelFormatBgr24,
                                               SimdPixelFormatBgra32, SimdPixelFormatRgb24};

Picture gray(size_t width, size_t height, Bytes pixels) {
  return Picture{width, height, SimdPixelFormatGray8, std::move(pixels)};
}
Picture rgb(size_t width, size_t height, Bytes pixels) {
  return Picture{width, height, SimdPixelFormatRgb24, std::move(pixels)};
}

struct PnmCase {
  const char* name;
  std::string file;
  Picture expected;
};
void PrintTo(const PnmCase& pnm, std::ostream* p_out) {
  *p_out << pnm.name;
}
class PnmLoading : public testing::TestWithParam<PnmCase> {};

TEST_P(PnmLoading, GivesTheSamplesOfEveryVariant) {
  EXPECT_EQ(GetParam().expected, load(bytesOf(GetParam().file), SimdPixelFormatNone));
}

INSTANTIATE_TEST_SUITE_P(
    Files, PnmLoading,
    testing::Values(
        PnmCase{"BinaryGray", "P5\n2 1\n255\n\x07\xFF"s, gray(2, 1, {7, 255})},
        PnmCase{"BinaryColor", "P6 1 1 255\n\x01\x02\x03"s, rgb(1, 1, {1, 2, 3})},
        PnmCase{"TextGray", "P2\n2 1\n255\n7 255\n", gray(2, 1, {7, 255})},
        PnmCase{"TextColor", "P3\n1 1\n255\n1 2 3", rgb(1, 1, {1, 2, 3})},
        PnmCase{"AnyWhiteSpace", "P2 \t\r\n\v\f2\t1\r\n255\f7\v\n\n 255", gray(2, 1, {7, 255})},
        PnmCase{"Comments", "P5 # one\n#two\n 2 #3\n1# four\n255\n\x07\x08"s, gray(2, 1, {7, 8})},
        PnmCase{"CommentRightAfterTheMagic", "P5#one\n2 1 255 \x07\x08"s, gray(2, 1, {7, 8})},
        PnmCase{"CommentAmongTextSamples", "P2 2 1 255 7#seven\n#\n8 ", gray(2, 1, {7, 8})},
        PnmCase{"CommentEndedByCarriageReturn", "P2 2 1#\r255 7 8", gray(2, 1, {7, 8})},
        PnmCase{"BinaryDataThatLooksLikeAComment", "P5 2 1 255\n##"s, gray(2, 1, {35, 35})},
        PnmCase{"BinaryDataThatLooksLikeSpace", "P5 2 1 255\n\n "s, gray(2, 1, {10, 32})},
        PnmCase{"LeadingZeros", "P2 002 01 000255 0007 8", gray(2, 1, {7, 8})},
        PnmCase{"TwoLevels", "P2 3 1 1 0 1 0", gray(3, 1, {0, 255, 0})},
        PnmCase{"SmallMaximum", "P5 4 1 15\n\x00\x01\x08\x0F"s, gray(4, 1, {0, 17, 136, 255})},
        PnmCase{"MaximumBelow255", "P2 3 1 100 0 50 100", gray(3, 1, {0, 128, 255})},
        PnmCase{"MaximumAbove255", "P5 3 1 511\n\x00\x00\x01\x00\x01\xFF"s, gray(3, 1, {0, 128, 255})},
        PnmCase{"SixteenBits", "P5 3 1 65535\n\x00\x00\x80\x80\xFF\xFF"s, gray(3, 1, {0, 128, 255})},
        PnmCase{"SixteenBitColor", "P6 1 1 65535\n\x00\x00\x80\x80\xFF\xFF"s, rgb(1, 1, {0, 128, 255})},
        PnmCase{"SixteenBitText", "P3 1 1 65535 0 32896 65535", rgb(1, 1, {0, 128, 255})},
        PnmCase{"SamplesAboveTheMaximum", "P5 2 1 100\n\x65\xFF"s, gray(2, 1, {255, 255})},
        PnmCase{"TrailingBytes", "P5 1 1 255\n\x07 and more", gray(1, 1, {7})}),
    zo::test::CaseName());

class BrokenPnm : public testing::TestWithParam<PnmCase> {};

TEST_P(BrokenPnm, IsNull) {
  for (const SimdPixelFormatType format : ALL_FORMATS) {
    EXPECT_TRUE(load(bytesOf(GetParam().file), format).isNull());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Files, BrokenPnm,
    testing::Values(
        PnmCase{"Empty", "", {}}, PnmCase{"MagicOnly", "P5", {}}, PnmCase{"MagicAndSpace", "P5 ", {}},
        PnmCase{"Bitmap", "P1 1 1 0", {}}, PnmCase{"OtherMagic", "P7 1 1 255 0", {}},
        PnmCase{"NoSpaceAfterMagic", "P51 1 255\n0", {}}, PnmCase{"ZeroWidth", "P2 0 1 255 1", {}},
        PnmCase{"ZeroHeight", "P2 1 0 255 1", {}}, PnmCase{"ZeroMaximum", "P2 1 1 0 0", {}},
        PnmCase{"MaximumTooLarge", "P2 1 1 65536 0", {}}, PnmCase{"NegativeWidth", "P2 -1 1 255 0", {}},
        PnmCase{"LettersForNumbers", "P2 a b c", {}}, PnmCase{"LetterInNumber", "P2 1x 1 255 1", {}},
        PnmCase{"EndlessComment", "P2 1 1 #255 1", {}}, PnmCase{"ShortBinaryData", "P5 2 2 255\n123", {}},
        PnmCase{"ShortSixteenBitData", "P5 2 1 256\n123", {}},
        PnmCase{"ShortTextData", "P2 2 2 255 1 2 3", {}},
        PnmCase{"ShortTextDataWithSpace", "P2 2 2 255 1 2 3           ", {}},
        PnmCase{"TextSampleTooLarge", "P2 1 1 255 65536", {}},
        PnmCase{"AbsurdSize", "P5 16000000 16000000 255\n0", {}},
        PnmCase{"AbsurdTextSize", "P3 16000000 16000000 255 0", {}},
        PnmCase{"NumberOverflow", "P5 4294967297 1 255\n0", {}},
        PnmCase{"LongNumber", "P5 " + std::string(1000, '9') + " 1 255\n0", {}}),
    zo::test::CaseName());

class PngLoading : public testing::TestWithParam<PngKind> {};

TEST_P(PngLoading, GivesTheSamplesWithoutAlpha) {
  Picture expected;
  const Bytes file = makePng(GetParam(), 37, 21, expected);
  EXPECT_EQ(expected, load(file, SimdPixelFormatNone));
}

TEST_P(PngLoading, CutAnywhereIsNull) {
  Picture expected;
  const Bytes file = makePng(GetParam(), 9, 6, expected);
  for (size_t size = 0; size < file.size(); ++size) {
    EXPECT_TRUE(
        load(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(size)), SimdPixelFormatBgr24).isNull())
        << size;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, PngLoading,
    testing::Values(PngKind{"Gray1", PNG_COLOR_TYPE_GRAY, 1, false, false},
                    PngKind{"Gray2", PNG_COLOR_TYPE_GRAY, 2, false, false},
                    PngKind{"Gray4", PNG_COLOR_TYPE_GRAY, 4, false, false},
                    PngKind{"Gray8", PNG_COLOR_TYPE_GRAY, 8, false, false},
                    PngKind{"Gray16", PNG_COLOR_TYPE_GRAY, 16, false, false},
                    PngKind{"GrayTransparent", PNG_COLOR_TYPE_GRAY, 4, false, true},
                    PngKind{"Gray16Transparent", PNG_COLOR_TYPE_GRAY, 16, true, true},
                    PngKind{"GrayAlpha8", PNG_COLOR_TYPE_GRAY_ALPHA, 8, false, false},
                    PngKind{"GrayAlpha16", PNG_COLOR_TYPE_GRAY_ALPHA, 16, false, false},
                    PngKind{"Palette1", PNG_COLOR_TYPE_PALETTE, 1, false, false},
                    PngKind{"Palette2", PNG_COLOR_TYPE_PALETTE, 2, true, false},
                    PngKind{"Palette4", PNG_COLOR_TYPE_PALETTE, 4, false, true},
                    PngKind{"Palette8", PNG_COLOR_TYPE_PALETTE, 8, false, false},
                    PngKind{"Palette8Transparent", PNG_COLOR_TYPE_PALETTE, 8, true, true},
                    PngKind{"Rgb8", PNG_COLOR_TYPE_RGB, 8, false, false},
                    PngKind{"Rgb8Transparent", PNG_COLOR_TYPE_RGB, 8, false, true},
                    PngKind{"Rgb16", PNG_COLOR_TYPE_RGB, 16, false, false},
                    PngKind{"Rgba8", PNG_COLOR_TYPE_RGB_ALPHA, 8, false, false},
                    PngKind{"Rgba16", PNG_COLOR_TYPE_RGB_ALPHA, 16, false, false},
                    PngKind{"Gray1Interlaced", PNG_COLOR_TYPE_GRAY, 1, true, false},
                    PngKind{"Rgb8Interlaced", PNG_COLOR_TYPE_RGB, 8, true, false},
                    PngKind{"Rgba16Interlaced", PNG_COLOR_TYPE_RGB_ALPHA, 16, true, false}),
    zo::test::CaseName());

void setSize(Bytes& file, size_t at, size_t bytes, uint32_t value) {
  for (size_t i = 0; i < bytes; ++i) {
    file[at + i] = static_cast<uint8_t>(value >> 8 * (bytes - 1 - i));
  }
}

TEST(PngLoading, RefusesDamagedData) {
  Picture expected;
  const Bytes file = makePng({"", PNG_COLOR_TYPE_RGB, 8, false, false}, 20, 20, expected);
  ASSERT_FALSE(load(file, SimdPixelFormatBgr24).isNull());
  Bytes damaged = file;
  damaged[damaged.size() / 2] ^= 0x10;  // the checksum tells
  EXPECT_TRUE(load(damaged, SimdPixelFormatBgr24).isNull());
}

TEST(PngLoading, RefusesSizesThatTheFileCannotHold) {
  Picture expected;
  const Bytes file = makePng({"", PNG_COLOR_TYPE_RGB, 8, false, false}, 20, 20, expected);
  const uint32_t sizes[][2] = {{0x7FFFFFFF, 0x7FFFFFFF}, {0x7FFFFFFF, 1}, {1, 0x7FFFFFFF}, {20000, 20000},
                               {1 << 24, 1 << 24},       {0, 20},         {20, 0},         {20, 21}};
  for (const auto& size : sizes) {
    Bytes changed = file;
    setSize(changed, 16, 4, size[0]);
    setSize(changed, 20, 4, size[1]);
    repairPngChecksums(changed);
    EXPECT_TRUE(load(changed, SimdPixelFormatBgr24).isNull()) << size[0] << "x" << size[1];
  }
}

class JpegLoading : public testing::TestWithParam<JpegKind> {};

TEST_P(JpegLoading, GivesThePicture) {
  const bool has_color = GetParam().color_space != JCS_GRAYSCALE;
  const Bytes file = makeJpeg(GetParam(), 45, 27);
  if (file.empty()) {
    GTEST_SKIP() << "the installed JPEG library does not write this kind";
  }
  const SimdPixelFormatType own = has_color ? SimdPixelFormatRgb24 : SimdPixelFormatGray8;
  const Picture expected = makePicture(45, 27, own);
  const Picture loaded = load(file, SimdPixelFormatNone);
  EXPECT_LE(largestDifference(expected, loaded), 4);
  for (const SimdPixelFormatType format : ALL_FORMATS) {
    const Picture other = load(file, format);
    ASSERT_EQ(format, other.format);
    // Through a lossless file the same samples come in the same format.
    if (has_color == (format != SimdPixelFormatGray8)) {
      EXPECT_EQ(load(save(loaded, SimdImageFilePng), format), other);
    } else {
      EXPECT_LE(largestDifference(load(save(loaded, SimdImageFilePng), format), other), 2);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, JpegLoading,
                         testing::Values(JpegKind{"Gray", JCS_GRAYSCALE}, JpegKind{"Yuv444", JCS_YCbCr},
                                         JpegKind{"Yuv420", JCS_YCbCr, 2, 2},
                                         JpegKind{"Yuv422", JCS_YCbCr, 2, 1},
                                         JpegKind{"Yuv440", JCS_YCbCr, 1, 2},
                                         JpegKind{"Yuv411", JCS_YCbCr, 4, 1}, JpegKind{"Rgb", JCS_RGB},
                                         JpegKind{"Progressive", JCS_YCbCr, 2, 2, true},
                                         JpegKind{"ProgressiveGray", JCS_GRAYSCALE, 1, 1, true},
                                         JpegKind{"Arithmetic", JCS_YCbCr, 1, 1, false, true},
                                         JpegKind{"Restarts", JCS_YCbCr, 2, 2, false, false, 1}),
                         zo::test::CaseName());

struct InkCase {
  const char* name;
  JpegKind kind;
  std::array<uint8_t, 4> inks;
  Bytes rgb;
};
void PrintTo(const InkCase& inks, std::ostream* p_out) {
  *p_out << inks.name;
}
class InkJpegLoading : public testing::TestWithParam<InkCase> {};

TEST_P(InkJpegLoading, MixesInksToColors) {
  const Bytes file = makeJpeg(GetParam().kind, 20, 12, GetParam().inks);
  ASSERT_FALSE(file.empty());
  const Picture loaded = load(file, SimdPixelFormatRgb24);
  ASSERT_EQ(20u * 12u * 3u, loaded.pixels.size());
  for (size_t i = 0; i < loaded.pixels.size(); ++i) {
    ASSERT_NEAR(GetParam().rgb[i % 3], loaded.pixels[i], 4) << i;
  }
  const Picture bgr = load(file, SimdPixelFormatBgr24);
  EXPECT_NEAR(GetParam().rgb[2], bgr.pixels[0], 4);
  EXPECT_EQ(SimdPixelFormatGray8, load(file, SimdPixelFormatGray8).format);
}

// With Adobe's marker a sample of 255 means no ink, without it full ink.
INSTANTIATE_TEST_SUITE_P(
    Kinds, InkJpegLoading,
    testing::Values(InkCase{"AdobeCmyk", {"", JCS_CMYK}, {200, 100, 50, 255}, {200, 100, 50}},
                    InkCase{"AdobeCmykHalfBlack", {"", JCS_CMYK}, {200, 100, 50, 128}, {100, 50, 25}},
                    InkCase{"AdobeYcck", {"", JCS_YCCK}, {200, 100, 50, 255}, {200, 100, 50}},
                    InkCase{"AdobeYcckSubsampled", {"", JCS_YCCK, 2, 2}, {200, 100, 50, 128}, {100, 50, 25}},
                    InkCase{"PlainCmyk",
                            {"", JCS_CMYK, 1, 1, false, false, 0, false},
                            {55, 155, 205, 0},
                            {200, 100, 50}}),
    zo::test::CaseName());

TEST(JpegLoading, CutInTheHeaderIsNull) {
  const Bytes file = makeJpeg({"", JCS_YCbCr, 2, 2}, 33, 21);
  const uint8_t start_of_scan[] = {0xFF, 0xDA};
  const auto scan = std::search(file.begin(), file.end(), std::begin(start_of_scan), std::end(start_of_scan));
  ASSERT_NE(file.end(), scan);
  for (auto end = file.begin(); end != scan; ++end) {
    EXPECT_TRUE(load(Bytes(file.begin(), end), SimdPixelFormatBgr24).isNull()) << end - file.begin();
  }
}

TEST(JpegLoading, GivesWhatThereIsOfACutPicture) {
  const Picture whole = makePicture(64, 128, SimdPixelFormatGray8);
  const Bytes file = save(whole, SimdImageFileJpeg, 100);
  const Picture half = load(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(file.size() * 3 / 4)),
                            SimdPixelFormatGray8);
  ASSERT_EQ(whole.pixels.size(), half.pixels.size());
  for (size_t i = 0; i < 64 * 32; ++i) {
    ASSERT_NEAR(whole.pixels[i], half.pixels[i], 3);
  }
}

TEST(JpegLoading, RefusesSizesThatTheFileCannotHold) {
  const Bytes file = save(makePicture(20, 20, SimdPixelFormatRgb24), SimdImageFileJpeg, 90);
  const uint8_t frame_marker[] = {0xFF, 0xC0};
  const auto frame = std::search(file.begin(), file.end(), std::begin(frame_marker), std::end(frame_marker));
  ASSERT_NE(file.end(), frame);
  const auto at = static_cast<size_t>(frame - file.begin());
  const uint32_t sizes[][2] = {{65500, 65500}, {65535, 65535}, {20000, 20000},
                               {0, 20},        {20, 0},        {8000, 8000}};
  for (const auto& size : sizes) {
    Bytes changed = file;
    setSize(changed, at + 5, 2, size[1]);
    setSize(changed, at + 7, 2, size[0]);
    EXPECT_TRUE(load(changed, SimdPixelFormatBgr24).isNull()) << size[0] << "x" << size[1];
  }
}

TEST(JpegLoading, LoadsLargeFlatPicturesFromTheirFewBytes) {
  const Picture flat = gray(6000, 4000, Bytes(6000 * 4000, 200));
  EXPECT_EQ(flat, load(save(flat, SimdImageFileJpeg, 90), SimdPixelFormatNone));
}

class LargeFlatJpegLoading : public testing::TestWithParam<JpegKind> {};

// A few hundred bytes, however large the picture.
TEST_P(LargeFlatJpegLoading, GivesArithmeticallyCodedPictures) {
  const Bytes file = makeJpeg(GetParam(), 4000, 3000, {200, 100, 50, 255});
  if (file.empty()) {
    GTEST_SKIP() << "the installed JPEG library does not write this kind";
  }
  const Picture loaded = load(file, SimdPixelFormatGray8);
  ASSERT_EQ(4000u * 3000u, loaded.pixels.size());
  EXPECT_TRUE(std::all_of(loaded.pixels.begin(), loaded.pixels.end(),
                          [&](uint8_t pixel) { return pixel == loaded.pixels[0]; }));
}

INSTANTIATE_TEST_SUITE_P(Kinds, LargeFlatJpegLoading,
                         testing::Values(JpegKind{"Sequential", JCS_CMYK, 1, 1, false, true},
                                         JpegKind{"Progressive", JCS_CMYK, 1, 1, true, true}),
                         zo::test::CaseName());

TEST(JpegLoading, RefusesMoreScansThanAnyEncoderMakes) {
  // The last scan of a progressive picture, many times over.
  Bytes file = makeJpeg({"", JCS_GRAYSCALE, 1, 1, true}, 16, 16);
  const uint8_t start_of_scan[] = {0xFF, 0xDA};
  const auto scan =
      std::find_end(file.begin(), file.end(), std::begin(start_of_scan), std::end(start_of_scan));
  const Bytes last(scan, file.end() - 2);
  file.resize(file.size() - 2);
  for (int i = 0; i < 1000; ++i) {
    file.insert(file.end(), last.begin(), last.end());
  }
  file.insert(file.end(), {0xFF, 0xD9});
  EXPECT_TRUE(load(file, SimdPixelFormatGray8).isNull());
}

TEST(Loading, ConvertsToTheWantedFormat) {
  const Picture source = rgb(2, 1, {10, 20, 30, 250, 128, 4});
  const Bytes files[] = {save(source, SimdImageFilePng), save(source, SimdImageFilePpmBin),
                         save(source, SimdImageFilePpmTxt)};
  for (const Bytes& file : files) {
    EXPECT_EQ(source, load(file, SimdPixelFormatNone));
    EXPECT_EQ(source, load(file, SimdPixelFormatRgb24));
    EXPECT_EQ((Picture{2, 1, SimdPixelFormatBgr24, {30, 20, 10, 4, 128, 250}}),
              load(file, SimdPixelFormatBgr24));
    EXPECT_EQ((Picture{2, 1, SimdPixelFormatBgra32, {30, 20, 10, 255, 4, 128, 250, 255}}),
              load(file, SimdPixelFormatBgra32));
    EXPECT_EQ(gray(2, 1, {18, 150}), load(file, SimdPixelFormatGray8));
    EXPECT_TRUE(load(file, SimdPixelFormatUv16).isNull());
  }
  const Picture one = gray(2, 1, {9, 200});
  for (const SimdImageFileType type : {SimdImageFilePng, SimdImageFilePgmBin, SimdImageFilePgmTxt}) {
    EXPECT_EQ(one, load(save(one, type), SimdPixelFormatNone));
    EXPECT_EQ((Picture{2, 1, SimdPixelFormatBgr24, {9, 9, 9, 200, 200, 200}}),
              load(save(one, type), SimdPixelFormatBgr24));
    EXPECT_EQ((Picture{2, 1, SimdPixelFormatBgra32, {9, 9, 9, 255, 200, 200, 200, 255}}),
              load(save(one, type), SimdPixelFormatBgra32));
  }
}

TEST(Loading, RefusesOtherContent) {
  for (const std::string& content :
       {""s, "GIF89a"s, "BM"s, "\xFF\xD8"s, std::string(5000, '\0'), "text\n"s}) {
    EXPECT_TRUE(load(bytesOf(content), SimdPixelFormatBgr24).isNull());
  }
  SimdPixelFormatType format = SimdPixelFormatBgr24;
  size_t stride = 0;
  EXPECT_EQ(nullptr, SimdImageLoadFromMemory(nullptr, 10, &stride, &stride, &stride, &format));
}

TEST(Loading, AlignsRows) {
  const Bytes file = save(makePicture(5, 3, SimdPixelFormatBgr24), SimdImageFilePng);
  size_t stride = 0;
  size_t width = 0;
  size_t height = 0;
  SimdPixelFormatType format = SimdPixelFormatBgr24;
  uint8_t* p_pixels = SimdImageLoadFromMemory(file.data(), file.size(), &stride, &width, &height, &format);
  ASSERT_NE(nullptr, p_pixels);
  EXPECT_EQ(0u, stride % 64);
  EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(p_pixels) % 64);
  SimdFree(p_pixels);
}

TEST(LoadingFromFile, GoesByTheContentNotByTheName) {
  const zo::test::TempDir directory;
  const Picture picture = makePicture(300, 200, SimdPixelFormatBgr24);
  for (const SimdImageFileType type : {SimdImageFilePng, SimdImageFilePpmBin, SimdImageFileJpeg}) {
    const std::string path = directory.file("image.pgm");
    const Bytes file = save(picture, type, 100);
    zo::test::writeFile(path, std::string(file.begin(), file.end()));
    EXPECT_EQ(load(file, SimdPixelFormatBgr24), loadFile(path, SimdPixelFormatBgr24));
    EXPECT_LE(largestDifference(picture, loadFile(path, SimdPixelFormatBgr24)), 3);
  }
}

TEST(LoadingFromFile, IsNullForWhatIsNoImageFile) {
  const zo::test::TempDir directory;
  zo::test::writeFile(directory.file("empty"), "");
  for (const std::string& path : {directory.file("missing"), directory.path(), directory.file("empty"),
                                  std::string(), std::string("/dev/zero"), std::string("/dev/null")}) {
    EXPECT_TRUE(loadFile(path, SimdPixelFormatBgr24).isNull()) << path;
  }
  size_t stride = 0;
  SimdPixelFormatType format = SimdPixelFormatBgr24;
  EXPECT_EQ(nullptr, SimdImageLoadFromFile(nullptr, &stride, &stride, &stride, &format));
}

}  // namespace
