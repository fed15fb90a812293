// Files over HTTP, from a server that behaves and through a proxy that does not.
#include <filesystem>
#include <memory>

#include "zo_network_peers.h"
#include "zo_network_reading.h"

namespace zo {
namespace test {
namespace {

constexpr int FRAMES = 200;
constexpr int BUDGET_MS = 400;

class Http : public testing::Test {
 protected:
  // One clip for all tests, large enough that it does not fit into socket buffers at once.
  static void SetUpTestSuite() {
    _p_directory = new TempDir();
    ClipOptions options;
    options.codec = "mjpeg";
    options.pixel_format = AV_PIX_FMT_YUVJ420P;
    options.width = 320;
    options.height = 240;
    options.frames = FRAMES;
    _p_path = new std::string(makeClip(_p_directory->file("clip.mkv"), options).path);
  }
  static void TearDownTestSuite() {
    delete _p_path;
    delete _p_directory;
  }

  static std::string through(const FaultProxy& proxy) {
    return "http://127.0.0.1:" + std::to_string(proxy.port()) + "/clip.mkv";
  }

  static TempDir* _p_directory;
  static std::string* _p_path;
};

TempDir* Http::_p_directory = nullptr;
std::string* Http::_p_path = nullptr;

TEST_F(Http, DeliversTheSameFramesAsTheFile) {
  const HttpFileServer server(*_p_path);
  VideoReader local;
  VideoReader remote;
  ASSERT_EQ(0, local.open(_p_path->c_str(), -1, nullptr, false, false, false));
  ASSERT_EQ(0, remote.open(server.url().c_str(), 5000, nullptr, false, false, false));
  Frame expected;
  Frame actual;
  bool got_expected = true;
  bool got_actual = true;
  for (int i = 0; got_expected; ++i) {
    local.read(expected, got_expected, nullptr);
    remote.read(actual, got_actual, nullptr);
    ASSERT_EQ(got_expected, got_actual) << i;
    if (got_expected) {
      ASSERT_TRUE(samePixels(expected, actual)) << i;
      ASSERT_EQ(expected.timestamp(), actual.timestamp()) << i;
    }
  }
}

TEST_F(Http, JumpsWithRanges) {
  const HttpFileServer server(*_p_path);
  VideoReader reader;
  ASSERT_EQ(0, reader.open(server.url().c_str(), 5000, nullptr, true, false, false));
  ASSERT_EQ(FRAMES, reader.frameCount());
  Frame frame;
  bool got_frame = false;
  for (const int index : {150, 3, 199, 0, 77}) {
    reader.moveByIndex(index);
    ASSERT_EQ(0, reader.read(frame, got_frame, nullptr));
    ASSERT_TRUE(got_frame);
    EXPECT_EQ(index, paintedNumber(frame));
  }
  EXPECT_GT(server.requests(), 1);
}

// The URL with ".zo" behind it is taken for a path of this system.
TEST_F(Http, KeepsANavigationFileOnlyWhereTheUrlIsAPathThatCanBeWritten) {
  VideoReader reader;
  ASSERT_EQ(0, reader.open(_p_path->c_str(), -1, nullptr, true, false, true));
  const std::string local_file = *_p_path + VideoReader::NAVIGATION_FILE_EXTENSION;
  const std::string expected = readFile(local_file);
  std::filesystem::remove(local_file);

  const TempDir directory;
  const WorkingDir working_folder(directory.path());
  const HttpFileServer server(*_p_path);
  const std::string folder = "http:/127.0.0.1:" + std::to_string(server.port());
  ASSERT_EQ(0, reader.open(server.url().c_str(), 5000, nullptr, true, false, true));
  EXPECT_EQ(FRAMES, reader.frameCount());
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
  EXPECT_FALSE(std::filesystem::exists(local_file)) << "nor beside the served file";

  std::filesystem::create_directories(folder);
  ASSERT_EQ(0, reader.open(server.url().c_str(), 5000, nullptr, true, false, true));
  EXPECT_EQ(FRAMES, reader.frameCount());
  EXPECT_EQ(expected, readFile(folder + "/clip" + VideoReader::NAVIGATION_FILE_EXTENSION));

  writeFile(folder + "/clip" + VideoReader::NAVIGATION_FILE_EXTENSION,
            expected.substr(0, expected.find('\n') + 1));
  ASSERT_EQ(0, reader.open(server.url().c_str(), 5000, nullptr, true, false, true));
  EXPECT_EQ(1, reader.frameCount()) << "it is loaded from there as well";
}

TEST_F(Http, AStalledTransferEndsWithTheBudgetAndTheReaderOpensAgain) {
  const HttpFileServer server(*_p_path);
  FaultProxy proxy(server.port());
  proxy.setFault({Fault::STALL, 300000});
  VideoReader reader;
  ASSERT_EQ(0, reader.open(through(proxy).c_str(), BUDGET_MS, nullptr, false, false, false));
  int frames = 0;
  long long last_read_ms = 0;
  const Status status = statusOf([&] {
    for (;;) {
      const long long start = getMonotonicTimeMs();
      struct Stop {
        long long& ms;
        long long start;
        ~Stop() { ms = getMonotonicTimeMs() - start; }
      } stop{last_read_ms, start};
      if (readFrames(reader, 1) == 0) {
        break;
      }
      ++frames;
    }
  });
  EXPECT_EQ(ZO_STATUS_TIMEOUT, status);
  EXPECT_GT(frames, 0);
  EXPECT_LT(last_read_ms, HANG_MS);
  report("budget_ms", BUDGET_MS);
  report("returned_after_ms", last_read_ms);

  proxy.setFault({});
  ASSERT_EQ(0, reader.open(through(proxy).c_str(), 5000, nullptr, false, false, false));
  EXPECT_EQ(FRAMES, readFrames(reader, FRAMES + 1));
}

TEST_F(Http, AServerThatNeverAnswersEndsTheOpenWithTheBudget) {
  const StalledServer server;
  VideoReader reader;
  Status status = ZO_STATUS_OK;
  const long long ms = elapsedMs([&] {
    status = statusOf([&] {
      reader.open(server.url("http", "clip.mkv").c_str(), BUDGET_MS, nullptr, false, false, false);
    });
  });
  EXPECT_EQ(ZO_STATUS_TIMEOUT, status);
  EXPECT_GE(ms, BUDGET_MS);
  EXPECT_LT(ms, HANG_MS);
  report("budget_ms", BUDGET_MS);
  report("returned_after_ms", ms);
}

TEST_F(Http, AnInterruptionEndsAStalledRead) {
  const HttpFileServer server(*_p_path);
  FaultProxy proxy(server.port());
  proxy.setFault({Fault::STALL, 300000});
  VideoReader reader;
  ASSERT_EQ(0, reader.open(through(proxy).c_str(), -1, nullptr, false, false, false));
  Frame frame;
  bool got_frame = true;
  int result = 0;
  long long ms = 0;
  while (result == 0) {
    StopAfter stop(150);
    ms = elapsedMs([&] { result = reader.read(frame, got_frame, &stop); });
  }
  EXPECT_EQ(1, result);
  EXPECT_FALSE(got_frame);
  EXPECT_LT(ms, HANG_MS);
  report("interrupted_after_ms", ms);
}

// In a container whose demuxer can go on in the middle of a packet; Matroska's, for one, takes any failed
// read for the end of the file.
class HttpTransportStream : public testing::Test {
 protected:
  void SetUp() override {
    ClipOptions options;
    options.codec = "mpeg2video";
    options.width = 320;
    options.height = 240;
    options.frames = FRAMES;
    options.gop = 1;
    _p_server = std::make_unique<HttpFileServer>(makeClip(_directory.file("clip.ts"), options).path);
    _p_proxy = std::make_unique<FaultProxy>(_p_server->port());
    _p_proxy->setFault({Fault::PAUSE, 300000});
    _url = "http://127.0.0.1:" + std::to_string(_p_proxy->port()) + "/clip.ts";
  }

  TempDir _directory;
  std::unique_ptr<HttpFileServer> _p_server;
  std::unique_ptr<FaultProxy> _p_proxy;
  std::string _url;
  VideoReader _reader;
  Frame _frame;
  bool _got_frame = true;
  int _frames = 0;
};

TEST_F(HttpTransportStream, ReadingGoesOnWhereAnInterruptionLeftIt) {
  ASSERT_EQ(0, _reader.open(_url.c_str(), -1, nullptr, false, false, false));
  int interruptions = 0;
  while (_got_frame && interruptions < 100) {
    StopAfter stop(100);
    if (_reader.read(_frame, _got_frame, &stop) == 1) {
      EXPECT_FALSE(_got_frame);
      ++interruptions;
      _got_frame = true;
    } else if (_got_frame) {
      ++_frames;
    }
  }
  EXPECT_GT(interruptions, 0);
  EXPECT_GE(_frames, FRAMES - 3) << "only what was cut in two may be lost";
}

TEST_F(HttpTransportStream, ReadingGoesOnWhereATimeOutLeftIt) {
  ASSERT_EQ(0, _reader.open(_url.c_str(), 100, nullptr, false, false, false));
  int time_outs = 0;
  while (_got_frame && time_outs < 100) {
    try {
      _reader.read(_frame, _got_frame, nullptr);
      _frames += _got_frame ? 1 : 0;
    } catch (const Exception& exception) {
      ASSERT_EQ(ZO_STATUS_TIMEOUT, exception.status());
      ++time_outs;
      _got_frame = true;
    }
  }
  EXPECT_GT(time_outs, 0);
  EXPECT_GE(_frames, FRAMES - 3) << "only what was cut in two may be lost";
}

struct CutCase {
  const char* name;
  Fault::Kind kind;
  long long after;
  Status status;
};

// What is cut in the head ends the opening. Behind it the packets are indexed, where a budget that runs out
// is one more packet that cannot be read.
class HttpCut : public Http, public testing::WithParamInterface<CutCase> {};

TEST_P(HttpCut, IsReportedAndTheReaderOpensAgain) {
  const HttpFileServer server(*_p_path);
  FaultProxy proxy(server.port());
  proxy.setFault({GetParam().kind, GetParam().after});
  VideoReader reader;
  const StderrCapture stderr_capture;
  Status status = ZO_STATUS_OK;
  const long long ms = elapsedMs([&] {
    status = statusOf([&] {
      reader.open(through(proxy).c_str(), BUDGET_MS, nullptr, true, false, false);
      readFrames(reader, FRAMES + 1);
    });
  });
  EXPECT_EQ(GetParam().status, status);
  EXPECT_STREQ("", reader.url()) << "closed";
  EXPECT_LT(ms, HANG_MS);
  EXPECT_EQ("", stderr_capture.text());

  proxy.setFault({});
  ASSERT_EQ(0, reader.open(through(proxy).c_str(), 5000, nullptr, true, false, false));
  EXPECT_EQ(FRAMES, readFrames(reader, FRAMES + 1));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, HttpCut,
    testing::Values(CutCase{"ResetAtOnce", Fault::RESET, 0, ZO_STATUS_OPEN_ERROR},
                    CutCase{"ResetInTheHead", Fault::RESET, 40, ZO_STATUS_OPEN_ERROR},
                    CutCase{"ResetMidFrame", Fault::RESET, 250001, ZO_STATUS_READ_ERROR},
                    CutCase{"ClosedInTheHead", Fault::CLOSE, 40, ZO_STATUS_OPEN_ERROR},
                    CutCase{"ClosedMidFrame", Fault::CLOSE, 250001, ZO_STATUS_READ_ERROR},
                    CutCase{"StalledInTheHead", Fault::STALL, 40, ZO_STATUS_TIMEOUT},
                    CutCase{"StalledMidFrame", Fault::STALL, 250001, ZO_STATUS_READ_ERROR},
                    CutCase{"TrickleFromTheStart", Fault::TRICKLE, 0, ZO_STATUS_TIMEOUT},
                    CutCase{"TrickleMidFrame", Fault::TRICKLE, 250001, ZO_STATUS_READ_ERROR}),
    [](const auto& c) { return std::string(c.param.name); });

}  // namespace
}  // namespace test
}  // namespace zo
