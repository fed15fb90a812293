// Streams over RTSP, from a real server and through a proxy that misbehaves. Without the server library at
// build time these tests are left out.
#ifdef ZO_RTSP_SERVER

#include <set>

#include "zo_network_peers.h"
#include "zo_network_reading.h"

namespace zo {
namespace test {
namespace {

constexpr int BUDGET_MS = 1000;

class Rtsp : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!haveEncoder("libx264")) {
      return;
    }
    _p_directory = new TempDir();
    ClipOptions options;
    options.codec = "libx264";
    options.width = 320;
    options.height = 240;
    options.frames = 500;
    options.gop = 10;
    const Clip clip = makeClip(_p_directory->file("clip.mp4"), options);
    _p_server = new ServerProcess({ZO_RTSP_SERVER, clip.path});
  }
  static void TearDownTestSuite() {
    delete _p_server;
    delete _p_directory;
    _p_server = nullptr;
    _p_directory = nullptr;
  }
  void SetUp() override {
    if (_p_server == nullptr) {
      GTEST_SKIP() << "no H.264 encoder";
    }
  }

  static std::string url(int port) { return "rtsp://127.0.0.1:" + std::to_string(port) + "/clip"; }

  static TempDir* _p_directory;
  static ServerProcess* _p_server;
};

TempDir* Rtsp::_p_directory = nullptr;
ServerProcess* Rtsp::_p_server = nullptr;

TEST_F(Rtsp, DeliversPicturesWithRisingTimes) {
  VideoReader reader;
  ASSERT_EQ(0, reader.open(url(_p_server->port()).c_str(), 5000, nullptr, false, false, false));
  EXPECT_EQ(Size(320, 240), reader.size());
  EXPECT_EQ(0, reader.frameCount());
  Frame frame;
  bool got_frame = false;
  long long time_before = -1;
  int last_number = -1;
  int pictures = 0;
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(0, reader.read(frame, got_frame, nullptr));
    ASSERT_TRUE(got_frame);
    if (frame.initialized()) {
      ++pictures;
      // FFmpeg 4 guesses the first time, before the server has told how its clock runs.
      if (pictures > 1) {
        EXPECT_GT(frame.timestamp(), time_before);
        time_before = frame.timestamp();
      }
      EXPECT_GT(paintedNumber(frame), last_number);
      last_number = paintedNumber(frame);
    }
  }
  EXPECT_GT(pictures, 10);
}

TEST_F(Rtsp, AnInterruptionEndsARead) {
  FaultProxy proxy(_p_server->port());
  VideoReader reader;
  ASSERT_EQ(0, reader.open(url(proxy.port()).c_str(), 5000, nullptr, false, false, false));
  Frame frame;
  bool got_frame = false;
  int result = 0;
  for (int i = 0; i < 500 && result == 0; ++i) {  // what was received while opening comes without waiting
    StopAfter stop(0);
    result = reader.read(frame, got_frame, &stop);
  }
  EXPECT_EQ(1, result);
  EXPECT_FALSE(got_frame);
  EXPECT_EQ(0, reader.read(frame, got_frame, nullptr)) << "the next read goes on";
  EXPECT_TRUE(got_frame);
}

TEST_F(Rtsp, AnInterruptionEndsTheOpen) {
  const StalledServer server;
  VideoReader reader;
  StopAfter stop(100);
  int result = 0;
  const long long ms = elapsedMs(
      [&] { result = reader.open(server.url("rtsp", "clip").c_str(), -1, &stop, false, false, false); });
  EXPECT_EQ(1, result);
  EXPECT_LT(ms, HANG_MS);
  report("interrupted_after_ms", ms);
}

TEST_F(Rtsp, AServerThatNeverAnswersEndsTheOpenWithTheBudget) {
  const StalledServer server;
  VideoReader reader;
  Status status = ZO_STATUS_OK;
  const long long ms = elapsedMs([&] {
    status = statusOf(
        [&] { reader.open(server.url("rtsp", "clip").c_str(), BUDGET_MS, nullptr, false, false, false); });
  });
  // Either the poll or the socket's own time-out, which has the same length, comes first.
  EXPECT_TRUE(status == ZO_STATUS_TIMEOUT || status == ZO_STATUS_OPEN_ERROR) << status;
  EXPECT_LT(ms, HANG_MS);
  report("budget_ms", BUDGET_MS);
  report("returned_after_ms", ms);
}

struct RtspFault {
  const char* name;
  Fault fault;
  bool plays;
  std::set<Status> outcomes;
};

// A connection that ends while it plays is the end of the stream or a packet that cannot be read, depending
// on where FFmpeg meets its end. One that has no end is always a time-out.
const std::set<Status> ENDED = {ZO_STATUS_OK, ZO_STATUS_READ_ERROR};
const std::set<Status> NOT_OPENED = {ZO_STATUS_OPEN_ERROR};
const std::set<Status> TIMED_OUT = {ZO_STATUS_TIMEOUT};

class RtspCut : public Rtsp, public testing::WithParamInterface<RtspFault> {};

TEST_P(RtspCut, EndsOrReportsInTimeAndTheSameObjectConnectsAgain) {
  FaultProxy proxy(_p_server->port());
  proxy.setFault(GetParam().fault);
  VideoReader reader;
  const StderrCapture stderr_capture;
  Frame frame;
  bool opened = false;
  bool got_frame = true;
  int frames = 0;
  Status status = ZO_STATUS_OK;
  const long long ms = elapsedMs([&] {
    status = statusOf([&] {
      opened = reader.open(url(proxy.port()).c_str(), BUDGET_MS, nullptr, false, false, false) == 0;
      while (reader.read(frame, got_frame, nullptr) == 0 && got_frame) {
        ++frames;
      }
    });
  });
  EXPECT_EQ(1U, GetParam().outcomes.count(status)) << status;
  EXPECT_EQ(GetParam().plays, opened);
  EXPECT_EQ(GetParam().plays, frames > 0);
  EXPECT_EQ(!GetParam().plays, got_frame) << "as it was before an opening that failed";
  EXPECT_LT(ms, HANG_MS);
  EXPECT_EQ("", stderr_capture.text());
  report("zo_status", status);
  report("budget_ms", BUDGET_MS);
  report("returned_after_ms", ms);

  proxy.setFault({});
  ASSERT_EQ(0, reader.open(url(proxy.port()).c_str(), 5000, nullptr, false, false, false));
  EXPECT_EQ(10, readFrames(reader, 10));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, RtspCut,
    testing::Values(RtspFault{"ResetAtOnce", {Fault::RESET, 0}, false, NOT_OPENED},
                    RtspFault{"ResetInTheDescription", {Fault::RESET, 300}, false, NOT_OPENED},
                    RtspFault{"ResetWhilePlaying", {Fault::RESET, 60000}, true, ENDED},
                    RtspFault{"ClosedInTheDescription", {Fault::CLOSE, 300}, false, NOT_OPENED},
                    RtspFault{"ClosedMidPacket", {Fault::CLOSE, 60001}, true, ENDED},
                    RtspFault{"StalledInTheDescription", {Fault::STALL, 300}, false, TIMED_OUT},
                    RtspFault{"StalledWhilePlaying", {Fault::STALL, 60001}, true, TIMED_OUT}),
    [](const auto& c) { return std::string(c.param.name); });

}  // namespace
}  // namespace test
}  // namespace zo

#endif
