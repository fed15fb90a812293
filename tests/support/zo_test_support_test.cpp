// The tests rest on what the support library makes, so that is tried first.
#include "zo_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "zo_video/zo_video_converter_impl.h"

namespace zo {
namespace test {
namespace {

struct MadeClip {
  const char* name;
  const char* file;
  const char* codec;
  int width, height, gop, b_frames;
  bool audio;
};

class MadeClips : public testing::TestWithParam<MadeClip> {};

// The picture as a frame, by the converter's way for decoded pictures.
Frame toFrame(const ReferencePicture& picture) {
  AvFramePtr p_frame(av_frame_alloc());
  p_frame->format = picture.format;
  p_frame->width = picture.width;
  p_frame->height = picture.height;
  av_frame_get_buffer(p_frame.get(), 32);
  for (std::size_t plane = 0; plane < picture.planes.size(); ++plane) {
    const bool chroma = plane == 1 || plane == 2;
    const std::size_t rows = static_cast<std::size_t>(chroma ? (picture.height + 1) / 2 : picture.height);
    const std::size_t row_bytes = picture.planes[plane].size() / rows;
    for (std::size_t row = 0; row < rows; ++row) {
      std::copy_n(picture.planes[plane].begin() + static_cast<std::ptrdiff_t>(row * row_bytes), row_bytes,
                  p_frame->data[plane] + row * static_cast<std::size_t>(p_frame->linesize[plane]));
    }
  }
  Frame frame;
  VideoConverter::Impl().convertAvFrame(p_frame.get(), picture.format, frame);
  return frame;
}

TEST_P(MadeClips, GiveBackTheNumbersOfTheirPicturesInOrder) {
  const MadeClip& param = GetParam();
  if (!haveEncoder(param.codec)) {
    GTEST_SKIP() << "this FFmpeg cannot encode " << param.codec;
  }
  const TempDir directory;
  ClipOptions options;
  options.codec = param.codec;
  options.width = param.width;
  options.height = param.height;
  options.gop = param.gop;
  options.b_frames = param.b_frames;
  options.audio = param.audio;
  const Clip clip = makeClip(directory.file(param.file), options);
  const ReferenceStream stream = decodeReference(clip.path);
  EXPECT_EQ(30U, clip.packets.size());
  EXPECT_EQ(30U, stream.packets.size());
  ASSERT_EQ(30U, stream.pictures.size());
  int keys = 0;
  for (const ClipPacket& packet : clip.packets) {
    keys += packet.key ? 1 : 0;
  }
  if (param.b_frames == 0) {  // with them, encoders shorten closed groups in their own ways
    EXPECT_EQ((30 + param.gop - 1) / param.gop, keys);
  }
  for (int i = 0; i < 30; ++i) {
    ASSERT_EQ(i, paintedNumber(toFrame(stream.pictures[static_cast<std::size_t>(i)])));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Support, MadeClips,
    testing::Values(MadeClip{"Mpeg4InAvi", "a.avi", "mpeg4", 64, 48, 12, 0, false},
                    MadeClip{"Mpeg4BFramesInMp4WithSound", "a.mp4", "mpeg4", 64, 48, 12, 2, true},
                    MadeClip{"Mpeg4OddSizeInMkv", "a.mkv", "mpeg4", 33, 17, 10, 0, false},
                    MadeClip{"Mpeg2InTs", "a.ts", "mpeg2video", 64, 48, 6, 2, true},
                    MadeClip{"H264InMp4", "a.mp4", "libx264", 64, 48, 10, 0, false},
                    MadeClip{"H264BFramesInMkv", "a.mkv", "libx264", 64, 48, 10, 2, true},
                    MadeClip{"H264Elementary", "a.h264", "libx264", 32, 32, 10, 2, false},
                    MadeClip{"H265InMp4", "a.mp4", "libx265", 64, 64, 10, 2, false},
                    MadeClip{"MjpegInAvi", "a.avi", "mjpeg", 16, 16, 1, 0, false},
                    MadeClip{"Vp9InWebm", "a.webm", "libvpx-vp9", 64, 48, 10, 0, false},
                    MadeClip{"Ffv1TinyInMkv", "a.mkv", "ffv1", 5, 4, 1, 0, false},
                    MadeClip{"RawInNut", "a.nut", "rawvideo", 6, 6, 1, 0, false}),
    CaseName());

TEST(PaintedNumbers, SurviveInEveryFormatWithALayout) {
  for (const FrameFormat format :
       {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_RGB24, ZO_FRAME_FORMAT_BGR24,
        ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV420_PLANAR_YV12,
        ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21,
        ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, ZO_FRAME_FORMAT_YUV422_PACKED_UYVY,
        ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16, ZO_FRAME_FORMAT_YUV444_PACKED_IYU2,
        ZO_FRAME_FORMAT_YUV444_PLANAR}) {
    EXPECT_EQ(40961, paintedNumber(makeNumberedFrame(format, Size(37, 21), 40961))) << toString(format);
    EXPECT_EQ(11, paintedNumber(makeNumberedFrame(format, Size(2, 2), 11))) << toString(format);
    EXPECT_EQ(1, paintedNumber(makeNumberedFrame(format, Size(1, 1), 1))) << toString(format);
  }
}

TEST(Clips, CarryTheDamageThatWasAskedFor) {
  const TempDir directory;
  ClipOptions options;
  options.dropped_packets = {3, 4};
  options.skipped_packets = 1;
  options.rotation = 90;
  options.metadata = {{"title", "a title"}};
  const Clip clip = makeClip(directory.file("a.mp4"), options);
  EXPECT_EQ(27U, clip.packets.size());
  EXPECT_FALSE(clip.packets[0].key);
  EXPECT_EQ(27U, decodeReference(clip.path, false).packets.size());
}

TEST(Md5, AgreesWithAKnownDigest) {
  EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", md5Hex("abc"));
}

TEST(Comparison, NamesTheFirstDifference) {
  const Frame a = makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(5, 3), 1);
  Frame b;
  a.copyTo(b);
  EXPECT_TRUE(samePixels(a, b));
  b.planeData(0)[b.planeStride(0) + 2] ^= 1;
  EXPECT_FALSE(samePixels(a, b));
  EXPECT_NE(std::string::npos, std::string(samePixels(a, b).message()).find("byte 7:"));
}

}  // namespace
}  // namespace test
}  // namespace zo
