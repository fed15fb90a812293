// Conversions of pictures that keep their size, which the scaler has routines of its own for: every pixel is
// written, also at the ends of odd rows and columns.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <tuple>
#include <vector>

#include "zo_test_support.h"
#include "zo_video/zo_video_converter.h"

extern "C" {
#include <libavutil/cpu.h>
}

namespace zo {
namespace {

// The scaler's routines for pictures of one size leave out what does not fill a pair or a block.
struct PairCase {
  FrameFormat from;
  FrameFormat to;
};
using OddParam = std::tuple<PairCase, int, int, int, bool>;

class SameSize : public testing::TestWithParam<OddParam> {
 protected:
  // With the scaler's routines for this processor, or with those for any, as simpler processors use them.
  void SetUp() override { av_force_cpu_flags(std::get<4>(GetParam()) ? -1 : 0); }
  void TearDown() override { av_force_cpu_flags(-1); }

  FrameFormat from() const { return std::get<0>(GetParam()).from; }
  FrameFormat to() const { return std::get<0>(GetParam()).to; }
  int width() const { return std::get<1>(GetParam()); }
  int height() const { return std::get<2>(GetParam()); }
  VideoConverter::ScaleAlgorithm algorithm() const {
    return static_cast<VideoConverter::ScaleAlgorithm>(std::get<3>(GetParam()));
  }
  Frame converted(const Frame& source, unsigned char fill) const {
    Frame result;
    result.reuse(to(), source.size(), DeviceContext(), 0);
    test::fillFrame(result, fill);
    VideoConverter().convert(source, to(), source.size(), result, algorithm());
    return result;
  }
};

// The same picture, cut or with its last column and row repeated.
Frame resized(const Frame& picture, Size size) {
  Frame result;
  result.reuse(picture.format(), size, DeviceContext(), 0);
  for (unsigned plane = 0; plane < result.planeCount(); ++plane) {
    for (unsigned row = 0; row < result.planeRows(plane); ++row) {
      const unsigned from_row = std::min(row, picture.planeRows(plane) - 1);
      const unsigned char* p_from =
          picture.planeData(plane) + std::size_t{picture.planeStride(plane)} * from_row;
      std::copy_n(p_from, std::min(result.planeRowBytes(plane), picture.planeRowBytes(plane)),
                  result.planeData(plane) + std::size_t{result.planeStride(plane)} * row);
    }
  }
  return result;
}

TEST_P(SameSize, LeavesNoByteAsItWas) {
  const Frame source = test::makeNoiseFrame(from(), Size(width(), height()), 5);
  EXPECT_TRUE(test::samePixels(converted(source, 0xA5), converted(source, 0x5A)));
}

// The second luma sample of an odd row's last pair belongs to no pixel.
void forgetLumaBesideThePicture(Frame& frame) {
  const bool yuy2 = frame.format() == ZO_FRAME_FORMAT_YUV422_PACKED_YUY2;
  if (frame.size().width % 2 == 0 || (!yuy2 && frame.format() != ZO_FRAME_FORMAT_YUV422_PACKED_UYVY)) {
    return;
  }
  for (unsigned row = 0; row < frame.planeRows(0); ++row) {
    frame.planeData(0)[std::size_t{frame.planeStride(0)} * row + frame.planeRowBytes(0) - (yuy2 ? 2 : 1)] = 0;
  }
}

// Routines that filter, and so are not compared.
bool isFiltered(const OddParam& param) {
  const PairCase& formats = std::get<0>(param);
  if (formats.to == ZO_FRAME_FORMAT_RGB24 || formats.to == ZO_FRAME_FORMAT_BGR24) {
    return std::get<2>(param) % 2 != 0;
  }
  return formats.to != ZO_FRAME_FORMAT_YUV420_PLANAR_I420 &&
         formats.from == ZO_FRAME_FORMAT_YUV420_PLANAR_I420 &&
         std::get<3>(param) != VideoConverter::ZO_SCALE_ALGORITHM_NEAREST;
}

class SameSizePixelByPixel : public SameSize {};

// What is made for the last column and row is what a picture with more of them has there.
TEST_P(SameSizePixelByPixel, GivesThePixelsOfALargerPicture) {
  const bool to_planar = to() == ZO_FRAME_FORMAT_YUV420_PLANAR_I420;
  const Size larger_size(to_planar ? width() : width() + width() % 2,
                         to_planar ? height() + height() % 2 : height());
  const Frame source = test::makeNoiseFrame(from(), Size(width(), height()), 5);
  Frame expected = resized(converted(resized(source, larger_size), 0), source.size());
  Frame result = converted(source, 0x5A);
  forgetLumaBesideThePicture(expected);
  forgetLumaBesideThePicture(result);
  EXPECT_TRUE(test::samePixels(expected, result));
}

std::string oddName(const testing::TestParamInfo<OddParam>& test_case) {
  const PairCase& formats = std::get<0>(test_case.param);
  return test::shortName(formats.from) + "_to_" + test::shortName(formats.to) + "_" +
         test::shortName(Size(std::get<1>(test_case.param), std::get<2>(test_case.param))) + "_by" +
         std::to_string(std::get<3>(test_case.param)) + (std::get<4>(test_case.param) ? "" : "_plain");
}

std::vector<OddParam> oddCases(bool filtered_too) {
  const PairCase pairs[] = {{ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_BGR24},
                            {ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_RGB24},
                            {ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_BGR24},
                            {ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2},
                            {ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2},
                            {ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV422_PACKED_UYVY},
                            {ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, ZO_FRAME_FORMAT_YUV420_PLANAR_I420},
                            {ZO_FRAME_FORMAT_YUV422_PACKED_UYVY, ZO_FRAME_FORMAT_YUV420_PLANAR_I420}};
  std::vector<OddParam> cases;
  for (const PairCase& formats : pairs) {
    for (const int width : {1, 2, 3, 17, 18, 20, 33, 82, 340, 341}) {
      for (const int height : {1, 2, 5}) {
        for (const int algorithm : {1, 3}) {
          for (const bool own_routines : {true, false}) {
            const OddParam param(formats, width, height, algorithm, own_routines);
            if (filtered_too || !isFiltered(param)) {
              cases.push_back(param);
            }
          }
        }
      }
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Pictures, SameSize, testing::ValuesIn(oddCases(true)), oddName);
INSTANTIATE_TEST_SUITE_P(Pictures, SameSizePixelByPixel, testing::ValuesIn(oddCases(false)), oddName);

}  // namespace
}  // namespace zo
