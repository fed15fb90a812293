// Opening: what it refuses and in which words, what it tells about a stream, and what closing leaves.
#include <gtest/gtest.h>

#include <thread>

#include "zo_reader_steps.h"
#include "zo_test_support.h"

extern "C" {
#include <libavutil/error.h>
}

namespace zo {
namespace {

using test::ClipOptions;
using test::errorText;

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_reader_impl";
constexpr char CLOSED_MESSAGE[] = "call VideoReader.open(...) before this operation";

std::string openErrorMessage(const std::string& url, const std::string& error) {
  return "Failed to open video stream: \"" + url + "\", avformat_open_input() returned error " + error;
}

std::string streamInfoMessage(int code) {
  return "initializing decoder: avformat_find_stream_info() returned error " + errorText(code);
}

// Everything but the rate is as before the first open.
void expectClosed(VideoReader& reader) {
  EXPECT_STREQ("", reader.url());
  EXPECT_EQ(0, reader.frameCount());
  EXPECT_EQ(-1, reader.frameIndex());
  EXPECT_EQ(ZO_VIDEO_ROTATION_0, reader.rotation());
  EXPECT_EQ(0, reader.timestamp());
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, reader.format());
  EXPECT_EQ(Size(0, 0), reader.size());
  EXPECT_EQ(nullptr, reader.getMetadataValue("title"));
  Frame frame;
  bool got_frame = false;
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, reader.read(frame, got_frame, nullptr), ZO_STATUS_NOT_OPENED,
                           CLOSED_MESSAGE, "_checkIfGood");
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, reader.moveByIndex(0), ZO_STATUS_NOT_OPENED, CLOSED_MESSAGE,
                           "_checkIfGood");
}

class ReaderOpening : public testing::Test {
 protected:
  std::string makeClip(const std::string& file, const ClipOptions& options = ClipOptions()) {
    return test::makeClip(_directory.file(file), options).path;
  }

  // A failing open closes the reader, whatever was open before, and the reader can be used again.
  void expectRefusal(const std::string& url, Status status, const std::string& message) {
    const std::string good = makeClip("good.mkv");
    VideoReader reader;
    EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, test::openPlainly(reader, url), status, message, "open");
    expectClosed(reader);
    EXPECT_EQ(0, test::openPlainly(reader, good));
    EXPECT_EQ(2U, test::readAll(reader, 2).size());
    EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, test::openPlainly(reader, url), status, message, "open");
    expectClosed(reader);
    EXPECT_EQ(0, test::openPlainly(reader, good));
    EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
  }

  void expectOpenError(const std::string& url) {
    expectRefusal(url, ZO_STATUS_OPEN_ERROR, openErrorMessage(url, test::openErrorText(url)));
  }

  std::string writeFile(const std::string& name, const std::string& bytes) {
    test::writeFile(_directory.file(name), bytes);
    return _directory.file(name);
  }

  test::TempDir _directory;
};

TEST(FreshReader, IsClosed) {
  VideoReader reader;
  expectClosed(reader);
  EXPECT_EQ(0, reader.fps());
}

TEST(FreshReader, CanBeClosed) {
  VideoReader reader;
  reader.close();
  reader.close();
  expectClosed(reader);
}

TEST(FreshReader, CanBeMadeInManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      VideoReader reader;
      EXPECT_EQ(-1, reader.frameIndex());
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST_F(ReaderOpening, RefusesANullUrlAndClosesWhatWasOpen) {
  VideoReader reader;
  for (int round = 0; round < 2; ++round) {
    EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, reader.open(nullptr, -1, nullptr, false, false, false),
                             ZO_STATUS_NULL_POINTER, "VideoReader::Impl::open(...): argument 'p_url' is NULL",
                             "open");
    expectClosed(reader);
    test::openPlainly(reader, makeClip("a.mkv"));
  }
}

TEST_F(ReaderOpening, RefusesAMissingFile) {
  const std::string path = _directory.file("missing.mp4");
  EXPECT_EQ(errorText(AVERROR(ENOENT)), test::openErrorText(path));
  expectOpenError(path);
}

TEST_F(ReaderOpening, RefusesAnEmptyUrl) {
  expectOpenError("");
}

TEST_F(ReaderOpening, RefusesADirectory) {
  expectOpenError(_directory.path());
}

TEST_F(ReaderOpening, RefusesAnEmptyFile) {
  expectOpenError(writeFile("empty.mp4", ""));
}

TEST_F(ReaderOpening, RefusesText) {
  expectOpenError(writeFile("text.mp4", "This is not a video, whatever its name says.\nNot at all.\n"));
}

TEST_F(ReaderOpening, RefusesAFileWithoutItsIndex) {
  const std::string bytes = test::readFile(makeClip("a.mp4"));
  expectOpenError(writeFile("cut.mp4", bytes.substr(0, bytes.size() / 2)));
}

TEST_F(ReaderOpening, RefusesAnUnknownProtocol) {
  expectOpenError("nosuchprotocol://somewhere/clip.mp4");
}

TEST_F(ReaderOpening, RefusesAHostThatNobodyListensOn) {
  const std::string url = test::unreachableUrl("tcp");
  expectRefusal(url, ZO_STATUS_OPEN_ERROR, openErrorMessage(url, errorText(AVERROR(ECONNREFUSED))));
}

TEST_F(ReaderOpening, RefusesSoundWithoutPictures) {
  ClipOptions options;
  options.video = false;
  expectRefusal(makeClip("sound.wav", options), ZO_STATUS_DECODER_ERROR,
                streamInfoMessage(AVERROR_STREAM_NOT_FOUND));
}

// Matroska keeps the codec's name as text: one that nobody knows.
TEST_F(ReaderOpening, RefusesACodecThatNobodyKnows) {
  std::string bytes = test::readFile(makeClip("a.mkv"));
  const std::size_t name = bytes.find("V_MPEG4/ISO/ASP");
  ASSERT_NE(std::string::npos, name);
  bytes.replace(name, 15, "V_MPEG9/XYZ/QQQ");
  expectRefusal(writeFile("unknown.mkv", bytes), ZO_STATUS_DECODER_ERROR,
                streamInfoMessage(AVERROR_DECODER_NOT_FOUND));
}

class UnusableDecoder : public ReaderOpening, public testing::WithParamInterface<bool> {};

// A decoder that refuses its set-up data. The message carries the text for the number of the stream.
TEST_P(UnusableDecoder, IsReportedWithTheTextForTheStreamIndex) {
  ClipOptions options;
  options.codec = "ffv1";
  options.encoder_options = {{"level", "3"}};      // the version that has set-up data, with a checksum
  options.muxer_options = {{"write_crc32", "0"}};  // the container itself must not notice
  options.audio = GetParam();
  options.audio_first = GetParam();
  const std::string path = makeClip("a.mkv", options);
  std::string bytes = test::readFile(path);
  const test::ReferenceStream stream = test::decodeReference(path, false);
  ASSERT_EQ(GetParam() ? 1 : 0, stream.index);
  const std::string& set_up = stream.set_up;
  ASSERT_FALSE(set_up.empty());
  const std::size_t position = bytes.find(set_up);
  ASSERT_NE(std::string::npos, position);
  bytes[position + set_up.size() / 2] = static_cast<char>(bytes[position + set_up.size() / 2] ^ 0x55);
  expectRefusal(writeFile("unusable.mkv", bytes), ZO_STATUS_DECODER_ERROR,
                "initializing decoder: avcodec_open2() returned error " + errorText(stream.index));
}

INSTANTIATE_TEST_SUITE_P(Stream, UnusableDecoder, testing::Bool(),
                         [](const auto& test_case) { return test_case.param ? "One" : "Zero"; });

TEST_F(ReaderOpening, ClosesFirstWhenSomethingIsOpen) {
  ClipOptions options;
  options.width = 32;
  options.height = 32;
  const std::string first = makeClip("first.mkv");
  const std::string second = makeClip("second.mkv", options);
  VideoReader reader;
  EXPECT_EQ(0, test::openPlainly(reader, first));
  EXPECT_EQ(5U, test::readAll(reader, 5).size());
  EXPECT_EQ(0, test::openPlainly(reader, second));
  EXPECT_EQ(Size(32, 32), reader.size());
  EXPECT_EQ(-1, reader.frameIndex());
  EXPECT_EQ(0, reader.timestamp());
  EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
  EXPECT_EQ(0, test::openPlainly(reader, second));  // at its end
  EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
}

TEST_F(ReaderOpening, TakesItsOwnUrlAgain) {
  VideoReader reader;
  test::openPlainly(reader, makeClip("a.mkv"));
  EXPECT_EQ(0, reader.open(reader.url(), -1, nullptr, false, false, false));
  EXPECT_EQ(_directory.file("a.mkv"), reader.url());
  EXPECT_EQ(3U, test::readAll(reader, 3).size());
}

TEST_F(ReaderOpening, TakesAPartOfItsOwnUrl) {
  VideoReader reader;
  const std::string path = makeClip("a.mkv");
  test::openPlainly(reader, "file:" + path);
  EXPECT_EQ(0, reader.open(reader.url() + 5, -1, nullptr, false, false, false));
  EXPECT_EQ(path, reader.url());
  EXPECT_EQ(3U, test::readAll(reader, 3).size());
  // Short enough to lie in the reader itself.
  const test::WorkingDir inside(_directory.path());
  test::openPlainly(reader, "file:a.mkv");
  EXPECT_EQ(0, reader.open(reader.url() + 5, -1, nullptr, false, false, false));
  EXPECT_STREQ("a.mkv", reader.url());
}

TEST_F(ReaderOpening, TakesAMetadataValueAsUrl) {
  const std::string named = makeClip("named.mkv");
  ClipOptions options;
  options.metadata = {{"title", named}};
  VideoReader reader;
  test::openPlainly(reader, makeClip("a.mp4", options));
  EXPECT_EQ(0, reader.open(reader.getMetadataValue("title"), -1, nullptr, false, false, false));
  EXPECT_EQ(named, reader.url());
  EXPECT_EQ(3U, test::readAll(reader, 3).size());
}

TEST_F(ReaderOpening, CopiesTheUrl) {
  std::string url = makeClip("a.mkv");
  VideoReader reader;
  test::openPlainly(reader, url);
  url.assign(url.size(), 'x');
  EXPECT_EQ(_directory.file("a.mkv"), reader.url());
}

TEST_F(ReaderOpening, ResetsEverythingButTheRateOnClose) {
  ClipOptions options;
  options.rotation = 90;
  options.metadata = {{"title", "a title"}};
  options.frame_rate = AVRational{10, 1};
  VideoReader reader;
  test::openPlainly(reader, makeClip("a.mp4", options));
  test::readAll(reader, 5);
  EXPECT_EQ(ZO_VIDEO_ROTATION_90, reader.rotation());
  EXPECT_EQ(400, reader.timestamp());
  reader.close();
  expectClosed(reader);
  EXPECT_DOUBLE_EQ(10.0, reader.fps());
  reader.close();
  EXPECT_DOUBLE_EQ(10.0, reader.fps());
}

TEST_F(ReaderOpening, KnowsNoFrameCountWithoutNavigation) {
  VideoReader reader;
  test::openPlainly(reader, makeClip("a.mp4"));
  EXPECT_EQ(0, reader.frameCount());
  test::readAll(reader);
  EXPECT_EQ(0, reader.frameCount());
}

TEST_F(ReaderOpening, PicksThePicturesAmongOtherStreams) {
  ClipOptions options;
  options.audio = true;
  options.audio_first = true;
  VideoReader reader;
  test::openPlainly(reader, makeClip("a.mkv", options));
  EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
}

TEST_F(ReaderOpening, TellsARateOfZeroWhenTheContainerHasNone) {
  ClipOptions options;
  options.frames = 1;
  options.codec = "mjpeg";
  const std::string path = makeClip("one.mjpeg.nut", options);
  const AVRational rate = test::decodeReference(path, false).average_frame_rate;
  VideoReader reader;
  test::openPlainly(reader, path);
  if (rate.den != 0) {
    GTEST_SKIP() << "this FFmpeg guesses a rate";
  }
  EXPECT_EQ(0, reader.fps());
}

TEST_F(ReaderOpening, ForgetsTheRateOfTheLastStream) {
  ClipOptions options;
  options.frame_rate = AVRational{10, 1};
  VideoReader reader;
  test::openPlainly(reader, makeClip("ten.mp4", options));
  EXPECT_DOUBLE_EQ(10.0, reader.fps());
  options.frame_rate = AVRational{30000, 1001};
  test::openPlainly(reader, makeClip("ntsc.mp4", options));
  EXPECT_DOUBLE_EQ(30000.0 / 1001, reader.fps());
}

TEST_F(ReaderOpening, ReadsMetadataWithoutRegardToCase) {
  ClipOptions options;
  options.metadata = {{"title", "a title"}, {"artist", "somebody"}};
  VideoReader reader;
  test::openPlainly(reader, makeClip("a.mp4", options));
  EXPECT_STREQ("a title", reader.getMetadataValue("title"));
  EXPECT_STREQ("a title", reader.getMetadataValue("TITLE"));
  EXPECT_STREQ("somebody", reader.getMetadataValue("Artist"));
  EXPECT_EQ(nullptr, reader.getMetadataValue("titl"));
  EXPECT_EQ(nullptr, reader.getMetadataValue("missing"));
  EXPECT_EQ(nullptr, reader.getMetadataValue(""));
  EXPECT_EQ(nullptr, reader.getMetadataValue(nullptr));
  reader.close();
  EXPECT_EQ(nullptr, reader.getMetadataValue("title"));
}

// ---- Rotation

struct RotationCase {
  const char* name;
  double clockwise;
  VideoRotation expected;
};

class Rotations : public ReaderOpening, public testing::WithParamInterface<RotationCase> {};

TEST_P(Rotations, AreToldWithinOneDegree) {
  ClipOptions options;
  options.frames = 2;
  options.rotation = GetParam().clockwise;
  VideoReader reader;
  test::openPlainly(reader, makeClip("a.mp4", options));
  EXPECT_EQ(GetParam().expected, reader.rotation());
}

INSTANTIATE_TEST_SUITE_P(Angles, Rotations,
                         testing::Values(RotationCase{"Upright", 0, ZO_VIDEO_ROTATION_0},
                                         RotationCase{"Quarter", 90, ZO_VIDEO_ROTATION_90},
                                         RotationCase{"Half", 180, ZO_VIDEO_ROTATION_180},
                                         RotationCase{"ThreeQuarters", 270, ZO_VIDEO_ROTATION_270},
                                         RotationCase{"QuarterBack", -90, ZO_VIDEO_ROTATION_270},
                                         RotationCase{"HalfBack", -180, ZO_VIDEO_ROTATION_180},
                                         RotationCase{"Eighth", 45, ZO_VIDEO_ROTATION_OTHER},
                                         RotationCase{"EighthBack", -45, ZO_VIDEO_ROTATION_OTHER},
                                         RotationCase{"JustOver0", 0.5, ZO_VIDEO_ROTATION_0},
                                         RotationCase{"TooFarOver0", 1.5, ZO_VIDEO_ROTATION_OTHER},
                                         RotationCase{"JustUnderATurn", 359.5, ZO_VIDEO_ROTATION_0},
                                         RotationCase{"TooFarUnderATurn", 358.5, ZO_VIDEO_ROTATION_OTHER},
                                         RotationCase{"JustUnder90", 89.5, ZO_VIDEO_ROTATION_90},
                                         RotationCase{"JustOver90", 90.5, ZO_VIDEO_ROTATION_90},
                                         RotationCase{"TooFarUnder90", 88.5, ZO_VIDEO_ROTATION_OTHER},
                                         RotationCase{"TooFarOver90", 91.5, ZO_VIDEO_ROTATION_OTHER},
                                         RotationCase{"JustUnder180", 179.5, ZO_VIDEO_ROTATION_180},
                                         RotationCase{"JustOver180", 180.5, ZO_VIDEO_ROTATION_180},
                                         RotationCase{"TooFarOver180", 181.5, ZO_VIDEO_ROTATION_OTHER},
                                         RotationCase{"JustUnder270", 269.5, ZO_VIDEO_ROTATION_270},
                                         RotationCase{"TooFarOver270", 271.5, ZO_VIDEO_ROTATION_OTHER}),
                         test::CaseName());

TEST_F(ReaderOpening, TakesAStreamWithoutAMatrixAsUpright) {
  VideoReader reader;
  test::openPlainly(reader, makeClip("a.avi"));
  EXPECT_EQ(ZO_VIDEO_ROTATION_0, reader.rotation());
}

TEST(VideoRotationValues, AreThoseThatCallersCompileIn) {
  EXPECT_EQ(0, ZO_VIDEO_ROTATION_0);
  EXPECT_EQ(1, ZO_VIDEO_ROTATION_90);
  EXPECT_EQ(2, ZO_VIDEO_ROTATION_180);
  EXPECT_EQ(3, ZO_VIDEO_ROTATION_270);
  EXPECT_EQ(4, ZO_VIDEO_ROTATION_OTHER);
}

}  // namespace
}  // namespace zo
