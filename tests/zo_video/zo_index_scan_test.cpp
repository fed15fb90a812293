// How opening makes the index, step by step: which failure comes first, where it is cut off, its time budget.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

constexpr char SOURCE[] = "src/zo_video/zo_video_reader_impl";
constexpr int FRAMES = 25;
constexpr int BUDGET_MS = 1000;
constexpr int64_t GREATEST_CLAIM = 0x3FFFFFFF;

std::string startNotFound(int code) {
  return "_seekToStart: failed to seek to the start frame. av_seek_frame(...) returned " +
         std::to_string(code) + " (" + errorText(code) + ")";
}

std::string scanFailed(int code) {
  return "_readAllPackets: av_read_frame() returned " + std::to_string(code) + " (" + errorText(code) + ")";
}

class IndexScan : public testing::Test {
 protected:
  void SetUp() override {
    ClipOptions options;
    options.frames = FRAMES;
    options.gop = 10;
    _path = makeClip(_directory.file("clip.mp4"), options).path;
    reset();
  }
  void TearDown() override { ffmpegCalls().reset(); }

  // The clock stands still unless a test moves it.
  static void reset() {
    ffmpegCalls().reset();
    ffmpegCalls().clock_ms = 0;
  }

  // With navigation and its file.
  int open(bool skip_errors = false, IInterruptable* p_interruptable = nullptr) {
    return _reader.open(_path.c_str(), BUDGET_MS, p_interruptable, true, skip_errors, true);
  }

  std::string sidecar() const { return _path + ".zo"; }
  bool sidecarExists() const { return ::access(sidecar().c_str(), F_OK) == 0; }
  // Opening fails as soon as the file is looked for.
  void makeSidecarUnreadable() { ASSERT_EQ(0, ::mkdir(sidecar().c_str(), 0777)); }

  // From seek number `first` on, counted from 0.
  static void failSeeksFrom(std::size_t first) {
    ffmpegCalls().on_seek = [first](const FfmpegCalls::Seek&, int& result) {
      result = AVERROR(EIO);
      return ffmpegCalls().seeks.size() > first;
    };
  }

  static void claimFrames(int64_t count) {
    ffmpegCalls().on_stream_information = [count](AVFormatContext* p_format, int&) {
      p_format->streams[0]->nb_frames = count;
    };
  }

  void expectClosed() {
    EXPECT_STREQ("", _reader.url());
    EXPECT_EQ(0, _reader.frameCount());
    EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, _reader.format());
    EXPECT_EQ(ZO_STATUS_NOT_OPENED, caughtZoException([&] { _reader.moveByIndex(0); }).status());
  }

  void expectFrames(int count) {
    EXPECT_EQ(count, _reader.frameCount());
    EXPECT_EQ(countingUp(count), numbersOf(readAll(_reader)));
  }

  TempDir _directory;
  std::string _path;
  Reader _reader;
};

// --- The order of its steps ------------------------------------------------------------------------------

TEST_F(IndexScan, SeeksToTheStartBeforeItLooksAtTheContainersCount) {
  claimFrames(GREATEST_CLAIM + 1);
  failSeeksFrom(0);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, open(), ZO_STATUS_SEEK_ERROR, startNotFound(AVERROR(EIO)), "_seekToStart");
  expectClosed();
}

TEST_F(IndexScan, SeeksToTheStartBeforeItLoadsItsFile) {
  makeSidecarUnreadable();
  failSeeksFrom(0);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, open(), ZO_STATUS_SEEK_ERROR, startNotFound(AVERROR(EIO)), "_seekToStart");
  expectClosed();
}

TEST_F(IndexScan, RefusesAContainerThatClaimsTooManyFramesBeforeItLoadsItsFile) {
  makeSidecarUnreadable();
  for (const int64_t claim : {GREATEST_CLAIM + 1, std::numeric_limits<int64_t>::max(), int64_t{-1}}) {
    claimFrames(claim);
    try {
      open();
      ADD_FAILURE() << claim << " frames were believed";
    } catch (const std::length_error& error) {
      EXPECT_STREQ("vector::reserve", error.what()) << claim;
    }
    expectClosed();
  }
}

TEST_F(IndexScan, CountsForItselfUpToTheGreatestClaim) {
  for (const int64_t claim : {GREATEST_CLAIM, int64_t{FRAMES + 1}, int64_t{FRAMES - 1}, int64_t{0}}) {
    ::unlink(sidecar().c_str());
    claimFrames(claim);
    ASSERT_EQ(0, open()) << claim;
    expectFrames(FRAMES);
  }
}

TEST_F(IndexScan, IsNotKeptWhenTheStartIsNotFoundAgainBehindIt) {
  failSeeksFrom(1);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, open(), ZO_STATUS_SEEK_ERROR, startNotFound(AVERROR(EIO)), "_seekToStart");
  EXPECT_GE(ffmpegCalls().packets_read, FRAMES);
  EXPECT_EQ(3U, ffmpegCalls().seeks.size()) << "the second time is tried in both ways";
  EXPECT_FALSE(sidecarExists());
  expectClosed();
}

// --- Cut off ---------------------------------------------------------------------------------------------

enum class CutOff { INTERRUPTED, TIMED_OUT, QUERY_THREW };

struct CutOffCase {
  const char* name;
  CutOff how;
};

class CutOffScan : public IndexScan, public testing::WithParamInterface<CutOffCase>, public IInterruptable {
 protected:
  static constexpr int PACKETS = 12;

  int isInterrupted() override {
    if (_due && GetParam().how == CutOff::QUERY_THREW) {
      throw Exception(nullptr, ZO_STATUS_TIMEOUT, "query", "query_file", 5, "from the query");
    }
    return _due && GetParam().how == CutOff::INTERRUPTED ? 1 : 0;
  }

  // Behind so many packets. One of them may have been read before the scan, to learn the first decoding time.
  void cutOffBehindPackets() {
    ffmpegCalls().poll_before_reading = true;
    ffmpegCalls().on_read = [this](int&) {
      _due = ffmpegCalls().packets_read >= PACKETS;
      if (_due && GetParam().how == CutOff::TIMED_OUT) {
        *ffmpegCalls().clock_ms += BUDGET_MS;
      }
      return false;
    };
  }

  bool _due = false;
};

TEST_P(CutOffScan, FailsWithTheErrorOfTheRead) {
  cutOffBehindPackets();
  EXPECT_ZO_EXCEPTION_FROM(SOURCE, open(false, this), ZO_STATUS_READ_ERROR, scanFailed(AVERROR_EXIT),
                           "_readAllPackets");
  EXPECT_FALSE(sidecarExists());
  expectClosed();
}

TEST_P(CutOffScan, EndsThereAndIsKeptWhenErrorsAreSkipped) {
  ASSERT_EQ(0, open());
  const std::string whole = readFile(sidecar());
  ASSERT_EQ(0, ::unlink(sidecar().c_str()));
  ffmpegCalls().resetCounts();
  cutOffBehindPackets();
  ASSERT_EQ(0, open(true, this));
  reset();
  const int count = static_cast<int>(_reader.frameCount());
  EXPECT_GE(count, PACKETS - 1);
  EXPECT_LE(count, PACKETS);
  const std::string kept = readFile(sidecar());
  EXPECT_EQ(count, std::count(kept.begin(), kept.end(), '\n'));
  EXPECT_EQ(whole.substr(0, kept.size()), kept);
  expectFrames(count);
}

INSTANTIATE_TEST_SUITE_P(Ways, CutOffScan,
                         testing::Values(CutOffCase{"Interrupted", CutOff::INTERRUPTED},
                                         CutOffCase{"TimedOut", CutOff::TIMED_OUT},
                                         CutOffCase{"QueryThrew", CutOff::QUERY_THREW}),
                         CaseName());

// --- Its time budget -------------------------------------------------------------------------------------

TEST_F(IndexScan, HasItsBudgetForEachPacketAnew) {
  ffmpegCalls().poll_before_reading = true;
  ffmpegCalls().on_read = [](int&) {
    *ffmpegCalls().clock_ms += BUDGET_MS - 1;
    return false;
  };
  ASSERT_EQ(0, open());
  EXPECT_EQ(FRAMES, _reader.frameCount());
  EXPECT_GE(*ffmpegCalls().clock_ms, FRAMES * (BUDGET_MS - 1)) << "every packet took nearly all of it";
}

// Takes its time over the first poll.
class SlowQuery : public IInterruptable {
 public:
  explicit SlowQuery(int first_ms) : _first_ms(first_ms) {}
  int isInterrupted() override {
    *ffmpegCalls().clock_ms += _first_ms;
    _first_ms = 0;
    return 0;
  }

 private:
  int _first_ms;
};

class OpeningBudget : public IndexScan {
 protected:
  int openTaking(int opening_ms, int looking_ms) {
    reset();
    ffmpegCalls().on_stream_information = [looking_ms](AVFormatContext* p_format, int& result) {
      *ffmpegCalls().clock_ms += looking_ms;
      const AVIOInterruptCB& interrupt = p_format->interrupt_callback;
      if (interrupt.callback(interrupt.opaque) != 0) {
        result = AVERROR_EXIT;
      }
    };
    SlowQuery query(opening_ms);
    return _reader.open(_path.c_str(), BUDGET_MS, &query, false, false, false);
  }
};

TEST_F(OpeningBudget, IsOneForFindingTheStreamsAndLookingAtThem) {
  EXPECT_EQ(0, openTaking(400, BUDGET_MS - 400 - 1));
  EXPECT_ZO_EXCEPTION_FROM(
      SOURCE, openTaking(400, BUDGET_MS - 400), ZO_STATUS_DECODER_ERROR,
      "initializing decoder: avformat_find_stream_info() returned error " + errorText(AVERROR_EXIT), "open");
  expectClosed();
}

}  // namespace
}  // namespace test
}  // namespace zo
