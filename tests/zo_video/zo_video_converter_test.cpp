// VideoConverter::convert, through the public class.
#include "zo_video/zo_video_converter.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <string>
#include <tuple>
#include <vector>

#include "zo_scaler_call.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_helpers.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_converter_impl";
constexpr char NO_CONTEXT[] = "Cannot allocate scale context (SwsContext)";
constexpr auto BICUBIC = VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC;

// A frame of that shape, every byte the same.
Frame prepared(FrameFormat format, Size size, unsigned char fill = 0xA5) {
  Frame frame;
  frame.reuse(format, size, DeviceContext(), 0);
  test::fillFrame(frame, fill);
  return frame;
}

// What the scaler itself makes of it.
Frame scaled(const Frame& source, FrameFormat format, Size size, VideoConverter::ScaleAlgorithm algorithm,
             unsigned char fill = 0xA5) {
  Frame input = source;
  Frame result = prepared(format, size, fill);
  EXPECT_EQ(size.height,
            test::callScaler(test::ScalerImage(input, frameFormatToAvPixelFormat(source.format())),
                             test::ScalerImage(result, frameFormatToAvPixelFormat(format)),
                             videoConvertorAlgorithmToAvScaleFlags(algorithm)));
  return result;
}

struct SizePair {
  Size from;
  Size to;
};

using GridParam = std::tuple<FrameFormat, FrameFormat, SizePair, int>;

class ConverterGrid : public testing::TestWithParam<GridParam> {};

TEST_P(ConverterGrid, GivesTheScalersOwnBytes) {
  const auto& [from, to, sizes, algorithm_value] = GetParam();
  const auto algorithm = static_cast<VideoConverter::ScaleAlgorithm>(algorithm_value);
  Frame source = test::makeNumberedFrame(from, sizes.from, 1234);
  source.setTimestamp(41);
  Frame result = prepared(to, sizes.to);
  VideoConverter().convert(source, to, sizes.to, result, algorithm);
  EXPECT_EQ(41, result.timestamp());
  if (from == to && sizes.from == sizes.to) {
    EXPECT_TRUE(test::samePixels(source, result));
  } else {
    EXPECT_TRUE(test::sameWhereWritten(scaled(source, to, sizes.to, algorithm),
                                       scaled(source, to, sizes.to, algorithm, 0x5A), result));
  }
}

TEST_P(ConverterGrid, LeavesNoByteAsItWas) {
  const auto& [from, to, sizes, algorithm_value] = GetParam();
  const auto algorithm = static_cast<VideoConverter::ScaleAlgorithm>(algorithm_value);
  const Frame source = test::makeNoiseFrame(from, sizes.from, 1234);
  if (from == ZO_FRAME_FORMAT_BGR24 && to == ZO_FRAME_FORMAT_YUV420_PLANAR_I420 &&
      !test::samePixels(scaled(source, to, sizes.to, algorithm, 1),
                        scaled(source, to, sizes.to, algorithm, 2))) {
    GTEST_SKIP() << "scalers of FFmpeg before 4.4 leave out the last chroma column";
  }
  Frame one = prepared(to, sizes.to, 0xA5);
  Frame other = prepared(to, sizes.to, 0x5A);
  VideoConverter converter;
  converter.convert(source, to, sizes.to, one, algorithm);
  converter.convert(source, to, sizes.to, other, algorithm);
  EXPECT_TRUE(test::samePixels(one, other));
}

std::string gridName(const testing::TestParamInfo<GridParam>& test_case) {
  const auto& [from, to, sizes, algorithm] = test_case.param;
  return test::shortName(from) + "_" + test::shortName(sizes.from) + "_to_" + test::shortName(to) + "_" +
         test::shortName(sizes.to) + "_by" + std::to_string(algorithm);
}

INSTANTIATE_TEST_SUITE_P(Formats, ConverterGrid,
                         testing::Combine(testing::ValuesIn(test::SCALABLE_FORMATS),
                                          testing::ValuesIn(test::SCALABLE_FORMATS),
                                          testing::Values(SizePair{Size(64, 48), Size(64, 48)},
                                                          SizePair{Size(33, 17), Size(33, 17)},
                                                          SizePair{Size(65, 47), Size(31, 63)}),
                                          testing::Values(0, 3)),
                         gridName);

INSTANTIATE_TEST_SUITE_P(
    Algorithms, ConverterGrid,
    testing::Combine(testing::Values(ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                                     ZO_FRAME_FORMAT_YUV422_PACKED_YUY2),
                     testing::Values(ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12,
                                     ZO_FRAME_FORMAT_GRAY8),
                     testing::Values(SizePair{Size(64, 48), Size(32, 24)},
                                     SizePair{Size(32, 24), Size(67, 51)}, SizePair{Size(17, 9), Size(8, 31)},
                                     SizePair{Size(40, 30), Size(1, 1)}, SizePair{Size(5, 3), Size(2, 3)}),
                     testing::Range(0, 6)),
    gridName);

class EveryFormatWithALayout : public testing::TestWithParam<FrameFormat> {};

TEST_P(EveryFormatWithALayout, IsCopiedWhenNothingChanges) {
  Frame source = test::makeNoiseFrame(GetParam(), Size(31, 15), 8);
  source.setTimestamp(-3);
  Frame result;
  VideoConverter().convert(source, GetParam(), Size(31, 15), result, BICUBIC);
  EXPECT_TRUE(test::samePixels(source, result));
  EXPECT_NE(source.planeData(0), result.planeData(0));
  EXPECT_EQ(-3, result.timestamp());
}

// The scaler knows neither this algorithm nor some of these formats, so it cannot have been asked.
TEST_P(EveryFormatWithALayout, IsCopiedWithoutAskingTheScaler) {
  const Frame source = test::makeNoiseFrame(GetParam(), Size(4, 4), 8);
  Frame result;
  VideoConverter().convert(source, GetParam(), Size(4, 4), result,
                           static_cast<VideoConverter::ScaleAlgorithm>(9));
  EXPECT_TRUE(test::samePixels(source, result));
}

INSTANTIATE_TEST_SUITE_P(
    All, EveryFormatWithALayout,
    testing::Values(ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24,
                    ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV420_PLANAR_YV12,
                    ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21,
                    ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2,
                    ZO_FRAME_FORMAT_YUV422_PACKED_UYVY, ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16,
                    ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, ZO_FRAME_FORMAT_YUV444_PLANAR),
    [](const auto& test_case) { return test::shortName(test_case.param); });

TEST(ConverterTest, CopiesABgrPictureOfTheSameSizeWithItsTime) {
  Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(640, 480), 77);
  source.setTimestamp(1000);
  Frame result;
  VideoConverter().convert(source, ZO_FRAME_FORMAT_BGR24, Size(640, 480), result, BICUBIC);
  EXPECT_TRUE(test::samePixels(source, result));
  EXPECT_EQ(1000, result.timestamp());
}

TEST(ConverterTest, KeepsThePictureThroughAllFormatsAndSizes) {
  Frame frame = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(64, 48), 4711);
  VideoConverter converter;
  int step = 0;
  for (const FrameFormat format : test::SCALABLE_FORMATS) {
    Frame next;
    converter.convert(frame, format, Size(64 + 8 * step, 48 + 4 * step), next, BICUBIC);
    EXPECT_EQ(4711, test::paintedNumber(next)) << toString(format);
    frame = next;
    ++step;
  }
}

using ColourParam = std::tuple<FrameFormat, FrameFormat>;
class ConverterColours : public testing::TestWithParam<ColourParam> {};

// By way of another format, or straight: much the same colours, in every corner of the picture.
TEST_P(ConverterColours, ArriveWhole) {
  const auto& [from, by] = GetParam();
  const Frame source = test::makeNumberedFrame(from, Size(64, 48), 21);
  VideoConverter converter;
  Frame straight, between, result;
  converter.convert(source, ZO_FRAME_FORMAT_BGR24, Size(64, 48), straight, BICUBIC);
  between = prepared(by, Size(64, 48));
  converter.convert(source, by, Size(64, 48), between, BICUBIC);
  converter.convert(between, ZO_FRAME_FORMAT_BGR24, Size(64, 48), result, BICUBIC);
  EXPECT_GT(test::psnr(straight, result), 30.0);
}

INSTANTIATE_TEST_SUITE_P(Formats, ConverterColours,
                         testing::Combine(testing::ValuesIn(test::SCALABLE_FORMATS),
                                          testing::ValuesIn(test::SCALABLE_FORMATS + 1,
                                                            test::SCALABLE_FORMATS + 10)),
                         [](const auto& test_case) {
                           return test::shortName(std::get<0>(test_case.param)) + "_by_" +
                                  test::shortName(std::get<1>(test_case.param));
                         });

TEST(ConverterTest, GivesTheSameResultHoweverOftenItIsUsedForOtherThings) {
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(40, 30), 5);
  const Frame other = test::makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(16, 16), 6);
  VideoConverter converter;
  Frame first, again, between;
  converter.convert(source, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(40, 30), first, BICUBIC);
  converter.convert(other, ZO_FRAME_FORMAT_RGB24, Size(99, 7), between, BICUBIC);
  EXPECT_TRUE(test::samePixels(scaled(other, ZO_FRAME_FORMAT_RGB24, Size(99, 7), BICUBIC), between));
  converter.convert(source, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(40, 30), again, BICUBIC);
  converter.convert(source, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(40, 30), again, BICUBIC);
  EXPECT_TRUE(test::samePixels(first, again));
}

struct ScalerUse {
  const char* name;
  FrameFormat from;
  Size from_size;
  FrameFormat to;
  Size to_size;
  VideoConverter::ScaleAlgorithm algorithm;
};

const ScalerUse USED_BEFORE{"",     ZO_FRAME_FORMAT_BGR24, Size(40, 30), ZO_FRAME_FORMAT_GRAY8, Size(20, 15),
                            BICUBIC};

Frame convertedBy(VideoConverter& converter, const ScalerUse& use) {
  const Frame source = test::makeNoiseFrame(use.from, use.from_size, 8);
  Frame result = prepared(use.to, use.to_size);
  converter.convert(source, use.to, use.to_size, result, use.algorithm);
  return result;
}

class ScalerSetup : public testing::TestWithParam<ScalerUse> {};

TEST_P(ScalerSetup, IsMadeAnewWhenOneThingOnlyChanges) {
  VideoConverter fresh;
  VideoConverter used;
  convertedBy(used, USED_BEFORE);
  EXPECT_TRUE(test::samePixels(convertedBy(fresh, GetParam()), convertedBy(used, GetParam())));
}

INSTANTIATE_TEST_SUITE_P(All, ScalerSetup,
                         testing::Values(ScalerUse{"SourceFormat", ZO_FRAME_FORMAT_RGB24, Size(40, 30),
                                                   ZO_FRAME_FORMAT_GRAY8, Size(20, 15), BICUBIC},
                                         ScalerUse{"SourceWidth", ZO_FRAME_FORMAT_BGR24, Size(32, 30),
                                                   ZO_FRAME_FORMAT_GRAY8, Size(20, 15), BICUBIC},
                                         ScalerUse{"SourceHeight", ZO_FRAME_FORMAT_BGR24, Size(40, 24),
                                                   ZO_FRAME_FORMAT_GRAY8, Size(20, 15), BICUBIC},
                                         ScalerUse{"Format", ZO_FRAME_FORMAT_BGR24, Size(40, 30),
                                                   ZO_FRAME_FORMAT_RGB24, Size(20, 15), BICUBIC},
                                         ScalerUse{"Width", ZO_FRAME_FORMAT_BGR24, Size(40, 30),
                                                   ZO_FRAME_FORMAT_GRAY8, Size(18, 15), BICUBIC},
                                         ScalerUse{"Height", ZO_FRAME_FORMAT_BGR24, Size(40, 30),
                                                   ZO_FRAME_FORMAT_GRAY8, Size(20, 13), BICUBIC},
                                         ScalerUse{"Algorithm", ZO_FRAME_FORMAT_BGR24, Size(40, 30),
                                                   ZO_FRAME_FORMAT_GRAY8, Size(20, 15),
                                                   VideoConverter::ZO_SCALE_ALGORITHM_NEAREST}),
                         test::CaseName());

Frame tightlyOutside(std::vector<unsigned char>& memory, Size size) {
  const unsigned stride = 3U * static_cast<unsigned>(size.width);
  return Frame(FrameLayout(ZO_FRAME_FORMAT_RGB24, size, {{stride, 0, 0, 0}}), DeviceContext(),
               DevicePtr(static_cast<void*>(memory.data())));
}

// Halving the chroma of an odd width takes a pixel beyond the last one.
TEST(ConverterTest, OutsideMemoryGivesTheSameResultWhateverWasConvertedBefore) {
  constexpr auto AREA = VideoConverter::ZO_SCALE_ALGORITHM_AREA;
  std::vector<unsigned char> white(64 * 64 * 3, 0xFF);
  std::vector<unsigned char> memory(17 * 8 * 3, 0);
  Frame source = tightlyOutside(memory, Size(17, 8));
  test::makeNoiseFrame(ZO_FRAME_FORMAT_RGB24, Size(17, 8), 8).copyTo(source);
  Frame expected;
  Frame between;
  Frame result;
  VideoConverter used;
  VideoConverter().convert(source, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(9, 8), expected, AREA);
  used.convert(tightlyOutside(white, Size(64, 64)), ZO_FRAME_FORMAT_GRAY8, Size(8, 8), between, AREA);
  used.convert(source, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(9, 8), result, AREA);
  EXPECT_TRUE(test::samePixels(expected, result));
}

TEST(ConverterTest, ReusesTheMemoryOfTheDestination) {
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(40, 30), 5);
  Frame result = prepared(ZO_FRAME_FORMAT_BGR24, Size(200, 200));
  const unsigned char* p_data = result.planeData(0);
  VideoConverter().convert(source, ZO_FRAME_FORMAT_GRAY8, Size(20, 20), result, BICUBIC);
  EXPECT_EQ(p_data, result.planeData(0));
}

TEST(ConverterTest, WritesIntoOutsideMemoryOfTheRightShape) {
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(40, 30), 5);
  std::vector<unsigned char> memory(24 * 10 + 64, 0);
  Frame result(FrameLayout(ZO_FRAME_FORMAT_GRAY8, Size(20, 10), {{24, 0, 0, 0}}), DeviceContext(),
               DevicePtr(static_cast<void*>(memory.data())));
  VideoConverter().convert(source, ZO_FRAME_FORMAT_GRAY8, Size(20, 10), result, BICUBIC);
  EXPECT_EQ(memory.data(), result.planeData(0));
  EXPECT_TRUE(test::samePixels(scaled(source, ZO_FRAME_FORMAT_GRAY8, Size(20, 10), BICUBIC), result));
}

TEST(ConverterTest, LeavesPixelsAloneThatTheDestinationShared) {
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(40, 30), 5);
  Frame result = prepared(ZO_FRAME_FORMAT_GRAY8, Size(40, 30));
  const Frame kept = result;
  const std::string pixels = test::packedBytes(kept);
  VideoConverter().convert(source, ZO_FRAME_FORMAT_GRAY8, Size(40, 30), result, BICUBIC);
  EXPECT_EQ(pixels, test::packedBytes(kept));
}

class SameFrame : public testing::TestWithParam<std::tuple<FrameFormat, Size>> {};

TEST_P(SameFrame, AsSourceAndDestinationGivesTheSameAsTwo) {
  const auto& [format, size] = GetParam();
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(40, 30), 99);
  Frame expected;
  VideoConverter converter;
  converter.convert(source, format, size, expected, BICUBIC);
  Frame frame;
  source.copyTo(frame);
  frame.setTimestamp(17);
  converter.convert(frame, format, size, frame, BICUBIC);
  EXPECT_TRUE(test::samePixels(expected, frame));
  EXPECT_EQ(17, frame.timestamp());
}

TEST_P(SameFrame, SharedByTwoObjectsGivesTheSameToo) {
  const auto& [format, size] = GetParam();
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(40, 30), 99);
  const std::string pixels = test::packedBytes(source);
  Frame expected;
  VideoConverter().convert(source, format, size, expected, BICUBIC);
  Frame sharing = source;
  VideoConverter().convert(source, format, size, sharing, BICUBIC);
  EXPECT_TRUE(test::samePixels(expected, sharing));
  EXPECT_EQ(pixels, test::packedBytes(source));
}

INSTANTIATE_TEST_SUITE_P(Targets, SameFrame,
                         testing::Combine(testing::Values(ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_GRAY8,
                                                          ZO_FRAME_FORMAT_YUV420_PLANAR_I420),
                                          testing::Values(Size(40, 30), Size(10, 7), Size(90, 70))),
                         [](const auto& test_case) {
                           return test::shortName(std::get<0>(test_case.param)) + "_" +
                                  test::shortName(std::get<1>(test_case.param));
                         });

// ---- Refusals: the destination has its new shape before anything is checked.

struct Refusal {
  const char* name;
  FrameFormat from;
  FrameFormat to;
  int algorithm;
  Status status;
  const char* message;
  const char* function;
  const char* file;
};

constexpr char HELPERS[] = "src/zo_video/zo_video_helpers";
constexpr char YV12_MESSAGE[] = "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV420_PLANAR_YV12";
constexpr char IYU2_MESSAGE[] = "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV444_PACKED_IYU2";
constexpr char CUSTOM_MESSAGE[] = "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_CUSTOM_*";
constexpr char FORMAT_FUNCTION[] = "frameFormatToAvPixelFormat";

class ConverterRefusals : public testing::TestWithParam<Refusal> {};

TEST_P(ConverterRefusals, AreReportedAfterTheDestinationWasReshaped) {
  const Refusal& refusal = GetParam();
  Frame source = test::makeNoiseFrame(refusal.from, Size(8, 6), 1);
  source.setTimestamp(5);
  Frame result;
  result.setTimestamp(9);
  EXPECT_ZO_EXCEPTION_FROM(
      refusal.file,
      VideoConverter().convert(source, refusal.to, Size(10, 4), result,
                               static_cast<VideoConverter::ScaleAlgorithm>(refusal.algorithm)),
      refusal.status, refusal.message, refusal.function);
  EXPECT_EQ(refusal.to, result.format());
  EXPECT_EQ(Size(10, 4), result.size());
  EXPECT_EQ(9, result.timestamp());
}

TEST_P(ConverterRefusals, LeaveTheConverterUsable) {
  const Refusal& refusal = GetParam();
  const Frame good = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(16, 16), 3);
  VideoConverter converter;
  Frame result;
  converter.convert(good, ZO_FRAME_FORMAT_GRAY8, Size(16, 16), result, BICUBIC);
  EXPECT_THROW(converter.convert(test::makeNoiseFrame(refusal.from, Size(8, 6), 1), refusal.to, Size(10, 4),
                                 result, static_cast<VideoConverter::ScaleAlgorithm>(refusal.algorithm)),
               Exception);
  converter.convert(good, ZO_FRAME_FORMAT_GRAY8, Size(16, 16), result, BICUBIC);
  EXPECT_EQ(3, test::paintedNumber(result));
}

INSTANTIATE_TEST_SUITE_P(
    All, ConverterRefusals,
    testing::Values(Refusal{"ToYv12", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_YUV420_PLANAR_YV12, 3,
                            ZO_STATUS_NOT_SUPPORTED, YV12_MESSAGE, FORMAT_FUNCTION, HELPERS},
                    Refusal{"FromIyu2", ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, ZO_FRAME_FORMAT_BGR24, 3,
                            ZO_STATUS_NOT_SUPPORTED, IYU2_MESSAGE, FORMAT_FUNCTION, HELPERS},
                    Refusal{"SourceBeforeDestination", ZO_FRAME_FORMAT_YUV444_PACKED_IYU2,
                            ZO_FRAME_FORMAT_YUV420_PLANAR_YV12, 3, ZO_STATUS_NOT_SUPPORTED, IYU2_MESSAGE,
                            FORMAT_FUNCTION, HELPERS},
                    Refusal{"DestinationBeforeAlgorithm", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_CUSTOM_2, 9,
                            ZO_STATUS_NOT_SUPPORTED, CUSTOM_MESSAGE, FORMAT_FUNCTION, HELPERS},
                    Refusal{"ReservedDestination", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_RESERVED_17, 3,
                            ZO_STATUS_INVALID_ARGUMENT, "FrameFormat with value (17) does not exist",
                            FORMAT_FUNCTION, HELPERS},
                    Refusal{"UnknownDestination", ZO_FRAME_FORMAT_BGR24, static_cast<FrameFormat>(-7), 3,
                            ZO_STATUS_INVALID_ARGUMENT, "FrameFormat with value (-7) does not exist",
                            FORMAT_FUNCTION, HELPERS},
                    Refusal{"Algorithm9", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_GRAY8, 9,
                            ZO_STATUS_INVALID_ARGUMENT,
                            "VideoConverter::ScaleAlgorithm with value (9) does not exist",
                            "videoConvertorAlgorithmToAvScaleFlags", HELPERS},
                    Refusal{"AlgorithmBeforeContext", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_UNDEFINED, -1,
                            ZO_STATUS_INVALID_ARGUMENT,
                            "VideoConverter::ScaleAlgorithm with value (-1) does not exist",
                            "videoConvertorAlgorithmToAvScaleFlags", HELPERS},
                    Refusal{"ToNoFormat", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_UNDEFINED, 3,
                            ZO_STATUS_OUT_OF_MEMORY, NO_CONTEXT, "convert", SOURCE_FILE},
                    Refusal{"FromNoFormat", ZO_FRAME_FORMAT_UNDEFINED, ZO_FRAME_FORMAT_BGR24, 3,
                            ZO_STATUS_OUT_OF_MEMORY, NO_CONTEXT, "convert", SOURCE_FILE}),
    test::CaseName());

// The scaler may learn NV16 one day; until then it is refused like "no format".
TEST(ConverterTest, TakesNv16AsFarAsTheScalerDoes) {
  const Frame bgr = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(16, 16), 3);
  const Frame nv16 = test::makeNumberedFrame(ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16, Size(16, 16), 3);
  VideoConverter converter;
  Frame result;
  if (sws_isSupportedOutput(AV_PIX_FMT_NV16) == 0) {
    EXPECT_ZO_EXCEPTION_FROM(
        SOURCE_FILE,
        converter.convert(bgr, ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16, Size(16, 16), result, BICUBIC),
        ZO_STATUS_OUT_OF_MEMORY, NO_CONTEXT, "convert");
    EXPECT_EQ(ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16, result.format());
    EXPECT_TRUE(result.initialized());
  } else {
    converter.convert(bgr, ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16, Size(16, 16), result, BICUBIC);
    EXPECT_EQ(3, test::paintedNumber(result));
  }
  if (sws_isSupportedInput(AV_PIX_FMT_NV16) == 0) {
    EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE,
                             converter.convert(nv16, ZO_FRAME_FORMAT_BGR24, Size(16, 16), result, BICUBIC),
                             ZO_STATUS_OUT_OF_MEMORY, NO_CONTEXT, "convert");
  } else {
    converter.convert(nv16, ZO_FRAME_FORMAT_BGR24, Size(16, 16), result, BICUBIC);
    EXPECT_EQ(3, test::paintedNumber(result));
  }
}

class RefusedSizes : public testing::TestWithParam<Size> {};

TEST_P(RefusedSizes, HaveNoScaleContext) {
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(16, 16), 3);
  Frame result;
  EXPECT_ZO_EXCEPTION_FROM(
      SOURCE_FILE, VideoConverter().convert(source, ZO_FRAME_FORMAT_GRAY8, GetParam(), result, BICUBIC),
      ZO_STATUS_OUT_OF_MEMORY, NO_CONTEXT, "convert");
  EXPECT_EQ(GetParam(), result.size());
  EXPECT_FALSE(result.initialized());
}

INSTANTIATE_TEST_SUITE_P(All, RefusedSizes,
                         testing::Values(Size(0, 0), Size(0, 16), Size(16, 0), Size(-1, 16),
                                         Size(16, INT_MIN)),
                         [](const auto& test_case) { return "Case" + std::to_string(test_case.index); });

TEST(ConverterTest, LeavesTheDestinationAloneWhenThereIsNoMemoryForIt) {
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(16, 16), 3);
  Frame result = prepared(ZO_FRAME_FORMAT_GRAY8, Size(4, 4));
  EXPECT_THROW(
      VideoConverter().convert(source, ZO_FRAME_FORMAT_BGR24, Size(INT_MAX, INT_MAX), result, BICUBIC),
      std::bad_alloc);
  EXPECT_EQ(Size(4, 4), result.size());
  EXPECT_TRUE(result.initialized());
}

TEST(ConverterTest, ReportsTheRowsThatTheScalerReturnedForASourceWithoutPixels) {
  Frame source(FrameLayout(ZO_FRAME_FORMAT_BGR24, Size(16, 16), {{48, 0, 0, 0}}), DeviceContext(),
               DevicePtr());
  source.setTimestamp(5);
  ASSERT_FALSE(source.initialized());
  Frame input = source;
  Frame output = prepared(ZO_FRAME_FORMAT_GRAY8, Size(8, 8));
  const test::StderrCapture scaler_complaint;
  const int rows = test::callScaler(test::ScalerImage(input, AV_PIX_FMT_BGR24),
                                    test::ScalerImage(output, AV_PIX_FMT_GRAY8), SWS_BICUBIC);
  ASSERT_NE(8, rows);
  Frame result = prepared(ZO_FRAME_FORMAT_BGR24, Size(4, 4));
  result.setTimestamp(9);
  EXPECT_ZO_EXCEPTION_FROM(
      SOURCE_FILE, VideoConverter().convert(source, ZO_FRAME_FORMAT_GRAY8, Size(8, 8), result, BICUBIC),
      ZO_STATUS_UNEXPECTED_RESULT,
      "sws_scale() returned " + std::to_string(rows) + ", expected height_dst(8)", "convert");
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, result.format());
  EXPECT_EQ(Size(8, 8), result.size());
  EXPECT_TRUE(result.initialized());
  EXPECT_EQ(9, result.timestamp()) << "only a conversion that succeeds copies it";
}

TEST(ConverterTest, SetsUpOneScaleContextForTenLikeConversionsAndNoneForCopies) {
  VideoConverter converter;
  Frame result;
  const test::ScaleContextCount contexts;
  for (int number = 0; number < 10; ++number) {
    const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(40, 30), number);
    converter.convert(source, ZO_FRAME_FORMAT_BGR24, Size(40, 30), result, BICUBIC);
    EXPECT_EQ(number > 0 ? 1 : 0, contexts.setUp());
    converter.convert(source, ZO_FRAME_FORMAT_GRAY8, Size(20, 15), result, BICUBIC);
    EXPECT_EQ(number, test::paintedNumber(result));
    EXPECT_EQ(1, contexts.setUp());
  }
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(40, 30), 3);
  converter.convert(source, ZO_FRAME_FORMAT_GRAY8, Size(20, 15), result,
                    VideoConverter::ZO_SCALE_ALGORITHM_AREA);
  EXPECT_EQ(2, contexts.setUp());
}

// Formats that the scaler does not know, over memory of the caller.
class UnscalableFormats : public testing::TestWithParam<std::tuple<int, const char*>> {
 protected:
  FrameFormat format() const { return static_cast<FrameFormat>(std::get<0>(GetParam())); }
  Frame source() {
    for (std::size_t i = 0; i < sizeof(_bytes); ++i) {
      _bytes[i] = static_cast<unsigned char>(i + 1);
    }
    Frame frame(FrameLayout(format(), Size(4, 3), {{5, 2, 0, 0}}), DeviceContext(),
                DevicePtr(static_cast<void*>(_bytes)));
    frame.setTimestamp(5);
    return frame;
  }

  unsigned char _bytes[5 * 3 + 2 * 3] = {};
};

TEST_P(UnscalableFormats, AreCopiedToThemselvesBeforeFormatOrAlgorithmIsLookedAt) {
  const Frame frame = source();
  Frame result = prepared(ZO_FRAME_FORMAT_GRAY8, Size(4, 3));
  VideoConverter().convert(frame, format(), Size(4, 3), result,
                           static_cast<VideoConverter::ScaleAlgorithm>(9));
  EXPECT_EQ(format(), result.format());
  EXPECT_EQ(Size(4, 3), result.size());
  EXPECT_EQ(2U, result.planeCount());
  EXPECT_NE(frame.planeData(0), result.planeData(0));
  EXPECT_TRUE(test::samePixels(frame, result));
  EXPECT_EQ(5, result.timestamp());
}

TEST_P(UnscalableFormats, AreRefusedInAnotherSize) {
  const Frame frame = source();
  Frame result = prepared(ZO_FRAME_FORMAT_GRAY8, Size(4, 3));
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_video_helpers",
                           VideoConverter().convert(frame, format(), Size(8, 3), result, BICUBIC),
                           std::string(std::get<1>(GetParam())).find("does not exist") == std::string::npos
                               ? ZO_STATUS_NOT_SUPPORTED
                               : ZO_STATUS_INVALID_ARGUMENT,
                           std::get<1>(GetParam()), "frameFormatToAvPixelFormat");
  EXPECT_EQ(format(), result.format());
  EXPECT_EQ(Size(8, 3), result.size());
}

INSTANTIATE_TEST_SUITE_P(All, UnscalableFormats,
                         testing::Values(std::make_tuple(3, "FrameFormat with value (3) does not exist"),
                                         std::make_tuple(5, "FrameFormat with value (5) does not exist"),
                                         std::make_tuple(16, CUSTOM_MESSAGE),
                                         std::make_tuple(17, "FrameFormat with value (17) does not exist"),
                                         std::make_tuple(18, "FrameFormat with value (18) does not exist"),
                                         std::make_tuple(19, CUSTOM_MESSAGE),
                                         std::make_tuple(20, CUSTOM_MESSAGE),
                                         std::make_tuple(21, "FrameFormat with value (21) does not exist"),
                                         std::make_tuple(-1, "FrameFormat with value (-1) does not exist")),
                         [](const auto& test_case) { return "Case" + std::to_string(test_case.index); });

TEST(ConverterTest, CopiesAnEmptyFrameAsAnEmptyOne) {
  Frame result = prepared(ZO_FRAME_FORMAT_GRAY8, Size(4, 4));
  VideoConverter().convert(Frame(), ZO_FRAME_FORMAT_UNDEFINED, Size(0, 0), result, BICUBIC);
  EXPECT_FALSE(result.initialized());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, result.format());
}

}  // namespace
}  // namespace zo
