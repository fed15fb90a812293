// The plain headers in a C++ program, alone and next to the classes.
#include <gtest/gtest.h>

#include "zo_video_c/zo_video_c.h"

namespace {

// Before the C++ headers are there: the plain names are those of the global namespace.
static_assert(ZO_STATUS_CODEC_ERROR == 28, "statuses are reached by their plain names");
static_assert(ZO_FRAME_FORMAT_CUSTOM_3 == 20, "formats are reached by their plain names");
static_assert(ZO_VIDEO_ROTATION_OTHER == 4, "rotations are reached by their plain names");

}  // namespace

#include "zo_test_support.h"
#include "zo_video/zo_video.h"

namespace {

TEST(PlainHeaders, PlainCodesEqualThoseOfTheClasses) {
  EXPECT_EQ(static_cast<int>(::ZO_STATUS_TIMEOUT), static_cast<int>(zo::ZO_STATUS_TIMEOUT));
  EXPECT_EQ(static_cast<int>(::ZO_FRAME_FORMAT_YUV444_PLANAR),
            static_cast<int>(zo::ZO_FRAME_FORMAT_YUV444_PLANAR));
  EXPECT_EQ(static_cast<int>(::ZO_VIDEO_ROTATION_0), static_cast<int>(zo::ZO_VIDEO_ROTATION_0));
  EXPECT_EQ(static_cast<int>(::ZO_VIDEO_ROTATION_90), static_cast<int>(zo::ZO_VIDEO_ROTATION_90));
  EXPECT_EQ(static_cast<int>(::ZO_VIDEO_ROTATION_180), static_cast<int>(zo::ZO_VIDEO_ROTATION_180));
  EXPECT_EQ(static_cast<int>(::ZO_VIDEO_ROTATION_270), static_cast<int>(zo::ZO_VIDEO_ROTATION_270));
  EXPECT_EQ(static_cast<int>(::ZO_VIDEO_ROTATION_OTHER), static_cast<int>(zo::ZO_VIDEO_ROTATION_OTHER));
}

TEST(PlainHeaders, PlainFunctionsWorkOnFramesOfTheClasses) {
  ZoFrame* p_frame = nullptr;
  ASSERT_EQ(::ZO_STATUS_OK, zoFrame_create(&p_frame, nullptr, 0));
  auto& frame = *static_cast<zo::Frame*>(p_frame->p_handle);
  frame.reuse(zo::ZO_FRAME_FORMAT_GRAY8, zo::Size(7, 5), zo::DeviceContext(), 0);
  zo::updateFrame(p_frame);
  EXPECT_EQ(7, p_frame->width);
  EXPECT_EQ(frame.planeData(0), p_frame->p_planes[0]);
  EXPECT_EQ(::ZO_STATUS_OK, zoFrame_release(&p_frame));
}

TEST(PlainHeaders, PlainConversionIsTheBicubicOneOfTheClass) {
  const zo::Frame source = zo::test::makeNoiseFrame(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(40, 30), 1);
  ZoVideoConverter* p_converter = nullptr;
  ZoFrame* p_source = nullptr;
  ZoFrame* p_destination = nullptr;
  ASSERT_EQ(::ZO_STATUS_OK, zoVideoConverter_create(&p_converter, nullptr, 0));
  ASSERT_EQ(::ZO_STATUS_OK, zoFrame_create(&p_source, nullptr, 0));
  ASSERT_EQ(::ZO_STATUS_OK, zoFrame_create(&p_destination, nullptr, 0));
  source.copyTo(*static_cast<zo::Frame*>(p_source->p_handle));
  ASSERT_EQ(::ZO_STATUS_OK, zoVideoConverter_convert(p_converter, p_source, ::ZO_FRAME_FORMAT_RGB24,
                                                     ZoSize{23, 17}, p_destination, nullptr, 0));
  zo::VideoConverter converter;
  zo::Frame expected;
  converter.convert(source, zo::ZO_FRAME_FORMAT_RGB24, zo::Size(23, 17), expected,
                    zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  EXPECT_TRUE(zo::test::samePixels(expected, *static_cast<zo::Frame*>(p_destination->p_handle)));
  zoFrame_release(&p_destination);
  zoFrame_release(&p_source);
  zoVideoConverter_release(&p_converter);
}

}  // namespace
