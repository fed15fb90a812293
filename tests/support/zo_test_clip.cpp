#include "zo_test_clip.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "zo_core/zo_path.h"
#include "zo_test_encoder.h"
#include "zo_test_reference.h"
#include "zo_video/zo_ffmpeg_compat.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

namespace zo {
namespace test {
namespace {

// The file that is being written: container and I/O.
class Output {
 public:
  Output(const std::string& path, const std::string& muxer) : _p_format(nullptr) {
    registerFormatsAndCodecs();
    checkFfmpeg(avformat_alloc_output_context2(&_p_format, nullptr, muxer.empty() ? nullptr : muxer.c_str(),
                                               path.c_str()),
                "no container for " + path);
    const int result = avio_open(&_p_format->pb, path.c_str(), AVIO_FLAG_WRITE);
    if (result < 0) {
      avformat_free_context(_p_format);
      checkFfmpeg(result, "cannot write " + path);
    }
    _p_format->flags |= AVFMT_FLAG_BITEXACT;
  }
  ~Output() {
    avio_closep(&_p_format->pb);
    avformat_free_context(_p_format);
  }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  AVFormatContext* get() const { return _p_format; }
  bool wantsGlobalHeader() const { return (_p_format->oformat->flags & AVFMT_GLOBALHEADER) != 0; }

  AVStream* addStream(const EncodedStream& encoded) {
    AVStream* p_stream = avformat_new_stream(_p_format, nullptr);
    if (p_stream == nullptr) {
      throw std::runtime_error("avformat_new_stream");
    }
    p_stream->time_base = encoded.p_codec->time_base;
    checkFfmpeg(avcodec_parameters_from_context(p_stream->codecpar, encoded.p_codec.get()),
                "avcodec_parameters_from_context");
    return p_stream;
  }

 private:
  AVFormatContext* _p_format;
};

struct QueuedPacket {
  PacketPtr p_packet;
  int stream_index;
  AVRational time_base;
};

std::string toneCodecFor(const std::string& path) {
  const std::string extension = fileExtension(path);
  if (extension == ".avi" || extension == ".wav" || extension == ".nut") {
    return "pcm_s16le";
  }
  return extension == ".webm" ? "libopus" : "aac";
}

// Keeps the start of the payload, so that the packet is still taken for what it was.
void corrupt(AVPacket* p_packet) {
  PacketPtr p_own(av_packet_alloc());  // the encoder may still look at its bytes
  checkFfmpeg(av_new_packet(p_own.get(), p_packet->size), "av_new_packet");
  std::memcpy(p_own->data, p_packet->data, static_cast<std::size_t>(p_packet->size));
  checkFfmpeg(av_packet_copy_props(p_own.get(), p_packet), "av_packet_copy_props");
  av_packet_unref(p_packet);
  av_packet_move_ref(p_packet, p_own.get());
  for (int i = p_packet->size / 8; i < p_packet->size; ++i) {
    p_packet->data[i] = static_cast<uint8_t>(p_packet->data[i] ^ (0x5A + 7 * i));
  }
}

// Applies the damage that was asked for; false: the packet is left out.
bool damage(const ClipOptions& options, int index, AVPacket* p_packet) {
  if (index < options.skipped_packets || options.dropped_packets.count(index) != 0) {
    return false;
  }
  if (options.corrupted_packets.count(index) != 0) {
    corrupt(p_packet);
  }
  if (options.without_timestamps) {
    p_packet->pts = p_packet->dts = AV_NOPTS_VALUE;
  }
  return !options.edit_packet || options.edit_packet(index, p_packet);
}

void queueVideo(const ClipOptions& options, EncodedStream& video, int stream_index,
                std::vector<QueuedPacket>& queue) {
  int index = 0;
  for (PacketPtr& p_packet : video.packets) {
    p_packet->pts += options.first_pts;
    p_packet->dts += options.first_pts;
    if (damage(options, index++, p_packet.get())) {
      queue.push_back({std::move(p_packet), stream_index, video.p_codec->time_base});
    }
  }
}

// Puts the sound between the pictures by time; what has no time keeps its place.
void mergeAudio(EncodedStream& audio, int stream_index, std::vector<QueuedPacket>& queue) {
  std::vector<QueuedPacket> merged;
  std::size_t next = 0;
  const auto take = [&] {
    merged.push_back({std::move(audio.packets[next++]), stream_index, audio.p_codec->time_base});
  };
  for (QueuedPacket& video : queue) {
    while (next < audio.packets.size() && video.p_packet->dts != AV_NOPTS_VALUE &&
           av_compare_ts(audio.packets[next]->dts, audio.p_codec->time_base, video.p_packet->dts,
                         video.time_base) < 0) {
      take();
    }
    merged.push_back(std::move(video));
  }
  while (next < audio.packets.size()) {
    take();
  }
  queue = std::move(merged);
}

double lengthInSeconds(const ClipOptions& options) {
  return options.frames * static_cast<double>(options.frame_rate.den) / options.frame_rate.num;
}

}  // namespace

Clip makeClip(const std::string& path, const ClipOptions& options) {
  const QuietLog quiet;
  Output output(path, options.muxer);
  Clip clip;
  clip.path = path;
  clip.frames = options.video ? options.frames : 0;

  const bool has_audio = options.audio || !options.video;
  EncodedStream audio;
  AVStream* p_audio_stream = nullptr;
  if (has_audio) {
    audio = encodeTone(toneCodecFor(path), lengthInSeconds(options), output.wantsGlobalHeader());
  }
  if (has_audio && options.audio_first) {
    p_audio_stream = output.addStream(audio);
  }
  std::vector<QueuedPacket> queue;
  AVStream* p_video_stream = nullptr;
  EncodedStream video;
  if (options.video) {
    video = encodeVideo(options, output.wantsGlobalHeader());
    p_video_stream = output.addStream(video);
    p_video_stream->avg_frame_rate = options.frame_rate;
    if (options.rotation) {
      int32_t matrix[9];
      av_display_rotation_set(matrix, *options.rotation);
      setDisplayMatrix(p_video_stream, matrix);
    }
    queueVideo(options, video, p_video_stream->index, queue);
  }
  if (has_audio) {
    if (p_audio_stream == nullptr) {
      p_audio_stream = output.addStream(audio);
    }
    mergeAudio(audio, p_audio_stream->index, queue);
  }

  for (const auto& entry : options.metadata) {
    av_dict_set(&output.get()->metadata, entry.first.c_str(), entry.second.c_str(), 0);
  }
  AVDictionary* p_raw_options = nullptr;
  if (options.first_pts < 0) {
    av_dict_set(&p_raw_options, "avoid_negative_ts", "disabled", 0);
  }
  for (const auto& option : options.muxer_options) {
    av_dict_set(&p_raw_options, option.first.c_str(), option.second.c_str(), 0);
  }
  const int header_result = avformat_write_header(output.get(), &p_raw_options);
  av_dict_free(&p_raw_options);
  checkFfmpeg(header_result, "avformat_write_header");

  for (QueuedPacket& queued : queue) {
    AVStream* p_stream = output.get()->streams[queued.stream_index];
    AVPacket* p_packet = queued.p_packet.get();
    p_packet->stream_index = queued.stream_index;
    av_packet_rescale_ts(p_packet, queued.time_base, p_stream->time_base);
    if (p_stream == p_video_stream) {
      clip.packets.push_back({p_packet->pts, p_packet->dts, (p_packet->flags & AV_PKT_FLAG_KEY) != 0});
    }
    checkFfmpeg(av_write_frame(output.get(), p_packet), "av_write_frame");
  }
  checkFfmpeg(av_write_trailer(output.get()), "av_write_trailer");
  if (p_video_stream != nullptr) {
    clip.time_base = p_video_stream->time_base;
  }
  return clip;
}

bool haveEncoder(const std::string& name) {
  registerFormatsAndCodecs();
  return avcodec_find_encoder_by_name(name.c_str()) != nullptr;
}

long long clipTimeMs(const ClipOptions& options, int i) {
  const AVRational time_base = options.time_base.num != 0 ? options.time_base : av_inv_q(options.frame_rate);
  const int64_t step = std::max<int64_t>(1, av_rescale_q(1, av_inv_q(options.frame_rate), time_base));
  return timestampToMs(options.first_pts + (options.pts ? options.pts(i) : i * step), time_base);
}

}  // namespace test
}  // namespace zo
