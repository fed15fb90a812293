// The last group of a stream: the decoder starts in it and has to give up all that it holds at the end.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "zo_core/zo_path.h"
#include "zo_jump_clips.h"
#include "zo_navigation_test.h"
#include "zo_test_encoder.h"

namespace zo {
namespace test {
namespace {

struct ClipCase {
  std::string name;
  const char* file;
  const char* codec;
  std::function<void(ClipOptions&)> change;
};

void PrintTo(const ClipCase& param, std::ostream* p_stream) {
  *p_stream << param.name;
}

void expectFrames(const std::vector<SeenFrame>& expected, const std::vector<SeenFrame>& actual) {
  ASSERT_EQ(expected.size(), actual.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_TRUE(sameFrame(expected[i], actual[i])) << "frame " << i;
  }
}

class LastGroup : public JumpClips<ClipCase> {
 protected:
  // To the last frame and back to the start: the way that nobody may notice afterwards.
  static void visitTheLastFrame(Reader& reader, const std::vector<SeenFrame>& sequence) {
    reader.moveByIndex(reader.frameCount() - 1);
    EXPECT_TRUE(sameFrame(sequence.back(), nextFrame(reader)));
    reader.moveByIndex(0);
  }

  // Everything that jumps about in it can do, compared with reading it in order.
  void expectJumpsChangeNothing(bool pixels_differ = false) {
    Reader reader;
    openIndexed(reader, _clip.path);
    std::vector<SeenFrame> sequence = readAll(reader);
    for (SeenFrame& frame : sequence) {
      frame.concealed = pixels_differ;
    }
    visitTheLastFrame(reader, sequence);
    expectFrames(sequence, readAll(reader));
    for (const JumpOrder& order : jumpOrders()) {
      expectJumpsGiveTheSequence(reader, sequence, order);
    }
    Reader fresh;
    openIndexed(fresh, _clip.path);
    visitTheLastFrame(fresh, sequence);
    expectFrames(sequence, readAll(fresh));
  }
};

class OpenGroups : public LastGroup {};

TEST_P(OpenGroups, AreTheSameAfterAJumpToTheLastFrame) {
  Reader reader;
  openIndexed(reader, _clip.path);
  EXPECT_EQ(countingUp(_clip.frames), numbersOf(readAll(reader)));
  expectJumpsChangeNothing();
}

std::vector<ClipCase> openGroups() {
  std::vector<ClipCase> cases;
  const auto add = [&cases](const char* file, int frames) {
    cases.push_back(
        {"H264" + fileExtension(file).substr(1) + std::to_string(frames), file, "libx264",
         [frames](ClipOptions& options) {
           options.frames = frames;
           options.encoder_options = {{"x264-params", "keyint=12:bframes=3:b-pyramid=normal:open-gop=1"}};
         }});
  };
  for (int frames = 97; frames <= 103; ++frames) {
    add("a.mp4", frames);
  }
  add("a.mkv", 100);
  add("a.ts", 100);
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Lengths, OpenGroups, testing::ValuesIn(openGroups()), CaseName());

class GradualRefresh : public LastGroup {};

// What the encoder took from behind the recovery point may look different after a jump. No frame is missing.
TEST_P(GradualRefresh, HasEveryFrameAfterJumps) {
  expectJumpsChangeNothing(true);
}

std::vector<ClipCase> gradualRefreshes() {
  std::vector<ClipCase> cases;
  const auto add = [&cases](const char* file, int interval) {
    cases.push_back({"H264" + fileExtension(file).substr(1) + "Every" + std::to_string(interval), file,
                     "libx264", [interval](ClipOptions& options) {
                       options.frames = 100;
                       options.encoder_options = {
                           {"x264-params", "intra-refresh=1:bframes=2:keyint=" + std::to_string(interval)}};
                     }});
  };
  for (const int interval : {10, 30, 47, 250}) {
    add("a.ts", interval);
  }
  add("a.mp4", 10);
  add("a.mkv", 47);
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Intervals, GradualRefresh, testing::ValuesIn(gradualRefreshes()), CaseName());

class AviGroups : public LastGroup {};

// The pictures are later by the decoder's delay, and the last one comes without a time.
TEST_P(AviGroups, AreTheSameByJumpsAndInOrder) {
  expectJumpsChangeNothing();
}

std::vector<ClipCase> aviGroups() {
  std::vector<ClipCase> cases;
  for (const char* codec : {"mpeg4", "libxvid"}) {
    for (const int frames : {10, 15, 25, 37, 38, 47, 48, 49, 50}) {
      cases.push_back({codec + std::to_string(frames), "a.avi", codec, [frames](ClipOptions& options) {
                         options.frames = frames;
                         options.open_gop = true;
                         options.b_frames = 2;
                       }});
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Lengths, AviGroups, testing::ValuesIn(aviGroups()), CaseName());

struct Change {
  const char* name;
  AVPixelFormat pixel_format;
  int width;
  int height;
};

void PrintTo(const Change& param, std::ostream* p_stream) {
  *p_stream << param.name;
}

// JPEG pictures, of which each tells its own format and size, beginning with 64x48 in 4:2:0.
class ChangingPictures : public testing::TestWithParam<Change> {
 protected:
  void SetUp() override {
    ClipOptions second_half;
    second_half.codec = "mjpeg";
    second_half.pixel_format = GetParam().pixel_format;
    second_half.width = GetParam().width;
    second_half.height = GetParam().height;
    const EncodedStream other = encodeVideo(second_half, false);
    ClipOptions options;
    options.codec = "mjpeg";
    options.edit_packet = [&other](int i, AVPacket* p_packet) {
      if (i >= 15) {
        const AVPacket* p_other = other.packets[static_cast<std::size_t>(i)].get();
        PacketPtr p_own(av_packet_alloc());
        checkFfmpeg(av_new_packet(p_own.get(), p_other->size), "av_new_packet");
        std::memcpy(p_own->data, p_other->data, static_cast<std::size_t>(p_other->size));
        checkFfmpeg(av_packet_copy_props(p_own.get(), p_packet), "av_packet_copy_props");
        av_packet_unref(p_packet);
        av_packet_move_ref(p_packet, p_own.get());
      }
      return true;
    };
    _path = makeClip(_directory.file("a.mkv"), options).path;
    ffmpegCalls().reset();
  }

  TempDir _directory;
  std::string _path;
};

TEST_P(ChangingPictures, KeepTheirFormatAndSizeAtTheEnd) {
  Reader reader;
  openIndexed(reader, _path);
  const std::vector<SeenFrame> sequence = readAll(reader);
  const Size size(static_cast<uint32_t>(GetParam().width), static_cast<uint32_t>(GetParam().height));
  EXPECT_EQ(countingUp(30), numbersOf(sequence));
  EXPECT_EQ(sequence[28].format, sequence[29].format);
  EXPECT_EQ(size, sequence[29].size);
  EXPECT_EQ(size, reader.size());
  for (int times = 0; times < 3; ++times) {  // the end is known from the first time on
    reader.moveByIndex(29);
    EXPECT_TRUE(sameFrame(sequence[29], nextFrame(reader)));
    EXPECT_EQ(size, reader.size());
  }
  reader.moveByIndex(3);
  EXPECT_TRUE(sameFrame(sequence[3], nextFrame(reader)));
  EXPECT_EQ(Size(64, 48), reader.size());
  Reader fresh;
  openIndexed(fresh, _path);
  fresh.moveByIndex(29);
  EXPECT_TRUE(sameFrame(sequence[29], nextFrame(fresh)));
  EXPECT_EQ(size, fresh.size());
}

INSTANTIATE_TEST_SUITE_P(LastGroup, ChangingPictures,
                         testing::Values(Change{"Format", AV_PIX_FMT_YUVJ444P, 64, 48},
                                         Change{"Size", AV_PIX_FMT_YUV420P, 32, 80},
                                         Change{"Both", AV_PIX_FMT_YUVJ444P, 32, 80}),
                         CaseName());

struct PictureFile {
  const char* name;
  const char* file;
  const char* codec;
  AVPixelFormat pixel_format;
};

void PrintTo(const PictureFile& param, std::ostream* p_stream) {
  *p_stream << param.name;
}

class PictureFiles : public testing::TestWithParam<PictureFile> {};

TEST_P(PictureFiles, AreStreamsOfOneFrame) {
  const PictureFile& param = GetParam();
  if (!haveEncoder(param.codec)) {
    GTEST_SKIP() << "this FFmpeg cannot encode " << param.codec;
  }
  ClipOptions options;
  options.codec = param.codec;
  options.pixel_format = param.pixel_format;
  options.frames = 1;
  options.width = 320;  // small files are taken for streams of pictures
  options.height = 240;
  const EncodedStream picture = encodeVideo(options, false);
  const AVPacket* p_packet = picture.packets.at(0).get();
  const TempDir directory;
  const std::string path = directory.file(param.file);
  writeFile(path, std::string(p_packet->data, p_packet->data + p_packet->size));
  ffmpegCalls().reset();
  Reader reader;
  openIndexed(reader, path);
  ASSERT_EQ(1, reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader);
  ASSERT_EQ(countingUp(1), numbersOf(sequence));
  for (int times = 0; times < 2; ++times) {
    reader.moveByIndex(0);
    EXPECT_TRUE(sameFrame(sequence[0], nextFrame(reader)));
  }
  reader.moveByIndex(0);
  reader.moveByIndex(0);
  EXPECT_TRUE(sameFrame(sequence[0], nextFrame(reader)));
}

INSTANTIATE_TEST_SUITE_P(LastGroup, PictureFiles,
                         testing::Values(PictureFile{"Jpeg", "a.jpg", "mjpeg", AV_PIX_FMT_YUV420P},
                                         PictureFile{"Targa", "a.tga", "targa", AV_PIX_FMT_BGR24}),
                         CaseName());

}  // namespace
}  // namespace test
}  // namespace zo
