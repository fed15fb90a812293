#include "zo_test_encoder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "zo_test_picture.h"
#include "zo_video/zo_ffmpeg_compat.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
}

namespace zo {
namespace test {
namespace {

const AVCodec* encoderNamed(const std::string& name) {
  registerFormatsAndCodecs();
  const AVCodec* p_codec = avcodec_find_encoder_by_name(name.c_str());
  if (p_codec == nullptr) {
    throw std::runtime_error("no encoder " + name);
  }
  return p_codec;
}

void setOption(AVCodecContext* p_context, const char* key, const std::string& value) {
  checkFfmpeg(av_opt_set(p_context, key, value.c_str(), AV_OPT_SEARCH_CHILDREN),
              "option " + std::string(key));
}

// Fixed structure and little loss, whatever the encoder would choose by itself.
void setStructure(AVCodecContext* p_context, const ClipOptions& options) {
  const std::string gop = std::to_string(options.gop);
  const std::string b_frames = std::to_string(options.b_frames);
  p_context->gop_size = options.gop;
  p_context->keyint_min = options.gop;
  p_context->max_b_frames = options.b_frames;
  if (options.codec == "libx264") {
    setOption(p_context, "preset", "veryfast");
    setOption(p_context, "forced-idr", "1");
    setOption(p_context, "x264-params",
              "scenecut=0:qp=18:b-adapt=0:b-pyramid=0:keyint=" + gop + ":min-keyint=" + gop +
                  ":bframes=" + b_frames + ":open-gop=" + (options.open_gop ? "1" : "0"));
  } else if (options.codec == "libx265") {
    setOption(p_context, "preset", "ultrafast");
    setOption(p_context, "forced-idr", "1");
    setOption(
        p_context, "x265-params",
        "log-level=none:pools=none:frame-threads=1:scenecut=0:qp=18:b-adapt=0:b-pyramid=0:keyint=" + gop +
            ":min-keyint=" + gop + ":bframes=" + b_frames + ":open-gop=" + (options.open_gop ? "1" : "0"));
  } else if (options.codec == "libvpx-vp9") {
    p_context->bit_rate = 2000000;
    setOption(p_context, "deadline", "realtime");
    setOption(p_context, "cpu-used", "8");
    setOption(p_context, "lag-in-frames", "0");
  } else if (options.codec == "mpeg4" || options.codec == "mpeg2video" || options.codec == "mjpeg") {
    p_context->flags |= AV_CODEC_FLAG_QSCALE;
    p_context->global_quality = 3 * FF_QP2LAMBDA;
    if (options.codec != "mjpeg") {
      setOption(p_context, "sc_threshold", "1000000000");
      if (!options.open_gop) {
        p_context->flags |= AV_CODEC_FLAG_CLOSED_GOP;
      }
    } else {
      setOption(p_context, "strict", "unofficial");  // limited range as well
    }
  }
}

void receivePackets(EncodedStream& stream) {
  for (;;) {
    PacketPtr p_packet(av_packet_alloc());
    const int result = avcodec_receive_packet(stream.p_codec.get(), p_packet.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
      return;
    }
    checkFfmpeg(result, "avcodec_receive_packet");
    stream.packets.push_back(std::move(p_packet));
  }
}

void encode(EncodedStream& stream, const AVFrame* p_frame) {
  checkFfmpeg(avcodec_send_frame(stream.p_codec.get(), p_frame), "avcodec_send_frame");
  receivePackets(stream);
}

// One sample of the tone, in whatever way the encoder wants its samples.
void storeSample(AVFrame* p_frame, int i, double value) {
  switch (p_frame->format) {
    case AV_SAMPLE_FMT_S16:
    case AV_SAMPLE_FMT_S16P: {
      const int16_t sample = static_cast<int16_t>(value * 20000);
      std::memcpy(p_frame->data[0] + 2 * i, &sample, sizeof(sample));
      break;
    }
    default: {
      const float sample = static_cast<float>(value);
      std::memcpy(p_frame->data[0] + 4 * i, &sample, sizeof(sample));
      break;
    }
  }
}

CodecContextPtr openToneEncoder(const std::string& name, int sample_rate, bool global_header) {
  const AVCodec* p_codec = encoderNamed(name);
  for (const AVSampleFormat format :
       {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_S16P}) {
    CodecContextPtr p_context(avcodec_alloc_context3(p_codec));
    p_context->sample_fmt = format;
    p_context->sample_rate = sample_rate;
    p_context->time_base = AVRational{1, sample_rate};
    p_context->bit_rate = 64000;
    setMono(p_context.get());
    if (global_header) {
      p_context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    if (avcodec_open2(p_context.get(), p_codec, nullptr) == 0) {
      return p_context;
    }
  }
  throw std::runtime_error("cannot open the encoder " + name);
}

}  // namespace

void checkFfmpeg(int result, const std::string& what) {
  if (result < 0) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(result, text, sizeof(text));
    throw std::runtime_error(what + ": " + text);
  }
}

QuietLog::QuietLog() : _level(av_log_get_level()) {
  av_log_set_level(AV_LOG_QUIET);
}

QuietLog::~QuietLog() {
  av_log_set_level(_level);
}

EncodedStream encodeVideo(const ClipOptions& options, bool global_header) {
  const AVCodec* p_codec = encoderNamed(options.codec);
  EncodedStream stream;
  stream.p_codec.reset(avcodec_alloc_context3(p_codec));
  AVCodecContext* p_context = stream.p_codec.get();
  p_context->width = options.width;
  p_context->height = options.height;
  p_context->pix_fmt = options.pixel_format;
  p_context->framerate = options.frame_rate;
  p_context->time_base = options.time_base.num != 0 ? options.time_base : av_inv_q(options.frame_rate);
  p_context->thread_count = 1;
  p_context->flags |= AV_CODEC_FLAG_BITEXACT;
  if (global_header) {
    p_context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  }
  setStructure(p_context, options);
  for (const auto& option : options.encoder_options) {
    setOption(p_context, option.first.c_str(), option.second);
  }
  checkFfmpeg(avcodec_open2(p_context, p_codec, nullptr), "cannot open the encoder " + options.codec);

  const int64_t frame_duration =
      std::max<int64_t>(1, av_rescale_q(1, av_inv_q(options.frame_rate), p_context->time_base));
  AvFramePtr p_frame(av_frame_alloc());
  p_frame->format = options.pixel_format;
  p_frame->width = options.width;
  p_frame->height = options.height;
  checkFfmpeg(av_frame_get_buffer(p_frame.get(), 32), "av_frame_get_buffer");
  for (int i = 0; i < options.frames; ++i) {
    checkFfmpeg(av_frame_make_writable(p_frame.get()), "av_frame_make_writable");
    paintNumber(p_frame.get(), i);
    p_frame->pts = options.pts ? options.pts(i) : i * frame_duration;
    p_frame->pict_type = options.key_frames.count(i) != 0 ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    if ((p_context->flags & AV_CODEC_FLAG_QSCALE) != 0) {
      p_frame->quality = p_context->global_quality;
    }
    encode(stream, p_frame.get());
  }
  encode(stream, nullptr);
  for (const PacketPtr& p_packet : stream.packets) {
    if (p_packet->duration <= 0) {
      p_packet->duration = frame_duration;
    }
  }
  return stream;
}

EncodedStream encodeTone(const std::string& codec, double seconds, bool global_header) {
  constexpr int SAMPLE_RATE = 48000;
  constexpr double TURN = 2 * 3.14159265358979323846;
  EncodedStream stream;
  stream.p_codec = openToneEncoder(codec, SAMPLE_RATE, global_header);
  const int samples_per_frame = stream.p_codec->frame_size > 0 ? stream.p_codec->frame_size : 1024;
  AvFramePtr p_frame(av_frame_alloc());
  p_frame->format = stream.p_codec->sample_fmt;
  p_frame->nb_samples = samples_per_frame;
  p_frame->sample_rate = SAMPLE_RATE;
  setMono(p_frame.get());
  checkFfmpeg(av_frame_get_buffer(p_frame.get(), 0), "av_frame_get_buffer");
  const int64_t samples = std::llround(seconds * SAMPLE_RATE);
  for (int64_t first = 0; first < samples; first += samples_per_frame) {
    checkFfmpeg(av_frame_make_writable(p_frame.get()), "av_frame_make_writable");
    for (int i = 0; i < samples_per_frame; ++i) {
      storeSample(p_frame.get(), i,
                  0.5 * std::sin(TURN * 440.0 * static_cast<double>(first + i) / SAMPLE_RATE));
    }
    p_frame->pts = first;
    encode(stream, p_frame.get());
  }
  encode(stream, nullptr);
  return stream;
}

}  // namespace test
}  // namespace zo
