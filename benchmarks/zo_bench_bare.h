#ifndef ZO_BENCHMARKS_ZO_BENCH_BARE_H
#define ZO_BENCHMARKS_ZO_BENCH_BARE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zo_core/zo_frame.h"
#include "zo_video/zo_ffmpeg_handles.h"

namespace zo {
namespace bench {

/// FFmpeg and nothing else, one decoder thread: the least that reading costs.
class BareReader {
 public:
  /// Throws std::runtime_error, as everything here does.
  explicit BareReader(const std::string& path);
  ~BareReader();
  BareReader(const BareReader&) = delete;
  BareReader& operator=(const BareReader&) = delete;

  /// Reads all packets without decoding. Returns how many belong to the video stream.
  long long readPackets();

  /// Decodes the next picture; false at the end.
  bool next();
  /// Copies the picture into memory that is kept from picture to picture.
  void copy();

  /// Notes times and key frames of all packets and goes back to the start. Needed by get().
  void index();
  /// Time of the packet with that index.
  int64_t time(long long frame_index) const { return _entries[static_cast<std::size_t>(frame_index)].time; }
  long long frameCount() const { return static_cast<long long>(_entries.size()); }
  /// Copies that picture: seeks to the key frame before it, unless decoding on leads there, and decodes
  /// forward.
  void get(long long frame_index);

  const AVFrame* picture() const { return _p_frame.get(); }
  uint64_t pictureHash() const;
  AVCodecContext* codec() { return _p_codec.get(); }

 private:
  struct Entry {
    int64_t time;
    int64_t dts;
    bool key;
  };

  void seek(long long key_index);

  FormatContextPtr _p_format;
  CodecContextPtr _p_codec;
  PacketPtr _p_packet;
  AvFramePtr _p_frame;
  int _stream = -1;
  bool _draining = false;
  std::vector<Entry> _entries;
  bool _seek_by_dts = false;
  long long _position = -1;  // index of the held picture
  uint8_t* _copy[4] = {};
  int _copy_strides[4] = {};
  int _copy_width = 0;
  int _copy_height = 0;
  int _copy_format = -1;
};

/// Some number that tells pictures apart.
uint64_t hashPlane(const uint8_t* p_data, std::ptrdiff_t stride, int row_bytes, int rows, uint64_t seed);
uint64_t hashFrame(const Frame& frame);
uint64_t hashPicture(uint8_t* const* planes, const int* strides, int format, int width, int height);

}  // namespace bench
}  // namespace zo

#endif
