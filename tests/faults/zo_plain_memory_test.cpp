// Every request for memory of the plain functions and of the capture object fails in turn.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zo_fault_trials.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_capture.h"
#include "zo_video_c/zo_video_c.h"

namespace zo {
namespace test {
namespace {

constexpr int FRAMES = 5;

// An instance that cannot be set up completely loses the JPEG library's memory manager.
constexpr long long LOST_BY_TURBOJPEG = 256;

std::string clip() {
  static const TempDir DIRECTORY;
  static const std::string PATH = [] {
    ClipOptions options;
    options.width = 32;
    options.height = 32;
    options.frames = FRAMES;
    options.gop = 3;
    return makeClip(DIRECTORY.file("a.mp4"), options).path;
  }();
  return PATH;
}

// --- Plain functions -------------------------------------------------------------------------------------

// Owns what the plain functions hand out. A status other than 0 is thrown on as an exception with its
// message, so that the trials see it.
struct PlainObjects {
  PlainObjects() = default;
  PlainObjects(const PlainObjects&) = delete;
  PlainObjects& operator=(const PlainObjects&) = delete;
  ~PlainObjects() {
    zoVideoReader_release(&p_reader);
    zoVideoConverter_release(&p_converter);
    zoFrame_release(&p_frame);
    zoFrame_release(&p_converted);
  }

  void require(int status) const {
    if (status != ::ZO_STATUS_OK) {
      EXPECT_NE('\0', message[0]);
      throw Exception(nullptr, static_cast<Status>(status), "plain function", "", 0, "%s", message);
    }
  }
  void create() {
    if (p_frame == nullptr) {
      require(zoFrame_create(&p_frame, message, sizeof(message)));
    }
    if (p_converted == nullptr) {
      require(zoFrame_create(&p_converted, message, sizeof(message)));
    }
    if (p_converter == nullptr) {
      require(zoVideoConverter_create(&p_converter, message, sizeof(message)));
    }
    if (p_reader == nullptr) {
      require(zoVideoReader_create(nullptr, nullptr, path.c_str(), UINT_MAX, -1, 1, 0, 0, &p_reader, message,
                                   sizeof(message)));
    }
  }
  void use() {
    for (const long long index : {FRAMES - 1, 1}) {
      int ready = 0;
      require(zoVideoReader_moveByIndex(p_reader, index, message, sizeof(message)));
      require(zoVideoReader_read(p_reader, p_frame, &ready, message, sizeof(message)));
      require(zoVideoConverter_convert(p_converter, p_frame, ::ZO_FRAME_FORMAT_GRAY8, ZoSize{16, 20},
                                       p_converted, message, sizeof(message)));
    }
  }
  std::uint64_t result() const { return digest(*static_cast<Frame*>(p_converted->p_handle)); }

  const std::string path = clip();
  ZoVideoReader* p_reader = nullptr;
  ZoVideoConverter* p_converter = nullptr;
  ZoFrame* p_frame = nullptr;
  ZoFrame* p_converted = nullptr;
  char message[256] = "";
};

class PlainMemory : public testing::TestWithParam<Requests> {
 protected:
  // What comes through as it is, and what the reader and the converter name.
  static std::vector<int> allowed() {
    return GetParam() == Requests::OURS
               ? std::vector<int>{ZO_STATUS_STD_EXCEPTION}
               : std::vector<int>{ZO_STATUS_STD_EXCEPTION,    ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_OPEN_ERROR,
                                  ZO_STATUS_DECODER_ERROR,    ZO_STATUS_READ_ERROR,    ZO_STATUS_SEEK_ERROR,
                                  ZO_STATUS_UNEXPECTED_RESULT};
  }
};

TEST_P(PlainMemory, FailsWhileCreating) {
  failEachRequest("no memory: plain functions, create", GetParam(), allowed(), [] {
    const auto p_objects = std::make_shared<PlainObjects>();
    // FFmpeg may open a file with some of its frames only when its own requests fail.
    const bool anew = GetParam() == Requests::LIBRARIES;
    const auto check = [p_objects, anew](bool reported) {
      if (anew) {
        zoVideoReader_release(&p_objects->p_reader);
      }
      if (reported || anew) {
        p_objects->create();
      }
      ASSERT_NE(nullptr, p_objects->p_reader);
      EXPECT_EQ(FRAMES, p_objects->p_reader->frame_count);
      p_objects->use();
    };
    return Trial{[p_objects] { p_objects->create(); }, check};
  });
}

TEST_P(PlainMemory, FailsWhileMovingReadingAndConverting) {
  PlainObjects expected;
  expected.create();
  expected.use();
  failEachRequest("no memory: plain functions, move, read and convert", GetParam(), allowed(), [&] {
    const auto p_objects = std::make_shared<PlainObjects>();
    p_objects->create();
    const auto check = [p_objects, &expected](bool reported) {
      if (reported) {
        p_objects->use();
      }
      EXPECT_EQ(expected.result(), p_objects->result());
    };
    return Trial{[p_objects] { p_objects->use(); }, check};
  });
}

INSTANTIATE_TEST_SUITE_P(Of, PlainMemory, testing::Values(Requests::OURS, Requests::LIBRARIES),
                         [](const auto& test) {
                           return test.param == Requests::OURS ? "Ours" : "Libraries";
                         });

// --- Capture ---------------------------------------------------------------------------------------------

struct CaptureObjects {
  CaptureObjects() : capture(true, false) {
    capture.setFormat(ZO_FRAME_FORMAT_GRAY8);
    capture.setFrameSize(Size(24, 20));
  }
  void use() {
    seen.clear();
    capture.open(path, -1);
    capture.setPosition(2);
    while (capture.read(frame)) {
      long long timestamp = -1;
      capture.readJpeg(jpeg, timestamp);
      seen.add(digest(frame));
      seen.add(static_cast<std::uint64_t>(timestamp));
      seen.add(jpeg.size());
    }
  }

  const std::string path = clip();
  VideoCapture capture;
  Frame frame;
  Buffer jpeg;
  Notes<std::uint64_t, 3 * FRAMES> seen;
};

class CaptureMemory : public testing::TestWithParam<Requests> {
 protected:
  static std::vector<int> allowed() {
    return GetParam() == Requests::OURS
               ? std::vector<int>{Ending::BAD_ALLOC}
               : std::vector<int>{
                     Ending::BAD_ALLOC,       ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_OPEN_ERROR,
                     ZO_STATUS_DECODER_ERROR, ZO_STATUS_READ_ERROR,    ZO_STATUS_SEEK_ERROR,
                     ZO_STATUS_CODEC_ERROR,   ZO_STATUS_OUT_OF_RANGE,  ZO_STATUS_UNEXPECTED_RESULT};
  }
  // FFmpeg may do less than it was asked for, and say nothing, when its own requests fail.
  static bool mayDoLess() { return GetParam() == Requests::LIBRARIES; }
};

TEST_P(CaptureMemory, FailsForTheConstructor) {
  const std::vector<int> expected = GetParam() == Requests::OURS
                                        ? std::vector<int>{Ending::BAD_ALLOC}
                                        : std::vector<int>{Ending::BAD_ALLOC, ZO_STATUS_OUT_OF_MEMORY};
  failEachRequest(
      "no memory: capture, constructor", GetParam(), expected,
      [] {
        const auto run = [] {
          const VideoCapture capture(true, false);
          if (capture.isOpen()) {
            throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, "", "", 0, "open");
          }
        };
        return Trial{run, [run](bool) { EXPECT_NO_THROW(run()); }};
      },
      LOST_BY_TURBOJPEG);
}

TEST_P(CaptureMemory, FailsWhileOpening) {
  CaptureObjects expected;
  expected.use();
  failEachRequest("no memory: capture, open", GetParam(), allowed(), [&] {
    const auto p_objects = std::make_shared<CaptureObjects>();
    const auto check = [p_objects, &expected](bool reported) {
      if (reported || !mayDoLess()) {
        EXPECT_EQ(!reported, p_objects->capture.isOpen());
      }
      EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, p_objects->capture.format());
      EXPECT_EQ(Size(24, 20), p_objects->capture.frameSize());
      p_objects->use();
      EXPECT_TRUE(expected.seen == p_objects->seen);
    };
    return Trial{[p_objects] { p_objects->capture.open(p_objects->path, -1); }, check};
  });
}

// Converted and as it is; the frame that a picture is delivered into stays as it was.
TEST_P(CaptureMemory, FailsWhileReading) {
  for (const bool converted : {false, true}) {
    const auto makeObjects = [converted] {
      auto p_objects = std::make_shared<CaptureObjects>();
      if (!converted) {
        p_objects->capture.clear();  // forgets format and size
      }
      p_objects->capture.open(p_objects->path, -1);
      p_objects->frame = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(5, 3), 9);
      p_objects->frame.setTimestamp(4321);
      return p_objects;
    };
    const auto p_expected = makeObjects();
    ASSERT_TRUE(p_expected->capture.read(p_expected->frame));
    const std::uint64_t picture = digest(p_expected->frame);
    failEachRequest("no memory: capture, read", GetParam(), allowed(), [=] {
      const auto p_objects = makeObjects();
      const std::uint64_t before = digest(p_objects->frame);
      const auto run = [p_objects] { p_objects->capture.read(p_objects->frame); };
      const auto check = [=](bool reported) {
        if (reported && GetParam() == Requests::OURS) {
          EXPECT_EQ(before, digest(p_objects->frame));
          EXPECT_EQ(4321, p_objects->frame.timestamp());
        }
        if (reported || mayDoLess()) {
          p_objects->capture.setPosition(0);
          p_objects->capture.read(p_objects->frame);
        }
        EXPECT_EQ(picture, digest(p_objects->frame));
        EXPECT_EQ(0, p_objects->frame.timestamp());
      };
      return Trial{run, check};
    });
  }
}

// The frame is still there to be asked for again.
TEST_P(CaptureMemory, FailsForJpeg) {
  const auto makeObjects = [] {
    auto p_objects = std::make_shared<CaptureObjects>();
    p_objects->capture.open(p_objects->path, -1);
    p_objects->capture.setPosition(2);
    p_objects->capture.read(p_objects->frame);
    return p_objects;
  };
  const auto p_expected = makeObjects();
  long long expected_timestamp = -1;
  ASSERT_TRUE(p_expected->capture.readJpeg(p_expected->jpeg, expected_timestamp));
  const std::string jpeg(reinterpret_cast<const char*>(p_expected->jpeg.data()), p_expected->jpeg.size());
  failEachRequest("no memory: capture, readJpeg", GetParam(), allowed(), [&] {
    const auto p_objects = makeObjects();
    const auto p_timestamp = std::make_shared<long long>(-1);
    const auto run = [p_objects, p_timestamp] { p_objects->capture.readJpeg(p_objects->jpeg, *p_timestamp); };
    const auto check = [=, &jpeg](bool reported) {
      if (reported) {
        EXPECT_EQ(2, p_objects->capture.frameIndex());
        run();
      }
      EXPECT_EQ(expected_timestamp, *p_timestamp);
      EXPECT_EQ(jpeg,
                std::string(reinterpret_cast<const char*>(p_objects->jpeg.data()), p_objects->jpeg.size()));
    };
    return Trial{run, check};
  });
}

TEST_P(CaptureMemory, FailsWhileMoving) {
  const auto makeObjects = [] {
    auto p_objects = std::make_shared<CaptureObjects>();
    p_objects->capture.open(p_objects->path, -1);
    return p_objects;
  };
  const auto p_expected = makeObjects();
  p_expected->capture.setPosition(FRAMES - 1);
  ASSERT_TRUE(p_expected->capture.read(p_expected->frame));
  const std::uint64_t picture = digest(p_expected->frame);
  failEachRequest("no memory: capture, setPosition", GetParam(), allowed(), [&] {
    const auto p_objects = makeObjects();
    const auto run = [p_objects] { p_objects->capture.setPosition(FRAMES - 1); };
    const auto check = [=](bool reported) {
      if (reported || mayDoLess()) {
        p_objects->capture.setPosition(0);
        run();
      }
      EXPECT_TRUE(p_objects->capture.read(p_objects->frame));
      EXPECT_EQ(picture, digest(p_objects->frame));
    };
    return Trial{run, check};
  });
}

TEST_P(CaptureMemory, FailsWhileOpeningAndReading) {
  CaptureObjects expected;
  expected.use();
  ASSERT_EQ(std::size_t{3 * (FRAMES - 2)}, expected.seen.size());
  failEachRequest("no memory: capture", GetParam(), allowed(), [&] {
    const auto p_objects = std::make_shared<CaptureObjects>();
    const auto check = [p_objects, &expected](bool reported) {
      if (reported || mayDoLess()) {
        p_objects->use();
      }
      EXPECT_TRUE(expected.seen == p_objects->seen);
    };
    return Trial{[p_objects] { p_objects->use(); }, check};
  });
}

INSTANTIATE_TEST_SUITE_P(Of, CaptureMemory, testing::Values(Requests::OURS, Requests::LIBRARIES),
                         [](const auto& test) {
                           return test.param == Requests::OURS ? "Ours" : "Libraries";
                         });

}  // namespace
}  // namespace test
}  // namespace zo
