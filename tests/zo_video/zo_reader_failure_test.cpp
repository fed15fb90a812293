// Steps of FFmpeg that hardly ever fail, failing: what the reader says, and that it can be used again.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

constexpr char SOURCE[] = "src/zo_video/zo_video_reader_impl";

std::string clip() {
  static const TempDir DIRECTORY;
  static const std::string PATH = [] {
    ClipOptions options;
    options.frames = 6;
    options.gop = 1;                             // every packet is a picture of its own
    options.audio_first = options.audio = true;  // the pictures are stream 1
    return makeClip(DIRECTORY.file("a.mkv"), options).path;
  }();
  return PATH;
}

// To the end, in order, with an index or without one.
std::vector<int> numbersToTheEnd(Reader& reader) {
  std::vector<int> numbers;
  Frame frame;
  for (bool got_frame = true; numbers.size() < 1000;) {
    reader.read(frame, got_frame, nullptr);
    if (!got_frame) {
      break;
    }
    numbers.push_back(frame.initialized() ? paintedNumber(frame) : -1);
  }
  return numbers;
}

struct OpeningStep {
  const char* name;
  bool FfmpegCalls::*fails;
  Status status;
  const char* message;
  bool names_stream;  // the message ends with the text for the stream's number taken as an error
};

class FailingOpening : public testing::TestWithParam<std::tuple<OpeningStep, bool>> {
 protected:
  void SetUp() override { ffmpegCalls().reset(); }
  void TearDown() override { ffmpegCalls().reset(); }
};

TEST_P(FailingOpening, IsReportedAndLeavesAReaderThatCanOpen) {
  const OpeningStep& step = std::get<0>(GetParam());
  const bool indexed = std::get<1>(GetParam());
  const std::string path = clip();
  const std::string message = std::string(step.message) + (step.names_stream ? " " + errorText(1) : "");
  Reader reader;
  openIndexed(reader, path);
  ffmpegCalls().*step.fails = true;
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, reader.open(path.c_str(), -1, nullptr, indexed, true, false), step.status,
                           message, "open");
  ffmpegCalls().reset();
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, reader.format());
  EXPECT_STREQ("", reader.url());
  EXPECT_EQ(0, reader.frameCount());
  EXPECT_EQ(nullptr, reader.getMetadataValue("encoder"));
  ASSERT_EQ(0, reader.open(path.c_str(), -1, nullptr, indexed, true, false));
  EXPECT_EQ(countingUp(6), numbersToTheEnd(reader));
}

INSTANTIATE_TEST_SUITE_P(
    Steps, FailingOpening,
    testing::Combine(
        testing::Values(
            OpeningStep{"AllocatingTheDemuxer", &FfmpegCalls::no_format_context, ZO_STATUS_OUT_OF_MEMORY,
                        "avformat_alloc_context() returned NULL", false},
            OpeningStep{"AllocatingTheDecoder", &FfmpegCalls::no_decoder_context, ZO_STATUS_DECODER_ERROR,
                        "initializing decoder: avcodec_alloc_context3() returned NULL", false},
            OpeningStep{"SettingTheDecoderUp", &FfmpegCalls::no_decoder_parameters, ZO_STATUS_DECODER_ERROR,
                        "initializing decoder: avcodec_parameters_to_context() returned error", true},
            OpeningStep{"OpeningTheDecoder", &FfmpegCalls::no_decoder_open, ZO_STATUS_DECODER_ERROR,
                        "initializing decoder: avcodec_open2() returned error", true},
            OpeningStep{"AllocatingThePacket", &FfmpegCalls::no_packet, ZO_STATUS_DECODER_ERROR,
                        "initializing decoder: av_packet_alloc() returned NULL", false},
            OpeningStep{"AllocatingThePicture", &FfmpegCalls::no_frame, ZO_STATUS_DECODER_ERROR,
                        "initializing decoder: av_frame_alloc() returned NULL", false}),
        testing::Bool()),
    [](const auto& test) {
      return std::string(std::get<0>(test.param).name) + (std::get<1>(test.param) ? "Indexed" : "");
    });

TEST(StreamInformation, ThatCannotBeFoundIsNamedWithItsReason) {
  const std::string path = clip();
  for (const int code : {AVERROR(EIO), AVERROR(ENOMEM), AVERROR_INVALIDDATA, AVERROR_EXIT, -1}) {
    ffmpegCalls().reset();
    ffmpegCalls().on_stream_information = [code](AVFormatContext*, int& result) { result = code; };
    Reader reader;
    EXPECT_ZO_EXCEPTION_FROM(
        SOURCE, reader.open(path.c_str(), -1, nullptr, true, true, false), ZO_STATUS_DECODER_ERROR,
        "initializing decoder: avformat_find_stream_info() returned error " + errorText(code), "open");
    ffmpegCalls().reset();
    EXPECT_STREQ("", reader.url());
    EXPECT_EQ(nullptr, reader.getMetadataValue("encoder"));
    EXPECT_EQ(ZO_STATUS_NOT_OPENED, caughtZoException([&] { nextFrame(reader); }).status());
  }
}

class HardwareDecoder : public testing::Test {
 protected:
  // Known under the name of the hardware decoder; FFmpeg's own does its work.
  HardwareDecoder() {
    ffmpegCalls().reset();
    _decoder.name = "h264_mmal";
    _decoder.type = AVMEDIA_TYPE_VIDEO;
    _decoder.id = AV_CODEC_ID_H264;
    ffmpegCalls().added_decoders[&_decoder] = avcodec_find_decoder(AV_CODEC_ID_H264);
  }
  ~HardwareDecoder() override { ffmpegCalls().reset(); }

  // Opens a clip of six pictures and reads it.
  void open(const char* codec) {
    ClipOptions options;
    options.codec = codec;
    options.frames = 6;
    const std::string path = makeClip(_directory.file("clip.mkv"), options).path;
    ffmpegCalls().decoders_looked_up.clear();
    ffmpegCalls().decoders_opened.clear();
    ASSERT_EQ(0, _reader.open(path.c_str(), -1, nullptr, false, false, false));
    EXPECT_EQ(countingUp(6), numbersToTheEnd(_reader));
  }

  TempDir _directory;
  Reader _reader;  // makes FFmpeg's decoders known
  AVCodec _decoder{};
};

TEST_F(HardwareDecoder, IsPreferredForH264) {
  if (!haveEncoder("libx264")) {
    GTEST_SKIP() << "this FFmpeg cannot encode libx264";
  }
  open("libx264");
  EXPECT_EQ((std::vector<std::string>{"h264_mmal"}), ffmpegCalls().decoders_looked_up);
  EXPECT_EQ((std::vector<const AVCodec*>{&_decoder}), ffmpegCalls().decoders_opened);
}

TEST_F(HardwareDecoder, IsDoneWithoutWhereThereIsNone) {
  if (!haveEncoder("libx264")) {
    GTEST_SKIP() << "this FFmpeg cannot encode libx264";
  }
  _decoder.name = "another";
  open("libx264");
  EXPECT_EQ((std::vector<std::string>{"h264_mmal"}), ffmpegCalls().decoders_looked_up);
  ASSERT_EQ(1U, ffmpegCalls().decoders_opened.size());
  EXPECT_NE(&_decoder, ffmpegCalls().decoders_opened.front());
}

TEST_F(HardwareDecoder, IsNotAskedForWithOtherCodecs) {
  open("mpeg4");
  EXPECT_TRUE(ffmpegCalls().decoders_looked_up.empty());
  ASSERT_EQ(1U, ffmpegCalls().decoders_opened.size());
  EXPECT_NE(&_decoder, ffmpegCalls().decoders_opened.front());
}

class FailingDecoder : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    ffmpegCalls().reset();
    ASSERT_EQ(0, _reader.open(clip().c_str(), -1, nullptr, GetParam(), false, false));
    ASSERT_EQ(0, nextFrame(_reader).number);
    ASSERT_EQ(1, nextFrame(_reader).number);
    _timestamp = _reader.timestamp();
  }
  void TearDown() override { ffmpegCalls().reset(); }

  // Answers in place of the decoder when it is asked for a picture the next time.
  static void answerOnce(int answer) {
    bool answered = false;
    ffmpegCalls().on_receive = [answer, answered](int& result) mutable {
      result = answer;
      const bool due = !answered;
      answered = true;
      return due;
    };
  }

  void expectOpenAtTheSamePlace() {
    EXPECT_EQ(1, _reader.frameIndex());
    EXPECT_EQ(_timestamp, _reader.timestamp());
    EXPECT_EQ(GetParam() ? 6 : 0, _reader.frameCount());
  }

  Reader _reader;
  long long _timestamp = 0;
  Frame _frame;
  bool _got_frame = true;
};

TEST_P(FailingDecoder, IsNamedWithItsReason) {
  answerOnce(AVERROR(ENOMEM));
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.read(_frame, _got_frame, nullptr), ZO_STATUS_DECODER_ERROR,
                           "read frame: avcodec_receive_frame() returned error " + errorText(AVERROR(ENOMEM)),
                           "_decodePacket");
  EXPECT_FALSE(_got_frame);
  expectOpenAtTheSamePlace();
}

TEST_P(FailingDecoder, ThatGivesAPictureWithoutAnythingInItIsNamed) {
  ffmpegCalls().empty_pictures = true;
  EXPECT_ZO_EXCEPTION_FROM(
      SOURCE, _reader.read(_frame, _got_frame, nullptr), ZO_STATUS_INTERNAL_ERROR,
      "Assertion failed: _p_av_frame->format != -1 && (0 < _p_av_frame->width) && (0 < _p_av_frame->height)",
      "_decodePacket");
  EXPECT_FALSE(_got_frame);
  expectOpenAtTheSamePlace();
}

TEST_P(FailingDecoder, LeavesAReaderThatGoesOnToTheEnd) {
  answerOnce(AVERROR_INVALIDDATA);
  EXPECT_ZO_EXCEPTION(_reader.read(_frame, _got_frame, nullptr), ZO_STATUS_DECODER_ERROR,
                      "read frame: avcodec_receive_frame() returned error " + errorText(AVERROR_INVALIDDATA),
                      "_decodePacket");
  const std::vector<int> rest = numbersToTheEnd(_reader);
  ASSERT_FALSE(rest.empty());
  EXPECT_EQ(5, rest.back());
}

INSTANTIATE_TEST_SUITE_P(Modes, FailingDecoder, testing::Bool(),
                         [](const auto& test) { return test.param ? "Indexed" : "InOrder"; });

}  // namespace
}  // namespace test
}  // namespace zo
