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

class CaptureMemory : public testing::TestWithParam<Requests> {};

TEST_P(CaptureMemory, FailsWhileOpeningAndReading) {
  CaptureObjects expected;
  expected.use();
  ASSERT_EQ(std::size_t{3 * (FRAMES - 2)}, expected.seen.size());
  const std::vector<int> allowed =
      GetParam() == Requests::OURS
          ? std::vector<int>{Ending::BAD_ALLOC}
          : std::vector<int>{Ending::BAD_ALLOC,       ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_OPEN_ERROR,
                             ZO_STATUS_DECODER_ERROR, ZO_STATUS_READ_ERROR,    ZO_STATUS_SEEK_ERROR,
                             ZO_STATUS_CODEC_ERROR,   ZO_STATUS_OUT_OF_RANGE,  ZO_STATUS_UNEXPECTED_RESULT};
  failEachRequest("no memory: capture", GetParam(), allowed, [&] {
    const auto p_objects = std::make_shared<CaptureObjects>();
    // FFmpeg may open a file with some of its frames only when its own requests fail.
    const bool anew = GetParam() == Requests::LIBRARIES;
    const auto check = [p_objects, anew, &expected](bool reported) {
      if (reported || anew) {
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
