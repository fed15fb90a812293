// What comes after a call that failed or was cut off: reading goes on, and jumps are as exact as before.
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

constexpr char SOURCE[] = "src/zo_video/zo_video_reader_impl";
constexpr int BUDGET_MS = 1000;

std::string readFailed(int code) {
  return "read frame: av_read_frame() returned " + std::to_string(code) + " (" + errorText(code) + ")";
}

class ReaderRecovery : public testing::Test {
 protected:
  void SetUp() override { reset(); }
  void TearDown() override { ffmpegCalls().reset(); }

  // The clock stands still unless a test moves it.
  static void reset() {
    ffmpegCalls().reset();
    ffmpegCalls().clock_ms = 0;
  }

  void open(const std::string& path, bool navigation, bool skip_errors = false) {
    ASSERT_EQ(0, _reader.open(path.c_str(), BUDGET_MS, nullptr, navigation, skip_errors, false));
  }

  // Reads on to the end of the stream; gives the numbers, -1 for empty frames.
  std::vector<int> numbersToTheEnd() {
    constexpr std::size_t MOST = 1000;
    std::vector<int> numbers;
    Frame frame;
    for (bool got_frame = true; numbers.size() < MOST;) {
      EXPECT_EQ(0, _reader.read(frame, got_frame, nullptr));
      if (!got_frame) {
        return numbers;
      }
      numbers.push_back(frame.initialized() ? paintedNumber(frame) : -1);
    }
    ADD_FAILURE() << "the stream does not end";
    return numbers;
  }

  int numberAt(long long index) {
    _reader.moveByIndex(index);
    return nextFrame(_reader).number;
  }

  TempDir _directory;
  Reader _reader;
};

// --- An end that is none ---------------------------------------------------------------------------------

enum class Loss {
  INTERRUPTED,
  INTERRUPTED_BEHIND_THE_PACKET,
  TIMED_OUT,
  QUERY_THREW,
  READ_FAILED,
  READ_ERROR_SKIPPED,
  PACKET_REFUSED,
  DECODING_FAILED
};

struct LossCase {
  const char* name;
  Loss loss;
};

class ThrowingQuery : public IInterruptable {
 public:
  int isInterrupted() override {
    throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, "query", "query_file", 5, "from the query");
  }
};

class FalseEnd : public ReaderRecovery, public testing::WithParamInterface<LossCase> {
 protected:
  static void endTheFile() {
    ffmpegCalls().on_read = [](int& result) {
      result = AVERROR_EOF;
      return true;
    };
  }

  static std::function<bool(int&)> answerOnce(int answer) {
    return [answer, due = true](int& result) mutable {
      result = answer;
      const bool answers = due;
      due = false;
      return answers;
    };
  }

  int readWith(IInterruptable* p_interruptable) {
    Frame frame;
    bool got_frame = false;
    return _reader.read(frame, got_frame, p_interruptable);
  }

  Status statusOfRead(IInterruptable* p_interruptable = nullptr) {
    return caughtZoException([&] { readWith(p_interruptable); }).status();
  }

  // One read loses its packet. What comes then is the end of the file, as with demuxers that take a call that
  // was cut off for it.
  void losePacketAndEnd() {
    FfmpegCalls& calls = ffmpegCalls();
    AlwaysInterrupts interrupts;
    ThrowingQuery throws;
    switch (GetParam().loss) {
      case Loss::INTERRUPTED:
        calls.poll_before_reading = true;
        EXPECT_EQ(1, readWith(&interrupts));
        break;
      case Loss::INTERRUPTED_BEHIND_THE_PACKET:
        calls.poll_after_reading = true;
        EXPECT_EQ(1, readWith(&interrupts));
        break;
      case Loss::TIMED_OUT:
        calls.poll_before_reading = true;
        calls.on_read = [](int&) {
          *ffmpegCalls().clock_ms += BUDGET_MS;
          return false;
        };
        EXPECT_EQ(ZO_STATUS_TIMEOUT, statusOfRead());
        break;
      case Loss::QUERY_THREW:
        calls.poll_before_reading = true;
        EXPECT_EQ(ZO_STATUS_NOT_SUPPORTED, statusOfRead(&throws));
        break;
      case Loss::READ_FAILED:
        calls.on_read = answerOnce(AVERROR(EIO));
        EXPECT_EQ(ZO_STATUS_READ_ERROR, statusOfRead());
        break;
      case Loss::READ_ERROR_SKIPPED:
        calls.on_read = [failed = false](int& result) mutable {
          result = failed ? AVERROR_EOF : AVERROR(EIO);
          failed = true;
          return true;
        };
        EXPECT_EQ(0, readWith(nullptr));
        break;
      case Loss::PACKET_REFUSED:
        calls.on_send = answerOnce(AVERROR_INVALIDDATA);
        EXPECT_EQ(ZO_STATUS_READ_ERROR, statusOfRead());
        break;
      case Loss::DECODING_FAILED:
        calls.on_receive = answerOnce(AVERROR_INVALIDDATA);
        EXPECT_EQ(ZO_STATUS_DECODER_ERROR, statusOfRead());
        break;
    }
    calls.poll_before_reading = calls.poll_after_reading = false;
    endTheFile();
  }
};

// In the middle of a long group of pictures. Behind a B-frame the decoder holds a picture back, which still
// comes out at the end.
TEST_P(FalseEnd, IsNotTakenForTheStreamsEndByLaterJumps) {
  ClipOptions options;
  options.frames = 80;
  options.gop = 40;
  options.b_frames = 2;
  const std::string path = makeClip(_directory.file("clip.mkv"), options).path;
  reset();
  openIndexed(_reader, path);
  const std::vector<SeenFrame> sequence = readAll(_reader, Pixels::DIGEST);
  ASSERT_EQ(80U, sequence.size());
  for (const int frames_before : {1, 17, 50}) {
    SCOPED_TRACE("behind frame " + std::to_string(frames_before));
    open(path, true, GetParam().loss == Loss::READ_ERROR_SKIPPED);
    for (int i = 0; i < frames_before; ++i) {
      ASSERT_TRUE(sameFrame(sequence[static_cast<std::size_t>(i)], nextFrame(_reader, Pixels::DIGEST)));
    }
    losePacketAndEnd();
    numbersToTheEnd();
    EXPECT_EQ(79, _reader.frameIndex()) << "every frame of the index is delivered, though empty";
    reset();
    for (const JumpOrder& order : jumpOrders()) {
      if (order.name == std::string("Shuffled") || order.name == std::string("AfterTheEnd")) {
        expectJumpsGiveTheSequence(_reader, sequence, order, Pixels::DIGEST, 20);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Losses, FalseEnd,
    testing::Values(LossCase{"Interrupted", Loss::INTERRUPTED},
                    LossCase{"InterruptedBehindThePacket", Loss::INTERRUPTED_BEHIND_THE_PACKET},
                    LossCase{"TimedOut", Loss::TIMED_OUT}, LossCase{"QueryThrew", Loss::QUERY_THREW},
                    LossCase{"ReadFailed", Loss::READ_FAILED},
                    LossCase{"ReadErrorSkipped", Loss::READ_ERROR_SKIPPED},
                    LossCase{"PacketRefused", Loss::PACKET_REFUSED},
                    LossCase{"DecodingFailed", Loss::DECODING_FAILED}),
    CaseName());

// The real end, met without the last pictures.
class RefusedAtTheEnd : public ReaderRecovery, public testing::WithParamInterface<int> {};

TEST_P(RefusedAtTheEnd, PacketsAreDecodedByLaterJumps) {
  ClipOptions options;
  options.gop = 10;
  const std::string path = makeClip(_directory.file("clip.mp4"), options).path;
  reset();
  open(path, true);
  const int refused = GetParam();
  ffmpegCalls().on_send = [refused, packet = 0](int& result) mutable {
    result = AVERROR(ENOMEM);
    return packet++ >= 30 - refused;
  };
  for (int i = 0; i < 30 - refused; ++i) {
    EXPECT_EQ(i, nextFrame(_reader).number);
  }
  for (int i = 0; i < refused; ++i) {
    EXPECT_ZO_EXCEPTION_FROM(SOURCE, nextFrame(_reader), ZO_STATUS_READ_ERROR,
                             "read frame: avcodec_send_packet() returned error " + errorText(AVERROR(ENOMEM)),
                             "_decodePacket");
  }
  EXPECT_EQ(std::vector<int>(static_cast<std::size_t>(refused), -1), numbersToTheEnd());
  ffmpegCalls().on_send = nullptr;
  for (const int index : {29, 29, 26, 22, 27, 28, 25, 29, 0, 29}) {
    EXPECT_EQ(index, numberAt(index));
  }
  _reader.moveByIndex(20);
  EXPECT_EQ((std::vector<int>{20, 21, 22, 23, 24, 25, 26, 27, 28, 29}), numbersToTheEnd());
}

INSTANTIATE_TEST_SUITE_P(Packets, RefusedAtTheEnd, testing::Values(1, 2, 4, 9),
                         [](const auto& test) { return std::to_string(test.param); });

// --- Calls that were cut off -----------------------------------------------------------------------------

// Stops at one poll and never again.
class StopsOnce : public IInterruptable {
 public:
  explicit StopsOnce(int poll) : _poll(poll) {}
  int isInterrupted() override {
    if (++_polls != _poll) {
      return 0;
    }
    stopped = true;
    while_looking_at_streams = ffmpegCalls().looking_at_streams;
    return 1;
  }

  bool stopped = false;
  bool while_looking_at_streams = false;

 private:
  int _poll;
  int _polls = 0;
};

class CutOffLook : public ReaderRecovery, public testing::WithParamInterface<const char*> {};

// Opening goes on where FFmpeg makes do with what it has seen of the streams until then.
TEST_P(CutOffLook, AtTheStreamsKeepsNeitherTheScanNorReadingFromTheEnd) {
  constexpr int FRAMES = 90;
  const std::string extension = GetParam();
  ClipOptions options;
  options.codec = extension == "ts" ? "mpeg2video" : "mpeg4";
  options.frames = FRAMES;
  options.width = 192;
  options.height = 144;
  const std::string path = makeClip(_directory.file("clip." + extension), options).path;
  int scanned = 0;
  bool stopped = true;
  for (int poll = 1; stopped; ++poll) {
    SCOPED_TRACE("stopped at poll " + std::to_string(poll));
    reset();
    StopsOnce stop(poll);
    int result = -1;
    std::string error;
    try {
      result = _reader.open(path.c_str(), BUDGET_MS, &stop, true, false, false);
    } catch (const Exception& exception) {
      error = exception.what();
    }
    stopped = stop.stopped;
    if (stop.while_looking_at_streams && ffmpegCalls().stream_information >= 0) {
      ASSERT_EQ(0, result) << error;
      const bool indexed = _reader.frameCount() != 0;  // a duration may not have been found
      const std::size_t frames = numbersToTheEnd().size();
      if (indexed) {
        ++scanned;
        EXPECT_EQ(FRAMES, _reader.frameCount());
        EXPECT_EQ(std::size_t{FRAMES}, frames);
      }
      // In order, nothing but the end of the file ends the stream. What was cut in two the decoder may
      // refuse.
      StopsOnce again(poll);
      ASSERT_EQ(0, _reader.open(path.c_str(), BUDGET_MS, &again, false, true, false));
      EXPECT_NO_THROW(numbersToTheEnd());
    }
  }
  EXPECT_GT(scanned, 0) << "no opening got as far as the scan";
}

INSTANTIATE_TEST_SUITE_P(Containers, CutOffLook, testing::Values("ts", "avi", "mp4", "mkv"),
                         [](const auto& test) { return std::string(test.param); });

// MPEG-TS is sought by reading about in the file, and reading polls the budget, which seeks do not restart.
class CutOffSeek : public ReaderRecovery {
 protected:
  void SetUp() override {
    ReaderRecovery::SetUp();
    ClipOptions options;
    options.codec = "mpeg2video";
    options.frames = 300;
    options.width = 160;
    options.height = 112;
    const std::string path = makeClip(_directory.file("clip.ts"), options).path;
    reset();
    open(path, true);
    ASSERT_EQ(300, _reader.frameCount());
    for (int i = 0; i < 3; ++i) {
      ASSERT_EQ(i, nextFrame(_reader).number);
    }
    *ffmpegCalls().clock_ms += BUDGET_MS;
  }

  void expectCutOff(long long index) {
    const Exception exception = caughtZoException([&] { _reader.moveByIndex(index); });
    EXPECT_EQ(ZO_STATUS_SEEK_ERROR, exception.status());
    EXPECT_STREQ("moveByIndex", exception.function());
    EXPECT_EQ(0U, std::string(exception.what())
                      .find("Failure in VideoReader::move(frame_index == " + std::to_string(index) +
                            "): failed to seek to new frame. av_seek_frame(...) returned "))
        << exception.what();
  }
};

TEST_F(CutOffSeek, LetsReadsGoOnToTheEnd) {
  expectCutOff(200);
  EXPECT_EQ(100U, numbersToTheEnd().size());
  for (const int index : {200, 299, 0, 150}) {
    EXPECT_EQ(index, numberAt(index));
  }
}

TEST_F(CutOffSeek, IsCutOffAgainUntilAReadHasRestartedTheBudget) {
  expectCutOff(200);
  expectCutOff(200);
  Frame frame;
  bool got_frame = false;
  EXPECT_EQ(0, _reader.read(frame, got_frame, nullptr));
  EXPECT_EQ(200, numberAt(200));
  _reader.moveByIndex(290);
  EXPECT_EQ((std::vector<int>{290, 291, 292, 293, 294, 295, 296, 297, 298, 299}), numbersToTheEnd());
}

// --- A jump that fails behind its seek -------------------------------------------------------------------

class FailedLanding : public ReaderRecovery, public testing::WithParamInterface<bool> {};

TEST_P(FailedLanding, LetsReadsGoOnFromThere) {
  ClipOptions options;
  options.gop = 10;
  const std::string path = makeClip(_directory.file("clip.mp4"), options).path;
  reset();
  open(path, true);
  if (GetParam()) {
    EXPECT_EQ(countingUp(30), numbersToTheEnd());
  }
  ffmpegCalls().on_read = [](int& result) {
    result = AVERROR(EIO);
    return true;
  };
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.moveByIndex(10), ZO_STATUS_READ_ERROR, readFailed(AVERROR(EIO)),
                           "_read");
  ffmpegCalls().on_read = nullptr;
  ffmpegCalls().resetCounts();
  std::vector<int> expected = countingUp(30);
  expected.erase(expected.begin(), expected.begin() + 10);
  EXPECT_EQ(expected, numbersToTheEnd());
  EXPECT_GE(ffmpegCalls().packets_read, 20);
}

INSTANTIATE_TEST_SUITE_P(Places, FailedLanding, testing::Bool(),
                         [](const auto& test) { return test.param ? "BehindTheEnd" : "AtTheStart"; });

// --- Errors that are skipped -----------------------------------------------------------------------------

class SkippedErrors : public ReaderRecovery, public testing::WithParamInterface<bool> {
 protected:
  void SetUp() override {
    ReaderRecovery::SetUp();
    ClipOptions options;
    options.frames = 8;
    options.gop = 1;
    const std::string path = makeClip(_directory.file("clip.mp4"), options).path;
    reset();
    open(path, GetParam(), true);
  }

  // Before each packet.
  static void failBetweenPackets(int failures, int cost_ms) {
    ffmpegCalls().poll_before_reading = true;
    ffmpegCalls().on_read = [failures, cost_ms, left = failures](int& result) mutable {
      *ffmpegCalls().clock_ms += cost_ms;
      result = AVERROR(EIO);
      if (left-- > 0) {
        return true;
      }
      left = failures;
      return false;
    };
  }
};

TEST_P(SkippedErrors, EndInAnErrorWhenTenThousandComeInARow) {
  int failures = 0;
  ffmpegCalls().on_read = [&failures](int& result) {
    ++failures;
    result = AVERROR(EIO);
    return true;
  };
  Frame frame;
  bool got_frame = true;
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, _reader.read(frame, got_frame, nullptr), ZO_STATUS_READ_ERROR,
                           readFailed(AVERROR(EIO)), "_read");
  EXPECT_FALSE(got_frame);
  EXPECT_GE(failures, 10000);
  EXPECT_LE(failures, 10001) << "as many are skipped";
  EXPECT_EQ(-1, _reader.frameIndex());
  ffmpegCalls().on_read = nullptr;
  EXPECT_EQ(countingUp(8), numbersToTheEnd()) << "the reader stays open";
}

TEST_P(SkippedErrors, AreNoMatterAsLongAsPacketsComeBetweenThem) {
  failBetweenPackets(9999, 0);
  EXPECT_EQ(countingUp(8), numbersToTheEnd());
}

TEST_P(SkippedErrors, HaveTheTimeBudgetEachAnew) {
  failBetweenPackets(3, BUDGET_MS - 1);
  EXPECT_EQ(countingUp(8), numbersToTheEnd());
  EXPECT_GE(*ffmpegCalls().clock_ms, 8 * 4 * (BUDGET_MS - 1));
}

INSTANTIATE_TEST_SUITE_P(Modes, SkippedErrors, testing::Bool(),
                         [](const auto& test) { return test.param ? "Indexed" : "InOrder"; });

}  // namespace
}  // namespace test
}  // namespace zo
