#ifndef ZO_VIDEO_SRC_ZO_FFMPEG_INIT_H
#define ZO_VIDEO_SRC_ZO_FFMPEG_INIT_H

namespace zo {

/// Sets FFmpeg up on the first call of the process: registers its formats, starts its networking and turns
/// its log output off. Networking is shut down at process exit. Safe to call from any thread.
void initializeFfmpeg();

}  // namespace zo

#endif
