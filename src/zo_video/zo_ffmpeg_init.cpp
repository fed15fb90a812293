#include "zo_ffmpeg_init.h"

#include <memory>

#include "zo_core/zo_mutex.h"
#include "zo_ffmpeg_compat.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

namespace zo {
namespace {

class FfmpegInit {
 public:
  FfmpegInit() {
    registerFormatsAndCodecs();
    avformat_network_init();
    av_log_set_level(AV_LOG_QUIET);
  }
  ~FfmpegInit() { avformat_network_deinit(); }
  FfmpegInit(const FfmpegInit&) = delete;
  FfmpegInit& operator=(const FfmpegInit&) = delete;
};

}  // namespace

void initializeFfmpeg() {
  static FastMutex mutex;
  static std::unique_ptr<FfmpegInit> p_init;
  LockGuard<FastMutex> lock(mutex);
  if (p_init == nullptr) {
    p_init = std::make_unique<FfmpegInit>();
  }
}

}  // namespace zo
