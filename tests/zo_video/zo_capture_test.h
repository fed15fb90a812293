/// What the tests of the capture share.
#ifndef ZO_TESTS_ZO_CAPTURE_TEST_H
#define ZO_TESTS_ZO_CAPTURE_TEST_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "zo_test_not_coded.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_capture.h"

namespace zo {
namespace test {

template <class Value>
struct Named {
  const char* name;
  Value value;
};

template <class Value>
std::string caseName(const testing::TestParamInfo<Named<Value>>& param_info) {
  return param_info.param.name;
}

/// What this function of all frames that a capture still delivers tells.
template <class Value>
std::vector<Value> remaining(VideoCapture& capture, Value (Frame::*p_function)() const) {
  std::vector<Value> values;
  Frame frame;
  while (capture.read(frame)) {
    values.push_back((frame.*p_function)());
  }
  return values;
}

/// Times of all frames that a capture still delivers.
inline std::vector<long long> remainingTimes(VideoCapture& capture) {
  return remaining(capture, &Frame::timestamp);
}

/// First frames, of one every 40 ms, at or after each multiple of the distance.
inline std::vector<long long> thinned(int frames, int max_fps, long long first = 0) {
  std::vector<long long> times;
  for (int i = 0; i < frames; ++i) {
    const long long bound = 1000LL * static_cast<long long>(times.size()) / max_fps;
    if (40LL * i >= bound) {
      times.push_back(first + 40LL * i);
    }
  }
  return times;
}

class Capture : public testing::Test {
 protected:
  /// 25 frames a second: times 0, 40, 80, ... ms.
  std::string clip(int frames, ClipOptions options = {}) {
    options.frames = frames;
    return makeClip(_directory.file("clip" + std::to_string(_clips++) + ".mp4"), options).path;
  }

  /// Frames at these times, exact to a tenth of a millisecond.
  std::string clipAtTenths(const std::vector<int64_t>& tenths) {
    ClipOptions options;
    options.time_base = {1, 10000};
    options.pts = [&tenths](int i) { return tenths[static_cast<std::size_t>(i)]; };
    return clip(static_cast<int>(tenths.size()), options);
  }

  /// A clip whose picture number 4 is never produced by the decoder.
  std::string clipWithoutPictureFour() {
    ClipOptions options;
    options.gop = 100;
    options.edit_packet = [](int i, AVPacket* p_packet) {
      if (i == 4) {
        makePictureNotCoded(p_packet);
      }
      return true;
    };
    return clip(10, options);
  }

  /// Six pictures of Motion JPEG, each complete in itself; from number 3 on they are such pictures as `later`
  /// says.
  std::string clipThatChanges(ClipOptions later) {
    std::vector<std::string> pictures;
    later.codec = "mjpeg";
    later.edit_packet = [&pictures](int, AVPacket* p_packet) {
      pictures.emplace_back(reinterpret_cast<const char*>(p_packet->data),
                            static_cast<std::size_t>(p_packet->size));
      return true;
    };
    clip(6, later);
    ClipOptions options;
    options.codec = "mjpeg";
    options.pixel_format = AV_PIX_FMT_YUVJ420P;
    options.frames = 6;
    options.edit_packet = [&pictures](int i, AVPacket* p_packet) {
      if (i >= 3) {
        setContent(p_packet, pictures.at(static_cast<std::size_t>(i)));
      }
      return true;
    };
    return makeClip(_directory.file("changes.mkv"), options).path;
  }

  /// Frames every 40 ms from this picture number on, which may be negative.
  std::string clipFrom(int64_t first_pts, int frames) {
    ClipOptions options;
    options.first_pts = first_pts;
    options.frames = frames;
    return makeClip(_directory.file("from" + std::to_string(first_pts) + ".mkv"), options).path;
  }

  TempDir _directory;
  int _clips = 0;

 private:
  static void setContent(AVPacket* p_packet, const std::string& content) {
    const int size = static_cast<int>(content.size());
    if (size > p_packet->size && av_grow_packet(p_packet, size - p_packet->size) < 0) {
      throw std::bad_alloc();
    }
    av_shrink_packet(p_packet, size);
    std::memcpy(p_packet->data, content.data(), content.size());
  }
};

}  // namespace test
}  // namespace zo

#endif
