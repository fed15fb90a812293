// VideoConverter::Impl::convertAvFrame: decoded pictures into frames.
#include <gtest/gtest.h>

#include <climits>

#include "zo_scaler_call.h"
#include "zo_test_support.h"
#include "zo_video/zo_ffmpeg_handles.h"
#include "zo_video/zo_video_converter_impl.h"
#include "zo_video/zo_video_helpers.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_converter_impl";
constexpr char NO_CONTEXT[] = "Cannot allocate scale context (SwsContext)";
constexpr char FUNCTION[] = "convertAvFrame";

AvFramePtr makePicture(AVPixelFormat format, Size size, int number) {
  AvFramePtr p_frame(av_frame_alloc());
  p_frame->format = format;
  p_frame->width = size.width;
  p_frame->height = size.height;
  if (av_frame_get_buffer(p_frame.get(), 32) != 0) {
    throw std::bad_alloc();
  }
  test::paintNumber(p_frame.get(), number);
  return p_frame;
}

// The scaler's own result with the source taken as `source_format`.
Frame scaled(const AVFrame* p_picture, AVPixelFormat source_format, FrameFormat format) {
  Frame result;
  result.reuse(format, Size(p_picture->width, p_picture->height), DeviceContext(), 0);
  test::fillFrame(result, 0xA5);
  EXPECT_EQ(p_picture->height,
            test::callScaler(test::ScalerImage(p_picture, source_format),
                             test::ScalerImage(result, frameFormatToAvPixelFormat(format)), 0));
  return result;
}

struct PictureCase {
  const char* name;
  AVPixelFormat format;     // of the decoder
  AVPixelFormat scaled_as;  // what the scaler is told
  FrameFormat delivered;
  bool exact;  // the planes arrive as they are
};

class DecodedPictures : public testing::TestWithParam<PictureCase> {
 protected:
  void check(Size size) {
    const PictureCase& param = GetParam();
    const AvFramePtr p_picture = makePicture(param.format, size, 2741);
    Frame frame;
    frame.setTimestamp(33);
    VideoConverter::Impl converter;
    EXPECT_EQ(size.height, converter.convertAvFrame(p_picture.get(), param.format, frame));
    EXPECT_EQ(param.delivered, frame.format());
    EXPECT_EQ(size, frame.size());
    EXPECT_EQ(33, frame.timestamp());
    if (param.exact) {
      EXPECT_TRUE(test::samePixels(test::copyPicture(p_picture.get()), frame));
    } else {
      EXPECT_TRUE(test::samePixels(scaled(p_picture.get(), param.scaled_as, param.delivered), frame));
    }
  }
};

TEST_P(DecodedPictures, ArriveWhole) {
  check(Size(64, 48));
}

TEST_P(DecodedPictures, ArriveWholeInOddSizes) {
  check(Size(37, 23));
}

TEST_P(DecodedPictures, ArriveWholeWhenTiny) {
  check(Size(4, 2));
}

INSTANTIATE_TEST_SUITE_P(
    Exact, DecodedPictures,
    testing::Values(
        PictureCase{"Gray8", AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY8, ZO_FRAME_FORMAT_GRAY8, true},
        PictureCase{"Rgb24", AV_PIX_FMT_RGB24, AV_PIX_FMT_RGB24, ZO_FRAME_FORMAT_RGB24, true},
        PictureCase{"Bgr24", AV_PIX_FMT_BGR24, AV_PIX_FMT_BGR24, ZO_FRAME_FORMAT_BGR24, true},
        PictureCase{"Yuv420p", AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                    true},
        PictureCase{"Yuv422p", AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV422P, ZO_FRAME_FORMAT_YUV422_PLANAR, true},
        PictureCase{"Yuv444p", AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV444P, ZO_FRAME_FORMAT_YUV444_PLANAR, true},
        PictureCase{"Nv12", AV_PIX_FMT_NV12, AV_PIX_FMT_NV12, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, true},
        PictureCase{"Nv21", AV_PIX_FMT_NV21, AV_PIX_FMT_NV21, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21, true},
        PictureCase{"Yuyv422", AV_PIX_FMT_YUYV422, AV_PIX_FMT_YUYV422, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2,
                    true},
        PictureCase{"Uyvy422", AV_PIX_FMT_UYVY422, AV_PIX_FMT_UYVY422, ZO_FRAME_FORMAT_YUV422_PACKED_UYVY,
                    true},
        PictureCase{"FullRange420", AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUV420P,
                    ZO_FRAME_FORMAT_YUV420_PLANAR_I420, true},
        PictureCase{"FullRange422", AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUV422P, ZO_FRAME_FORMAT_YUV422_PLANAR,
                    true},
        PictureCase{"FullRange444", AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_YUV444P, ZO_FRAME_FORMAT_YUV444_PLANAR,
                    true}),
    test::CaseName());

PictureCase catchAll(const char* name, AVPixelFormat format) {
  return {name, format, format, ZO_FRAME_FORMAT_YUV444_PLANAR, false};
}

INSTANTIATE_TEST_SUITE_P(
    WithoutAnEqual, DecodedPictures,
    testing::Values(PictureCase{"FullRange440", AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUV440P,
                                ZO_FRAME_FORMAT_YUV444_PLANAR, false},
                    catchAll("Yuv410p", AV_PIX_FMT_YUV410P), catchAll("Yuv411p", AV_PIX_FMT_YUV411P),
                    catchAll("Yuv440p", AV_PIX_FMT_YUV440P), catchAll("Yuva420p", AV_PIX_FMT_YUVA420P),
                    catchAll("Yuv420p10", AV_PIX_FMT_YUV420P10LE),
                    catchAll("Yuv422p10", AV_PIX_FMT_YUV422P10LE),
                    catchAll("Yuv444p12", AV_PIX_FMT_YUV444P12LE), catchAll("P010", AV_PIX_FMT_P010LE),
                    catchAll("Gray16", AV_PIX_FMT_GRAY16LE), catchAll("Rgba", AV_PIX_FMT_RGBA),
                    catchAll("Bgra", AV_PIX_FMT_BGRA), catchAll("Gbrp", AV_PIX_FMT_GBRP),
                    catchAll("Rgb48", AV_PIX_FMT_RGB48LE), catchAll("Rgb565", AV_PIX_FMT_RGB565LE)),
    test::CaseName());

TEST(ConvertAvFrame, DeliversTenBitsAsFullPlanarYuv) {
  const AvFramePtr p_picture = makePicture(AV_PIX_FMT_YUV420P10LE, Size(64, 48), 300);
  Frame frame;
  VideoConverter::Impl().convertAvFrame(p_picture.get(), AV_PIX_FMT_YUV420P10LE, frame);
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV444_PLANAR, frame.format());
  EXPECT_EQ(300, test::paintedNumber(frame));
}

TEST(ConvertAvFrame, DeliversInTheFormatOfTheDecoderNotOfThePicture) {
  const AvFramePtr p_picture = makePicture(AV_PIX_FMT_YUV444P, Size(64, 48), 300);
  Frame frame;
  VideoConverter::Impl().convertAvFrame(p_picture.get(), AV_PIX_FMT_GRAY8, frame);
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
  EXPECT_TRUE(test::samePixels(scaled(p_picture.get(), AV_PIX_FMT_YUV444P, ZO_FRAME_FORMAT_GRAY8), frame));
}

TEST(ConvertAvFrame, TakesAPictureThatLiesBottomUp) {
  const AvFramePtr p_upright = makePicture(AV_PIX_FMT_BGR24, Size(16, 8), 300);
  AvFramePtr p_picture(av_frame_clone(p_upright.get()));
  p_picture->data[0] += static_cast<std::ptrdiff_t>(7) * p_picture->linesize[0];
  p_picture->linesize[0] = -p_picture->linesize[0];
  Frame frame;
  VideoConverter::Impl().convertAvFrame(p_picture.get(), AV_PIX_FMT_BGR24, frame);
  EXPECT_TRUE(test::samePixels(test::copyPicture(p_picture.get()), frame));
}

TEST(ConvertAvFrame, FollowsPicturesThatChangeTheirSize) {
  VideoConverter::Impl converter;
  Frame frame;
  for (const Size size : {Size(64, 48), Size(32, 24), Size(64, 48), Size(65, 47)}) {
    const AvFramePtr p_picture = makePicture(AV_PIX_FMT_YUV420P, size, 7);
    EXPECT_EQ(size.height, converter.convertAvFrame(p_picture.get(), AV_PIX_FMT_YUV420P, frame));
    EXPECT_TRUE(test::samePixels(test::copyPicture(p_picture.get()), frame));
  }
}

TEST(ConvertAvFrame, RefusesANullPicture) {
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 1);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE,
                           VideoConverter::Impl().convertAvFrame(nullptr, AV_PIX_FMT_YUV420P, frame),
                           ZO_STATUS_NULL_POINTER, "Parameter 'p_src_frame' is null", FUNCTION);
  EXPECT_EQ(Size(3, 3), frame.size());
}

TEST(ConvertAvFrame, RefusesANullPictureBeforeItLooksAtTheFormat) {
  Frame frame;
  EXPECT_ZO_EXCEPTION(
      VideoConverter::Impl().convertAvFrame(nullptr, static_cast<AVPixelFormat>(INT_MAX), frame),
      ZO_STATUS_NULL_POINTER, "Parameter 'p_src_frame' is null", FUNCTION);
}

TEST(ConvertAvFrame, RefusesAFormatThatDoesNotExist) {
  const AvFramePtr p_picture = makePicture(AV_PIX_FMT_YUV420P, Size(16, 16), 1);
  Frame frame;
  EXPECT_ZO_EXCEPTION(VideoConverter::Impl().convertAvFrame(p_picture.get(), AV_PIX_FMT_NB, frame),
                      ZO_STATUS_INVALID_ARGUMENT,
                      "Failure in avPixelFormatToFrameFormat(...): specified AVPixelFormat (" +
                          std::to_string(static_cast<int>(AV_PIX_FMT_NB)) + ") does not exist",
                      "avPixelFormatToFrameFormat");
}

TEST(ConvertAvFrame, LooksAtTheFormatBeforeTheSizeOfThePictureAndLeavesTheFrameAlone) {
  const AvFramePtr p_sizeless(av_frame_alloc());
  p_sizeless->format = AV_PIX_FMT_YUV420P;
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 1);
  const std::string pixels = test::packedBytes(frame);
  EXPECT_ZO_EXCEPTION(VideoConverter::Impl().convertAvFrame(p_sizeless.get(), AV_PIX_FMT_NB, frame),
                      ZO_STATUS_INVALID_ARGUMENT,
                      "Failure in avPixelFormatToFrameFormat(...): specified AVPixelFormat (" +
                          std::to_string(static_cast<int>(AV_PIX_FMT_NB)) + ") does not exist",
                      "avPixelFormatToFrameFormat");
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
  EXPECT_EQ(Size(3, 3), frame.size());
  EXPECT_EQ(pixels, test::packedBytes(frame));
}

// Rows that end with the last pixel, two bytes short of the pair: the scaler takes what there is.
TEST(ConvertAvFrame, TakesOddPackedRowsWithoutTheirLastBytes) {
  const AvFramePtr p_picture = makePicture(AV_PIX_FMT_YUYV422, Size(5, 4), 3);
  std::vector<uint8_t> memory(10 * 4 + 64, 0x77);
  p_picture->data[0] = memory.data();
  p_picture->linesize[0] = 10;
  Frame frame;
  EXPECT_EQ(4, VideoConverter::Impl().convertAvFrame(p_picture.get(), AV_PIX_FMT_YUYV422, frame));
  EXPECT_EQ(0x77, frame.planeData(0)[9]);
}

// Here the scaler is asked first: the frame keeps its shape.
TEST(ConvertAvFrame, LeavesTheFrameAloneWhenThereIsNoScaleContext) {
  const AvFramePtr p_good = makePicture(AV_PIX_FMT_YUV420P, Size(16, 16), 1);
  const AvFramePtr p_formatless = makePicture(AV_PIX_FMT_YUV420P, Size(16, 16), 1);
  p_formatless->format = AV_PIX_FMT_NONE;
  const AvFramePtr p_sizeless(av_frame_alloc());
  p_sizeless->format = AV_PIX_FMT_YUV420P;
  const AvFramePtr p_hardware = makePicture(AV_PIX_FMT_YUV420P, Size(16, 16), 1);
  p_hardware->format = AV_PIX_FMT_VAAPI;
  VideoConverter::Impl converter;
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 1);
  const std::string pixels = test::packedBytes(frame);
  const auto expect_refusal = [&](const AVFrame* p_picture, AVPixelFormat format) {
    EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, converter.convertAvFrame(p_picture, format, frame),
                             ZO_STATUS_OUT_OF_MEMORY, NO_CONTEXT, FUNCTION);
    EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
    EXPECT_EQ(pixels, test::packedBytes(frame));
  };
  expect_refusal(p_good.get(), AV_PIX_FMT_NONE);
  expect_refusal(p_formatless.get(), AV_PIX_FMT_YUV420P);
  expect_refusal(p_sizeless.get(), AV_PIX_FMT_YUV420P);
  expect_refusal(p_hardware.get(), AV_PIX_FMT_VAAPI);
  if (sws_isSupportedOutput(AV_PIX_FMT_NV16) == 0) {
    expect_refusal(p_good.get(), AV_PIX_FMT_NV16);
  }
  EXPECT_EQ(16, converter.convertAvFrame(p_good.get(), AV_PIX_FMT_YUV420P, frame));
}

TEST(ConvertAvFrame, ReportsTheRowsThatTheScalerReturnedForAPictureWithoutPixels) {
  const AvFramePtr p_picture(av_frame_alloc());
  p_picture->format = AV_PIX_FMT_YUV420P;
  p_picture->width = 16;
  p_picture->height = 12;
  Frame output;
  output.reuse(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(16, 12), DeviceContext(), 0);
  const test::StderrCapture scaler_complaint;
  const int rows = test::callScaler(test::ScalerImage(p_picture.get(), AV_PIX_FMT_YUV420P),
                                    test::ScalerImage(output, AV_PIX_FMT_YUV420P), 0);
  ASSERT_NE(12, rows);
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 1);
  frame.setTimestamp(9);
  EXPECT_ZO_EXCEPTION_FROM(
      SOURCE_FILE, VideoConverter::Impl().convertAvFrame(p_picture.get(), AV_PIX_FMT_YUV420P, frame),
      ZO_STATUS_UNEXPECTED_RESULT,
      "sws_scale() returned " + std::to_string(rows) + ", expected dst_height(12)", FUNCTION);
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, frame.format());
  EXPECT_EQ(Size(16, 12), frame.size());
  EXPECT_TRUE(frame.initialized());
  EXPECT_EQ(9, frame.timestamp());
}

TEST(ConvertAvFrame, SetsUpOneScaleContextForTenLikePictures) {
  VideoConverter::Impl converter;
  Frame frame;
  const test::ScaleContextCount contexts;
  for (int number = 0; number < 10; ++number) {
    const AvFramePtr p_picture = makePicture(AV_PIX_FMT_YUV420P10LE, Size(64, 48), number);
    converter.convertAvFrame(p_picture.get(), AV_PIX_FMT_YUV420P10LE, frame);
    EXPECT_EQ(number, test::paintedNumber(frame));
  }
  EXPECT_EQ(1, contexts.setUp());
  const AvFramePtr p_other = makePicture(AV_PIX_FMT_YUV420P10LE, Size(32, 48), 3);
  converter.convertAvFrame(p_other.get(), AV_PIX_FMT_YUV420P10LE, frame);
  EXPECT_EQ(3, test::paintedNumber(frame));
  EXPECT_EQ(2, contexts.setUp());
}

}  // namespace
}  // namespace zo
