#ifndef ZO_TESTS_SUPPORT_ZO_TEST_REFERENCE_H
#define ZO_TESTS_SUPPORT_ZO_TEST_REFERENCE_H

#include <cstdint>
#include <string>
#include <vector>

#include "zo_core/zo_frame.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
#include <libavutil/rational.h>
}

namespace zo {
namespace test {

/// A decoded picture as bare FFmpeg gives it: planes without row padding, in the decoder's pixel format.
struct ReferencePicture {
  AVPixelFormat format = AV_PIX_FMT_NONE;
  int width = 0;
  int height = 0;
  int64_t best_effort_timestamp = 0;  ///< in the stream's time base
  std::vector<std::string> planes;

  /// All planes one after another.
  std::string bytes() const;
};

struct ReferencePacket {
  int64_t pts = 0;
  int64_t dts = 0;
  bool key = false;
};

/// What a straight decode of the best video stream with one thread yields.
struct ReferenceStream {
  int index = -1;      ///< of the stream in the file
  std::string set_up;  ///< the decoder's set-up data (its "extradata")
  AVRational time_base{0, 1};
  AVRational average_frame_rate{0, 0};
  int64_t start_time = 0;
  int64_t container_duration = 0;
  AVPixelFormat format = AV_PIX_FMT_NONE;  ///< of the decoder, once opened
  int width = 0;
  int height = 0;
  std::vector<ReferencePacket> packets;  ///< of the best video stream, in file order
  std::vector<ReferencePicture> pictures;
};

/// Decodes a file with nothing but FFmpeg. Packets that the decoder refuses are passed over. Throws
/// std::runtime_error when the file cannot be opened.
/// @param keep_pixels  False leaves the planes of all pictures empty.
ReferenceStream decodeReference(const std::string& path, bool keep_pixels = true);

/// FFmpeg's own text for failing to open this. Throws std::runtime_error when it can be opened.
std::string openErrorText(const std::string& url);

/// FFmpeg's text for an error code, cut to the 63 characters that the reader's messages have room for.
std::string errorText(int code);

/// Milliseconds of a timestamp by the rule of the reader: truncated towards zero.
long long timestampToMs(int64_t timestamp, AVRational time_base);

/// The tightly packed planes of a decoded picture.
ReferencePicture copyPicture(const AVFrame* p_frame);

}  // namespace test
}  // namespace zo

#endif
