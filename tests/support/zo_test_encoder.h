#ifndef ZO_TESTS_SUPPORT_ZO_TEST_ENCODER_H
#define ZO_TESTS_SUPPORT_ZO_TEST_ENCODER_H

#include <stdexcept>
#include <string>
#include <vector>

#include "zo_test_clip.h"
#include "zo_video/zo_ffmpeg_handles.h"

namespace zo {
namespace test {

/// An encoder that has been fed completely, and all that it gave.
struct EncodedStream {
  CodecContextPtr p_codec;
  std::vector<PacketPtr> packets;  ///< in coding order, in p_codec->time_base
};

/// The pictures of the options, without any of the damage. Throws std::runtime_error.
EncodedStream encodeVideo(const ClipOptions& options, bool global_header);

/// A tone of that length. Throws std::runtime_error.
EncodedStream encodeTone(const std::string& codec, double seconds, bool global_header);

/// Throws std::runtime_error with FFmpeg's text when `result` is negative.
void checkFfmpeg(int result, const std::string& what);

/// A log level for as long as this object lives: encoders talk.
class QuietLog {
 public:
  QuietLog();
  ~QuietLog();
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;

 private:
  int _level;
};

}  // namespace test
}  // namespace zo

#endif
