#ifndef ZO_VIDEO_SRC_ZO_AV_ERROR_H
#define ZO_VIDEO_SRC_ZO_AV_ERROR_H

extern "C" {
#include <libavutil/error.h>
}

namespace zo {

/// FFmpeg's text for an error code.
class AvErrorText {
 public:
  explicit AvErrorText(int code) noexcept { av_strerror(code, _text, sizeof(_text)); }

  const char* text() const noexcept { return _text; }

 private:
  char _text[64] = {};
};

}  // namespace zo

#endif
