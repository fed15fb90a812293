#include "zo_video/zo_video_helpers.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <vector>

#include "zo_test_support.h"
#include "zo_video/zo_ffmpeg_handles.h"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_helpers";

struct EqualFormats {
  FrameFormat frame_format;
  AVPixelFormat av_format;
};

const EqualFormats EQUAL_FORMATS[] = {
    {ZO_FRAME_FORMAT_UNDEFINED, AV_PIX_FMT_NONE},
    {ZO_FRAME_FORMAT_GRAY8, AV_PIX_FMT_GRAY8},
    {ZO_FRAME_FORMAT_RGB24, AV_PIX_FMT_RGB24},
    {ZO_FRAME_FORMAT_BGR24, AV_PIX_FMT_BGR24},
    {ZO_FRAME_FORMAT_YUV420_PLANAR_I420, AV_PIX_FMT_YUV420P},
    {ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, AV_PIX_FMT_NV12},
    {ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21, AV_PIX_FMT_NV21},
    {ZO_FRAME_FORMAT_YUV422_PLANAR, AV_PIX_FMT_YUV422P},
    {ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, AV_PIX_FMT_YUYV422},
    {ZO_FRAME_FORMAT_YUV422_PACKED_UYVY, AV_PIX_FMT_UYVY422},
    {ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16, AV_PIX_FMT_NV16},
    {ZO_FRAME_FORMAT_YUV444_PLANAR, AV_PIX_FMT_YUV444P},
};

class EqualFormat : public testing::TestWithParam<EqualFormats> {};

TEST_P(EqualFormat, IsGivenToTheScaler) {
  EXPECT_EQ(GetParam().av_format, frameFormatToAvPixelFormat(GetParam().frame_format));
}

TEST_P(EqualFormat, IsFoundAgainFromTheScalersName) {
  EXPECT_EQ(GetParam().frame_format, avPixelFormatToFrameFormat(GetParam().av_format));
}

INSTANTIATE_TEST_SUITE_P(All, EqualFormat, testing::ValuesIn(EQUAL_FORMATS),
                         [](const auto& test_case) { return test::shortName(test_case.param.frame_format); });

struct RefusedFormat {
  const char* name;
  int value;
  Status status;
  const char* message;
};

class RefusedFormats : public testing::TestWithParam<RefusedFormat> {};

TEST_P(RefusedFormats, AreReportedInTheirOwnWords) {
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE,
                           frameFormatToAvPixelFormat(static_cast<FrameFormat>(GetParam().value)),
                           GetParam().status, GetParam().message, "frameFormatToAvPixelFormat");
}

INSTANTIATE_TEST_SUITE_P(
    NotSupported, RefusedFormats,
    testing::Values(RefusedFormat{"Yv12", 7, ZO_STATUS_NOT_SUPPORTED,
                                  "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV420_PLANAR_YV12"},
                    RefusedFormat{"Iyu2", 14, ZO_STATUS_NOT_SUPPORTED,
                                  "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV444_PACKED_IYU2"},
                    RefusedFormat{"Custom1", 16, ZO_STATUS_NOT_SUPPORTED,
                                  "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_CUSTOM_*"},
                    RefusedFormat{"Custom2", 19, ZO_STATUS_NOT_SUPPORTED,
                                  "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_CUSTOM_*"},
                    RefusedFormat{"Custom3", 20, ZO_STATUS_NOT_SUPPORTED,
                                  "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_CUSTOM_*"}),
    test::CaseName());

INSTANTIATE_TEST_SUITE_P(NotExisting, RefusedFormats,
                         testing::Values(RefusedFormat{"Reserved3", 3, ZO_STATUS_INVALID_ARGUMENT,
                                                       "FrameFormat with value (3) does not exist"},
                                         RefusedFormat{"Reserved5", 5, ZO_STATUS_INVALID_ARGUMENT,
                                                       "FrameFormat with value (5) does not exist"},
                                         RefusedFormat{"Reserved17", 17, ZO_STATUS_INVALID_ARGUMENT,
                                                       "FrameFormat with value (17) does not exist"},
                                         RefusedFormat{"Reserved18", 18, ZO_STATUS_INVALID_ARGUMENT,
                                                       "FrameFormat with value (18) does not exist"},
                                         RefusedFormat{"Negative", -1, ZO_STATUS_INVALID_ARGUMENT,
                                                       "FrameFormat with value (-1) does not exist"},
                                         RefusedFormat{"JustAbove", 21, ZO_STATUS_INVALID_ARGUMENT,
                                                       "FrameFormat with value (21) does not exist"},
                                         RefusedFormat{"Least", INT_MIN, ZO_STATUS_INVALID_ARGUMENT,
                                                       "FrameFormat with value (-2147483648) does not exist"},
                                         RefusedFormat{"Greatest", INT_MAX, ZO_STATUS_INVALID_ARGUMENT,
                                                       "FrameFormat with value (2147483647) does not exist"}),
                         test::CaseName());

TEST(AvPixelFormatMapping, TakesFullRangeFormatsForTheirLimitedRangeCounterparts) {
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, avPixelFormatToFrameFormat(AV_PIX_FMT_YUVJ420P));
  EXPECT_EQ(AV_PIX_FMT_YUV420P, frameFormatToAvPixelFormat(avPixelFormatToFrameFormat(AV_PIX_FMT_YUVJ420P)));
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV422_PLANAR, avPixelFormatToFrameFormat(AV_PIX_FMT_YUVJ422P));
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV444_PLANAR, avPixelFormatToFrameFormat(AV_PIX_FMT_YUVJ444P));
}

TEST(AvPixelFormatMapping, GivesFullPlanarYuvForEveryFormatWithoutAnEqual) {
  std::map<int, FrameFormat> mapped = {{AV_PIX_FMT_YUVJ420P, ZO_FRAME_FORMAT_YUV420_PLANAR_I420},
                                       {AV_PIX_FMT_YUVJ422P, ZO_FRAME_FORMAT_YUV422_PLANAR}};
  for (const EqualFormats& equal : EQUAL_FORMATS) {
    mapped[equal.av_format] = equal.frame_format;
  }
  for (int value = -1; value < AV_PIX_FMT_NB; ++value) {
    const auto found = mapped.find(value);
    const FrameFormat expected = found == mapped.end() ? ZO_FRAME_FORMAT_YUV444_PLANAR : found->second;
    EXPECT_EQ(expected, avPixelFormatToFrameFormat(static_cast<AVPixelFormat>(value))) << value;
  }
}

TEST(AvPixelFormatMapping, GivesFullPlanarYuvBelowTheKnownValuesToo) {
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV444_PLANAR, avPixelFormatToFrameFormat(static_cast<AVPixelFormat>(-5)));
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV444_PLANAR, avPixelFormatToFrameFormat(static_cast<AVPixelFormat>(INT_MIN)));
}

TEST(AvPixelFormatMapping, RefusesValuesThatThisFfmpegDoesNotDefine) {
  for (const int value : {static_cast<int>(AV_PIX_FMT_NB), static_cast<int>(AV_PIX_FMT_NB) + 1, INT_MAX}) {
    EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, avPixelFormatToFrameFormat(static_cast<AVPixelFormat>(value)),
                             ZO_STATUS_INVALID_ARGUMENT,
                             "Failure in avPixelFormatToFrameFormat(...): specified AVPixelFormat (" +
                                 std::to_string(value) + ") does not exist",
                             "avPixelFormatToFrameFormat");
  }
}

TEST(ScaleAlgorithmMapping, HasTheNumbersThatCallersCompileIn) {
  EXPECT_EQ(0, VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT);
  EXPECT_EQ(1, VideoConverter::ZO_SCALE_ALGORITHM_NEAREST);
  EXPECT_EQ(2, VideoConverter::ZO_SCALE_ALGORITHM_BILINEAR);
  EXPECT_EQ(3, VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  EXPECT_EQ(4, VideoConverter::ZO_SCALE_ALGORITHM_AREA);
  EXPECT_EQ(5, VideoConverter::ZO_SCALE_ALGORITHM_LANCZOS);
}

TEST(ScaleAlgorithmMapping, SelectsOneFlagAndNoOther) {
  EXPECT_EQ(0, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT));
  EXPECT_EQ(16, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_NEAREST));
  EXPECT_EQ(2, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_BILINEAR));
  EXPECT_EQ(4, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC));
  EXPECT_EQ(32, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_AREA));
  EXPECT_EQ(512, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_LANCZOS));
}

TEST(ScaleAlgorithmMapping, NamesTheScalersOwnFlags) {
  EXPECT_EQ(SWS_POINT, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_NEAREST));
  EXPECT_EQ(SWS_BILINEAR, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_BILINEAR));
  EXPECT_EQ(SWS_BICUBIC, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC));
  EXPECT_EQ(SWS_AREA, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_AREA));
  EXPECT_EQ(SWS_LANCZOS, videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ZO_SCALE_ALGORITHM_LANCZOS));
}

TEST(ScaleAlgorithmMapping, RefusesOtherValues) {
  for (const int value : {6, 9, -1, INT_MIN, INT_MAX}) {
    EXPECT_ZO_EXCEPTION_FROM(
        SOURCE_FILE,
        videoConvertorAlgorithmToAvScaleFlags(static_cast<VideoConverter::ScaleAlgorithm>(value)),
        ZO_STATUS_INVALID_ARGUMENT,
        "VideoConverter::ScaleAlgorithm with value (" + std::to_string(value) + ") does not exist",
        "videoConvertorAlgorithmToAvScaleFlags");
  }
}

// One plane of a picture: its distance from an address that 128 divides, and its line size.
struct AlignedPlane {
  int offset;
  int line_size;
};

struct AlignmentCase {
  const char* name;
  std::vector<AlignedPlane> planes;
  unsigned alignment;
};

class AvFrameAlignment : public testing::TestWithParam<AlignmentCase> {};

TEST_P(AvFrameAlignment, IsTheLargestPowerOfTwoThatFitsAllPlanes) {
  alignas(128) static uint8_t memory[512];
  const AvFramePtr p_frame(av_frame_alloc());
  for (std::size_t i = 0; i < GetParam().planes.size(); ++i) {
    const AlignedPlane& plane = GetParam().planes[i];
    p_frame->data[i] = plane.offset < 0 ? nullptr : memory + plane.offset;
    p_frame->linesize[i] = plane.line_size;
  }
  EXPECT_EQ(GetParam().alignment, avFrameAlignment(p_frame.get()));
}

INSTANTIATE_TEST_SUITE_P(
    Planes, AvFrameAlignment,
    testing::Values(AlignmentCase{"FullHd", {{0, 1920}}, 64}, AlignmentCase{"LineOf1000", {{0, 1000}}, 8},
                    AlignmentCase{"MoreThan64CountsAs64", {{128, 1024}}, 64},
                    AlignmentCase{"LineOf32", {{0, 32}}, 32}, AlignmentCase{"LineOf16", {{0, 48}}, 16},
                    AlignmentCase{"LineOf4", {{0, 12}}, 4}, AlignmentCase{"LineOf2", {{0, 10}}, 2},
                    AlignmentCase{"OddLine", {{0, 33}}, 1}, AlignmentCase{"OddAddress", {{1, 64}}, 1},
                    AlignmentCase{"AddressAt16", {{16, 64}}, 16},
                    AlignmentCase{"LowestOfThreePlanes", {{0, 64}, {64, 32}, {8, 64}}, 8},
                    AlignmentCase{"FourthPlaneCounts", {{0, 64}, {0, 64}, {0, 64}, {4, 64}}, 4},
                    AlignmentCase{"GapsDoNotCount", {{-1, 3}, {32, 64}, {-1, 1}}, 32},
                    AlignmentCase{"BottomUp", {{64, -48}}, 16}, AlignmentCase{"NoLineSize", {{32, 0}}, 32}),
    test::CaseName());

TEST(AvFrameAlignmentTest, LooksAtFourPlanesOnly) {
  alignas(64) static uint8_t memory[64];
  const AvFramePtr p_frame(av_frame_alloc());
  p_frame->data[0] = memory;
  p_frame->linesize[0] = 64;
  p_frame->data[4] = memory + 1;
  EXPECT_EQ(64U, avFrameAlignment(p_frame.get()));
}

TEST(AvFrameAlignmentTest, RefusesANullFrame) {
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, avFrameAlignment(nullptr), ZO_STATUS_NULL_POINTER,
                           "Parameter 'p_frame' is null", "avFrameAlignment");
}

TEST(AvFrameAlignmentTest, RefusesAFrameWithoutPlanes) {
  const AvFramePtr p_frame(av_frame_alloc());
  EXPECT_ZO_EXCEPTION_FROM(
      SOURCE_FILE, avFrameAlignment(p_frame.get()), ZO_STATUS_NOT_INITIALIZED,
      "Failure in avFrameAlignment(...): frame is not initialized, all planes are empty.",
      "avFrameAlignment");
}

}  // namespace
}  // namespace zo
