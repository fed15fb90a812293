#include "zo_bench_bare.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/mem.h>
#include <libavutil/pixdesc.h>
}

#include "zo_video/zo_ffmpeg_compat.h"

namespace zo {
namespace bench {
namespace {

void require(bool ok, const char* what) {
  if (!ok) {
    throw std::runtime_error(std::string("bare FFmpeg: ") + what);
  }
}

}  // namespace

uint64_t hashPlane(const uint8_t* p_data, std::ptrdiff_t stride, int row_bytes, int rows, uint64_t seed) {
  uint64_t hash = seed;
  for (int y = 0; y < rows; ++y, p_data += stride) {
    int x = 0;
    for (; x + 8 <= row_bytes; x += 8) {
      uint64_t word;
      std::memcpy(&word, p_data + x, 8);
      hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
      hash ^= hash >> 29;
    }
    for (; x < row_bytes; ++x) {
      hash = (hash ^ p_data[x]) * 0x9E3779B97F4A7C15U;
      hash ^= hash >> 29;
    }
  }
  return hash;
}

uint64_t hashFrame(const Frame& frame) {
  uint64_t hash = 1;
  for (unsigned i = 0; i < frame.planeCount(); ++i) {
    hash = hashPlane(frame.planeData(i), static_cast<std::ptrdiff_t>(frame.planeStride(i)),
                     static_cast<int>(frame.planeRowBytes(i)), static_cast<int>(frame.planeRows(i)), hash);
  }
  return hash;
}

uint64_t hashPicture(uint8_t* const* planes, const int* strides, int format, int width, int height) {
  const AVPixelFormat pixel_format = static_cast<AVPixelFormat>(format);
  const AVPixFmtDescriptor* const p_descriptor = av_pix_fmt_desc_get(pixel_format);
  uint64_t hash = 1;
  for (int i = 0; i < av_pix_fmt_count_planes(pixel_format); ++i) {
    const int shift = i == 1 || i == 2 ? p_descriptor->log2_chroma_h : 0;
    hash = hashPlane(planes[i], strides[i], av_image_get_linesize(pixel_format, width, i),
                     -(-height >> shift), hash);
  }
  return hash;
}

BareReader::BareReader(const std::string& path) : _p_packet(av_packet_alloc()), _p_frame(av_frame_alloc()) {
  av_log_set_level(AV_LOG_QUIET);
  registerFormatsAndCodecs();
  AVFormatContext* p_format = nullptr;
  require(avformat_open_input(&p_format, path.c_str(), nullptr, nullptr) == 0, path.c_str());
  _p_format.reset(p_format);
  require(avformat_find_stream_info(_p_format.get(), nullptr) >= 0, "no stream information");
  const AVCodec* p_decoder = nullptr;
  _stream = findBestVideoStream(_p_format.get(), &p_decoder);
  require(_stream >= 0 && p_decoder != nullptr, "no video stream");
  _p_codec.reset(avcodec_alloc_context3(p_decoder));
  require(avcodec_parameters_to_context(_p_codec.get(), _p_format->streams[_stream]->codecpar) >= 0,
          "no parameters");
  _p_codec->thread_count = 1;
  require(avcodec_open2(_p_codec.get(), p_decoder, nullptr) >= 0, "decoder does not open");
}

BareReader::~BareReader() {
  av_freep(&_copy[0]);
}

long long BareReader::readPackets() {
  long long count = 0;
  while (av_read_frame(_p_format.get(), _p_packet.get()) == 0) {
    count += _p_packet->stream_index == _stream ? 1 : 0;
    av_packet_unref(_p_packet.get());
  }
  return count;
}

bool BareReader::next() {
  for (;;) {
    if (avcodec_receive_frame(_p_codec.get(), _p_frame.get()) == 0) {
      return true;
    }
    if (_draining) {
      return false;
    }
    if (av_read_frame(_p_format.get(), _p_packet.get()) != 0) {
      _draining = true;
      avcodec_send_packet(_p_codec.get(), nullptr);
    } else {
      if (_p_packet->stream_index == _stream) {
        avcodec_send_packet(_p_codec.get(), _p_packet.get());
      }
      av_packet_unref(_p_packet.get());
    }
  }
}

void BareReader::copy() {
  const AVFrame& frame = *_p_frame;
  if (frame.width != _copy_width || frame.height != _copy_height || frame.format != _copy_format) {
    av_freep(&_copy[0]);
    _copy_width = frame.width;
    _copy_height = frame.height;
    _copy_format = frame.format;
    require(av_image_alloc(_copy, _copy_strides, frame.width, frame.height,
                           static_cast<AVPixelFormat>(frame.format), 64) >= 0,
            "no memory");
  }
  const uint8_t* planes[4] = {frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
  av_image_copy(_copy, _copy_strides, planes, frame.linesize, static_cast<AVPixelFormat>(frame.format),
                frame.width, frame.height);
}

uint64_t BareReader::pictureHash() const {
  return hashPicture(_p_frame->data, _p_frame->linesize, _p_frame->format, _p_frame->width, _p_frame->height);
}

void BareReader::index() {
  while (av_read_frame(_p_format.get(), _p_packet.get()) == 0) {
    const AVPacket& packet = *_p_packet;
    if (packet.stream_index == _stream) {
      _entries.push_back({packet.pts == AV_NOPTS_VALUE ? packet.dts : packet.pts, packet.dts,
                          (packet.flags & AV_PKT_FLAG_KEY) != 0});
    }
    av_packet_unref(_p_packet.get());
  }
  std::stable_sort(_entries.begin(), _entries.end(),
                   [](const Entry& a, const Entry& b) { return a.time < b.time; });
  require(!_entries.empty(), "no packets");
  // A transport stream has no index and is searched by decoding time; the others take presentation times.
  _seek_by_dts =
      std::strcmp(_p_format->iformat->name, "mpegts") == 0 && _entries.front().dts != AV_NOPTS_VALUE;
  seek(0);
}

void BareReader::seek(long long key_index) {
  const Entry& key = _entries[static_cast<std::size_t>(key_index)];
  require(
      av_seek_frame(_p_format.get(), _stream, _seek_by_dts ? key.dts : key.time, AVSEEK_FLAG_BACKWARD) >= 0,
      "cannot seek");
  avcodec_flush_buffers(_p_codec.get());
  _draining = false;
  _position = -1;
}

void BareReader::get(long long frame_index) {
  long long key_index = frame_index;
  while (key_index > 0 && !_entries[static_cast<std::size_t>(key_index)].key) {
    --key_index;
  }
  if (_position < key_index || _position >= frame_index) {
    seek(key_index);
  }
  const int64_t time = _entries[static_cast<std::size_t>(frame_index)].time;
  while (next()) {
    if (_p_frame->best_effort_timestamp >= time) {
      break;
    }
  }
  _position = frame_index;
  copy();
}

}  // namespace bench
}  // namespace zo
