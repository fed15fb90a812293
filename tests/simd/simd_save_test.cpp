#include <gtest/gtest.h>

#include <jpeglib.h>

#include <climits>
#include <cstdint>
#include <string>

#include "simd_test_images.h"
#include "zo_test_files.h"
#include "zo_test_names.h"

namespace {

using namespace simd_test;

struct QualityCase {
  const char* name;
  int quality;
  int same_as;
};
class JpegQuality : public testing::TestWithParam<QualityCase> {};

TEST_P(JpegQuality, ZeroMeansNinetyAndOthersAreClamped) {
  const Picture picture = makePicture(40, 30, SimdPixelFormatBgr24);
  const Bytes expected = save(picture, SimdImageFileJpeg, GetParam().same_as);
  ASSERT_FALSE(expected.empty());
  EXPECT_EQ(expected, save(picture, SimdImageFileJpeg, GetParam().quality));
}

INSTANTIATE_TEST_SUITE_P(Values, JpegQuality,
                         testing::Values(QualityCase{"Zero", 0, 90}, QualityCase{"Negative", -1, 1},
                                         QualityCase{"VeryNegative", INT_MIN, 1},
                                         QualityCase{"Above", 101, 100},
                                         QualityCase{"FarAbove", INT_MAX, 100}),
                         zo::test::CaseName());

TEST(JpegSaving, ChangesWithTheQuality) {
  const Picture picture = makePicture(40, 30, SimdPixelFormatBgr24);
  EXPECT_LT(save(picture, SimdImageFileJpeg, 1).size(), save(picture, SimdImageFileJpeg, 50).size());
  EXPECT_LT(save(picture, SimdImageFileJpeg, 50).size(), save(picture, SimdImageFileJpeg, 100).size());
}

TEST(JpegSaving, SubsamplesPackedColorUpToNinety) {
  for (const SimdPixelFormatType format :
       {SimdPixelFormatBgr24, SimdPixelFormatRgb24, SimdPixelFormatBgra32}) {
    const Picture picture = makePicture(40, 30, format);
    for (const int quality : {0, 1, 89, 90, 91, 100}) {
      const JpegHeader header = jpegHeader(save(picture, SimdImageFileJpeg, quality));
      EXPECT_EQ(3, header.components);
      EXPECT_EQ(quality <= 90 ? 2 : 1, header.horizontal) << quality;
      EXPECT_EQ(quality <= 90 ? 2 : 1, header.vertical) << quality;
      EXPECT_EQ(40u, header.width);
      EXPECT_EQ(30u, header.height);
    }
  }
}

TEST(JpegSaving, WritesOneComponentForGray) {
  EXPECT_EQ(1, jpegHeader(save(makePicture(9, 7, SimdPixelFormatGray8), SimdImageFileJpeg, 80)).components);
}

TEST(JpegSaving, KeepsTheColorsOfEveryPackedFormat) {
  for (const SimdPixelFormatType format :
       {SimdPixelFormatGray8, SimdPixelFormatBgr24, SimdPixelFormatRgb24, SimdPixelFormatBgra32}) {
    const Picture picture = makePicture(33, 17, format);
    EXPECT_LE(largestDifference(picture, load(save(picture, SimdImageFileJpeg, 100), format)), 3) << format;
  }
}

TEST(JpegSaving, RefusesWhatJpegCannotHold) {
  EXPECT_TRUE(save(makePicture(65501, 1, SimdPixelFormatGray8), SimdImageFileJpeg).empty());
  EXPECT_FALSE(save(makePicture(65500, 1, SimdPixelFormatGray8), SimdImageFileJpeg).empty());
}

// A 4:2:0 picture with rows that are longer than the picture and end exactly where the memory does.
struct YuvPicture {
  size_t width, height;
  size_t y_stride, chroma_stride;
  Bytes y, u, v, uv;

  YuvPicture(size_t w, size_t h) : width(w), height(h), y_stride(w + 3), chroma_stride((w + 1) / 2 + 5) {
    y.resize(y_stride * (h - 1) + w);
    for (size_t i = 0; i < y.size(); ++i)
      y[i] = static_cast<uint8_t>(16 + i % y_stride * 3 + i / y_stride * 2);
    const size_t cw = (w + 1) / 2, ch = (h + 1) / 2;
    u.resize(chroma_stride * (ch - 1) + cw);
    v.resize(u.size());
    uv.resize(2 * chroma_stride * (ch - 1) + 2 * cw);
    for (size_t row = 0; row < ch; ++row) {
      for (size_t x = 0; x < cw; ++x) {
        u[row * chroma_stride + x] = static_cast<uint8_t>(60 + 4 * x + row);
        v[row * chroma_stride + x] = static_cast<uint8_t>(190 - 4 * x + row);
        uv[row * 2 * chroma_stride + 2 * x] = u[row * chroma_stride + x];
        uv[row * 2 * chroma_stride + 2 * x + 1] = v[row * chroma_stride + x];
      }
    }
  }

  Bytes saveYuv420p(int quality, SimdYuvType type = SimdYuvTrect871) const {
    size_t size = 0;
    uint8_t* p = SimdYuv420pSaveAsJpegToMemory(y.data(), y_stride, u.data(), chroma_stride, v.data(),
                                               chroma_stride, width, height, type, quality, &size);
    const Bytes result(p, p + (p ? size : 0));
    SimdFree(p);
    return result;
  }

  Bytes saveNv12(int quality) const {
    size_t size = 0;
    uint8_t* p = SimdNv12SaveAsJpegToMemory(y.data(), y_stride, uv.data(), 2 * chroma_stride, width, height,
                                            SimdYuvTrect871, quality, &size);
    const Bytes result(p, p + (p ? size : 0));
    SimdFree(p);
    return result;
  }
};

// The samples of a JPEG as they are stored, without colour conversion and upsampling: planes with padded
// rows.
std::vector<std::vector<Bytes>> rawPlanes(const Bytes& jpeg) {
  jpeg_decompress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, const_cast<uint8_t*>(jpeg.data()), static_cast<unsigned long>(jpeg.size()));
  jpeg_read_header(&info, TRUE);
  info.raw_data_out = TRUE;
  info.out_color_space = info.jpeg_color_space;
  jpeg_start_decompress(&info);
  std::vector<std::vector<Bytes>> planes(3);
  while (info.output_scanline < info.output_height) {
    std::vector<std::vector<Bytes>> part(3);
    std::vector<std::vector<JSAMPROW>> rows(3);
    JSAMPARRAY pointers[3];
    for (size_t i = 0; i < 3; ++i) {
      part[i].assign(i == 0 ? 16 : 8, Bytes((info.output_width + 31) / 16 * 16));
      for (Bytes& row : part[i]) rows[i].push_back(row.data());
      pointers[i] = rows[i].data();
    }
    jpeg_read_raw_data(&info, pointers, 16);
    for (size_t i = 0; i < 3; ++i) planes[i].insert(planes[i].end(), part[i].begin(), part[i].end());
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return planes;
}

struct YuvSize {
  size_t width, height;
};
class YuvSaving : public testing::TestWithParam<YuvSize> {};

TEST_P(YuvSaving, StoresTheSamplesUnconverted) {
  const YuvPicture picture(GetParam().width, GetParam().height);
  const Bytes jpeg = picture.saveYuv420p(100);
  const JpegHeader header = jpegHeader(jpeg);
  EXPECT_EQ(picture.width, header.width);
  EXPECT_EQ(picture.height, header.height);
  EXPECT_EQ(3, header.components);
  EXPECT_EQ(2, header.horizontal);
  EXPECT_EQ(2, header.vertical);
  const auto planes = rawPlanes(jpeg);
  for (size_t y = 0; y < picture.height; ++y) {
    for (size_t x = 0; x < picture.width; ++x) {
      ASSERT_NEAR(picture.y[y * picture.y_stride + x], planes[0][y][x], 2) << x << ", " << y;
      const size_t chroma = y / 2 * picture.chroma_stride + x / 2;
      ASSERT_NEAR(picture.u[chroma], planes[1][y / 2][x / 2], 2) << x << ", " << y;
      ASSERT_NEAR(picture.v[chroma], planes[2][y / 2][x / 2], 2) << x << ", " << y;
    }
  }
}

TEST_P(YuvSaving, GivesTheSameFileForInterleavedChroma) {
  const YuvPicture picture(GetParam().width, GetParam().height);
  for (const int quality : {0, 35, 90, 91, 100}) {
    const Bytes jpeg = picture.saveNv12(quality);
    ASSERT_FALSE(jpeg.empty());
    EXPECT_EQ(picture.saveYuv420p(quality), jpeg) << quality;
    EXPECT_EQ(2, jpegHeader(jpeg).horizontal) << quality;
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, YuvSaving,
                         testing::Values(YuvSize{1, 1}, YuvSize{2, 2}, YuvSize{3, 5}, YuvSize{16, 16},
                                         YuvSize{17, 15}, YuvSize{32, 33}, YuvSize{31, 18}, YuvSize{48, 47}),
                         [](const auto& param_info) {
                           return std::to_string(param_info.param.width) + "x" +
                                  std::to_string(param_info.param.height);
                         });

TEST(YuvSaving, AppliesTheQualityRules) {
  const YuvPicture picture(20, 20);
  EXPECT_EQ(picture.saveYuv420p(90), picture.saveYuv420p(0));
  EXPECT_EQ(picture.saveYuv420p(1), picture.saveYuv420p(-7));
  EXPECT_EQ(picture.saveYuv420p(100), picture.saveYuv420p(1000));
  EXPECT_NE(picture.saveYuv420p(90), picture.saveYuv420p(91));
}

TEST(YuvSaving, RefusesMissingPlanesAndShortRows) {
  const Bytes plane(64, 128);
  size_t size = 0;
  const uint8_t* p = plane.data();
  EXPECT_EQ(nullptr, SimdYuv420pSaveAsJpegToMemory(p, 8, nullptr, 4, p, 4, 8, 8, SimdYuvTrect871, 90, &size));
  EXPECT_EQ(nullptr, SimdYuv420pSaveAsJpegToMemory(p, 8, p, 4, nullptr, 4, 8, 8, SimdYuvTrect871, 90, &size));
  EXPECT_EQ(nullptr, SimdYuv420pSaveAsJpegToMemory(nullptr, 8, p, 4, p, 4, 8, 8, SimdYuvTrect871, 90, &size));
  EXPECT_EQ(nullptr, SimdYuv420pSaveAsJpegToMemory(p, 7, p, 4, p, 4, 8, 8, SimdYuvTrect871, 90, &size));
  EXPECT_EQ(nullptr, SimdYuv420pSaveAsJpegToMemory(p, 8, p, 3, p, 4, 8, 8, SimdYuvTrect871, 90, &size));
  EXPECT_EQ(nullptr, SimdYuv420pSaveAsJpegToMemory(p, 8, p, 4, p, 4, 0, 8, SimdYuvTrect871, 90, &size));
  EXPECT_EQ(nullptr, SimdNv12SaveAsJpegToMemory(p, 8, nullptr, 8, 8, 8, SimdYuvTrect871, 90, &size));
  EXPECT_EQ(nullptr, SimdNv12SaveAsJpegToMemory(p, 8, p, 7, 8, 8, SimdYuvTrect871, 90, &size));
}

TEST(PnmSaving, WritesBinaryFiles) {
  const Picture gray{2, 2, SimdPixelFormatGray8, {0, 1, 2, 255}};
  EXPECT_EQ(bytesOf(std::string("P5\n2 2\n255\n") + std::string("\x00\x01\x02\xFF", 4)),
            save(gray, SimdImageFilePgmBin));
  const Picture bgr{1, 2, SimdPixelFormatBgr24, {1, 2, 3, 4, 5, 6}};
  EXPECT_EQ(bytesOf("P6\n1 2\n255\n\x03\x02\x01\x06\x05\x04"), save(bgr, SimdImageFilePpmBin));
}

TEST(PnmSaving, WritesTextFiles) {
  const Picture gray{2, 2, SimdPixelFormatGray8, {0, 17, 200, 255}};
  EXPECT_EQ(bytesOf("P2\n2 2\n255\n0 17\n200 255\n"), save(gray, SimdImageFilePgmTxt));
  const Picture rgb{1, 2, SimdPixelFormatRgb24, {1, 20, 103, 4, 5, 255}};
  EXPECT_EQ(bytesOf("P3\n1 2\n255\n1 20 103\n4 5 255\n"), save(rgb, SimdImageFilePpmTxt));
}

TEST(PnmSaving, KeepsTextLinesShort) {
  const Picture picture{64, 3, SimdPixelFormatGray8, Bytes(64 * 3, 255)};
  const Bytes file = save(picture, SimdImageFilePgmTxt);
  const std::string text(file.begin(), file.end());
  size_t start = 0;
  for (size_t end = text.find('\n'); end != std::string::npos;
       start = end + 1, end = text.find('\n', start)) {
    EXPECT_LE(end - start, 70u);
  }
  EXPECT_EQ(picture, load(file, SimdPixelFormatGray8));
}

TEST(PnmSaving, MakesColorGrayAndGrayThreeEqualChannels) {
  // 0.299 red + 0.587 green + 0.114 blue.
  const Picture rgb{4, 1, SimdPixelFormatRgb24, {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255}};
  const Picture as_gray = load(save(rgb, SimdImageFilePgmBin), SimdPixelFormatNone);
  EXPECT_EQ((Picture{4, 1, SimdPixelFormatGray8, {76, 150, 29, 255}}), as_gray);
  Picture bgr = rgb;
  bgr.format = SimdPixelFormatBgr24;
  EXPECT_EQ((Picture{4, 1, SimdPixelFormatGray8, {29, 150, 76, 255}}),
            load(save(bgr, SimdImageFilePgmTxt), SimdPixelFormatNone));
  const Picture gray{2, 1, SimdPixelFormatGray8, {7, 250}};
  EXPECT_EQ((Picture{2, 1, SimdPixelFormatRgb24, {7, 7, 7, 250, 250, 250}}),
            load(save(gray, SimdImageFilePpmBin), SimdPixelFormatNone));
}

struct LosslessCase {
  const char* name;
  SimdImageFileType type;
};
class LosslessSaving : public testing::TestWithParam<LosslessCase> {};

TEST_P(LosslessSaving, ComesBackAsItWas) {
  const bool keeps_color = GetParam().type != SimdImageFilePgmBin && GetParam().type != SimdImageFilePgmTxt;
  for (const SimdPixelFormatType format :
       {SimdPixelFormatGray8, SimdPixelFormatBgr24, SimdPixelFormatRgb24, SimdPixelFormatBgra32}) {
    if (format == SimdPixelFormatGray8 || keeps_color) {
      const Picture picture = makePicture(37, 19, format);
      EXPECT_EQ(picture, load(save(picture, GetParam().type), format)) << format;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Types, LosslessSaving,
                         testing::Values(LosslessCase{"PgmText", SimdImageFilePgmTxt},
                                         LosslessCase{"PgmBinary", SimdImageFilePgmBin},
                                         LosslessCase{"PpmText", SimdImageFilePpmTxt},
                                         LosslessCase{"PpmBinary", SimdImageFilePpmBin},
                                         LosslessCase{"Png", SimdImageFilePng}),
                         zo::test::CaseName());

TEST(Saving, ReadsNoMoreThanThePictureOfEachRow) {
  // The last row ends where the memory does.
  const size_t stride = 50;
  const Bytes pixels(stride * 4 + 30, 9);
  for (int type = SimdImageFilePgmTxt; type <= SimdImageFileJpeg; ++type) {
    size_t size = 0;
    uint8_t* p = SimdImageSaveToMemory(pixels.data(), stride, 10, 5, SimdPixelFormatBgr24,
                                       static_cast<SimdImageFileType>(type), 95, &size);
    EXPECT_NE(nullptr, p) << type;
    const Picture loaded = load(Bytes(p, p + size), SimdPixelFormatGray8);
    EXPECT_EQ((Picture{10, 5, SimdPixelFormatGray8, Bytes(50, 9)}), loaded) << type;
    SimdFree(p);
  }
}

TEST(Saving, RefusesWhatIsNoImageOrNoFileType) {
  const Bytes pixels(64, 1);
  size_t size = 0;
  const auto saved = [&](const uint8_t* p, size_t stride, size_t width, size_t height, int format, int type) {
    uint8_t* p_file =
        SimdImageSaveToMemory(p, stride, width, height, static_cast<SimdPixelFormatType>(format),
                              static_cast<SimdImageFileType>(type), 90, &size);
    SimdFree(p_file);
    return p_file != nullptr;
  };
  for (int type = SimdImageFilePgmTxt; type <= SimdImageFileJpeg; ++type) {
    EXPECT_TRUE(saved(pixels.data(), 8, 8, 8, SimdPixelFormatGray8, type)) << type;
    EXPECT_FALSE(saved(nullptr, 8, 8, 8, SimdPixelFormatGray8, type)) << type;
    EXPECT_FALSE(saved(pixels.data(), 8, 0, 8, SimdPixelFormatGray8, type)) << type;
    EXPECT_FALSE(saved(pixels.data(), 8, 8, 0, SimdPixelFormatGray8, type)) << type;
    EXPECT_FALSE(saved(pixels.data(), 7, 8, 8, SimdPixelFormatGray8, type)) << type;
    EXPECT_FALSE(saved(pixels.data(), 8, 8, 8, SimdPixelFormatNone, type)) << type;
    EXPECT_FALSE(saved(pixels.data(), 16, 8, 4, SimdPixelFormatUv16, type)) << type;
    EXPECT_FALSE(saved(pixels.data(), SIZE_MAX, SIZE_MAX / 2, SIZE_MAX / 2, SimdPixelFormatGray8, type))
        << type;
  }
  EXPECT_FALSE(saved(pixels.data(), 8, 8, 8, SimdPixelFormatGray8, SimdImageFileUndefined));
  EXPECT_FALSE(saved(pixels.data(), 8, 8, 8, SimdPixelFormatGray8, 7));
}

TEST(SavingToFile, WritesTheSameBytesAsToMemory) {
  const zo::test::TempDir directory;
  const Picture picture = makePicture(21, 9, SimdPixelFormatRgb24);
  for (int type = SimdImageFilePgmTxt; type <= SimdImageFileJpeg; ++type) {
    const std::string path = directory.file("image");
    EXPECT_EQ(SimdTrue,
              SimdImageSaveToFile(picture.pixels.data(), picture.stride(), picture.width, picture.height,
                                  picture.format, static_cast<SimdImageFileType>(type), 80, path.c_str()));
    EXPECT_EQ(save(picture, static_cast<SimdImageFileType>(type), 80), bytesOf(zo::test::readFile(path)))
        << type;
  }
}

TEST(SavingToFile, LeavesAFileAloneWhenTheImageCannotBeEncoded) {
  const zo::test::TempDir directory;
  const std::string path = directory.file("image");
  zo::test::writeFile(path, "old");
  const Bytes pixels(16, 1);
  EXPECT_EQ(SimdFalse, SimdImageSaveToFile(pixels.data(), 1, 4, 4, SimdPixelFormatGray8, SimdImageFilePng, 0,
                                           path.c_str()));
  EXPECT_EQ("old", zo::test::readFile(path));
}

TEST(SavingToFile, FailsForPathsThatCannotBeWritten) {
  const zo::test::TempDir directory;
  const Picture picture = makePicture(4, 4, SimdPixelFormatGray8);
  const Picture large = makePicture(400, 400, SimdPixelFormatGray8);
  for (const std::string& path :
       {directory.path(), directory.file("no/such/folder"), std::string(), std::string("/dev/full")}) {
    EXPECT_EQ(SimdFalse, SimdImageSaveToFile(picture.pixels.data(), 4, 4, 4, SimdPixelFormatGray8,
                                             SimdImageFilePgmBin, 0, path.c_str()))
        << path;
    EXPECT_EQ(SimdFalse, SimdImageSaveToFile(large.pixels.data(), 400, 400, 400, SimdPixelFormatGray8,
                                             SimdImageFilePgmBin, 0, path.c_str()))
        << path;
  }
  EXPECT_EQ(SimdFalse, SimdImageSaveToFile(picture.pixels.data(), 4, 4, 4, SimdPixelFormatGray8,
                                           SimdImageFilePgmBin, 0, nullptr));
}

TEST(Release, TakesNull) {
  SimdFree(nullptr);
}

}  // namespace
