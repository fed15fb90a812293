#ifndef ZO_TESTS_ZO_FFMPEG_CALLS_H
#define ZO_TESTS_ZO_FFMPEG_CALLS_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace zo {
namespace test {

/// Stands between the reader and FFmpeg in programs that are linked with zo_ffmpeg_calls: counts the calls
/// that cost time, and lets a test answer some of them itself. The library knows nothing of it; the linker
/// puts it in between.
struct FfmpegCalls {
  struct Seek {
    int64_t target;
    int flags;
  };

  // What happened since reset().
  int packets_read = 0;                      ///< packets of any stream that av_read_frame() delivered
  int packets_sent = 0;                      ///< to the decoder, the one that drains it not counted
  int packets_decoded_without_skipping = 0;  ///< of those, sent with everything to be decoded
  int pictures_received = 0;
  int flushes = 0;
  std::vector<Seek> seeks;
  std::vector<std::string> decoders_looked_up;  ///< by name
  std::vector<const AVCodec*> decoders_opened;
  int stream_information = 0;       ///< what avformat_find_stream_info() has returned
  bool looking_at_streams = false;  ///< it is running

  // What to do instead, when set. They see each call before FFmpeg does; a result other than nothing is
  // returned to the reader in its place.
  std::function<bool(int& result)> on_read;  ///< true: `result` is the answer
  std::function<bool(const Seek& seek, int& result)> on_seek;
  std::function<bool(int& result)> on_send;  ///< not for the packet that drains
  std::function<bool(int& result)> on_receive;
  /// Sees what avformat_find_stream_info() has found, and may change that and the answer.
  std::function<void(AVFormatContext* p_format, int& result)> on_stream_information;
  /// Decoders that only this program knows, and which of FFmpeg's does the work of each.
  std::map<const AVCodec*, const AVCodec*> added_decoders;
  bool empty_pictures = false;         ///< avcodec_receive_frame() drops what it puts into its pictures
  bool no_format_context = false;      ///< avformat_alloc_context() gives null
  bool no_packet = false;              ///< av_packet_alloc() gives null
  bool no_frame = false;               ///< av_frame_alloc() gives null
  bool no_decoder_context = false;     ///< avcodec_alloc_context3() gives null
  bool no_decoder_parameters = false;  ///< avcodec_parameters_to_context() fails
  bool no_decoder_open = false;        ///< avcodec_open2() fails

  /// Every av_read_frame() polls the interrupt callback first, as one that waits for the network does, and
  /// fails when it says so; or polls it when the packet is already there, and delivers it all the same.
  bool poll_before_reading = false;
  bool poll_after_reading = false;
  /// Every av_seek_frame() polls it first, as one that looks for its target in the file does, and fails when
  /// it says so.
  bool poll_before_seeking = false;

  /// The time on the reader's clock in place of the real one.
  std::optional<long long> clock_ms;

  void reset() { *this = FfmpegCalls(); }
  void resetCounts() {
    packets_read = packets_sent = packets_decoded_without_skipping = pictures_received = flushes = 0;
    seeks.clear();
  }
};

/// Of this thread.
FfmpegCalls& ffmpegCalls();

}  // namespace test
}  // namespace zo

#endif
