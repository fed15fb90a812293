// Every request for memory of the reader and of the capture object fails in turn: their own and FFmpeg's.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <tuple>
#include <vector>

#include "zo_fault_trials.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_reader.h"

namespace zo {
namespace test {
namespace {

constexpr int FRAMES = 6;

// What a failing step of opening and reading is reported as.
const std::vector<int> READER_STATUSES = {Ending::BAD_ALLOC,    ZO_STATUS_OUT_OF_MEMORY,
                                          ZO_STATUS_OPEN_ERROR, ZO_STATUS_DECODER_ERROR,
                                          ZO_STATUS_READ_ERROR, ZO_STATUS_SEEK_ERROR};

struct Kind {
  const char* name;
  const char* file;
  const char* codec;
  int gop;
  AVPixelFormat pixel_format;
  FrameFormat format;  // as delivered
};

std::string clipOf(const Kind& kind) {
  static const TempDir DIRECTORY;
  const std::string path = DIRECTORY.file(std::string(kind.name) + "-" + kind.file);
  if (!std::ifstream(path)) {
    ClipOptions options;
    options.codec = kind.codec;
    options.pixel_format = kind.pixel_format;
    options.width = 32;
    options.height = 32;
    options.frames = FRAMES;
    options.gop = kind.gop;
    makeClip(path, options);
  }
  return path;
}

struct Seen {
  std::uint64_t pixels = 0;
  long long timestamp = 0;
  long long index = -1;
  bool operator==(const Seen& other) const {
    return pixels == other.pixels && timestamp == other.timestamp && index == other.index;
  }
};
using SeenFrames = Notes<Seen, 4 * FRAMES>;

// A reader and what it has delivered.
struct Session {
  VideoReader reader;
  Frame frame;
  SeenFrames seen;
  bool fresh_frames = false;  // each picture needs memory

  bool readOne() {
    bool got_frame = false;
    if (fresh_frames) {
      frame = Frame();
    }
    reader.read(frame, got_frame, nullptr);
    if (got_frame) {
      EXPECT_EQ(reader.timestamp(), frame.timestamp());
      seen.add({digest(frame), frame.timestamp(), reader.frameIndex()});
    }
    return got_frame;
  }
  void readOn() {
    while (readOne()) {
    }
  }
  void jumpAbout() {
    reader.moveByIndex(FRAMES - 1);
    readOne();
    reader.moveByIndex(1);
    readOn();
  }
  void open(const std::string& path, bool indexed, bool cached = false) {
    ASSERT_EQ(0, reader.open(path.c_str(), -1, nullptr, indexed, false, cached));
    seen.clear();
  }
};

class ReaderMemory : public testing::TestWithParam<std::tuple<Kind, Requests>> {
 protected:
  void SetUp() override {
    if (!haveEncoder(kind().codec)) {
      GTEST_SKIP() << "no encoder " << kind().codec;
    }
    _path = clipOf(kind());
    Session session;
    session.open(_path, false);
    ASSERT_EQ(kind().format, session.reader.format());
    session.readOn();
    _in_order = session.seen;
    ASSERT_EQ(std::size_t{FRAMES}, _in_order.size());
    session.open(_path, true);
    session.jumpAbout();
    _jumping = session.seen;
    ASSERT_EQ(std::size_t{FRAMES}, _jumping.size());
  }

  static const Kind& kind() { return std::get<0>(GetParam()); }
  static Requests requests() { return std::get<1>(GetParam()); }
  static std::vector<int> allowed() {
    return requests() == Requests::OURS ? std::vector<int>{Ending::BAD_ALLOC} : READER_STATUSES;
  }

  // FFmpeg may deliver fewer frames, and say nothing, when its own requests fail.
  static bool opensWithLess() { return requests() == Requests::LIBRARIES; }

  void expectClosed(Session& session) const {
    EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, session.reader.format());
    EXPECT_STREQ("", session.reader.url());
    EXPECT_ZO_EXCEPTION(session.readOne(), ZO_STATUS_NOT_OPENED,
                        "call VideoReader.open(...) before this operation", "_checkIfGood");
  }

  void failOpening(const std::string& what, bool indexed, bool cached) {
    const std::string sidecar = _path + VideoReader::NAVIGATION_FILE_EXTENSION;
    failEachRequest("no memory: " + what, requests(), allowed(), [&] {
      const auto p_session = std::make_shared<Session>();
      const auto open = [=] { p_session->reader.open(_path.c_str(), -1, nullptr, indexed, false, cached); };
      const auto check = [=](bool reported) {
        if (reported) {
          expectClosed(*p_session);
        }
        if (reported || opensWithLess()) {
          p_session->open(_path, indexed, cached);
        }
        EXPECT_EQ(indexed ? FRAMES : 0, p_session->reader.frameCount());
        p_session->readOn();
        EXPECT_TRUE(_in_order == p_session->seen);
      };
      return Trial{open, check};
    });
  }

  std::string _path;
  SeenFrames _in_order;
  SeenFrames _jumping;
};

TEST_P(ReaderMemory, FailsWhileOpening) {
  failOpening("open", false, false);
}

TEST_P(ReaderMemory, FailsWhileOpeningWithAnIndex) {
  failOpening("open with index", true, false);
}

TEST_P(ReaderMemory, FailsWhileLoadingTheNavigationFile) {
  Session().open(_path, true, true);
  failOpening("open with navigation file", true, true);
}

// FFmpeg's failing requests may give an index of fewer frames, which is then kept.
TEST_P(ReaderMemory, FailsWhileMakingTheNavigationFile) {
  if (requests() == Requests::LIBRARIES) {
    return;
  }
  const std::string sidecar = _path + VideoReader::NAVIGATION_FILE_EXTENSION;
  unlink(sidecar.c_str());
  Session().open(_path, true, true);
  const std::string whole = readFile(sidecar);
  ASSERT_FALSE(whole.empty());
  failEachRequest("no memory: open without navigation file yet", requests(), allowed(), [&] {
    unlink(sidecar.c_str());
    const auto p_session = std::make_shared<Session>();
    const auto open = [=] { p_session->reader.open(_path.c_str(), -1, nullptr, true, false, true); };
    const auto check = [=](bool reported) {
      const bool made = access(sidecar.c_str(), F_OK) == 0;
      if (made) {
        EXPECT_EQ(whole, readFile(sidecar));
      }
      if (reported) {
        expectClosed(*p_session);
        p_session->open(_path, true, true);
      } else {
        EXPECT_TRUE(made);
      }
      EXPECT_EQ(FRAMES, p_session->reader.frameCount());
      p_session->readOn();
      EXPECT_TRUE(_in_order == p_session->seen);
      EXPECT_EQ(whole, readFile(sidecar));
    };
    return Trial{open, check};
  });
  unlink(sidecar.c_str());
}

TEST_P(ReaderMemory, FailsWhileOpeningTheSameAgain) {
  failEachRequest("no memory: open again", requests(), allowed(), [&] {
    const auto p_session = std::make_shared<Session>();
    p_session->open(_path, true);
    const auto open = [=] {
      p_session->reader.open(p_session->reader.url(), -1, nullptr, true, false, false);
    };
    const auto check = [=](bool reported) {
      if (reported) {
        expectClosed(*p_session);
      }
      if (reported || opensWithLess()) {
        p_session->open(_path, true);
      }
      p_session->readOn();
      EXPECT_TRUE(_in_order == p_session->seen);
    };
    return Trial{open, check};
  });
}

// A read for which there was no memory of the reader's own has lost nothing: the next one delivers its frame.
TEST_P(ReaderMemory, FailsWhileReading) {
  for (const bool indexed : {false, true}) {
    if (indexed && requests() == Requests::LIBRARIES) {
      continue;  // jumping meets them
    }
    const std::string what = indexed ? "no memory: read with index" : "no memory: read";
    failEachRequest(what, requests(), allowed(), [=] {
      const auto p_session = std::make_shared<Session>();
      p_session->fresh_frames = requests() == Requests::OURS;
      p_session->open(_path, indexed);
      const auto check = [=](bool reported) {
        if (reported) {
          EXPECT_NO_THROW(p_session->readOn()) << "the reader goes on";
        }
        if (!opensWithLess()) {
          EXPECT_TRUE(_in_order == p_session->seen) << (indexed ? "with an index" : "in order");
        }
        p_session->open(_path, indexed);
        p_session->readOn();
        EXPECT_TRUE(_in_order == p_session->seen);
      };
      return Trial{[=] { p_session->readOn(); }, check};
    });
  }
}

// A picture that the reader holds already needs memory for nothing but its copy.
TEST_P(ReaderMemory, FailsWhileCopyingAPictureAndDeliversItThen) {
  if (requests() == Requests::LIBRARIES && !librariesCanFail()) {
    GTEST_SKIP() << "requests of libraries cannot fail in this build";
  }
  Session session;
  session.fresh_frames = true;
  session.open(_path, true);
  for (std::size_t i = 0; i < FRAMES; ++i) {
    SCOPED_TRACE("frame " + std::to_string(i));
    session.reader.moveByIndex(static_cast<long long>(i));
    ASSERT_TRUE(session.readOne());
    session.reader.moveByIndex(static_cast<long long>(i));
    session.seen.clear();
    for (int attempt = 0; attempt < 2; ++attempt) {
      bool out_of_memory = false;
      try {
        const MemoryShortage shortage(requests(), 0, true);
        session.readOne();
      } catch (const std::bad_alloc&) {
        out_of_memory = true;
      }
      EXPECT_TRUE(out_of_memory);
      EXPECT_FALSE(session.frame.initialized());
      EXPECT_EQ(static_cast<long long>(i) - 1, session.reader.frameIndex());
    }
    ASSERT_TRUE(session.readOne());
    ASSERT_EQ(1U, session.seen.size());
    EXPECT_TRUE(_in_order[i] == session.seen[0]);
  }
}

TEST_P(ReaderMemory, FailsWhileJumping) {
  failEachRequest("no memory: moveByIndex and read", requests(), allowed(), [&] {
    const auto p_session = std::make_shared<Session>();
    p_session->open(_path, true);
    const auto check = [=](bool reported) {
      if (reported || opensWithLess()) {
        p_session->open(_path, true);
        p_session->jumpAbout();
      }
      EXPECT_TRUE(_jumping == p_session->seen);
    };
    return Trial{[=] { p_session->jumpAbout(); }, check};
  });
}

const Kind MP4 = {"mp4", "a.mp4", "mpeg4", 3, AV_PIX_FMT_YUV420P, ZO_FRAME_FORMAT_YUV420_PLANAR_I420};
const Kind MATROSKA = {"h264", "a.mkv", "libx264", 3, AV_PIX_FMT_YUV420P, ZO_FRAME_FORMAT_YUV420_PLANAR_I420};
const Kind AVI = {"mjpeg", "a.avi", "mjpeg", 3, AV_PIX_FMT_YUV420P, ZO_FRAME_FORMAT_YUV420_PLANAR_I420};
// No frame format equals this one: each picture goes through the scaler. Behind a picture that
// was not decoded this decoder refuses those that build on it.
const Kind SCALED = {"scaled", "b.mkv", "ffv1", 1, AV_PIX_FMT_YUV410P, ZO_FRAME_FORMAT_YUV444_PLANAR};

INSTANTIATE_TEST_SUITE_P(
    Kinds, ReaderMemory,
    testing::Values(std::make_tuple(MP4, Requests::OURS), std::make_tuple(MATROSKA, Requests::OURS),
                    std::make_tuple(AVI, Requests::OURS), std::make_tuple(SCALED, Requests::OURS),
                    std::make_tuple(MP4, Requests::LIBRARIES), std::make_tuple(MATROSKA, Requests::LIBRARIES),
                    std::make_tuple(SCALED, Requests::LIBRARIES)),
    [](const auto& test) {
      return std::string(std::get<0>(test.param).name) +
             (std::get<1>(test.param) == Requests::OURS ? "Ours" : "Libraries");
    });

}  // namespace
}  // namespace test
}  // namespace zo
