// Reading whole clips in order: every picture, its bytes, its time.
#include <gtest/gtest.h>

#include "zo_reader_steps.h"
#include "zo_test_clip_store.h"
#include "zo_test_support.h"

namespace zo {
namespace {

using test::ClipOptions;

struct SequenceCase {
  const char* name;
  const char* file;
  const char* codec;
  Size size;
  int gop;
  int b_frames;
  bool open_gop;
  bool audio;
};

class WholeClips : public testing::TestWithParam<SequenceCase> {
 protected:
  void SetUp() override {
    const SequenceCase& param = GetParam();
    if (!test::haveEncoder(param.codec)) {
      GTEST_SKIP() << "this FFmpeg cannot encode " << param.codec;
    }
    _options.codec = param.codec;
    _options.width = param.size.width;
    _options.height = param.size.height;
    _options.gop = param.gop;
    _options.b_frames = param.b_frames;
    _options.open_gop = param.open_gop;
    _options.audio = param.audio;
    _clip = _p_clips->clip(param.name, param.file, _options);
  }
  static void SetUpTestSuite() { _p_clips = new test::ClipStore(); }
  static void TearDownTestSuite() { delete _p_clips; }

  static test::ClipStore* _p_clips;
  ClipOptions _options;
  test::Clip _clip;
};

test::ClipStore* WholeClips::_p_clips = nullptr;

TEST_P(WholeClips, DeliverEveryPictureOnceInOrder) {
  VideoReader reader;
  ASSERT_EQ(0, test::openPlainly(reader, _clip.path));
  EXPECT_EQ(_clip.path, reader.url());
  EXPECT_EQ(GetParam().size, reader.size());
  EXPECT_EQ(-1, reader.frameIndex());
  EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
  EXPECT_EQ(29, reader.frameIndex());
}

TEST_P(WholeClips, DeliverWhatABareDecoderDelivers) {
  const test::ReferenceStream reference = test::decodeReference(_clip.path);
  VideoReader reader;
  ASSERT_EQ(0, test::openPlainly(reader, _clip.path));
  const std::vector<test::Delivery> deliveries = test::readAll(reader);
  ASSERT_EQ(reference.pictures.size(), deliveries.size());
  for (std::size_t i = 0; i < deliveries.size(); ++i) {
    ASSERT_TRUE(test::samePixels(reference.pictures[i], deliveries[i].frame)) << "picture " << i;
    EXPECT_EQ(test::timestampToMs(reference.pictures[i].best_effort_timestamp, reference.time_base),
              deliveries[i].timestamp);
  }
}

TEST_P(WholeClips, TellTheRateOfTheStream) {
  VideoReader reader;
  ASSERT_EQ(0, test::openPlainly(reader, _clip.path));
  const AVRational rate = test::decodeReference(_clip.path, false).average_frame_rate;
  EXPECT_DOUBLE_EQ(rate.den == 0 ? 0 : static_cast<double>(rate.num) / rate.den, reader.fps());
}

INSTANTIATE_TEST_SUITE_P(
    Containers, WholeClips,
    testing::Values(SequenceCase{"Mpeg4InMp4", "a.mp4", "mpeg4", Size(64, 48), 12, 0, false, false},
                    SequenceCase{"Mpeg4BFramesInMp4", "a.mp4", "mpeg4", Size(64, 48), 12, 2, false, true},
                    SequenceCase{"Mpeg4OddInMkv", "a.mkv", "mpeg4", Size(51, 37), 10, 2, false, false},
                    SequenceCase{"Mpeg4InAvi", "a.avi", "mpeg4", Size(64, 48), 10, 0, false, true},
                    SequenceCase{"Mpeg4InNut", "a.nut", "mpeg4", Size(64, 48), 10, 0, false, false},
                    SequenceCase{"Mpeg2InTs", "a.ts", "mpeg2video", Size(64, 48), 10, 2, false, true},
                    SequenceCase{"Mpeg2OpenInMkv", "a.mkv", "mpeg2video", Size(64, 48), 10, 2, true, false},
                    SequenceCase{"MjpegInAvi", "a.avi", "mjpeg", Size(33, 17), 1, 0, false, false},
                    SequenceCase{"Ffv1InMkv", "a.mkv", "ffv1", Size(33, 17), 1, 0, false, false},
                    SequenceCase{"RawInNut", "a.nut", "rawvideo", Size(16, 16), 1, 0, false, false},
                    SequenceCase{"H264InMp4", "a.mp4", "libx264", Size(64, 48), 30, 0, false, true},
                    SequenceCase{"H264BFramesInMp4", "a.mp4", "libx264", Size(64, 48), 10, 3, false, false},
                    SequenceCase{"H264OpenInMov", "a.mov", "libx264", Size(64, 48), 10, 2, true, false},
                    SequenceCase{"H264BFramesInMkv", "a.mkv", "libx264", Size(64, 48), 10, 2, false, true},
                    SequenceCase{"H264BFramesInTs", "a.ts", "libx264", Size(64, 48), 10, 2, false, false},
                    SequenceCase{"H265BFramesInMp4", "a.mp4", "libx265", Size(64, 64), 10, 2, false, false},
                    SequenceCase{"Vp9InWebm", "a.webm", "libvpx-vp9", Size(64, 48), 10, 0, false, false}),
    test::CaseName());

// ---- Pixel formats

struct FormatCase {
  const char* name;
  const char* codec;
  AVPixelFormat encoded;
  FrameFormat delivered;
  bool exact;
};

class PixelFormats : public testing::TestWithParam<FormatCase> {};

TEST_P(PixelFormats, AreDeliveredAsTheReaderAnnounces) {
  const FormatCase& param = GetParam();
  if (!test::haveEncoder(param.codec)) {
    GTEST_SKIP() << "this FFmpeg cannot encode " << param.codec;
  }
  const test::TempDir directory;
  ClipOptions options;
  options.codec = param.codec;
  options.pixel_format = param.encoded;
  options.width = 33;
  options.height = 18;
  options.frames = 6;
  options.gop = 1;
  const test::Clip clip = test::makeClip(directory.file("a.nut"), options);
  const test::ReferenceStream reference = test::decodeReference(clip.path);
  VideoReader reader;
  ASSERT_EQ(0, test::openPlainly(reader, clip.path));
  EXPECT_EQ(param.delivered, reader.format());
  const std::vector<test::Delivery> deliveries = test::readAll(reader);
  EXPECT_EQ(test::countTo(6), test::numbersOf(deliveries));
  for (std::size_t i = 0; i < deliveries.size(); ++i) {
    EXPECT_EQ(param.delivered, deliveries[i].frame.format());
    if (param.exact) {
      EXPECT_TRUE(test::samePixels(reference.pictures[i], deliveries[i].frame));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Exact, PixelFormats,
    testing::Values(
        FormatCase{"Gray8", "ffv1", AV_PIX_FMT_GRAY8, ZO_FRAME_FORMAT_GRAY8, true},
        FormatCase{"Yuv420p", "ffv1", AV_PIX_FMT_YUV420P, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, true},
        FormatCase{"Yuv422p", "ffv1", AV_PIX_FMT_YUV422P, ZO_FRAME_FORMAT_YUV422_PLANAR, true},
        FormatCase{"Yuv444p", "ffv1", AV_PIX_FMT_YUV444P, ZO_FRAME_FORMAT_YUV444_PLANAR, true},
        FormatCase{"FullRange420", "mjpeg", AV_PIX_FMT_YUVJ420P, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, true},
        FormatCase{"FullRange422", "mjpeg", AV_PIX_FMT_YUVJ422P, ZO_FRAME_FORMAT_YUV422_PLANAR, true},
        FormatCase{"FullRange444", "mjpeg", AV_PIX_FMT_YUVJ444P, ZO_FRAME_FORMAT_YUV444_PLANAR, true},
        FormatCase{"Rgb24", "rawvideo", AV_PIX_FMT_RGB24, ZO_FRAME_FORMAT_RGB24, true},
        FormatCase{"Bgr24", "rawvideo", AV_PIX_FMT_BGR24, ZO_FRAME_FORMAT_BGR24, true},
        FormatCase{"Nv12", "rawvideo", AV_PIX_FMT_NV12, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, true},
        FormatCase{"Nv21", "rawvideo", AV_PIX_FMT_NV21, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21, true},
        FormatCase{"Uyvy422", "rawvideo", AV_PIX_FMT_UYVY422, ZO_FRAME_FORMAT_YUV422_PACKED_UYVY, true}),
    test::CaseName());

INSTANTIATE_TEST_SUITE_P(
    WithoutAnEqual, PixelFormats,
    testing::Values(
        FormatCase{"TenBits", "ffv1", AV_PIX_FMT_YUV420P10LE, ZO_FRAME_FORMAT_YUV444_PLANAR, false},
        FormatCase{"Gray16", "ffv1", AV_PIX_FMT_GRAY16LE, ZO_FRAME_FORMAT_YUV444_PLANAR, false},
        FormatCase{"Yuv410p", "ffv1", AV_PIX_FMT_YUV410P, ZO_FRAME_FORMAT_YUV444_PLANAR, false},
        FormatCase{"WithAlpha", "ffv1", AV_PIX_FMT_YUVA420P, ZO_FRAME_FORMAT_YUV444_PLANAR, false},
        FormatCase{"Bgra", "rawvideo", AV_PIX_FMT_BGRA, ZO_FRAME_FORMAT_YUV444_PLANAR, false}),
    test::CaseName());

// ---- Times

struct TimeCase {
  const char* name;
  const char* file;
  int64_t first_pts;
  AVRational time_base;
  AVRational frame_rate;
  int64_t (*pts)(int);
  bool exact;  // the container keeps the times as they are
};

int64_t steady(int i) {
  return 40 * i;
}
int64_t irregular(int i) {
  return 40 * i + (i % 3) * 7 + (i > 20 ? 5000 : 0);
}

class Times : public testing::TestWithParam<TimeCase> {};

TEST_P(Times, AreAbsoluteMillisecondsOfTheStream) {
  const TimeCase& param = GetParam();
  const test::TempDir directory;
  ClipOptions options;
  options.first_pts = param.first_pts;
  options.time_base = param.time_base;
  options.frame_rate = param.frame_rate;
  options.pts = param.pts;
  const test::Clip clip = test::makeClip(directory.file(param.file), options);
  const test::ReferenceStream reference = test::decodeReference(clip.path);
  VideoReader reader;
  ASSERT_EQ(0, test::openPlainly(reader, clip.path));
  const std::vector<test::Delivery> deliveries = test::readAll(reader);
  EXPECT_EQ(test::countTo(30), test::numbersOf(deliveries));
  ASSERT_EQ(reference.pictures.size(), deliveries.size());
  for (std::size_t i = 0; i < deliveries.size(); ++i) {
    EXPECT_EQ(test::timestampToMs(reference.pictures[i].best_effort_timestamp, reference.time_base),
              deliveries[i].timestamp);
    if (param.exact) {
      EXPECT_EQ(test::clipTimeMs(options, static_cast<int>(i)), deliveries[i].timestamp);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Clips, Times,
    testing::Values(TimeCase{"FromZero", "a.mkv", 0, {1, 1000}, {25, 1}, steady, true},
                    TimeCase{"Irregular", "a.mkv", 0, {1, 1000}, {25, 1}, irregular, true},
                    TimeCase{"FromAnHour", "a.mkv", 3600000, {1, 1000}, {25, 1}, steady, true},
                    TimeCase{"FromTwelveDays", "a.nut", 1036800000, {1, 1000}, {25, 1}, steady, true},
                    TimeCase{"OfNtsc", "a.nut", 0, {1001, 30000}, {30000, 1001}, nullptr, true},
                    TimeCase{"Negative", "a.mkv", -400, {1, 1000}, {25, 1}, steady, true}),
    test::CaseName());

// ---- The end of the stream, and the frame that the caller brings

TEST(ReaderSequence, StaysAtTheEndOfTheStream) {
  const test::TempDir directory;
  ClipOptions options;
  options.frames = 3;
  const test::Clip clip = test::makeClip(directory.file("a.mkv"), options);
  VideoReader reader;
  test::openPlainly(reader, clip.path);
  EXPECT_EQ(3U, test::readAll(reader).size());
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 1);
  frame.setTimestamp(5);
  for (int i = 0; i < 3; ++i) {
    bool got_frame = true;
    EXPECT_EQ(0, reader.read(frame, got_frame, nullptr));
    EXPECT_FALSE(got_frame);
    EXPECT_EQ(2, reader.frameIndex());
    EXPECT_EQ(80, reader.timestamp());
    EXPECT_EQ(Size(3, 3), frame.size());
    EXPECT_EQ(5, frame.timestamp());
  }
}

TEST(ReaderSequence, ReusesTheCallersMemory) {
  const test::TempDir directory;
  const test::Clip clip = test::makeClip(directory.file("a.mkv"), ClipOptions());
  VideoReader reader;
  test::openPlainly(reader, clip.path);
  Frame frame;
  bool got_frame = false;
  reader.read(frame, got_frame, nullptr);
  const unsigned char* p_data = frame.planeData(0);
  for (int i = 1; i < 30; ++i) {
    reader.read(frame, got_frame, nullptr);
    EXPECT_TRUE(got_frame);
    EXPECT_EQ(p_data, frame.planeData(0));
  }
}

TEST(ReaderSequence, LeavesFramesAloneThatWereCopiedAway) {
  const test::TempDir directory;
  const test::Clip clip = test::makeClip(directory.file("a.mkv"), ClipOptions());
  VideoReader reader;
  test::openPlainly(reader, clip.path);
  std::vector<Frame> kept;
  Frame frame;
  bool got_frame = false;
  for (int i = 0; i < 30; ++i) {
    reader.read(frame, got_frame, nullptr);
    kept.push_back(frame);
  }
  reader.close();
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(i, test::paintedNumber(kept[static_cast<std::size_t>(i)]));
  }
}

TEST(ReaderSequence, FollowsAStreamThatChangesItsSize) {
  const test::TempDir directory;
  ClipOptions options;
  options.codec = "mpeg2video";
  options.frames = 10;
  options.gop = 5;
  const test::Clip first = test::makeClip(directory.file("first.ts"), options);
  options.width = 128;
  options.height = 96;
  options.first_pts = 10;
  const test::Clip second = test::makeClip(directory.file("second.ts"), options);
  const std::string path = directory.file("both.ts");
  test::writeFile(path, test::readFile(first.path) + test::readFile(second.path));
  // The decoder gives up the picture that it still holds when the new size arrives.
  const test::ReferenceStream reference = test::decodeReference(path);
  ASSERT_LE(19U, reference.pictures.size());
  VideoReader reader;
  test::openPlainly(reader, path);
  EXPECT_EQ(Size(64, 48), reader.size());
  std::size_t pictures = 0;
  for (const test::Delivery& delivery : test::readAll(reader)) {
    if (delivery.frame.initialized()) {
      ASSERT_LT(pictures, reference.pictures.size());
      EXPECT_TRUE(test::samePixels(reference.pictures[pictures], delivery.frame)) << pictures;
      ++pictures;
    }
  }
  EXPECT_EQ(reference.pictures.size(), pictures);
  EXPECT_EQ(Size(128, 96), reader.size());
}

}  // namespace
}  // namespace zo
