// Sequential reading where pictures or packets are missing: every packet's time is seen on a frame, an empty
// one where the decoder gave no picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "zo_reader_steps.h"
#include "zo_test_support.h"

extern "C" {
#include <libavutil/error.h>
}

namespace zo {
namespace {

using test::ClipOptions;
using test::errorText;

// Turns a packet of an H.264 stream in a length-prefixed or start-code container into filler: the decoder
// takes it and gives nothing for it.
bool toFiller(AVPacket* p_packet) {
  static const uint8_t FILLER[] = {0, 0, 0, 1, 0x0C, 0xFF, 0x80};
  std::memcpy(p_packet->data, FILLER, sizeof(FILLER));
  av_shrink_packet(p_packet, static_cast<int>(sizeof(FILLER)));
  return true;
}

class MissingPictures : public testing::Test {
 protected:
  void SetUp() override {
    if (!test::haveEncoder("libx264")) {
      GTEST_SKIP() << "this FFmpeg cannot encode H.264";
    }
    _options.codec = "libx264";
    _options.gop = 12;
    _options.b_frames = 2;
  }

  // I P B B P B B ...: packet 2 holds picture 1, packet 3 picture 2, which nothing refers to.
  void fillPackets(const std::set<int>& packets) {
    _options.edit_packet = [packets](int index, AVPacket* p_packet) {
      return packets.count(index) == 0 || toFiller(p_packet);
    };
  }

  std::vector<test::Delivery> readClip(const std::string& file) {
    const test::Clip clip = test::makeClip(_directory.file(file), _options);
    VideoReader reader;
    EXPECT_EQ(0, reader.open(clip.path.c_str(), -1, nullptr, false, true, false));
    return test::readAll(reader);
  }

  std::vector<long long> allTimes() {
    std::vector<long long> times;
    for (int i = 0; i < _options.frames; ++i) {
      times.push_back(test::clipTimeMs(_options, i));
    }
    return times;
  }

  test::TempDir _directory;
  ClipOptions _options;
};

TEST_F(MissingPictures, BecomeEmptyFramesWithTheTimeOfTheirPacket) {
  fillPackets({2});
  const std::vector<test::Delivery> deliveries = readClip("a.mkv");
  std::vector<int> expected = test::countTo(30);
  expected[1] = -1;
  EXPECT_EQ(expected, test::numbersOf(deliveries));
  EXPECT_EQ(allTimes(), test::timesOf(deliveries));
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, deliveries[1].frame.format());
}

TEST_F(MissingPictures, BecomeOneEmptyFrameEach) {
  fillPackets({2, 3, 9});
  const std::vector<test::Delivery> deliveries = readClip("a.mkv");
  std::vector<int> expected = test::countTo(30);
  expected[1] = expected[2] = expected[8] = -1;
  std::vector<int> numbers = test::numbersOf(deliveries);
  EXPECT_EQ(3, std::count(numbers.begin(), numbers.end(), -1));
  EXPECT_EQ(allTimes(), test::timesOf(deliveries));
  EXPECT_EQ(expected[1], numbers[1]);
  EXPECT_EQ(expected[2], numbers[2]);
}

TEST_F(MissingPictures, AtTheEndOfTheStreamAreHandedOutWhenItIsReached) {
  _options.frames = 28;  // the last packet is the B-frame before the last picture
  fillPackets({27});
  const std::vector<test::Delivery> deliveries = readClip("a.mkv");
  EXPECT_EQ(allTimes(), test::timesOf(deliveries));
  const std::vector<int> numbers = test::numbersOf(deliveries);
  EXPECT_EQ(1, std::count(numbers.begin(), numbers.end(), -1));
}

TEST_F(MissingPictures, BeforeTheFirstKeyFrameAreEmptyFrames) {
  _options.b_frames = 0;
  _options.skipped_packets = 3;
  const std::vector<test::Delivery> deliveries = readClip("a.mkv");
  ASSERT_EQ(27U, deliveries.size());
  const std::vector<int> numbers = test::numbersOf(deliveries);
  for (int i = 0; i < 27; ++i) {
    EXPECT_EQ(i < 9 ? -1 : i + 3, numbers[static_cast<std::size_t>(i)]);
    EXPECT_EQ(40 * (i + 3), deliveries[static_cast<std::size_t>(i)].timestamp);
  }
}

TEST(ElementaryStreams, WithoutTimesDeliverAnEmptyFrameForEachPacket) {
  if (!test::haveEncoder("libx264")) {
    GTEST_SKIP() << "this FFmpeg cannot encode H.264";
  }
  const test::TempDir directory;
  ClipOptions options;
  options.codec = "libx264";
  options.b_frames = 2;
  const test::Clip clip = test::makeClip(directory.file("a.h264"), options);
  const test::ReferenceStream reference = test::decodeReference(clip.path);
  ASSERT_EQ(AV_NOPTS_VALUE, reference.packets[0].pts);
  ASSERT_EQ(AV_NOPTS_VALUE, reference.packets[0].dts);
  VideoReader reader;
  test::openPlainly(reader, clip.path);
  EXPECT_EQ(std::vector<int>(30, -1), test::numbersOf(test::readAll(reader)));
}

// In AVI a packet has only the time of its decoding. B-frames come out later than the earliest of those
// times: the reader takes that for a missing picture, and has no packet's time left for the last picture.
TEST(BFramesInAvi, AreAllDeliveredThoughTheTimesOfTheirPacketsRunOut) {
  const test::TempDir directory;
  ClipOptions options;
  options.b_frames = 2;
  const test::Clip clip = test::makeClip(directory.file("a.avi"), options);
  const test::ReferenceStream reference = test::decodeReference(clip.path);
  ASSERT_EQ(AV_NOPTS_VALUE, reference.packets[1].pts);
  VideoReader reader;
  test::openPlainly(reader, clip.path);
  std::vector<int> numbers;
  std::vector<long long> times;
  for (const test::Delivery& delivery : test::readAll(reader)) {
    if (delivery.frame.initialized()) {
      numbers.push_back(test::paintedNumber(delivery.frame));
      times.push_back(delivery.timestamp);
    }
  }
  std::vector<long long> expected_times;
  for (const test::ReferencePicture& picture : reference.pictures) {
    expected_times.push_back(test::timestampToMs(picture.best_effort_timestamp, reference.time_base));
  }
  EXPECT_EQ(test::countTo(30), numbers);
  EXPECT_EQ(expected_times, times);
}

TEST(MissingPackets, LeaveGapsInTheTimes) {
  const test::TempDir directory;
  ClipOptions options;
  options.gop = 1;
  options.dropped_packets = {4, 5, 17};
  const test::Clip clip = test::makeClip(directory.file("a.mkv"), options);
  VideoReader reader;
  test::openPlainly(reader, clip.path);
  const std::vector<test::Delivery> deliveries = test::readAll(reader);
  std::vector<int> expected = test::countTo(30);
  expected.erase(expected.begin() + 17);
  expected.erase(expected.begin() + 4, expected.begin() + 6);
  EXPECT_EQ(expected, test::numbersOf(deliveries));
  for (std::size_t i = 0; i < expected.size() && i < deliveries.size(); ++i) {
    EXPECT_EQ(40 * expected[i], deliveries[i].timestamp);
  }
}

// ---- Packets that the decoder refuses

class RefusedPacket : public testing::Test {
 protected:
  // Motion JPEG: each picture stands for itself; one without any marker is refused.
  void SetUp() override {
    ClipOptions options;
    options.codec = "mjpeg";
    options.frames = 25;
    options.edit_packet = [](int index, AVPacket* p_packet) {
      if (index == 20) {
        std::memset(p_packet->data, 0, static_cast<std::size_t>(p_packet->size));
      }
      return true;
    };
    _clip = test::makeClip(_directory.file("a.mkv"), options);
    _expected = test::countTo(25);
    _expected[20] = -1;
  }

  test::TempDir _directory;
  test::Clip _clip;
  std::vector<int> _expected;
};

TEST_F(RefusedPacket, IsAReadErrorAfterWhichReadingGoesOn) {
  VideoReader reader;
  test::openPlainly(reader, _clip.path);
  std::vector<test::Delivery> deliveries = test::readAll(reader, 20);
  Frame frame;
  bool got_frame = false;
  EXPECT_ZO_EXCEPTION_FROM(
      "src/zo_video/zo_video_reader_impl", reader.read(frame, got_frame, nullptr), ZO_STATUS_READ_ERROR,
      "read frame: avcodec_send_packet() returned error " + errorText(AVERROR_INVALIDDATA), "_decodePacket");
  EXPECT_FALSE(got_frame);
  EXPECT_EQ(19, reader.frameIndex());
  EXPECT_EQ(19 * 40, reader.timestamp());
  for (const test::Delivery& delivery : test::readAll(reader)) {
    deliveries.push_back(delivery);
  }
  EXPECT_EQ(_expected, test::numbersOf(deliveries));
  EXPECT_EQ(24 * 40, deliveries.back().timestamp);
}

TEST_F(RefusedPacket, IsPassedOverWhenErrorsAreSkipped) {
  VideoReader reader;
  reader.open(_clip.path.c_str(), -1, nullptr, false, true, false);
  const std::vector<test::Delivery> deliveries = test::readAll(reader);
  EXPECT_EQ(_expected, test::numbersOf(deliveries));
  EXPECT_EQ(20 * 40, deliveries[20].timestamp);
}

// ---- Packets that the demuxer cannot read: raw pictures behind lines of text, one line of which is wrong

class UnreadablePacket : public testing::Test {
 protected:
  void SetUp() override {
    std::string bytes = "YUV4MPEG2 W16 H16 F25:1 Ip A1:1 C420jpeg\n";
    for (int i = 0; i < 30; ++i) {
      const Frame frame = test::makeNumberedFrame(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(16, 16), i);
      bytes += (i == 25 ? "GARBAGE\nFRAME\n" : "FRAME\n") + test::packedBytes(frame);
    }
    test::writeFile(_path, bytes);
  }

  test::TempDir _directory;
  const std::string _path = _directory.file("a.y4m");
};

TEST_F(UnreadablePacket, IsAReadErrorAfterWhichReadingGoesOn) {
  VideoReader reader;
  test::openPlainly(reader, _path);
  std::vector<test::Delivery> deliveries = test::readAll(reader, 25);
  Frame frame;
  bool got_frame = true;
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_video_reader_impl", reader.read(frame, got_frame, nullptr),
                           ZO_STATUS_READ_ERROR,
                           "read frame: av_read_frame() returned " + std::to_string(AVERROR_INVALIDDATA) +
                               " (" + errorText(AVERROR_INVALIDDATA) + ")",
                           "_read");
  EXPECT_FALSE(got_frame);
  EXPECT_EQ(24, reader.frameIndex());
  for (const test::Delivery& delivery : test::readAll(reader)) {
    deliveries.push_back(delivery);
  }
  EXPECT_EQ(test::countTo(30), test::numbersOf(deliveries));
}

TEST_F(UnreadablePacket, IsPassedOverWhenErrorsAreSkipped) {
  VideoReader reader;
  reader.open(_path.c_str(), -1, nullptr, false, true, false);
  EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
}

// ---- Files cut short or changed at random: an error or fewer frames, never a crash or a hang

class DamagedFiles : public testing::TestWithParam<const char*> {
 protected:
  // Opens and reads as far as it goes, in both ways of treating errors; the reader can be used again
  // afterwards.
  void tryOut(const std::string& path) {
    for (const bool skip_errors : {false, true}) {
      VideoReader reader;
      try {
        reader.open(path.c_str(), 10000, nullptr, false, skip_errors, false);
        Frame frame;
        bool got_frame = true;
        for (int i = 0; i < 200 && got_frame; ++i) {
          try {
            reader.read(frame, got_frame, nullptr);
          } catch (const Exception& exception) {
            EXPECT_TRUE(exception.status() == ZO_STATUS_READ_ERROR ||
                        exception.status() == ZO_STATUS_DECODER_ERROR ||
                        exception.status() == ZO_STATUS_OUT_OF_MEMORY)
                << exception.what();
          }
        }
      } catch (const Exception& exception) {
        EXPECT_TRUE(exception.status() == ZO_STATUS_OPEN_ERROR ||
                    exception.status() == ZO_STATUS_DECODER_ERROR)
            << exception.what();
      }
      EXPECT_EQ(0, test::openPlainly(reader, _clip.path));
      EXPECT_EQ(3U, test::readAll(reader, 3).size());
    }
  }

  void SetUp() override {
    ClipOptions options;
    options.frames = 12;
    options.b_frames = 2;
    options.audio = true;
    _clip = test::makeClip(_directory.file(std::string("good.") + GetParam()), options);
    _bytes = test::readFile(_clip.path);
  }

  test::TempDir _directory;
  test::Clip _clip;
  std::string _bytes;
};

TEST_P(DamagedFiles, CutShortAreErrorsOrShorterClips) {
  for (const double part : {0.01, 0.1, 0.3, 0.5, 0.8, 0.99}) {
    const std::string path = _directory.file(std::string("cut.") + GetParam());
    test::writeFile(path,
                    _bytes.substr(0, static_cast<std::size_t>(static_cast<double>(_bytes.size()) * part)));
    tryOut(path);
  }
}

TEST_P(DamagedFiles, WithFlippedBitsAreErrorsOrClipsAllTheSame) {
  uint32_t state = 12345;
  const int rounds = static_cast<int>(test::repetitions(30, 8));
  for (int round = 0; round < rounds; ++round) {
    std::string bytes = _bytes;
    for (int flip = 0; flip < 1 + round; ++flip) {
      state = state * 1664525U + 1013904223U;
      char& byte = bytes[(state >> 8) % bytes.size()];
      byte = static_cast<char>(byte ^ (1 << (state & 7)));
    }
    const std::string path = _directory.file(std::string("flipped.") + GetParam());
    test::writeFile(path, bytes);
    tryOut(path);
  }
}

INSTANTIATE_TEST_SUITE_P(Containers, DamagedFiles, testing::Values("mp4", "mkv", "avi", "ts"),
                         [](const auto& test_case) { return std::string(test_case.param); });

}  // namespace
}  // namespace zo
