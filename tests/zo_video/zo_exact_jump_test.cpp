// A frame reached by its index is the frame that sequential reading delivers, in every kind of file.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "zo_jump_clips.h"
#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

struct ClipCase {
  const char* name;
  const char* file;
  const char* codec;
  std::function<void(ClipOptions&)> change;
};

void PrintTo(const ClipCase& param, std::ostream* p_stream) {
  *p_stream << param.name;
}

class ExactJumps : public JumpClips<ClipCase> {};

TEST_P(ExactJumps, GiveEveryFrameOfTheSequence) {
  const ReferenceStream reference = decodeReference(_clip.path, false);
  Reader reader;
  openIndexed(reader, _clip.path);
  ASSERT_EQ(static_cast<long long>(reference.packets.size()), reader.frameCount());
  ASSERT_EQ(static_cast<long long>(_clip.packets.size()), reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader);
  ASSERT_EQ(countingUp(_clip.frames), numbersOf(sequence));
  ASSERT_EQ(sequence.size(), reference.pictures.size());
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    ASSERT_EQ(timestampToMs(reference.pictures[i].best_effort_timestamp, reference.time_base),
              sequence[i].timestamp)
        << "frame " << i;
  }
  for (const JumpOrder& order : jumpOrders()) {
    expectJumpsGiveTheSequence(reader, sequence, order);
  }
  Reader fresh;
  openIndexed(fresh, _clip.path);
  expectJumpsGiveTheSequence(fresh, sequence, jumpOrders().front());
}

TEST_P(ExactJumps, GiveTheSameWithEveryPictureDecoded) {
  Reader reader;
  openIndexed(reader, _clip.path);
  reader.decodeEveryPicture();
  const std::vector<SeenFrame> sequence = readAll(reader);
  expectJumpsGiveTheSequence(reader, sequence, jumpOrders().front());
}

void bFrames(ClipOptions& options) {
  options.b_frames = 2;
}

void openGroups(ClipOptions& options) {
  options.b_frames = 3;
  options.open_gop = true;
}

// libx265 as it comes: open groups, B-pyramid, its own choice of picture types.
void encoderDefaults(ClipOptions& options) {
  options.b_frames = 4;
  options.frames = 70;
  options.encoder_options = {{"preset", "veryfast"},
                             {"x265-params", "log-level=none:pools=none:frame-threads=1:keyint=20"}};
}

// Closed groups with a pyramid: each key frame lets go of all pictures that still waited for their turn.
void closedPyramid(ClipOptions& options) {
  options.b_frames = 8;
  options.frames = 70;
  options.encoder_options = {
      {"preset", "veryfast"},
      {"x265-params",
       "log-level=none:pools=none:frame-threads=1:keyint=10:open-gop=0:scenecut=0:bframes=8:crf=8"}};
}

// libx264 with a pyramid and open groups.
void pyramid(ClipOptions& options) {
  options.b_frames = 3;
  options.frames = 70;
  options.encoder_options = {{"x264-params", "keyint=20:min-keyint=5:bframes=5:b-pyramid=normal:open-gop=1"}};
}

// 40 ms on the average, between 10 and 90, in milliseconds.
void variableRate(ClipOptions& options) {
  options.b_frames = 2;
  options.time_base = {1, 1000};
  options.pts = [](int i) { return int64_t{40} * i + i * 7919 % 31; };
}

void variableRateLowDelay(ClipOptions& options) {
  variableRate(options);
  options.b_frames = 0;
}

std::function<void(ClipOptions&)> startingAt(int64_t first_pts, int b_frames) {
  return [=](ClipOptions& options) {
    options.b_frames = b_frames;
    options.first_pts = first_pts;
  };
}

std::function<void(ClipOptions&)> frames(int count) {
  return [=](ClipOptions& options) { options.frames = count; };
}

std::function<void(ClipOptions&)> group(int gop, int b_frames = 0) {
  return [=](ClipOptions& options) {
    options.gop = gop;
    options.b_frames = b_frames;
  };
}

void withSound(ClipOptions& options) {
  options.b_frames = 2;
  options.audio = true;
}

void oddRate(ClipOptions& options) {
  options.frame_rate = {30000, 1001};
  options.b_frames = 2;
}

INSTANTIATE_TEST_SUITE_P(Containers, ExactJumps,
                         testing::Values(ClipCase{"H264BFramesMp4", "a.mp4", "libx264", bFrames},
                                         ClipCase{"H264BFramesMkv", "a.mkv", "libx264", bFrames},
                                         ClipCase{"H264BFramesTs", "a.ts", "libx264", bFrames},
                                         ClipCase{"H264BFramesMov", "a.mov", "libx264", bFrames},
                                         ClipCase{"H264BFramesNut", "a.nut", "libx264", bFrames},
                                         ClipCase{"H264BFramesFlv", "a.flv", "libx264", bFrames},
                                         ClipCase{"H264BFramesMp4WithSound", "a.mp4", "libx264", withSound},
                                         ClipCase{"H264BFramesMkvWithSound", "a.mkv", "libx264", withSound},
                                         ClipCase{"H264BFramesTsWithSound", "a.ts", "libx264", withSound},
                                         ClipCase{"H264BFramesMp4OddRate", "a.mp4", "libx264", oddRate},
                                         ClipCase{"H264BFramesMkvOddRate", "a.mkv", "libx264", oddRate},
                                         ClipCase{"HevcPyramidMp4", "a.mp4", "libx265", closedPyramid},
                                         ClipCase{"HevcPyramidTs", "a.ts", "libx265", closedPyramid},
                                         ClipCase{"H264Mp4", "a.mp4", "libx264", nullptr},
                                         ClipCase{"H264Avi", "a.avi", "libx264", nullptr},
                                         ClipCase{"Mpeg4Avi", "a.avi", "mpeg4", nullptr},
                                         ClipCase{"Mpeg4Mp4", "a.mp4", "mpeg4", bFrames},
                                         ClipCase{"Mpeg4Mkv", "a.mkv", "mpeg4", bFrames},
                                         ClipCase{"Mpeg2Ts", "a.ts", "mpeg2video", nullptr},
                                         ClipCase{"Mpeg2BFramesTs", "a.ts", "mpeg2video", bFrames},
                                         ClipCase{"Mpeg2BFramesMkv", "a.mkv", "mpeg2video", bFrames},
                                         ClipCase{"Vp9Webm", "a.webm", "libvpx-vp9", nullptr},
                                         ClipCase{"Vp9Mp4", "a.mp4", "libvpx-vp9", nullptr},
                                         ClipCase{"MjpegAvi", "a.avi", "mjpeg", group(1)},
                                         ClipCase{"MjpegMov", "a.mov", "mjpeg", group(1)},
                                         ClipCase{"Ffv1Mkv", "a.mkv", "ffv1", group(1)},
                                         ClipCase{"RawNut", "a.nut", "rawvideo", group(1)}),
                         CaseName());

INSTANTIATE_TEST_SUITE_P(OpenGroups, ExactJumps,
                         testing::Values(ClipCase{"H264Mp4", "a.mp4", "libx264", openGroups},
                                         ClipCase{"H264Mkv", "a.mkv", "libx264", openGroups},
                                         ClipCase{"H264Ts", "a.ts", "libx264", openGroups},
                                         ClipCase{"H264PyramidMp4", "a.mp4", "libx264", pyramid},
                                         ClipCase{"H264PyramidMkv", "a.mkv", "libx264", pyramid},
                                         ClipCase{"H264PyramidTs", "a.ts", "libx264", pyramid},
                                         ClipCase{"HevcMp4", "a.mp4", "libx265", encoderDefaults},
                                         ClipCase{"HevcMkv", "a.mkv", "libx265", encoderDefaults},
                                         ClipCase{"HevcTs", "a.ts", "libx265", encoderDefaults},
                                         ClipCase{"HevcFixedMp4", "a.mp4", "libx265", openGroups},
                                         ClipCase{"HevcFixedMkv", "a.mkv", "libx265", openGroups},
                                         ClipCase{"Mpeg2Ts", "a.ts", "mpeg2video", openGroups}),
                         CaseName());

INSTANTIATE_TEST_SUITE_P(
    VariableRate, ExactJumps,
    testing::Values(ClipCase{"H264Mp4", "a.mp4", "libx264", variableRate},
                    ClipCase{"H264Mkv", "a.mkv", "libx264", variableRate},
                    ClipCase{"H264Ts", "a.ts", "libx264", variableRate},
                    ClipCase{"H264LowDelayMp4", "a.mp4", "libx264", variableRateLowDelay},
                    ClipCase{"H264LowDelayMkv", "a.mkv", "libx264", variableRateLowDelay},
                    ClipCase{"H264LowDelayTs", "a.ts", "libx264", variableRateLowDelay},
                    ClipCase{"Mpeg4Mp4", "a.mp4", "mpeg4", variableRateLowDelay}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(StartTimes, ExactJumps,
                         testing::Values(ClipCase{"NegativeTs", "a.ts", "libx264", startingAt(-20, 2)},
                                         ClipCase{"LargeMp4", "a.mp4", "libx264", startingAt(90000, 2)},
                                         ClipCase{"LargeMkv", "a.mkv", "libx264", startingAt(90000, 2)},
                                         ClipCase{"LargeMov", "a.mov", "libx264", startingAt(90000, 2)},
                                         ClipCase{"LargeTs", "a.ts", "libx264", startingAt(1000000, 2)},
                                         ClipCase{"LargeLowDelayMp4", "a.mp4", "mpeg4", startingAt(90000, 0)},
                                         ClipCase{"VeryLargeMkv", "a.mkv", "mpeg4",
                                                  startingAt(100000000, 0)}),
                         CaseName());

INSTANTIATE_TEST_SUITE_P(Groups, ExactJumps,
                         testing::Values(ClipCase{"IntraOnlyH264Mp4", "a.mp4", "libx264", group(1)},
                                         ClipCase{"IntraOnlyMpeg4Avi", "a.avi", "mpeg4", group(1)},
                                         ClipCase{"OneGroupMp4", "a.mp4", "libx264", group(1000, 2)},
                                         ClipCase{"OneGroupMkv", "a.mkv", "libx264", group(1000, 2)},
                                         ClipCase{"OneGroupTs", "a.ts", "libx264", group(1000, 2)},
                                         ClipCase{"ShortGroupsMp4", "a.mp4", "libx264", group(3, 1)},
                                         ClipCase{"ShortGroupsTs", "a.ts", "libx264", group(3, 1)},
                                         ClipCase{"OneFrameMp4", "a.mp4", "libx264", frames(1)},
                                         ClipCase{"OneFrameMkv", "a.mkv", "mpeg4", frames(1)},
                                         ClipCase{"OneFrameAvi", "a.avi", "mpeg4", frames(1)},
                                         ClipCase{"TwoFramesMp4", "a.mp4", "libx264", frames(2)},
                                         ClipCase{"TwoFramesMkv", "a.mkv", "mpeg4", frames(2)}),
                         CaseName());

}  // namespace
}  // namespace test
}  // namespace zo
