// moveByIndex() and read() with an index: the order of checks, every message, the state after errors and at
// the end of the stream.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

constexpr char SOURCE[] = "src/zo_video/zo_video_reader_impl";

std::string moveMessage(long long index, const std::string& what) {
  return "Failure in VideoReader::move(frame_index == " + std::to_string(index) + "): " + what;
}

std::string outOfRange(long long index) {
  return moveMessage(index, "frame index is out of range.");
}

std::string notAllowed(long long index) {
  return moveMessage(index, "navigation is not allowed.");
}

std::string errorText(int code) {
  char text[64] = {};
  av_strerror(code, text, sizeof(text));
  return text;
}

class MoveByIndex : public testing::Test {
 protected:
  void SetUp() override { ffmpegCalls().reset(); }
  void TearDown() override { ffmpegCalls().reset(); }

  /// 30 frames, 40 ms each, key frames at 0, 10 and 20, MPEG-4 without B-frames: one packet, one picture.
  std::string clip(ClipOptions options = {}, const std::string& file = "a.mp4") {
    options.gop = options.gop == 12 ? 10 : options.gop;
    const std::string path = makeClip(_directory.file(file), options).path;
    ffmpegCalls().reset();
    return path;
  }

  void openClip() {
    openIndexed(_reader, clip());
    ASSERT_EQ(30, _reader.frameCount());
    ffmpegCalls().reset();
  }

  int numberAt(long long index) {
    _reader.moveByIndex(index);
    return nextFrame(_reader).number;
  }

  void readToTheEnd() {
    Frame frame;
    for (bool got_frame = true; got_frame;) {
      ASSERT_EQ(0, _reader.read(frame, got_frame, nullptr));
    }
  }

  TempDir _directory;
  Reader _reader;
};

// --- Checks ----------------------------------------------------------------------------------------------

TEST_F(MoveByIndex, RefusesBeforeOpening) {
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.moveByIndex(0), ZO_STATUS_NOT_OPENED,
                           "call VideoReader.open(...) before this operation", "_checkIfGood");
  EXPECT_ZO_EXCEPTION(_reader.moveByIndex(-1), ZO_STATUS_NOT_OPENED,
                      "call VideoReader.open(...) before this operation", "_checkIfGood");
}

TEST_F(MoveByIndex, RefusesAfterClosing) {
  openClip();
  _reader.close();
  EXPECT_ZO_EXCEPTION(_reader.moveByIndex(0), ZO_STATUS_NOT_OPENED,
                      "call VideoReader.open(...) before this operation", "_checkIfGood");
  EXPECT_EQ(0, _reader.frameCount());
}

TEST_F(MoveByIndex, RefusesWithoutNavigationBeforeItLooksAtTheIndex) {
  const std::string path = clip();
  ASSERT_EQ(0, _reader.open(path.c_str(), -1, nullptr, false, false, false));
  for (const long long index : {0LL, -1LL, 5LL, 30LL, std::numeric_limits<long long>::max()}) {
    EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.moveByIndex(index), ZO_STATUS_NOT_ALLOWED, notAllowed(index),
                             "moveByIndex");
  }
  EXPECT_EQ(-1, _reader.frameIndex());
  EXPECT_EQ(0, nextFrame(_reader).number) << "and reading goes on";
}

TEST_F(MoveByIndex, RefusesInAStreamWithoutDuration) {
  const std::string path = clip({}, "a.m4v");
  Reader reader;
  ASSERT_EQ(0, reader.open(path.c_str(), -1, nullptr, true, false, false));
  if (reader.frameCount() != 0) {
    GTEST_SKIP() << "this FFmpeg estimates a duration";
  }
  EXPECT_ZO_EXCEPTION(reader.moveByIndex(0), ZO_STATUS_NOT_ALLOWED, notAllowed(0), "moveByIndex");
}

class IndicesOutOfRange : public MoveByIndex, public testing::WithParamInterface<long long> {};

TEST_P(IndicesOutOfRange, AreRefusedAndChangeNothing) {
  openClip();
  ASSERT_EQ(7, numberAt(7));
  ffmpegCalls().reset();
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.moveByIndex(GetParam()), ZO_STATUS_OUT_OF_RANGE,
                           outOfRange(GetParam()), "moveByIndex");
  EXPECT_EQ(7, _reader.frameIndex());
  EXPECT_EQ(280, _reader.timestamp());
  EXPECT_EQ(0, ffmpegCalls().packets_read);
  EXPECT_TRUE(ffmpegCalls().seeks.empty());
  EXPECT_EQ(8, nextFrame(_reader).number);
}

INSTANTIATE_TEST_SUITE_P(MoveByIndex, IndicesOutOfRange,
                         testing::Values(-1, 30, 31, std::numeric_limits<long long>::max(),
                                         std::numeric_limits<long long>::min(), 1LL << 32, -(1LL << 32)));

// --- Moving without seeking ------------------------------------------------------------------------------

TEST_F(MoveByIndex, ToTheFirstFrameRightAfterOpeningDoesNothing) {
  openClip();
  _reader.moveByIndex(0);
  EXPECT_TRUE(ffmpegCalls().seeks.empty());
  EXPECT_EQ(0, ffmpegCalls().packets_sent);
  EXPECT_EQ(-1, _reader.frameIndex());
  EXPECT_EQ(0, nextFrame(_reader).number);
  EXPECT_EQ(0, _reader.frameIndex());
}

TEST_F(MoveByIndex, ToTheFrameJustReadDeliversTheHeldPictureAgain) {
  openClip();
  ASSERT_EQ(13, numberAt(13));
  ffmpegCalls().reset();
  for (int i = 0; i < 3; ++i) {
    _reader.moveByIndex(13);
    EXPECT_EQ(12, _reader.frameIndex());
    const SeenFrame frame = nextFrame(_reader);
    EXPECT_EQ(13, frame.number);
    EXPECT_EQ(520, frame.timestamp);
    EXPECT_EQ(13, _reader.frameIndex());
  }
  EXPECT_EQ(0, ffmpegCalls().packets_sent);
  EXPECT_TRUE(ffmpegCalls().seeks.empty());
}

TEST_F(MoveByIndex, ToTheNextFrameDoesNothing) {
  openClip();
  ASSERT_EQ(9, numberAt(9));
  ffmpegCalls().reset();
  _reader.moveByIndex(10);
  EXPECT_EQ(0, ffmpegCalls().packets_sent);
  EXPECT_EQ(10, nextFrame(_reader).number);
  EXPECT_EQ(1, ffmpegCalls().packets_sent);
  EXPECT_TRUE(ffmpegCalls().seeks.empty());
}

TEST_F(MoveByIndex, SetsTheIndexOneBeforeTheFrameAndKeepsTheTimestamp) {
  openClip();
  ASSERT_EQ(3, numberAt(3));
  _reader.moveByIndex(25);
  EXPECT_EQ(24, _reader.frameIndex());
  EXPECT_EQ(120, _reader.timestamp());
}

TEST_F(MoveByIndex, TwiceWithoutReadingGoesToTheLatter) {
  openClip();
  _reader.moveByIndex(25);
  _reader.moveByIndex(4);
  EXPECT_EQ(4, nextFrame(_reader).number);
  _reader.moveByIndex(17);
  _reader.moveByIndex(17);
  EXPECT_EQ(17, nextFrame(_reader).number);
}

// --- Seeking ---------------------------------------------------------------------------------------------

TEST_F(MoveByIndex, SeeksToTheKeyFrameByItsDecodingTime) {
  openClip();
  _reader.moveByIndex(17);
  ASSERT_FALSE(ffmpegCalls().seeks.empty());
  const FfmpegCalls::Seek forward = ffmpegCalls().seeks.front();
  EXPECT_EQ(0, forward.flags) << "no flag when going forward";
  const ReferenceStream reference = decodeReference(_reader.url(), false);
  EXPECT_EQ(reference.pictures[10].best_effort_timestamp, forward.target);
  EXPECT_EQ(17, nextFrame(_reader).number);

  ffmpegCalls().reset();
  _reader.moveByIndex(3);
  ASSERT_FALSE(ffmpegCalls().seeks.empty());
  EXPECT_EQ(AVSEEK_FLAG_BACKWARD, ffmpegCalls().seeks.front().flags);
  EXPECT_EQ(0, ffmpegCalls().seeks.front().target);
  EXPECT_EQ(3, nextFrame(_reader).number);
}

TEST_F(MoveByIndex, RepeatsAFailedSeekToAnyFrame) {
  openClip();
  ffmpegCalls().on_seek = [](const FfmpegCalls::Seek& seek, int& result) {
    result = AVERROR(EPERM);
    return (seek.flags & AVSEEK_FLAG_ANY) == 0;
  };
  _reader.moveByIndex(17);
  const std::vector<FfmpegCalls::Seek>& seeks = ffmpegCalls().seeks;
  ASSERT_GE(seeks.size(), 2U);
  EXPECT_EQ(0, seeks[0].flags);
  EXPECT_EQ(AVSEEK_FLAG_ANY, seeks[1].flags);
  EXPECT_EQ(seeks[0].target, seeks[1].target);
  EXPECT_EQ(17, nextFrame(_reader).number);
}

TEST_F(MoveByIndex, ReportsASeekThatFailsBothWays) {
  openClip();
  ASSERT_EQ(4, numberAt(4));
  ffmpegCalls().reset();
  ffmpegCalls().on_seek = [](const FfmpegCalls::Seek&, int& result) {
    result = AVERROR(EIO);
    return true;
  };
  EXPECT_ZO_EXCEPTION_FROM(
      SOURCE, _reader.moveByIndex(17), ZO_STATUS_SEEK_ERROR,
      moveMessage(17, "failed to seek to new frame. av_seek_frame(...) returned " +
                          std::to_string(AVERROR(EIO)) + " (" + errorText(AVERROR(EIO)) + ")"),
      "moveByIndex");
  EXPECT_EQ(2U, ffmpegCalls().seeks.size());
  EXPECT_EQ(0, ffmpegCalls().flushes) << "the decoder stays as it was";
  EXPECT_EQ(16, _reader.frameIndex()) << "one before the frame that was asked for";
  ffmpegCalls().reset();
  EXPECT_EQ(17, numberAt(17)) << "moving again works";
}

TEST_F(MoveByIndex, TakesNothingButZeroForASuccessfulSeek) {
  openClip();
  ffmpegCalls().on_seek = [](const FfmpegCalls::Seek&, int& result) {
    result = 1;
    return true;
  };
  EXPECT_ZO_EXCEPTION(
      _reader.moveByIndex(17), ZO_STATUS_SEEK_ERROR,
      moveMessage(17, "failed to seek to new frame. av_seek_frame(...) returned 1 (" + errorText(1) + ")"),
      "moveByIndex");
  EXPECT_EQ(1U, ffmpegCalls().seeks.size()) << "only a negative result is tried again";
}

TEST_F(MoveByIndex, KeepsTheEndOfTheStreamWhenASeekFails) {
  openClip();
  readToTheEnd();
  ffmpegCalls().on_seek = [](const FfmpegCalls::Seek&, int& result) {
    result = AVERROR(EIO);
    return true;
  };
  EXPECT_EQ(ZO_STATUS_SEEK_ERROR, caughtZoException([&] { _reader.moveByIndex(29); }).status());
  EXPECT_EQ(28, _reader.frameIndex());
  ffmpegCalls().reset();
  EXPECT_EQ(29, numberAt(29));
  EXPECT_EQ(0, numberAt(0));
}

// --- Errors on the way -----------------------------------------------------------------------------------

TEST_F(MoveByIndex, PassesReadErrorsOnAndCanBeRepeated) {
  openClip();
  int reads_left = 3;
  ffmpegCalls().on_read = [&](int& result) {
    result = AVERROR(EIO);
    return reads_left-- == 0;
  };
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.moveByIndex(17), ZO_STATUS_READ_ERROR,
                           "read frame: av_read_frame() returned " + std::to_string(AVERROR(EIO)) + " (" +
                               errorText(AVERROR(EIO)) + ")",
                           "_read");
  EXPECT_EQ(16, _reader.frameIndex());
  EXPECT_EQ(17, numberAt(17));
  EXPECT_EQ(18, nextFrame(_reader).number);
}

TEST_F(MoveByIndex, PassesOverReadErrorsWhenAskedTo) {
  openIndexed(_reader, clip(), true);
  int reads = 0;
  ffmpegCalls().on_read = [&](int& result) {
    result = AVERROR(EIO);
    return ++reads % 2 == 0;
  };
  EXPECT_EQ(17, numberAt(17));
  EXPECT_EQ(3, numberAt(3));
}

TEST_F(MoveByIndex, PassesDecoderErrorsOnAndCanBeRepeated) {
  openClip();
  _reader.decodeEveryPicture();
  int pictures_left = 3;
  ffmpegCalls().on_receive = [&](int& result) {
    result = AVERROR(EINVAL);
    return pictures_left-- == 0;
  };
  const Exception exception = caughtZoException([&] { _reader.moveByIndex(17); });
  EXPECT_EQ(ZO_STATUS_DECODER_ERROR, exception.status());
  EXPECT_STREQ("_decodePacket", exception.function());
  EXPECT_EQ(17, numberAt(17));
}

TEST_F(MoveByIndex, PassesPacketsThatTheDecoderRefusesOn) {
  openClip();
  _reader.decodeEveryPicture();
  int packets_left = 3;
  ffmpegCalls().on_send = [&](int& result) {
    result = AVERROR_INVALIDDATA;
    return packets_left-- == 0;
  };
  EXPECT_ZO_EXCEPTION(_reader.moveByIndex(17), ZO_STATUS_READ_ERROR,
                      "read frame: avcodec_send_packet() returned error " + errorText(AVERROR_INVALIDDATA),
                      "_decodePacket");
  EXPECT_EQ(26, numberAt(26));
}

TEST_F(MoveByIndex, ToTheNextFrameSeeksWhenReadingItHasFailed) {
  openClip();
  EXPECT_EQ(13, numberAt(13));
  ffmpegCalls().on_send = [](int& result) {
    result = AVERROR_INVALIDDATA;
    return true;
  };
  EXPECT_THROW(nextFrame(_reader), Exception);
  ffmpegCalls().reset();
  EXPECT_EQ(14, numberAt(14)) << "its packet was lost with the failure";
  EXPECT_EQ(1U, ffmpegCalls().seeks.size());
}

TEST_F(MoveByIndex, TakesTheWayOnceMoreWithEveryPictureWhenItMetDamage) {
  openClip();
  int packets_left = 3;
  ffmpegCalls().on_send = [&](int& result) {
    result = AVERROR_INVALIDDATA;
    return packets_left-- == 0;
  };
  EXPECT_EQ(17, numberAt(17));
  ffmpegCalls().reset();
  EXPECT_EQ(8, numberAt(8));
  EXPECT_EQ(ffmpegCalls().packets_sent, ffmpegCalls().packets_decoded_without_skipping)
      << "and never leaves one out in that file again";
}

TEST_F(MoveByIndex, PollsNobodyButTheTimeBudget) {
  const std::string path = clip();
  ASSERT_EQ(0, _reader.open(path.c_str(), 0x7FFFFFFF, nullptr, true, false, false));
  AlwaysInterrupts interrupts;
  Frame frame;
  bool got_frame = false;
  ffmpegCalls().poll_before_reading = true;
  EXPECT_EQ(1, _reader.read(frame, got_frame, &interrupts));
  EXPECT_FALSE(got_frame);
  EXPECT_EQ(-1, _reader.frameIndex());
  EXPECT_EQ(17, numberAt(17));
}

// --- Reading with an index -------------------------------------------------------------------------------

TEST_F(MoveByIndex, ReadingEndsAfterTheLastFrameAndLeavesTheCallersFrame) {
  openClip();
  ASSERT_EQ(29, numberAt(29));
  Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(16, 16), 77);
  frame.setTimestamp(123);
  for (int i = 0; i < 3; ++i) {
    bool got_frame = true;
    EXPECT_EQ(0, _reader.read(frame, got_frame, nullptr));
    EXPECT_FALSE(got_frame);
    EXPECT_EQ(29, _reader.frameIndex());
    EXPECT_EQ(1160, _reader.timestamp());
    EXPECT_EQ(77, paintedNumber(frame));
    EXPECT_EQ(123, frame.timestamp());
  }
}

TEST_F(MoveByIndex, LeavesTheEndOfTheStreamAndComesBackToIt) {
  openClip();
  readToTheEnd();
  for (const int index : {0, 29, 28, 15, 29, 1}) {
    EXPECT_EQ(index, numberAt(index));
    readToTheEnd();
    EXPECT_EQ(29, _reader.frameIndex());
  }
}

TEST_F(MoveByIndex, ReadsOnFromALaterKeyFrameToTheSameEndTwice) {
  openClip();
  for (int round = 0; round < 2; ++round) {
    for (int i = 22; i < 30; ++i) {
      if (i == 22) {
        _reader.moveByIndex(22);
      }
      EXPECT_EQ(i, nextFrame(_reader).number);
    }
    Frame frame;
    bool got_frame = true;
    EXPECT_EQ(0, _reader.read(frame, got_frame, nullptr));
    EXPECT_FALSE(got_frame);
  }
}

TEST_F(MoveByIndex, ReplacesTheDrainedDecoderAndReportsWhenItCannot) {
  struct Failure {
    bool FfmpegCalls::*flag;
    const char* message;
  };
  for (const Failure& failure :
       {Failure{&FfmpegCalls::no_decoder_context,
                "initializing decoder: avcodec_alloc_context3() returned NULL"},
        Failure{&FfmpegCalls::no_decoder_parameters,
                "initializing decoder: avcodec_parameters_to_context() returned error"},
        Failure{&FfmpegCalls::no_decoder_open, "initializing decoder: avcodec_open2() returned error"}}) {
    openClip();
    ASSERT_EQ(29, numberAt(29));
    ffmpegCalls().*failure.flag = true;
    Frame frame;
    bool got_frame = true;
    EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.read(frame, got_frame, nullptr), ZO_STATUS_DECODER_ERROR,
                             failure.message, "_setEndOfStream");
    EXPECT_EQ(29, _reader.frameIndex());
    ffmpegCalls().reset();
    EXPECT_EQ(5, numberAt(5)) << "the reader goes on";
  }
}

TEST_F(MoveByIndex, GivesAnEmptyFrameForAPictureThatTheDecoderSkips) {
  ClipOptions options;
  options.frames = 30;
  options.gop = 1;  // every packet is a picture of its own
  openIndexed(_reader, clip(options), true);
  int packet = 0;
  ffmpegCalls().on_send = [&](int& result) {
    result = AVERROR_INVALIDDATA;
    return packet++ == 4;
  };
  for (int i = 0; i < 30; ++i) {
    const SeenFrame frame = nextFrame(_reader);
    EXPECT_EQ(i, frame.index);
    EXPECT_EQ(40 * i, frame.timestamp);
    EXPECT_EQ(i == 4, frame.empty);
    EXPECT_EQ(i == 4 ? -1 : i, frame.number);
  }
}

TEST_F(MoveByIndex, KeepsTheIndexOfLaterPicturesWhenTheFirstIsSkipped) {
  ClipOptions options;
  options.gop = 1;
  openIndexed(_reader, clip(options), true);
  int packet = 0;
  ffmpegCalls().on_send = [&](int& result) {
    result = AVERROR_INVALIDDATA;
    return packet++ < 3;
  };
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(i < 3 ? -1 : i, nextFrame(_reader).number);
  }
}

// --- The scan --------------------------------------------------------------------------------------------

TEST_F(MoveByIndex, CountsThePacketsWhateverTheContainerSays) {
  ClipOptions options;
  options.frames = 17;
  options.audio = true;
  openIndexed(_reader, clip(options));
  EXPECT_EQ(17, _reader.frameCount());
  EXPECT_EQ(-1, _reader.frameIndex());
}

TEST_F(MoveByIndex, OpeningReportsAReadErrorInTheScan) {
  const std::string path = clip();
  int reads_left = 12;
  ffmpegCalls().on_read = [&](int& result) {
    result = AVERROR(EIO);
    return reads_left-- <= 0;
  };
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.open(path.c_str(), -1, nullptr, true, false, false),
                           ZO_STATUS_READ_ERROR,
                           "_readAllPackets: av_read_frame() returned " + std::to_string(AVERROR(EIO)) +
                               " (" + errorText(AVERROR(EIO)) + ")",
                           "_readAllPackets");
  EXPECT_EQ(0, _reader.frameCount());
  EXPECT_STREQ("", _reader.url()) << "a failed opening closes";
}

TEST_F(MoveByIndex, AReadErrorInTheScanShortensTheIndexWhenErrorsAreSkipped) {
  const std::string path = clip();
  int reads = 0;
  ffmpegCalls().on_read = [&](int& result) {
    result = AVERROR(EIO);
    return ++reads == 13;
  };
  ASSERT_EQ(0, _reader.open(path.c_str(), -1, nullptr, true, true, false));
  ffmpegCalls().reset();
  // On newer FFmpeg one packet is read before the scan, to learn the first decoding time.
  ASSERT_GE(_reader.frameCount(), 11);
  ASSERT_LE(_reader.frameCount(), 12);
  const int count = static_cast<int>(_reader.frameCount());
  EXPECT_ZO_EXCEPTION(_reader.moveByIndex(count), ZO_STATUS_OUT_OF_RANGE, outOfRange(count), "moveByIndex");
  EXPECT_EQ(count - 1, numberAt(count - 1));
  EXPECT_EQ(countingUp(count), [&] {
    _reader.moveByIndex(0);
    return numbersOf(readAll(_reader));
  }());
}

TEST_F(MoveByIndex, OpeningReportsAStartThatCannotBeSought) {
  const std::string path = clip();
  ffmpegCalls().on_seek = [](const FfmpegCalls::Seek&, int& result) {
    result = AVERROR(EPERM);
    return true;
  };
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.open(path.c_str(), -1, nullptr, true, false, false),
                           ZO_STATUS_SEEK_ERROR,
                           "_seekToStart: failed to seek to the start frame. av_seek_frame(...) returned " +
                               std::to_string(AVERROR(EPERM)) + " (" + errorText(AVERROR(EPERM)) + ")",
                           "_seekToStart");
  ASSERT_EQ(2U, ffmpegCalls().seeks.size());
  EXPECT_EQ(AVSEEK_FLAG_BACKWARD, ffmpegCalls().seeks[0].flags);
  EXPECT_EQ(AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY, ffmpegCalls().seeks[1].flags);
}

TEST_F(MoveByIndex, OpeningTakesAnyFrameForTheStartWhenItHasTo) {
  const std::string path = clip();
  ffmpegCalls().on_seek = [](const FfmpegCalls::Seek& seek, int& result) {
    result = AVERROR(EPERM);
    return (seek.flags & AVSEEK_FLAG_ANY) == 0;
  };
  EXPECT_EQ(0, _reader.open(path.c_str(), -1, nullptr, true, false, false));
  EXPECT_EQ(30, _reader.frameCount());
}

TEST_F(MoveByIndex, GivesAnAscendingIndexWithBFrames) {
  if (!haveEncoder("libx264")) {
    GTEST_SKIP() << "this FFmpeg cannot encode libx264";
  }
  ClipOptions options;
  options.codec = "libx264";
  options.b_frames = 3;
  openIndexed(_reader, clip(options));
  const std::vector<SeenFrame> sequence = readAll(_reader);
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    EXPECT_EQ(40 * static_cast<long long>(i), sequence[i].timestamp);
  }
}

TEST_F(MoveByIndex, AllowsReopeningAfterEveryKindOfEnd) {
  openClip();
  readToTheEnd();
  openClip();
  EXPECT_EQ(12, numberAt(12));
  EXPECT_THROW(_reader.open("/nonexistent/clip.mp4", -1, nullptr, true, false, false), Exception);
  EXPECT_ZO_EXCEPTION(_reader.moveByIndex(0), ZO_STATUS_NOT_OPENED,
                      "call VideoReader.open(...) before this operation", "_checkIfGood");
  openClip();
  EXPECT_EQ(0, numberAt(0));
}

}  // namespace
}  // namespace test
}  // namespace zo
