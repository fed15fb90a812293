#include "zo_video/zo_jpeg_encoder.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <tuple>

#include "zo_jpeg_test_support.h"
#include "zo_test_exception.h"
#include "zo_test_names.h"
#include "zo_test_picture.h"
#include "zo_video/zo_jpeg_encoder_impl.h"
#include "zo_video/zo_video_converter.h"

extern "C" {
#include <libswscale/swscale.h>
}

namespace zo {
namespace test {
namespace {

constexpr char PLAIN_REFUSAL[] = "Error in encode(...) function";

Bytes encode(const Frame& frame, int quality) {
  JpegEncoder encoder;
  Buffer out;
  encoder.encode(frame, quality, out);
  return bytesOf(out);
}

// The planes of a planar frame as the bare coder wants them: padded to whole chroma samples with the edge.
RawPicture rawPicture(const Frame& frame, int subsampling, unsigned cb_plane) {
  RawPicture picture;
  picture.size = frame.size();
  picture.subsampling = subsampling;
  const unsigned order[3] = {0, cb_plane, 3 - cb_plane};
  for (unsigned i = 0; i < 3; ++i) {
    RawPlane plane;
    plane.width = tjPlaneWidth(static_cast<int>(i), frame.size().width, subsampling);
    plane.height = tjPlaneHeight(static_cast<int>(i), frame.size().height, subsampling);
    for (unsigned y = 0; y < static_cast<unsigned>(plane.height); ++y) {
      const unsigned row = std::min(y, frame.planeRows(order[i]) - 1);
      const unsigned char* p_row =
          frame.planeData(order[i]) + static_cast<std::size_t>(row) * frame.planeStride(order[i]);
      for (unsigned x = 0; x < static_cast<unsigned>(plane.width); ++x) {
        plane.bytes.push_back(p_row[std::min(x, frame.planeRowBytes(order[i]) - 1)]);
      }
    }
    picture.planes.push_back(plane);
  }
  return picture;
}

Bytes packedPixels(const Frame& frame) {
  Bytes pixels;
  for (unsigned y = 0; y < frame.planeRows(0); ++y) {
    const unsigned char* p_row = frame.planeData(0) + static_cast<std::size_t>(y) * frame.planeStride(0);
    pixels.insert(pixels.end(), p_row, p_row + frame.planeRowBytes(0));
  }
  return pixels;
}

const Size SIZES[] = {Size(1, 1),   Size(2, 2),   Size(3, 3),  Size(17, 5),
                      Size(16, 17), Size(33, 16), Size(64, 48)};

// --- Formats that the coder takes as they are -----------------------------------------------------------

struct PackedCase {
  FrameFormat format;
  int pixel_format;
  int subsampling;
};

class JpegEncoderPacked : public testing::TestWithParam<std::tuple<PackedCase, Size>> {};

TEST_P(JpegEncoderPacked, GivesTheBytesOfTheBareCoder) {
  const auto& [row, size] = GetParam();
  const Frame frame = makeNumberedFrame(row.format, size, 5);
  EXPECT_EQ(bareEncodePacked(packedPixels(frame), size, row.pixel_format, row.subsampling, 80),
            encode(frame, 80));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, JpegEncoderPacked,
    testing::Combine(testing::Values(PackedCase{ZO_FRAME_FORMAT_GRAY8, TJPF_GRAY, TJSAMP_GRAY},
                                     PackedCase{ZO_FRAME_FORMAT_RGB24, TJPF_RGB, TJSAMP_444},
                                     PackedCase{ZO_FRAME_FORMAT_BGR24, TJPF_BGR, TJSAMP_444}),
                     testing::ValuesIn(SIZES)),
    [](const auto& i) {
      return shortName(std::get<0>(i.param).format) + "_" + shortName(std::get<1>(i.param));
    });

struct PlanarCase {
  FrameFormat format;
  int subsampling;
  unsigned cb_plane;
};

class JpegEncoderPlanar : public testing::TestWithParam<std::tuple<PlanarCase, Size>> {};

TEST_P(JpegEncoderPlanar, GivesTheBytesOfTheBareCoderForTheEdgeExtendedPicture) {
  const auto& [row, size] = GetParam();
  const Frame frame = makeYuvFrame(row.format, size);
  EXPECT_EQ(bareEncodeYuv(rawPicture(frame, row.subsampling, row.cb_plane), 80), encode(frame, 80));
}

TEST_P(JpegEncoderPlanar, DoesNotDependOnBytesBesideThePicture) {
  const auto& [row, size] = GetParam();
  const Frame picture = makeYuvFrame(row.format, size);
  Frame other;
  other.reuse(row.format, size, DeviceContext(), 0);
  for (unsigned p = 0; p < other.planeCount(); ++p) {
    // One row behind the plane and the ends of all rows belong to the frame's own slack.
    std::memset(other.planeData(p), 0xFF,
                static_cast<std::size_t>(other.planeStride(p)) * (other.planeRows(p) + 1));
  }
  picture.copyTo(other);
  EXPECT_EQ(encode(picture, 30), encode(other, 30));
}

TEST_P(JpegEncoderPlanar, GivesTheSameBytesForMemoryOfTheCaller) {
  const auto& [row, size] = GetParam();
  const Frame picture = makeYuvFrame(row.format, size);
  for (unsigned padding : {0U, 3U}) {
    GuardedFrame outside(row.format, size, padding);
    picture.copyTo(outside.frame());
    ASSERT_EQ(outside.pixels(), outside.frame().planeData(0));
    EXPECT_EQ(encode(picture, 80), encode(outside.frame(), 80)) << "padding " << padding;
    EXPECT_TRUE(outside.intact());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, JpegEncoderPlanar,
    testing::Combine(testing::Values(PlanarCase{ZO_FRAME_FORMAT_YUV420_PLANAR_I420, TJSAMP_420, 1},
                                     PlanarCase{ZO_FRAME_FORMAT_YUV420_PLANAR_YV12, TJSAMP_420, 2},
                                     PlanarCase{ZO_FRAME_FORMAT_YUV422_PLANAR, TJSAMP_422, 2},
                                     PlanarCase{ZO_FRAME_FORMAT_YUV444_PLANAR, TJSAMP_444, 1}),
                     testing::ValuesIn(SIZES)),
    [](const auto& i) {
      return shortName(std::get<0>(i.param).format) + "_" + shortName(std::get<1>(i.param));
    });

// --- Formats that are converted first ---------------------------------------------------------------------

struct ConvertedCase {
  FrameFormat format;
  FrameFormat planar_format;
  int subsampling;
  unsigned cb_plane;
};

class JpegEncoderConverted : public testing::TestWithParam<std::tuple<ConvertedCase, Size>> {};

TEST_P(JpegEncoderConverted, GivesTheBytesOfTheConvertedFrame) {
  const auto& [row, size] = GetParam();
  const Frame frame = makeYuvFrame(row.format, size);
  Frame planar;
  VideoConverter converter;
  converter.convert(frame, row.planar_format, size, planar, VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  EXPECT_EQ(bareEncodeYuv(rawPicture(planar, row.subsampling, row.cb_plane), 80), encode(frame, 80));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, JpegEncoderConverted,
    testing::Combine(testing::Values(ConvertedCase{ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12,
                                                   ZO_FRAME_FORMAT_YUV420_PLANAR_I420, TJSAMP_420, 1},
                                     ConvertedCase{ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21,
                                                   ZO_FRAME_FORMAT_YUV420_PLANAR_I420, TJSAMP_420, 1},
                                     ConvertedCase{ZO_FRAME_FORMAT_YUV422_PACKED_YUY2,
                                                   ZO_FRAME_FORMAT_YUV422_PLANAR, TJSAMP_422, 2},
                                     ConvertedCase{ZO_FRAME_FORMAT_YUV422_PACKED_UYVY,
                                                   ZO_FRAME_FORMAT_YUV422_PLANAR, TJSAMP_422, 2}),
                     testing::Values(Size(2, 2), Size(17, 5), Size(64, 48))),
    [](const auto& i) {
      return shortName(std::get<0>(i.param).format) + "_" + shortName(std::get<1>(i.param));
    });

// --- Which plane is which
// -----------------------------------------------------------------------------------

struct ChromaCase {
  FrameFormat format;
  bool swapped;  // the JPEG's Cb is what the frame calls V
};

class JpegEncoderChroma : public testing::TestWithParam<ChromaCase> {};

TEST_P(JpegEncoderChroma, KeepsTheTwoChannelsApart) {
  const RawPicture decoded = bareDecodeYuv(encode(makeYuvFrame(GetParam().format, Size(32, 32)), 90));
  const RawPicture expected = makeYuvPicture(Size(32, 32), decoded.subsampling);
  const unsigned cb = GetParam().swapped ? 2 : 1;
  EXPECT_NEAR(expected.planes[cb].bytes[0], decoded.planes[1].bytes[0], 6);
  EXPECT_NEAR(expected.planes[3 - cb].bytes[0], decoded.planes[2].bytes[0], 6);
  EXPECT_NEAR(expected.planes[0].bytes[0], decoded.planes[0].bytes[0], 6);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, JpegEncoderChroma,
    testing::Values(ChromaCase{ZO_FRAME_FORMAT_YUV420_PLANAR_I420, false},
                    ChromaCase{ZO_FRAME_FORMAT_YUV420_PLANAR_YV12, false},
                    ChromaCase{ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, false},
                    ChromaCase{ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21, false},
                    ChromaCase{ZO_FRAME_FORMAT_YUV444_PLANAR, false},
                    // Plane 1 of a 4:2:2 planar frame is V for the coder, whoever filled it.
                    ChromaCase{ZO_FRAME_FORMAT_YUV422_PLANAR, true},
                    ChromaCase{ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, true},
                    ChromaCase{ZO_FRAME_FORMAT_YUV422_PACKED_UYVY, true}),
    [](const auto& i) { return shortName(i.param.format); });

TEST(JpegEncoder, TakesTheColoursOfRgbAndBgrFramesInTheirOrder) {
  for (FrameFormat format : {ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24}) {
    Frame frame;
    frame.reuse(format, Size(16, 16), DeviceContext(), 0);
    for (unsigned y = 0; y < 16; ++y) {
      for (unsigned x = 0; x < 16; ++x) {
        unsigned char* p_pixel = frame.planeData(0) + y * frame.planeStride(0) + 3 * x;
        p_pixel[0] = 220;
        p_pixel[1] = 100;
        p_pixel[2] = 20;
      }
    }
    const Bytes pixels =
        bareDecodePacked(encode(frame, 95), format == ZO_FRAME_FORMAT_RGB24 ? TJPF_RGB : TJPF_BGR);
    EXPECT_NEAR(220, pixels[0], 4) << toString(format);
    EXPECT_NEAR(100, pixels[1], 4) << toString(format);
    EXPECT_NEAR(20, pixels[2], 4) << toString(format);
  }
}

// --- What kind of JPEG comes out
// ----------------------------------------------------------------------------

struct KindCase {
  FrameFormat format;
  int subsampling;
  int colour_space;
};

class JpegEncoderKind : public testing::TestWithParam<KindCase> {};

TEST_P(JpegEncoderKind, HasTheSubsamplingOfTheFrame) {
  Frame frame = makeNumberedFrame(GetParam().format, Size(48, 32), 3);
  const JpegHeader header = jpegHeader(encode(frame, 90));
  EXPECT_EQ(Size(48, 32), header.size);
  EXPECT_EQ(GetParam().subsampling, header.subsampling);
  EXPECT_EQ(GetParam().colour_space, header.colour_space);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, JpegEncoderKind,
    testing::Values(KindCase{ZO_FRAME_FORMAT_GRAY8, TJSAMP_GRAY, TJCS_GRAY},
                    KindCase{ZO_FRAME_FORMAT_RGB24, TJSAMP_444, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_BGR24, TJSAMP_444, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_YUV420_PLANAR_I420, TJSAMP_420, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_YUV420_PLANAR_YV12, TJSAMP_420, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, TJSAMP_420, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21, TJSAMP_420, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_YUV422_PLANAR, TJSAMP_422, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, TJSAMP_422, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_YUV422_PACKED_UYVY, TJSAMP_422, TJCS_YCbCr},
                    KindCase{ZO_FRAME_FORMAT_YUV444_PLANAR, TJSAMP_444, TJCS_YCbCr}),
    [](const auto& i) { return shortName(i.param.format); });

// --- Refusals
// -----------------------------------------------------------------------------------------------

// Newer scalers read NV16, older ones refuse it.
TEST(JpegEncoder, LeavesNv16ToTheConverter) {
  const Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16, Size(16, 16), 1);
  if (sws_isSupportedInput(AV_PIX_FMT_NV16) != 0) {
    Frame converted;
    VideoConverter().convert(frame, ZO_FRAME_FORMAT_YUV422_PLANAR, frame.size(), converted,
                             VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT);
    EXPECT_EQ(encode(frame, 90), encode(converted, 90));
  } else {
    EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_video_converter_impl", encode(frame, 90),
                             ZO_STATUS_OUT_OF_MEMORY, "Cannot allocate scale context (SwsContext)",
                             "convert");
  }
}

TEST(JpegEncoder, LeavesTheRefusalOfIyu2ToTheConverter) {
  const Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, Size(16, 16), 1);
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_video_helpers", encode(frame, 90), ZO_STATUS_NOT_SUPPORTED,
                           "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV444_PACKED_IYU2",
                           "frameFormatToAvPixelFormat");
}

class JpegEncoderWithoutPlanes : public testing::TestWithParam<int> {};

TEST_P(JpegEncoderWithoutPlanes, IsRefusedBeforeTheFormatIsLookedAt) {
  Frame frame;
  frame.reuse(static_cast<FrameFormat>(GetParam()), Size(16, 16), DeviceContext(), 0);
  ASSERT_FALSE(frame.initialized());
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_jpeg_encoder", encode(frame, 90), ZO_STATUS_NOT_INITIALIZED,
                           PLAIN_REFUSAL, "encode");
}

INSTANTIATE_TEST_SUITE_P(Formats, JpegEncoderWithoutPlanes,
                         testing::Values(0, 3, 5, 16, 17, 18, 19, 20, 21, -1, INT_MIN, INT_MAX));

struct RefusedCase {
  const char* name;
  int format;
  Status status;
  const char* message;
};

class JpegEncoderRefusedFormat : public testing::TestWithParam<RefusedCase> {};

TEST_P(JpegEncoderRefusedFormat, IsReportedInTheWordsOfTheImageWriter) {
  Frame frame;
  frame.reuse(static_cast<FrameFormat>(GetParam().format), Size(16, 16), DeviceContext(), 0);
  JpegEncoder::Impl encoder;
  Buffer out;
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_jpeg_encoder", encoder.encodeByFormat(frame, 90, out),
                           GetParam().status, GetParam().message, "encode");
}

TEST_P(JpegEncoderRefusedFormat, IsReportedForAFrameOverOutsideMemory) {
  unsigned char block[16 * 48] = {};
  const Frame frame(FrameLayout(static_cast<FrameFormat>(GetParam().format), Size(16, 16), {48, 0, 0, 0}),
                    DeviceContext(), DevicePtr(block));
  ASSERT_TRUE(frame.initialized());
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_jpeg_encoder", encode(frame, 90), GetParam().status,
                           GetParam().message, "encode");
}

constexpr char NO_FRAME_DATA[] = "Failure in imageWrite(...): not initialized frame data";
constexpr char NOT_SUPPORTED[] = "Failure in imageWrite(...): not suported format to save";
constexpr char UNKNOWN[] = "Failure in imageWrite(...): unknown format";

INSTANTIATE_TEST_SUITE_P(
    Formats, JpegEncoderRefusedFormat,
    testing::Values(RefusedCase{"Undefined", 0, ZO_STATUS_NOT_INITIALIZED, NO_FRAME_DATA},
                    RefusedCase{"Reserved3", 3, ZO_STATUS_OUT_OF_RANGE, UNKNOWN},
                    RefusedCase{"Reserved5", 5, ZO_STATUS_OUT_OF_RANGE, UNKNOWN},
                    RefusedCase{"Custom1", 16, ZO_STATUS_NOT_SUPPORTED, NOT_SUPPORTED},
                    RefusedCase{"Reserved17", 17, ZO_STATUS_NOT_SUPPORTED, NOT_SUPPORTED},
                    RefusedCase{"Reserved18", 18, ZO_STATUS_NOT_SUPPORTED, NOT_SUPPORTED},
                    RefusedCase{"Custom2", 19, ZO_STATUS_NOT_SUPPORTED, NOT_SUPPORTED},
                    RefusedCase{"Custom3", 20, ZO_STATUS_NOT_SUPPORTED, NOT_SUPPORTED},
                    RefusedCase{"Beyond", 21, ZO_STATUS_OUT_OF_RANGE, UNKNOWN},
                    RefusedCase{"Negative", -1, ZO_STATUS_OUT_OF_RANGE, UNKNOWN}),
    CaseName());

TEST(JpegEncoder, RefusesAFrameWhoseSizeWasNeverSet) {
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_BGR24, Size(0, 16), DeviceContext(), 0);
  EXPECT_ZO_EXCEPTION(encode(frame, 90), ZO_STATUS_NOT_INITIALIZED, PLAIN_REFUSAL, "encode");
}

class JpegEncoderQuality : public testing::TestWithParam<int> {};

TEST_P(JpegEncoderQuality, IsRefusedOutsideOneToHundred) {
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_jpeg_encoder",
                           encode(makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(16, 16), 1), GetParam()),
                           ZO_STATUS_INVALID_ARGUMENT, PLAIN_REFUSAL, "encode");
}

INSTANTIATE_TEST_SUITE_P(Values, JpegEncoderQuality, testing::Values(INT_MIN, -1, 0, 101, INT_MAX));

TEST(JpegEncoder, AcceptsTheBoundsOfTheQuality) {
  const Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(64, 64), 1);
  EXPECT_LT(encode(frame, 1).size(), encode(frame, 100).size());
}

TEST(JpegEncoder, ReportsACoderThatCouldNotBeSetUp) {
  JpegEncoder::Impl encoder((TurboJpegCompressorPtr()));
  Buffer out;
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_jpeg_encoder",
                           encoder.encode(makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(16, 16), 1), 90, out),
                           ZO_STATUS_NULL_POINTER, PLAIN_REFUSAL, "encode");
}

TEST(JpegEncoder, ChecksFrameThenQualityThenCoderThenFormat) {
  JpegEncoder::Impl encoder((TurboJpegCompressorPtr()));
  Buffer out;
  const Frame empty;
  const Frame unsupported = makeNumberedFrame(ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, Size(16, 16), 1);
  EXPECT_ZO_EXCEPTION(encoder.encode(empty, 0, out), ZO_STATUS_NOT_INITIALIZED, PLAIN_REFUSAL, "encode");
  EXPECT_ZO_EXCEPTION(encoder.encode(unsupported, 0, out), ZO_STATUS_INVALID_ARGUMENT, PLAIN_REFUSAL,
                      "encode");
  EXPECT_ZO_EXCEPTION(encoder.encode(unsupported, 90, out), ZO_STATUS_NULL_POINTER, PLAIN_REFUSAL, "encode");
}

class JpegEncoderTooWide : public testing::TestWithParam<FrameFormat> {};

TEST_P(JpegEncoderTooWide, IsReportedWithTheCodeOfTheCompressionThatFails) {
  // JPEG has no pictures of more than 65500 pixels a side with this coder.
  Frame frame;
  frame.reuse(GetParam(), Size(70000, 1), DeviceContext(), 0);
  fillFrame(frame, 7);
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_jpeg_encoder", encode(frame, 90), ZO_STATUS_CODEC_ERROR,
                           "Failed to encode frame. Error code -1", "checkEncoderError");
}

INSTANTIATE_TEST_SUITE_P(Formats, JpegEncoderTooWide,
                         testing::Values(ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24,
                                         ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                                         ZO_FRAME_FORMAT_YUV420_PLANAR_YV12, ZO_FRAME_FORMAT_YUV422_PLANAR,
                                         ZO_FRAME_FORMAT_YUV444_PLANAR),
                         [](const auto& i) { return shortName(i.param); });

TEST(JpegEncoder, GoesOnAfterAnyRefusal) {
  JpegEncoder encoder;
  Buffer out;
  const Frame good = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 9);
  const Bytes expected = encode(good, 75);
  Frame too_wide;
  too_wide.reuse(ZO_FRAME_FORMAT_GRAY8, Size(70000, 1), DeviceContext(), 0);
  fillFrame(too_wide, 7);
  EXPECT_THROW(encoder.encode(too_wide, 75, out), Exception);
  EXPECT_THROW(encoder.encode(Frame(), 75, out), Exception);
  EXPECT_THROW(encoder.encode(good, 0, out), Exception);
  encoder.encode(good, 75, out);
  EXPECT_EQ(expected, bytesOf(out));
}

// --- The output buffer
// --------------------------------------------------------------------------------------

TEST(JpegEncoder, LeavesExactlyTheJpegInTheBuffer) {
  JpegEncoder encoder;
  Buffer out(std::string(100000, 'x').data(), 100000);
  encoder.encode(makeNumberedFrame(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(64, 48), 2), 50, out);
  const Bytes jpeg = bytesOf(out);
  ASSERT_GT(jpeg.size(), 100U);
  EXPECT_EQ((Bytes{0xFF, 0xD8}), Bytes(jpeg.begin(), jpeg.begin() + 2));
  EXPECT_EQ((Bytes{0xFF, 0xD9}), Bytes(jpeg.end() - 2, jpeg.end()));
}

TEST(JpegEncoder, GivesTheSameBytesWhateverItEncodedBefore) {
  JpegEncoder used;
  Buffer out;
  for (FrameFormat format :
       {ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, ZO_FRAME_FORMAT_GRAY8,
        ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_BGR24}) {
    for (Size size : {Size(65, 33), Size(17, 5), Size(64, 48)}) {
      const Frame frame = makeNumberedFrame(format, size, 12);
      used.encode(frame, 85, out);
      EXPECT_EQ(encode(frame, 85), bytesOf(out)) << toString(format) << " " << shortName(size);
    }
  }
}

TEST(JpegEncoder, EncodesNoiseAtFullQualityWithoutOverrunningItsBuffer) {
  for (Size size : {Size(1, 1), Size(8, 8), Size(17, 17), Size(200, 3)}) {
    for (FrameFormat format :
         {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
          ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV444_PLANAR}) {
      EXPECT_EQ(size, jpegHeader(encode(makeNoiseFrame(format, size, 77), 100)).size);
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace zo
