#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <turbojpeg.h>
#include <unistd.h>

#include <climits>
#include <memory>
#include <random>
#include <string>

#include "Simd/SimdLib.hpp"
#include "zo_core/zo_exception.h"
#include "zo_image_library.h"
#include "zo_jpeg_test_support.h"
#include "zo_test_compare.h"
#include "zo_test_exception.h"
#include "zo_test_files.h"
#include "zo_test_names.h"
#include "zo_test_picture.h"
#include "zo_video/zo_image_file_type.h"
#include "zo_video/zo_image_io.h"

namespace zo {
namespace test {
namespace {

constexpr char FILE_NAME[] = "src/zo_video/zo_image_io";

void expectError(const Exception& e, Status status, const char* p_function, int line,
                 const std::string& message) {
  EXPECT_EQ(status, e.status());
  EXPECT_STREQ(p_function, e.function());
  EXPECT_STREQ(FILE_NAME, e.file());
  EXPECT_EQ(line, e.line());
  EXPECT_EQ(message, e.what());
  EXPECT_EQ(nullptr, e.previous());
}

void expectLoadFailure(const std::string& path) {
  expectError(caughtZoException([&] { imageLoad(path); }), ZO_STATUS_CODEC_ERROR, "imageLoad", 835,
              "Failed to encode JPEG frame");
}

const unsigned char* pixelAt(const Frame& frame, unsigned x, unsigned y, unsigned bytes_per_pixel) {
  return frame.planeData(0) + static_cast<std::size_t>(y) * frame.planeStride(0) + x * bytes_per_pixel;
}

// Three bands whose channels are all different.
Frame makeColourFrame(FrameFormat format, Size size) {
  Frame frame;
  frame.reuse(format, size, DeviceContext(), 0);
  const unsigned channels = format == ZO_FRAME_FORMAT_GRAY8 ? 1 : 3;
  for (unsigned y = 0; y < static_cast<unsigned>(size.height); ++y) {
    for (unsigned x = 0; x < static_cast<unsigned>(size.width); ++x) {
      for (unsigned c = 0; c < channels; ++c) {
        frame.planeData(0)[static_cast<std::size_t>(y) * frame.planeStride(0) + x * channels + c] =
            static_cast<unsigned char>(30 + 80 * c + 2 * (y % 8) + x % 16);
      }
    }
  }
  return frame;
}

// --- The type of a file
// -------------------------------------------------------------------------------------

struct TypeCase {
  const char* name;
  const char* path;
  SimdImageFileType type;
};

class ImageFileType : public testing::TestWithParam<TypeCase> {};

TEST_P(ImageFileType, IsToldByTheExtensionInAnyCase) {
  EXPECT_EQ(GetParam().type, detectFileType(GetParam().path));
}

INSTANTIATE_TEST_SUITE_P(Paths, ImageFileType,
                         testing::Values(TypeCase{"Jpg", "a.jpg", SimdImageFileJpeg},
                                         TypeCase{"UpperJpg", "PHOTO.JPG", SimdImageFileJpeg},
                                         TypeCase{"MixedJpeg", "a.Jpeg", SimdImageFileJpeg},
                                         TypeCase{"Png", "/dir.d/a.pNg", SimdImageFilePng},
                                         TypeCase{"Pgm", "a.b.pgm", SimdImageFilePgmBin},
                                         TypeCase{"Ppm", "../a.PPM", SimdImageFilePpmBin},
                                         TypeCase{"OnlyAnExtension", ".png", SimdImageFilePng}),
                         CaseName());

struct UnknownCase {
  const char* name;
  const char* path;
  const char* extension;
};

class ImageFileTypeUnknown : public testing::TestWithParam<UnknownCase> {};

TEST_P(ImageFileTypeUnknown, IsRefusedWithTheExtensionInLowerCase) {
  const std::string message = std::string("Unsupported image file extension ") + GetParam().extension;
  const Frame frame = makeColourFrame(ZO_FRAME_FORMAT_BGR24, Size(4, 4));
  expectError(caughtZoException([&] { detectFileType(GetParam().path); }), ZO_STATUS_NOT_SUPPORTED,
              "detectFileType", 817, message);
  expectError(caughtZoException([&] { imageSave(GetParam().path, frame, 90); }), ZO_STATUS_NOT_SUPPORTED,
              "detectFileType", 817, message);
  expectError(caughtZoException([&] { imageLoad(GetParam().path); }), ZO_STATUS_NOT_SUPPORTED,
              "detectFileType", 817, message);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ImageFileTypeUnknown,
    testing::Values(UnknownCase{"Bmp", "x.bmp", ".bmp"}, UnknownCase{"UpperBmp", "x.BMP", ".bmp"},
                    UnknownCase{"None", "picture", ""}, UnknownCase{"DotOfAFolder", "a.jpg/picture", ""},
                    UnknownCase{"LastDot", "a.jpg.", "."}, UnknownCase{"TrailingSpace", "a.jpg ", ".jpg "},
                    UnknownCase{"TextPnm", "a.pnm", ".pnm"}),
    CaseName());

// --- Saving
// -------------------------------------------------------------------------------------------------

TEST(ImageSave, RefusesAFrameWithoutPixelsFirst) {
  const Frame frame;
  expectError(caughtZoException([&] { imageSave("x.bmp", frame, 90); }), ZO_STATUS_INTERNAL_ERROR,
              "imageSave", 851, "Assertion failed: frame.initialized()");
}

TEST(ImageSave, ReportsTheExtensionBeforeTheFormat) {
  const Frame frame = makeYuvFrame(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(4, 4));
  expectError(caughtZoException([&] { imageSave("x.bmp", frame, 90); }), ZO_STATUS_NOT_SUPPORTED,
              "detectFileType", 817, "Unsupported image file extension .bmp");
}

class ImageSaveFormat : public testing::TestWithParam<FrameFormat> {};

TEST_P(ImageSaveFormat, IsRefusedUnlessGreyOrPackedColour) {
  const TempDir directory;
  const Frame frame = makeNumberedFrame(GetParam(), Size(8, 8), 1);
  expectError(caughtZoException([&] { imageSave(directory.file("a.png"), frame, 90); }),
              ZO_STATUS_NOT_SUPPORTED, "imageSave", 898,
              std::string("Unsupported format ") + toString(GetParam()) + " for image saving");
  EXPECT_NE(0, access(directory.file("a.png").c_str(), F_OK));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, ImageSaveFormat,
    testing::Values(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV420_PLANAR_YV12,
                    ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21,
                    ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2,
                    ZO_FRAME_FORMAT_YUV422_PACKED_UYVY, ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16,
                    ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, ZO_FRAME_FORMAT_YUV444_PLANAR),
    [](const auto& i) { return shortName(i.param); });

class ImageSaveWithoutLayout : public testing::TestWithParam<int> {};

TEST_P(ImageSaveWithoutLayout, IsRefusedByNameWhenItHasPixels) {
  const TempDir directory;
  unsigned char block[16 * 48] = {};
  const FrameFormat format = static_cast<FrameFormat>(GetParam());
  const Frame frame(FrameLayout(format, Size(16, 16), {48, 0, 0, 0}), DeviceContext(), DevicePtr(block));
  ASSERT_TRUE(frame.initialized());
  expectError(caughtZoException([&] { imageSave(directory.file("a.png"), frame, 90); }),
              ZO_STATUS_NOT_SUPPORTED, "imageSave", 898,
              std::string("Unsupported format ") + toString(format) + " for image saving");
  EXPECT_NE(0, access(directory.file("a.png").c_str(), F_OK));
}

INSTANTIATE_TEST_SUITE_P(Formats, ImageSaveWithoutLayout,
                         testing::Values(0, 3, 5, 16, 17, 18, 19, 20, 21, -1));

struct SaveCase {
  const char* name;
  const char* file;
  std::string magic;
};

class ImageSaveType : public testing::TestWithParam<SaveCase> {};

TEST_P(ImageSaveType, WritesTheTypeOfTheExtension) {
  const TempDir directory;
  for (FrameFormat format : {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24}) {
    imageSave(directory.file(GetParam().file), makeColourFrame(format, Size(17, 5)), 90);
    EXPECT_EQ(GetParam().magic, readFile(directory.file(GetParam().file)).substr(0, GetParam().magic.size()));
  }
}

INSTANTIATE_TEST_SUITE_P(Types, ImageSaveType,
                         testing::Values(SaveCase{"Jpg", "PHOTO.JPG", "\xFF\xD8\xFF"},
                                         SaveCase{"Jpeg", "a.Jpeg", "\xFF\xD8\xFF"},
                                         SaveCase{"Png", "a.png", "\x89PNG\r\n\x1a\n"},
                                         SaveCase{"Pgm", "a.pgm", "P5"}, SaveCase{"Ppm", "a.ppm", "P6"}),
                         CaseName());

TEST(ImageSave, LeavesTheRangeOfTheQualityToTheImageLibrary) {
  if (!bundledImageLibrary()) {
    GTEST_SKIP() << "another image library treats such qualities in its own way";
  }
  const TempDir directory;
  const Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(64, 64), 1);
  const auto saved = [&](int quality) {
    imageSave(directory.file("a.jpg"), frame, quality);
    return readFile(directory.file("a.jpg"));
  };
  EXPECT_EQ(saved(90), saved(0));
  EXPECT_EQ(saved(1), saved(-5));
  EXPECT_EQ(saved(100), saved(1000));
  EXPECT_EQ(saved(1), saved(INT_MIN));
  EXPECT_EQ(saved(100), saved(INT_MAX));
}

class ImageSaveUnwritable : public testing::TestWithParam<const char*> {};

TEST_P(ImageSaveUnwritable, PathIsReported) {
  expectError(caughtZoException(
                  [&] { imageSave(GetParam(), makeColourFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8)), 90); }),
              ZO_STATUS_CODEC_ERROR, "imageSave", 903, "Failed to save images");
}

INSTANTIATE_TEST_SUITE_P(Paths, ImageSaveUnwritable, testing::Values("/nonexistent/a.png", "/proc/a.jpg"));

TEST(ImageSave, ReportsAFullDisk) {
  if (access("/dev/full", W_OK) != 0) {
    GTEST_SKIP() << "no /dev/full here";
  }
  const TempDir directory;
  for (const char* p_name : {"a.jpg", "a.png", "a.pgm", "a.ppm"}) {
    ASSERT_EQ(0, symlink("/dev/full", directory.file(p_name).c_str()));
    for (Size size : {Size(8, 8), Size(300, 200)}) {
      const Frame frame = makeNoiseFrame(ZO_FRAME_FORMAT_BGR24, size, 1);
      expectError(caughtZoException([&] { imageSave(directory.file(p_name), frame, 90); }),
                  ZO_STATUS_CODEC_ERROR, "imageSave", 903, "Failed to save images");
    }
  }
}

TEST(ImageSave, ReadsNoByteBehindThePixelsOfTheCaller) {
  const TempDir directory;
  for (FrameFormat format : {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24}) {
    for (Size size : {Size(1, 1), Size(3, 3), Size(17, 5)}) {
      const Frame picture = makeColourFrame(format, size);
      std::unique_ptr<unsigned char[]> p_block(
          new unsigned char[static_cast<std::size_t>(picture.planeRowBytes(0)) * picture.planeRows(0)]);
      Frame outside(FrameLayout(format, size, {picture.planeRowBytes(0), 0, 0, 0}), DeviceContext(),
                    DevicePtr(p_block.get()));
      picture.copyTo(outside);
      for (const char* p_name : {"a.jpg", "a.png", "a.pgm", "a.ppm"}) {
        imageSave(directory.file(p_name), outside, 95);
        const std::string expected = readFile(directory.file(p_name));
        imageSave(directory.file(p_name), picture, 95);
        EXPECT_EQ(expected, readFile(directory.file(p_name)));
      }
    }
  }
}

// --- Loading
// ------------------------------------------------------------------------------------------------

TEST(ImageLoad, RefusesAnEmptyPath) {
  expectError(caughtZoException([] { imageLoad(""); }), ZO_STATUS_INTERNAL_ERROR, "imageLoad", 824,
              "Assertion failed: !image_path.empty()");
}

TEST(ImageLoad, ReportsAMissingFileInTheWordsOfTheEncoder) {
  for (const char* p_path :
       {"/nonexistent/a.jpg", "/nonexistent/a.png", "/nonexistent/a.pgm", "/nonexistent/a.ppm"}) {
    expectLoadFailure(p_path);
  }
}

TEST(ImageLoad, ReportsWhatIsNoImage) {
  const TempDir directory;
  writeFile(directory.file("text.png"), "This is a text and no picture.");
  writeFile(directory.file("empty.pgm"), "");
  ASSERT_EQ(0, mkdir(directory.file("folder.jpg").c_str(), 0700));
  expectLoadFailure(directory.file("text.png"));
  expectLoadFailure(directory.file("empty.pgm"));
  expectLoadFailure(directory.file("folder.jpg"));
}

struct LosslessCase {
  const char* name;
  const char* file;
  FrameFormat saved;
  FrameFormat loaded;
};

class ImageLoadLossless : public testing::TestWithParam<std::tuple<LosslessCase, Size>> {};

TEST_P(ImageLoadLossless, GivesTheSavedPixels) {
  const auto& [row, size] = GetParam();
  const TempDir directory;
  const Frame saved = makeColourFrame(row.saved, size);
  imageSave(directory.file(row.file), saved, 90);
  const std::shared_ptr<Frame> p_loaded = imageLoad(directory.file(row.file));
  ASSERT_NE(nullptr, p_loaded);
  ASSERT_EQ(row.loaded, p_loaded->format());
  ASSERT_EQ(size, p_loaded->size());
  for (unsigned y = 0; y < static_cast<unsigned>(size.height); ++y) {
    for (unsigned x = 0; x < static_cast<unsigned>(size.width); ++x) {
      if (row.loaded == ZO_FRAME_FORMAT_GRAY8) {
        ASSERT_EQ(*pixelAt(saved, x, y, 1), *pixelAt(*p_loaded, x, y, 1));
        continue;
      }
      for (unsigned c = 0; c < 3; ++c) {
        const unsigned char expected =
            row.saved == ZO_FRAME_FORMAT_GRAY8
                ? *pixelAt(saved, x, y, 1)
                : pixelAt(saved, x, y, 3)[row.saved == ZO_FRAME_FORMAT_RGB24 ? 2 - c : c];
        ASSERT_EQ(expected, pixelAt(*p_loaded, x, y, 3)[c]) << x << "," << y << " channel " << c;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Types, ImageLoadLossless,
    testing::Combine(
        testing::Values(LosslessCase{"GreyPgm", "a.pgm", ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_GRAY8},
                        LosslessCase{"RgbPpm", "a.ppm", ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24},
                        LosslessCase{"BgrPpm", "a.ppm", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_BGR24},
                        LosslessCase{"RgbPng", "a.png", ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24},
                        LosslessCase{"BgrPng", "a.PNG", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_BGR24},
                        LosslessCase{"GreyPng", "a.png", ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_BGR24},
                        LosslessCase{"GreyPpm", "a.ppm", ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_BGR24}),
        testing::Values(Size(1, 1), Size(2, 2), Size(3, 3), Size(17, 5), Size(64, 48))),
    [](const auto& i) {
      return std::string(std::get<0>(i.param).name) + "_" + shortName(std::get<1>(i.param));
    });

TEST(ImageLoad, GivesAJpegAsBgrWithItsColours) {
  const TempDir directory;
  for (FrameFormat format : {ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24}) {
    for (const char* p_name : {"PHOTO.JPG", "a.Jpeg"}) {
      const Frame saved = makeColourFrame(format, Size(32, 32));
      imageSave(directory.file(p_name), saved, 100);
      const std::shared_ptr<Frame> p_loaded = imageLoad(directory.file(p_name));
      ASSERT_EQ(ZO_FRAME_FORMAT_BGR24, p_loaded->format());
      for (unsigned c = 0; c < 3; ++c) {
        EXPECT_NEAR(pixelAt(saved, 9, 9, 3)[format == ZO_FRAME_FORMAT_RGB24 ? 2 - c : c],
                    pixelAt(*p_loaded, 9, 9, 3)[c], 6);
      }
    }
  }
}

TEST(ImageLoad, GivesAnyContentAsGreyWhenTheNameSaysPgm) {
  const TempDir directory;
  const Frame saved = makeColourFrame(ZO_FRAME_FORMAT_BGR24, Size(16, 16));
  for (const char* p_name : {"a.png", "a.jpg", "a.ppm"}) {
    imageSave(directory.file(p_name), saved, 95);
    writeFile(directory.file("renamed.pgm"), readFile(directory.file(p_name)));
    const std::shared_ptr<Frame> p_loaded = imageLoad(directory.file("renamed.pgm"));
    EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, p_loaded->format()) << p_name;
    EXPECT_EQ(Size(16, 16), p_loaded->size());
  }
}

TEST(ImageLoad, ReadsThePlainTextFormsOfPgmAndPpm) {
  const TempDir directory;
  writeFile(directory.file("a.pgm"), "P2\n# two by one\n2 1\n255\n10 200\n");
  writeFile(directory.file("a.ppm"), "P3 2 1 255 1 2 3 4 5 6\n");
  const std::shared_ptr<Frame> p_grey = imageLoad(directory.file("a.pgm"));
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, p_grey->format());
  EXPECT_EQ(10, pixelAt(*p_grey, 0, 0, 1)[0]);
  EXPECT_EQ(200, pixelAt(*p_grey, 1, 0, 1)[0]);
  const std::shared_ptr<Frame> p_colour = imageLoad(directory.file("a.ppm"));
  EXPECT_EQ(ZO_FRAME_FORMAT_BGR24, p_colour->format());
  EXPECT_EQ(3, pixelAt(*p_colour, 0, 0, 3)[0]);
  EXPECT_EQ(4, pixelAt(*p_colour, 1, 0, 3)[2]);
}

// --- Ownership
// ----------------------------------------------------------------------------------------------

// The address sanitizer sees both a leak and a block that is freed twice.
class LoadedFrame : public testing::Test {
 protected:
  std::shared_ptr<Frame> load() {
    imageSave(_directory.file("a.png"), makeColourFrame(ZO_FRAME_FORMAT_BGR24, Size(20, 10)), 90);
    return imageLoad(_directory.file("a.png"));
  }

 private:
  TempDir _directory;
};

TEST_F(LoadedFrame, IsFreedByTheFrameDeleter) {
  const std::shared_ptr<Frame> p_frame = load();
  EXPECT_NE(nullptr, std::get_deleter<FrameDeleter>(p_frame));
}

TEST_F(LoadedFrame, MayBeReshaped) {
  const std::shared_ptr<Frame> p_frame = load();
  p_frame->reuse(ZO_FRAME_FORMAT_BGR24, Size(500, 500), DeviceContext(), 0);
  fillFrame(*p_frame, 3);
}

TEST_F(LoadedFrame, MayBeCleared) {
  load()->clear();
}

TEST_F(LoadedFrame, MayBeMovedFrom) {
  const std::shared_ptr<Frame> p_frame = load();
  const Frame taken = std::move(*p_frame);
  EXPECT_TRUE(taken.initialized());
}

TEST_F(LoadedFrame, OutlivesNothingThatWasDeeplyCopiedFromIt) {
  Frame copy;
  {
    const std::shared_ptr<Frame> p_frame = load();
    p_frame->copyTo(copy);
  }
  EXPECT_EQ(30, copy.planeData(0)[0]);
}

TEST_F(LoadedFrame, KeepsItsPixelsWhileFormatAndSizeStay) {
  const std::shared_ptr<Frame> p_frame = load();
  const unsigned char* p_before = p_frame->planeData(0);
  p_frame->reuse(ZO_FRAME_FORMAT_BGR24, Size(20, 10), DeviceContext(), 0);
  EXPECT_EQ(p_before, p_frame->planeData(0));
}

TEST(FrameDeleterByDefault, FreesThePixelsThatTheFramePointsTo) {
  const TempDir directory;
  imageSave(directory.file("a.pgm"), makeColourFrame(ZO_FRAME_FORMAT_GRAY8, Size(4, 4)), 90);
  size_t stride = 0, width = 0, height = 0;
  SimdPixelFormatType format = SimdPixelFormatGray8;
  uint8_t* p_pixels =
      SimdImageLoadFromFile(directory.file("a.pgm").c_str(), &stride, &width, &height, &format);
  ASSERT_NE(nullptr, p_pixels);
  const FrameLayout layout(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), {static_cast<unsigned>(stride), 0, 0, 0});
  const std::shared_ptr<Frame> p_frame(new Frame(layout, DeviceContext(), DevicePtr(p_pixels)),
                                       FrameDeleter());
  EXPECT_EQ(p_pixels, p_frame->planeData(0));
}

TEST(FrameDeleterByDefault, TakesFramesWithoutPixelsAndNoFrame) {
  FrameDeleter()(new Frame());
  FrameDeleter()(nullptr);
}

// --- Damage
// -------------------------------------------------------------------------------------------------

struct DamageCase {
  const char* name;
  const char* file;
  FrameFormat format;
};

class ImageLoadDamage : public testing::TestWithParam<DamageCase> {
 protected:
  std::string whole() const {
    imageSave(_directory.file(GetParam().file), makeColourFrame(GetParam().format, Size(19, 13)), 85);
    return readFile(_directory.file(GetParam().file));
  }

  // Loads, or is the loading error.
  void loadOrFail(const std::string& bytes) const {
    // A new file each time: file systems write a file that is emptied and filled again to the disk at once.
    unlink(_directory.file(GetParam().file).c_str());
    writeFile(_directory.file(GetParam().file), bytes);
    try {
      const std::shared_ptr<Frame> p_frame = imageLoad(_directory.file(GetParam().file));
      ASSERT_TRUE(p_frame->initialized());
      for (unsigned y = 0; y < p_frame->planeRows(0); ++y) {
        // The last byte of each row is there.
        EXPECT_GE(
            255,
            p_frame->planeData(
                0)[static_cast<std::size_t>(y) * p_frame->planeStride(0) + p_frame->planeRowBytes(0) - 1]);
      }
    } catch (const Exception& e) {
      expectError(e, ZO_STATUS_CODEC_ERROR, "imageLoad", 835, "Failed to encode JPEG frame");
    }
  }

 private:
  TempDir _directory;
};

TEST_P(ImageLoadDamage, CutFilesLoadOrFailCleanly) {
  const std::string bytes = whole();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    loadOrFail(bytes.substr(0, length));
  }
}

TEST_P(ImageLoadDamage, ChangedFilesLoadOrFailCleanly) {
  const std::string bytes = whole();
  std::mt19937 random(20240608);
  for (int round = 0; round < 10000; ++round) {
    std::string changed = bytes;
    for (unsigned change = random() % 4 + 1; change > 0; --change) {
      changed[random() % changed.size()] = static_cast<char>(random());
    }
    loadOrFail(changed);
  }
}

INSTANTIATE_TEST_SUITE_P(Types, ImageLoadDamage,
                         testing::Values(DamageCase{"Jpeg", "a.jpg", ZO_FRAME_FORMAT_BGR24},
                                         DamageCase{"GreyJpeg", "a.jpg", ZO_FRAME_FORMAT_GRAY8},
                                         DamageCase{"Png", "a.png", ZO_FRAME_FORMAT_BGR24},
                                         DamageCase{"Pgm", "a.pgm", ZO_FRAME_FORMAT_GRAY8},
                                         DamageCase{"Ppm", "a.ppm", ZO_FRAME_FORMAT_BGR24}),
                         CaseName());

}  // namespace
}  // namespace test
}  // namespace zo
