// zo::encodeJpeg and zo::decodeJpeg: JPEG in memory through the image library.
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <climits>
#include <memory>
#include <string>

#include "zo_core/zo_exception.h"
#include "zo_image_library.h"
#include "zo_jpeg_test_support.h"
#include "zo_test_compare.h"
#include "zo_test_exception.h"
#include "zo_test_files.h"
#include "zo_test_names.h"
#include "zo_test_picture.h"
#include "zo_video/zo_image_io.h"

namespace zo {
namespace test {
namespace {

constexpr char FILE_NAME[] = "src/zo_video/zo_image_io";

// --- Encoding
// -----------------------------------------------------------------------------------------------

struct KindCase {
  FrameFormat format;
  int subsampling;       // up to quality 90
  int fine_subsampling;  // above
};

class EncodeJpegKind : public testing::TestWithParam<KindCase> {};

TEST_P(EncodeJpegKind, DependsOnFormatAndQuality) {
  for (Size size : {Size(1, 1), Size(3, 3), Size(17, 5), Size(48, 32)}) {
    const Frame frame = makeNumberedFrame(GetParam().format, size, 3);
    const auto subsampling = [&](int quality) {
      const std::shared_ptr<Buffer> p_jpeg = encodeJpeg(frame, quality);
      const JpegHeader header = jpegHeader(bytesOf(*p_jpeg));
      EXPECT_EQ(size, header.size);
      return header.subsampling;
    };
    const int common = subsampling(90);
    const int fine = subsampling(91);
    if (bundledImageLibrary()) {
      EXPECT_EQ(GetParam().subsampling, common);
      EXPECT_EQ(GetParam().fine_subsampling, fine);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, EncodeJpegKind,
                         testing::Values(KindCase{ZO_FRAME_FORMAT_GRAY8, TJSAMP_GRAY, TJSAMP_GRAY},
                                         KindCase{ZO_FRAME_FORMAT_RGB24, TJSAMP_420, TJSAMP_444},
                                         KindCase{ZO_FRAME_FORMAT_BGR24, TJSAMP_420, TJSAMP_444},
                                         KindCase{ZO_FRAME_FORMAT_YUV420_PLANAR_I420, TJSAMP_420, TJSAMP_420},
                                         KindCase{ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, TJSAMP_420,
                                                  TJSAMP_420}),
                         [](const auto& i) { return shortName(i.param.format); });

TEST(EncodeJpeg, KeepsTheChromaChannelsOfYuvFramesApart) {
  for (FrameFormat format : {ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12}) {
    const RawPicture decoded = bareDecodeYuv(bytesOf(*encodeJpeg(makeYuvFrame(format, Size(32, 32)), 90)));
    const RawPicture expected = makeYuvPicture(Size(32, 32), TJSAMP_420);
    for (unsigned i = 0; i < 3; ++i) {
      EXPECT_NEAR(expected.planes[i].bytes[0], decoded.planes[i].bytes[0], 6)
          << toString(format) << " plane " << i;
    }
  }
}

TEST(EncodeJpeg, LeavesTheRangeOfTheQualityToTheImageLibrary) {
  if (!bundledImageLibrary()) {
    GTEST_SKIP() << "another image library treats such qualities in its own way";
  }
  const Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, Size(64, 48), 3);
  const auto encoded = [&](int quality) { return bytesOf(*encodeJpeg(frame, quality)); };
  EXPECT_EQ(encoded(90), encoded(0));
  EXPECT_EQ(encoded(1), encoded(-1));
  EXPECT_EQ(encoded(1), encoded(INT_MIN));
  EXPECT_EQ(encoded(100), encoded(101));
  EXPECT_EQ(encoded(100), encoded(INT_MAX));
  EXPECT_LT(encoded(1).size(), encoded(100).size());
}

class EncodeJpegWithoutPixels : public testing::TestWithParam<int> {};

TEST_P(EncodeJpegWithoutPixels, IsAFailedAssertion) {
  Frame frame;
  frame.reuse(static_cast<FrameFormat>(GetParam()), Size(16, 16), DeviceContext(), 0);
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, encodeJpeg(frame, 90), ZO_STATUS_INTERNAL_ERROR,
                           "Assertion failed: frame.initialized()", "encodeJpeg");
}

INSTANTIATE_TEST_SUITE_P(Formats, EncodeJpegWithoutPixels,
                         testing::Values(0, 3, 5, 16, 17, 18, 19, 20, 21, -1, INT_MAX));

class EncodeJpegFormat : public testing::TestWithParam<FrameFormat> {};

TEST_P(EncodeJpegFormat, IsRefusedByName) {
  const Frame frame = makeNumberedFrame(GetParam(), Size(16, 16), 1);
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, encodeJpeg(frame, 90), ZO_STATUS_NOT_SUPPORTED,
                           std::string("Unsupported format ") + toString(GetParam()) + " for JPEG encoding",
                           "encodeJpeg");
}

INSTANTIATE_TEST_SUITE_P(Formats, EncodeJpegFormat,
                         testing::Values(ZO_FRAME_FORMAT_YUV420_PLANAR_YV12,
                                         ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21,
                                         ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2,
                                         ZO_FRAME_FORMAT_YUV422_PACKED_UYVY,
                                         ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16,
                                         ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, ZO_FRAME_FORMAT_YUV444_PLANAR),
                         [](const auto& i) { return shortName(i.param); });

class EncodeJpegWithoutLayout : public testing::TestWithParam<int> {};

TEST_P(EncodeJpegWithoutLayout, IsRefusedByNameWhenItHasPixels) {
  unsigned char block[16 * 48] = {};
  const FrameFormat format = static_cast<FrameFormat>(GetParam());
  const Frame frame(FrameLayout(format, Size(16, 16), {48, 0, 0, 0}), DeviceContext(), DevicePtr(block));
  ASSERT_TRUE(frame.initialized());
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, encodeJpeg(frame, 90), ZO_STATUS_NOT_SUPPORTED,
                           std::string("Unsupported format ") + toString(format) + " for JPEG encoding",
                           "encodeJpeg");
}

INSTANTIATE_TEST_SUITE_P(Formats, EncodeJpegWithoutLayout,
                         testing::Values(0, 3, 5, 16, 17, 18, 19, 20, 21, -1));

TEST(EncodeJpeg, ReportsWhatTheImageLibraryCannotCompress) {
  if (!bundledImageLibrary()) {
    GTEST_SKIP() << "another image library may compress pictures of any width";
  }
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(70000, 1), DeviceContext(), 0);
  fillFrame(frame, 7);
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, encodeJpeg(frame, 90), ZO_STATUS_CODEC_ERROR,
                           "Failed to encode JPEG frame", "encodeJpeg");
}

TEST(EncodeJpeg, ReadsNoByteBehindThePixelsOfTheCaller) {
  for (FrameFormat format : {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24,
                             ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12}) {
    for (Size size : {Size(1, 1), Size(2, 2), Size(3, 3), Size(17, 17), Size(64, 48)}) {
      const Frame picture = makeNumberedFrame(format, size, 6);
      std::size_t bytes = 0;
      std::array<unsigned, 4> strides{};
      for (unsigned i = 0; i < picture.planeCount(); ++i) {
        strides[i] = picture.planeRowBytes(i);
        bytes += static_cast<std::size_t>(strides[i]) * picture.planeRows(i);
      }
      const std::unique_ptr<unsigned char[]> p_block(
          new unsigned char[bytes]);  // the sanitizer guards its end
      Frame outside(FrameLayout(format, size, strides), DeviceContext(), DevicePtr(p_block.get()));
      picture.copyTo(outside);
      EXPECT_EQ(bytesOf(*encodeJpeg(picture, 80)), bytesOf(*encodeJpeg(outside, 80)))
          << toString(format) << " " << shortName(size);
    }
  }
}

// --- Decoding
// -----------------------------------------------------------------------------------------------

TEST(DecodeJpeg, RefusesNoDataAndNoBytes) {
  const unsigned char byte = 0xFF;
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, decodeJpeg(nullptr, 10), ZO_STATUS_INTERNAL_ERROR,
                           "Assertion failed: p_buffer && buffer_size", "decodeJpeg");
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, decodeJpeg(&byte, 0), ZO_STATUS_INTERNAL_ERROR,
                           "Assertion failed: p_buffer && buffer_size", "decodeJpeg");
}

TEST(DecodeJpeg, RefusesWhatIsNoImage) {
  const std::string text = "This is a text and no picture.";
  EXPECT_ZO_EXCEPTION_FROM(
      FILE_NAME,
      decodeJpeg(reinterpret_cast<const unsigned char*>(text.data()), static_cast<unsigned>(text.size())),
      ZO_STATUS_CODEC_ERROR, "Failed to decode JPEG frame", "decodeJpeg");
}

struct DecodeCase {
  const char* name;
  int colour_space;
  int horizontal;
  int vertical;
};

class DecodeJpegKind : public testing::TestWithParam<DecodeCase> {};

TEST_P(DecodeJpegKind, GivesBgrWhateverTheFileHolds) {
  LibjpegOptions options;
  options.colour_space = GetParam().colour_space;
  options.horizontal = GetParam().horizontal;
  options.vertical = GetParam().vertical;
  for (Size size : {Size(1, 1), Size(3, 3), Size(17, 5), Size(64, 48)}) {
    const Bytes jpeg = libjpegEncode(size, options);
    const std::shared_ptr<Frame> p_frame = decodeJpeg(jpeg.data(), static_cast<unsigned>(jpeg.size()));
    ASSERT_NE(nullptr, p_frame);
    EXPECT_EQ(ZO_FRAME_FORMAT_BGR24, p_frame->format());
    EXPECT_EQ(size, p_frame->size());
    EXPECT_TRUE(p_frame->initialized());
    // Another image library may round, and scale chroma up, in its own way.
    if (bundledImageLibrary() && GetParam().colour_space != 4 && GetParam().colour_space != 5) {
      const Bytes expected = bareDecodePacked(jpeg, TJPF_BGR);
      EXPECT_EQ(std::string(expected.begin(), expected.end()), packedBytes(*p_frame)) << shortName(size);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DecodeJpegKind,
                         testing::Values(DecodeCase{"Grey", 1, 1, 1}, DecodeCase{"Rgb", 2, 1, 1},
                                         DecodeCase{"Yuv444", 3, 1, 1}, DecodeCase{"Yuv422", 3, 2, 1},
                                         DecodeCase{"Yuv420", 3, 2, 2}, DecodeCase{"Yuv440", 3, 1, 2},
                                         DecodeCase{"Yuv411", 3, 4, 1}, DecodeCase{"Cmyk", 4, 1, 1},
                                         DecodeCase{"Ycck", 5, 2, 2}),
                         CaseName());

TEST(DecodeJpeg, DecodesTheOtherImageTypesOfTheImageLibraryToo) {
  const TempDir directory;
  const Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(10, 6), 2);
  for (const char* p_name : {"a.png", "a.ppm"}) {
    imageSave(directory.file(p_name), frame, 90);
    const std::string bytes = readFile(directory.file(p_name));
    const std::shared_ptr<Frame> p_frame =
        decodeJpeg(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()));
    EXPECT_TRUE(samePixels(frame, *p_frame)) << p_name;
  }
}

TEST(DecodeJpeg, FreesThePixelsWithTheFrameEvenWhenItWasReshaped) {
  const Bytes jpeg = bytesOf(*encodeJpeg(makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 2), 90));
  const auto decode = [&] { return decodeJpeg(jpeg.data(), static_cast<unsigned>(jpeg.size())); };
  EXPECT_NE(nullptr, std::get_deleter<FrameDeleter>(decode()));
  decode()->clear();
  decode()->reuse(ZO_FRAME_FORMAT_GRAY8, Size(300, 300), DeviceContext(), 0);
}

TEST(DecodeJpeg, CutDataDecodesOrFailsCleanly) {
  const Bytes whole = bytesOf(*encodeJpeg(makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 2), 90));
  unsigned failures = 0;
  for (std::size_t length = 1; length < whole.size(); ++length) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<long>(length));
    try {
      EXPECT_EQ(Size(33, 17), decodeJpeg(cut.data(), static_cast<unsigned>(length))->size());
    } catch (const Exception& e) {
      EXPECT_EQ(ZO_STATUS_CODEC_ERROR, e.status());
      EXPECT_STREQ("Failed to decode JPEG frame", e.what());
      ++failures;
    }
  }
  EXPECT_GT(failures, 100U);  // everything that ends within the header
}

}  // namespace
}  // namespace test
}  // namespace zo
