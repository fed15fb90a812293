// Ending calls that take too long, or that the caller no longer wants.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>

#include "zo_reader_steps.h"
#include "zo_test_support.h"

namespace zo {
namespace {

using test::ClipOptions;
using test::StalledServer;
using test::StopAfter;

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_reader_impl";
constexpr char TIMEOUT_MESSAGE[] = "Video stream read/open timeout.";
constexpr char CHECK[] = "_checkCallBackStatus";
constexpr char CLOSED_MESSAGE[] = "call VideoReader.open(...) before this operation";

// Runs a body instead of answering.
class Query : public IInterruptable {
 public:
  explicit Query(std::function<int()> body) : _body(std::move(body)) {}
  int isInterrupted() override { return _body(); }

 private:
  std::function<int()> _body;
};

int throwZo() {
  throw Exception(nullptr, ZO_STATUS_READ_ERROR, "query", "query_file", 5, "from the query");
}
int throwStd() {
  throw std::runtime_error("a text that is lost");
}
int throwOther() {
  throw 42;
}

int open(VideoReader& reader, const std::string& url, int timeout_ms, IInterruptable* p_interruptable) {
  return reader.open(url.c_str(), timeout_ms, p_interruptable, false, false, false);
}

// No test of this program may hang: nothing here waits longer than this.
class Interruption : public testing::Test {
 protected:
  void TearDown() override { EXPECT_LT(std::chrono::steady_clock::now() - _start, std::chrono::seconds(60)); }

  void expectNotOpen(VideoReader& reader) {
    Frame frame;
    bool got_frame = false;
    EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, reader.read(frame, got_frame, nullptr), ZO_STATUS_NOT_OPENED,
                             CLOSED_MESSAGE, "_checkIfGood");
    EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, reader.format());
    EXPECT_EQ(nullptr, reader.getMetadataValue("title"));
  }

  std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};

class SilentServer : public Interruption, public testing::WithParamInterface<const char*> {
 protected:
  StalledServer _server;
  const std::string _url = _server.url(GetParam(), "clip");
};

TEST_P(SilentServer, IsGivenUpWhenTheBudgetRunsOut) {
  VideoReader reader;
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, open(reader, _url, 200, nullptr), ZO_STATUS_TIMEOUT, TIMEOUT_MESSAGE,
                           CHECK);
  EXPECT_GE(std::chrono::steady_clock::now() - _start, std::chrono::milliseconds(150));
  EXPECT_EQ(1, _server.awaitConnection());
  expectNotOpen(reader);
  EXPECT_STREQ("", reader.url());
}

TEST_P(SilentServer, IsGivenUpAtOnceWithABudgetOfZero) {
  VideoReader reader;
  EXPECT_ZO_EXCEPTION(open(reader, _url, 0, nullptr), ZO_STATUS_TIMEOUT, TIMEOUT_MESSAGE, CHECK);
  expectNotOpen(reader);
}

TEST_P(SilentServer, IsGivenUpWithoutAnExceptionWhenTheCallerSaysSo) {
  VideoReader reader;
  StopAfter stop(3);
  EXPECT_EQ(1, open(reader, _url, -1, &stop));
  EXPECT_GE(stop.polls, 3);
  expectNotOpen(reader);
  EXPECT_EQ(_url, reader.url());
}

TEST_P(SilentServer, CountsAsInterruptedWhenBothHappenInTheSamePoll) {
  VideoReader reader;
  StopAfter stop(1);
  EXPECT_EQ(1, open(reader, _url, 0, &stop));
}

TEST_P(SilentServer, LetsAnExceptionOfTheQueryThroughWrapped) {
  VideoReader reader;
  Query query(throwZo);
  const Exception caught = test::caughtZoException([&] { open(reader, _url, -1, &query); });
  EXPECT_EQ(ZO_STATUS_READ_ERROR, caught.status());
  EXPECT_STREQ("from the query", caught.what());
  EXPECT_STREQ(CHECK, caught.function());
  EXPECT_STREQ(SOURCE_FILE, caught.file());
  ASSERT_NE(nullptr, caught.previous());
  EXPECT_STREQ("query", caught.previous()->function());
  EXPECT_STREQ("from the query", caught.previous()->what());
  expectNotOpen(reader);
}

TEST_P(SilentServer, NamesOtherExceptionsOfTheQuery) {
  VideoReader reader;
  Query standard(throwStd);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, open(reader, _url, -1, &standard), ZO_STATUS_STD_EXCEPTION,
                           "std::exception(...) occurred in callback function", CHECK);
  Query other(throwOther);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, open(reader, _url, -1, &other), ZO_STATUS_UNKNOWN_ERROR,
                           "Unknown exception occurred in callback function", CHECK);
  expectNotOpen(reader);
}

INSTANTIATE_TEST_SUITE_P(Protocols, SilentServer, testing::Values("http", "rtmp", "rtsp", "tcp"),
                         [](const auto& test_case) { return std::string(test_case.param); });

// ---- Local files poll as well

class LocalFile : public Interruption {
 protected:
  LocalFile() { _path = test::makeClip(_directory.file("a.mkv"), ClipOptions()).path; }

  test::TempDir _directory;
  std::string _path;
};

TEST_F(LocalFile, TimesOutAtTheFirstPollWithABudgetOfZero) {
  VideoReader reader;
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, open(reader, _path, 0, nullptr), ZO_STATUS_TIMEOUT, TIMEOUT_MESSAGE,
                           CHECK);
  expectNotOpen(reader);
}

TEST_F(LocalFile, NeverTimesOutWithANegativeBudget) {
  for (const int budget : {-1, -1000, -2147483647 - 1}) {
    VideoReader reader;
    EXPECT_EQ(0, open(reader, _path, budget, nullptr));
    EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
  }
}

TEST_F(LocalFile, IsReadWithinTheGreatestBudget) {
  VideoReader reader;
  EXPECT_EQ(0, open(reader, _path, 2147483647, nullptr));
  EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
}

TEST_F(LocalFile, IsNotOpenedWhenTheCallerStopsAtOnce) {
  VideoReader reader;
  StopAfter stop(1);
  EXPECT_EQ(1, open(reader, _path, -1, &stop));
  EXPECT_EQ(1, stop.polls);
  expectNotOpen(reader);
  EXPECT_EQ(_path, reader.url());
  EXPECT_EQ(0, open(reader, _path, -1, nullptr));
  EXPECT_EQ(test::countTo(30), test::numbersOf(test::readAll(reader)));
}

TEST_F(LocalFile, ClosesWhatWasOpenBeforeAnInterruptedOpen) {
  VideoReader reader;
  open(reader, _path, -1, nullptr);
  StopAfter stop(1);
  EXPECT_EQ(1, open(reader, _path, -1, &stop));
  expectNotOpen(reader);
}

TEST_F(LocalFile, IsPolledThroughTheObjectOfTheRunningCallOnly) {
  StopAfter while_opening(0);
  VideoReader reader;
  open(reader, _path, -1, &while_opening);
  const int polls = while_opening.polls;
  EXPECT_GT(polls, 0);
  EXPECT_EQ(30U, test::readAll(reader).size());
  EXPECT_EQ(polls, while_opening.polls);
}

// ---- Wherever the opening is stopped, it ends in one of the ways that are documented

enum class Mode { IN_ORDER, INDEXED, INDEXED_SKIPPING_ERRORS };

class StoppedOpening : public Interruption,
                       public testing::WithParamInterface<std::tuple<const char*, Mode>> {
 protected:
  static constexpr std::size_t FRAMES = 60;

  // Too large to be in the input's buffer when the opening begins.
  void SetUp() override {
    const std::string extension = std::get<0>(GetParam());
    ClipOptions options;
    options.codec = extension == "ts" ? "mpeg2video" : "mpeg4";
    options.frames = static_cast<int>(FRAMES);
    options.width = 128;
    options.height = 96;
    _path = test::makeClip(_directory.file("a." + extension), options).path;
  }

  static Mode mode() { return std::get<1>(GetParam()); }

  int openAsked(IInterruptable* p_interruptable) {
    return _reader.open(_path.c_str(), -1, p_interruptable, mode() != Mode::IN_ORDER,
                        mode() == Mode::INDEXED_SKIPPING_ERRORS, false);
  }

  static bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
  }

  // The error of the step that was stopped.
  static bool isDocumented(const Exception& exception) {
    const std::string message = exception.what();
    switch (exception.status()) {
      case ZO_STATUS_DECODER_ERROR:
        return startsWith(message, "initializing decoder: avformat_find_stream_info() returned error ");
      case ZO_STATUS_READ_ERROR:
        return mode() == Mode::INDEXED && startsWith(message, "_readAllPackets: av_read_frame() returned ");
      case ZO_STATUS_SEEK_ERROR:
        return mode() != Mode::IN_ORDER &&
               startsWith(message,
                          "_seekToStart: failed to seek to the start frame. av_seek_frame(...) returned ");
      default:
        return false;
    }
  }

  // Nobody asks to stop any more. The packet that was cut in two may be refused; the end is the end.
  void expectReadableToTheEnd() {
    Frame frame;
    bool got_frame = true;
    for (std::size_t reads = 0; got_frame; ++reads) {
      ASSERT_LT(reads, 2 * FRAMES) << "the stream does not end";
      try {
        EXPECT_EQ(0, _reader.read(frame, got_frame, nullptr));
      } catch (const Exception& exception) {
        EXPECT_TRUE(startsWith(exception.what(), "read frame: avcodec_")) << exception.what();
        got_frame = true;
      }
    }
  }

  test::TempDir _directory;
  std::string _path;
  VideoReader _reader;
};

TEST_P(StoppedOpening, EndsAsDocumentedAtEveryPoll) {
  StopAfter count(0);
  ASSERT_EQ(0, openAsked(&count));
  ASSERT_GT(count.polls, 1);
  const int stride = static_cast<int>(test::repetitions(1, 3));
  for (int limit = 1; limit <= count.polls; limit += stride) {
    SCOPED_TRACE("stopped at poll " + std::to_string(limit) + " of " + std::to_string(count.polls));
    StopAfter stop(limit);
    try {
      if (openAsked(&stop) == 1) {
        expectNotOpen(_reader);
        EXPECT_EQ(_path, _reader.url());
      } else {
        expectReadableToTheEnd();
      }
    } catch (const Exception& exception) {
      EXPECT_TRUE(isDocumented(exception)) << exception.what();
      expectNotOpen(_reader);
    }
  }
  ASSERT_EQ(0, openAsked(nullptr));
  EXPECT_EQ(test::countTo(FRAMES), test::numbersOf(test::readAll(_reader)));
}

INSTANTIATE_TEST_SUITE_P(Files, StoppedOpening,
                         testing::Combine(testing::Values("mkv", "mp4", "avi", "ts"),
                                          testing::Values(Mode::IN_ORDER, Mode::INDEXED,
                                                          Mode::INDEXED_SKIPPING_ERRORS)),
                         [](const auto& test_case) {
                           const Mode mode = std::get<1>(test_case.param);
                           return std::string(std::get<0>(test_case.param)) +
                                  (mode == Mode::IN_ORDER  ? "InOrder"
                                   : mode == Mode::INDEXED ? "Indexed"
                                                           : "IndexedSkippingErrors");
                         });

// ---- A server that delivers the start of a clip and then nothing: reading has to wait

class StalledClip : public Interruption {
 protected:
  StalledClip() {
    ClipOptions options;
    options.codec = "mjpeg";  // each picture comes out as soon as its packet is there
    options.frames = 120;
    options.width = 128;
    options.height = 96;
    const test::TempDir directory;
    const std::string bytes = test::readFile(test::makeClip(directory.file("a.avi"), options).path);
    _p_server = std::make_unique<StalledServer>(test::httpHead(static_cast<long long>(bytes.size())) +
                                                bytes.substr(0, bytes.size() / 2));
    _url = _p_server->url("http", "a.avi");
  }

  // Reads what has arrived; gives the number of frames. The reader is then about to wait.
  int readWhatIsThere(VideoReader& reader) {
    int frames = 0;
    try {
      for (;;) {
        Frame frame;
        bool got_frame = false;
        StopAfter stop(2000000);
        EXPECT_EQ(0, reader.read(frame, got_frame, &stop));
        EXPECT_TRUE(got_frame);
        EXPECT_EQ(frames, test::paintedNumber(frame));
        ++frames;
      }
    } catch (const Exception& exception) {
      EXPECT_EQ(ZO_STATUS_TIMEOUT, exception.status()) << exception.what();
      EXPECT_STREQ(TIMEOUT_MESSAGE, exception.what());
      EXPECT_STREQ(CHECK, exception.function());
    }
    return frames;
  }

  std::unique_ptr<StalledServer> _p_server;
  std::string _url;
};

TEST_F(StalledClip, TimesOutAndStaysOpen) {
  VideoReader reader;
  ASSERT_EQ(0, open(reader, _url, 500, nullptr));
  const int frames = readWhatIsThere(reader);
  EXPECT_GT(frames, 10);
  EXPECT_LT(frames, 100);
  EXPECT_EQ(frames - 1, reader.frameIndex());
  EXPECT_EQ(40 * (frames - 1), reader.timestamp());
  Frame frame;
  bool got_frame = true;
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, reader.read(frame, got_frame, nullptr), ZO_STATUS_TIMEOUT,
                           TIMEOUT_MESSAGE, CHECK);
  EXPECT_FALSE(got_frame);
  EXPECT_EQ(frames - 1, reader.frameIndex());
}

TEST_F(StalledClip, IsInterruptedAndStaysOpen) {
  VideoReader reader;
  ASSERT_EQ(0, open(reader, _url, 500, nullptr));
  const int frames = readWhatIsThere(reader);
  Frame frame = test::makeNoiseFrame(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 1);
  for (int i = 0; i < 3; ++i) {
    StopAfter stop(1);
    bool got_frame = true;
    EXPECT_EQ(1, reader.read(frame, got_frame, &stop));
    EXPECT_FALSE(got_frame);
    EXPECT_EQ(frames - 1, reader.frameIndex());
    EXPECT_EQ(Size(3, 3), frame.size());
  }
}

TEST_F(StalledClip, LetsExceptionsOfTheQueryThrough) {
  VideoReader reader;
  ASSERT_EQ(0, open(reader, _url, 500, nullptr));
  readWhatIsThere(reader);
  Frame frame;
  bool got_frame = true;
  Query zo_query(throwZo);
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, reader.read(frame, got_frame, &zo_query), ZO_STATUS_READ_ERROR,
                           "from the query", CHECK);
  const Exception caught = test::caughtZoException([&] { reader.read(frame, got_frame, &zo_query); });
  ASSERT_NE(nullptr, caught.previous());
  EXPECT_STREQ("query", caught.previous()->function());
  Query standard(throwStd);
  EXPECT_ZO_EXCEPTION(reader.read(frame, got_frame, &standard), ZO_STATUS_STD_EXCEPTION,
                      "std::exception(...) occurred in callback function", CHECK);
  Query other(throwOther);
  EXPECT_ZO_EXCEPTION(reader.read(frame, got_frame, &other), ZO_STATUS_UNKNOWN_ERROR,
                      "Unknown exception occurred in callback function", CHECK);
  Query nothing([] { return 0; });
  EXPECT_ZO_EXCEPTION(reader.read(frame, got_frame, &nothing), ZO_STATUS_TIMEOUT, TIMEOUT_MESSAGE, CHECK);
}

TEST_F(StalledClip, WaitsForTheCallersWordWithoutABudget) {
  VideoReader reader;
  ASSERT_EQ(0, open(reader, _url, -1, nullptr));
  int result = 0;
  int reads = 0;
  int polls = 0;
  while (result == 0 && reads < 200) {
    // Many polls of a read mean that it waits.
    StopAfter stop(5);
    Frame frame;
    bool got_frame = false;
    result = reader.read(frame, got_frame, &stop);
    polls = stop.polls;
    ++reads;
  }
  EXPECT_EQ(1, result);
  EXPECT_GE(polls, 5);
}

// The budget is per packet: reading for longer than the budget altogether is fine.
TEST_F(LocalFile, MayTakeLongerThanTheBudgetAltogether) {
  VideoReader reader;
  ASSERT_EQ(0, open(reader, _path, 1500, nullptr));
  int frames = 0;
  bool got_frame = true;
  Frame frame;
  while (got_frame) {
    ASSERT_EQ(0, reader.read(frame, got_frame, nullptr));
    frames += got_frame ? 1 : 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
  }
  EXPECT_EQ(30, frames);
}

}  // namespace
}  // namespace zo
