#ifndef ZO_TESTS_SUPPORT_ZO_TEST_CLIP_H
#define ZO_TESTS_SUPPORT_ZO_TEST_CLIP_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixfmt.h>
#include <libavutil/rational.h>
}

namespace zo {
namespace test {

/// What a clip is made of. Picture number i carries the number i (see paintedNumber()).
struct ClipOptions {
  std::string codec =
      "mpeg4";  ///< name of the encoder: mpeg4, libx264, libx265, mpeg2video, mjpeg, ffv1, ...
  int width = 64;
  int height = 48;
  int frames = 30;
  int gop = 12;              ///< distance of key frames
  int b_frames = 0;          ///< B-frames in a row
  bool open_gop = false;     ///< B-frames may refer across a key frame
  std::set<int> key_frames;  ///< further pictures that become key frames
  AVPixelFormat pixel_format = AV_PIX_FMT_YUV420P;
  AVRational frame_rate{25, 1};
  AVRational time_base{0, 1};       ///< of `pts`; by default the inverse of the frame rate
  int64_t first_pts = 0;            ///< added to every timestamp; negative ones are kept as they are
  std::function<int64_t(int)> pts;  ///< timestamp of picture i, for a variable rate; by default i
  std::optional<double> rotation;   ///< display matrix: degrees to turn clockwise
  bool audio = false;               ///< a second stream with sound of the same length, placed after video
  bool audio_first = false;         ///< the sound becomes stream 0 and the pictures stream 1
  bool video = true;                ///< false gives sound only
  std::map<std::string, std::string> metadata;
  std::map<std::string, std::string> encoder_options;
  std::map<std::string, std::string> muxer_options;
  std::string muxer;  ///< by default what the file name's extension says

  // Damage. Video packets are counted from 0 in coding order.
  int skipped_packets = 0;          ///< packets left out at the start, so that it begins at a non-key one
  std::set<int> dropped_packets;    ///< packets that never reach the file
  std::set<int> corrupted_packets;  ///< packets whose payload is overwritten from its first eighth on
  bool without_timestamps = false;  ///< packets carry neither pts nor dts, where the container allows it
  std::function<bool(int, AVPacket*)> edit_packet;  ///< may change a packet; false drops it
};

/// A packet as it was given to the muxer, in the stream's time base.
struct ClipPacket {
  int64_t pts = 0;
  int64_t dts = 0;
  bool key = false;
};

struct Clip {
  std::string path;
  int frames = 0;                   ///< pictures encoded
  AVRational time_base{0, 1};       ///< of the video stream in the file
  std::vector<ClipPacket> packets;  ///< written video packets in coding order
};

/// Encodes a clip into a file whose extension (mp4, mkv, avi, ts, mov, webm, nut, h264, m4v, ...) chooses the
/// container. Throws std::runtime_error.
Clip makeClip(const std::string& path, const ClipOptions& options);

/// True when this FFmpeg has an encoder of that name; tests that want another than the built-in ones
/// (mpeg4, mpeg2video, mjpeg, ffv1, rawvideo) skip without it.
bool haveEncoder(const std::string& name);

/// Milliseconds of picture i of a clip made with these options in a container that keeps its times exactly.
long long clipTimeMs(const ClipOptions& options, int i);

}  // namespace test
}  // namespace zo

#endif
