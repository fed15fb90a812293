#include "zo_ffmpeg_calls.h"

#include <algorithm>

namespace zo {
namespace test {

FfmpegCalls& ffmpegCalls() {
  static thread_local FfmpegCalls calls;
  return calls;
}

namespace {

const AVCodec* workingDecoder(const AVCodec* p_codec) {
  const auto& added = ffmpegCalls().added_decoders;
  const auto found = added.find(p_codec);
  return found == added.end() ? p_codec : found->second;
}

}  // namespace
}  // namespace test
}  // namespace zo

using zo::test::ffmpegCalls;
using zo::test::FfmpegCalls;
using zo::test::workingDecoder;

// The linker's option --wrap sends every call of f to __wrap_f, and __real_f is the f of FFmpeg.
extern "C" {

int __real_av_read_frame(AVFormatContext* p_format, AVPacket* p_packet);
int __real_av_seek_frame(AVFormatContext* p_format, int stream_index, int64_t timestamp, int flags);
int __real_avcodec_send_packet(AVCodecContext* p_codec, const AVPacket* p_packet);
int __real_avcodec_receive_frame(AVCodecContext* p_codec, AVFrame* p_frame);
void __real_avcodec_flush_buffers(AVCodecContext* p_codec);
AVFormatContext* __real_avformat_alloc_context();
AVPacket* __real_av_packet_alloc();
AVFrame* __real_av_frame_alloc();
AVCodecContext* __real_avcodec_alloc_context3(const AVCodec* p_codec);
int __real_avcodec_parameters_to_context(AVCodecContext* p_codec, const AVCodecParameters* p_parameters);
int __real_avcodec_open2(AVCodecContext* p_context, const AVCodec* p_codec, AVDictionary** pp_options);
int __real_avformat_find_stream_info(AVFormatContext* p_format, AVDictionary** pp_options);
const AVCodec* __real_avcodec_find_decoder_by_name(const char* name);
long long __real__ZN2zo18getMonotonicTimeMsEv();

int __wrap_av_read_frame(AVFormatContext* p_format, AVPacket* p_packet);
int __wrap_av_seek_frame(AVFormatContext* p_format, int stream_index, int64_t timestamp, int flags);
int __wrap_avcodec_send_packet(AVCodecContext* p_codec, const AVPacket* p_packet);
int __wrap_avcodec_receive_frame(AVCodecContext* p_codec, AVFrame* p_frame);
void __wrap_avcodec_flush_buffers(AVCodecContext* p_codec);
AVFormatContext* __wrap_avformat_alloc_context();
AVPacket* __wrap_av_packet_alloc();
AVFrame* __wrap_av_frame_alloc();
AVCodecContext* __wrap_avcodec_alloc_context3(const AVCodec* p_codec);
int __wrap_avcodec_parameters_to_context(AVCodecContext* p_codec, const AVCodecParameters* p_parameters);
int __wrap_avcodec_open2(AVCodecContext* p_context, const AVCodec* p_codec, AVDictionary** pp_options);
int __wrap_avformat_find_stream_info(AVFormatContext* p_format, AVDictionary** pp_options);
const AVCodec* __wrap_avcodec_find_decoder_by_name(const char* name);
long long __wrap__ZN2zo18getMonotonicTimeMsEv();

int __wrap_av_read_frame(AVFormatContext* p_format, AVPacket* p_packet) {
  FfmpegCalls& calls = ffmpegCalls();
  int result = 0;
  if (calls.on_read && calls.on_read(result)) {
    return result;
  }
  const AVIOInterruptCB& interrupt = p_format->interrupt_callback;
  if (calls.poll_before_reading && interrupt.callback != nullptr &&
      interrupt.callback(interrupt.opaque) != 0) {
    return AVERROR_EXIT;
  }
  result = __real_av_read_frame(p_format, p_packet);
  calls.packets_read += result == 0 ? 1 : 0;
  if (calls.poll_after_reading && interrupt.callback != nullptr) {
    interrupt.callback(interrupt.opaque);
  }
  return result;
}

int __wrap_av_seek_frame(AVFormatContext* p_format, int stream_index, int64_t timestamp, int flags) {
  FfmpegCalls& calls = ffmpegCalls();
  calls.seeks.push_back({timestamp, flags});
  int result = 0;
  if (calls.on_seek && calls.on_seek(calls.seeks.back(), result)) {
    return result;
  }
  const AVIOInterruptCB& interrupt = p_format->interrupt_callback;
  if (calls.poll_before_seeking && interrupt.callback != nullptr &&
      interrupt.callback(interrupt.opaque) != 0) {
    return AVERROR_EXIT;
  }
  return __real_av_seek_frame(p_format, stream_index, timestamp, flags);
}

int __wrap_avcodec_send_packet(AVCodecContext* p_codec, const AVPacket* p_packet) {
  FfmpegCalls& calls = ffmpegCalls();
  int result = 0;
  const bool drains = p_packet == nullptr || p_packet->size == 0;
  if (!drains && calls.on_send && calls.on_send(result)) {
    return result;
  }
  if (!drains) {
    ++calls.packets_sent;
    calls.packets_decoded_without_skipping += p_codec->skip_frame == AVDISCARD_DEFAULT ? 1 : 0;
  }
  return __real_avcodec_send_packet(p_codec, p_packet);
}

int __wrap_avcodec_receive_frame(AVCodecContext* p_codec, AVFrame* p_frame) {
  FfmpegCalls& calls = ffmpegCalls();
  int result = 0;
  if (calls.on_receive && calls.on_receive(result)) {
    av_frame_unref(p_frame);  // as every call does
    return result;
  }
  result = __real_avcodec_receive_frame(p_codec, p_frame);
  calls.pictures_received += result == 0 ? 1 : 0;
  if (calls.empty_pictures) {
    av_frame_unref(p_frame);
  }
  return result;
}

void __wrap_avcodec_flush_buffers(AVCodecContext* p_codec) {
  ++ffmpegCalls().flushes;
  __real_avcodec_flush_buffers(p_codec);
}

AVFormatContext* __wrap_avformat_alloc_context() {
  return ffmpegCalls().no_format_context ? nullptr : __real_avformat_alloc_context();
}

AVPacket* __wrap_av_packet_alloc() {
  return ffmpegCalls().no_packet ? nullptr : __real_av_packet_alloc();
}

AVFrame* __wrap_av_frame_alloc() {
  return ffmpegCalls().no_frame ? nullptr : __real_av_frame_alloc();
}

AVCodecContext* __wrap_avcodec_alloc_context3(const AVCodec* p_codec) {
  return ffmpegCalls().no_decoder_context ? nullptr : __real_avcodec_alloc_context3(workingDecoder(p_codec));
}

int __wrap_avcodec_parameters_to_context(AVCodecContext* p_codec, const AVCodecParameters* p_parameters) {
  return ffmpegCalls().no_decoder_parameters ? AVERROR(EINVAL)
                                             : __real_avcodec_parameters_to_context(p_codec, p_parameters);
}

int __wrap_avcodec_open2(AVCodecContext* p_context, const AVCodec* p_codec, AVDictionary** pp_options) {
  ffmpegCalls().decoders_opened.push_back(p_codec);
  return ffmpegCalls().no_decoder_open ? AVERROR(EINVAL)
                                       : __real_avcodec_open2(p_context, workingDecoder(p_codec), pp_options);
}

int __wrap_avformat_find_stream_info(AVFormatContext* p_format, AVDictionary** pp_options) {
  FfmpegCalls& calls = ffmpegCalls();
  calls.looking_at_streams = true;
  int result = __real_avformat_find_stream_info(p_format, pp_options);
  calls.looking_at_streams = false;
  if (calls.on_stream_information) {
    calls.on_stream_information(p_format, result);
  }
  calls.stream_information = result;
  return result;
}

const AVCodec* __wrap_avcodec_find_decoder_by_name(const char* name) {
  FfmpegCalls& calls = ffmpegCalls();
  calls.decoders_looked_up.push_back(name);
  const auto found =
      std::find_if(calls.added_decoders.begin(), calls.added_decoders.end(),
                   [&](const auto& added) { return calls.decoders_looked_up.back() == added.first->name; });
  return found == calls.added_decoders.end() ? __real_avcodec_find_decoder_by_name(name) : found->first;
}

// zo::getMonotonicTimeMs()
long long __wrap__ZN2zo18getMonotonicTimeMsEv() {
  return ffmpegCalls().clock_ms ? *ffmpegCalls().clock_ms : __real__ZN2zo18getMonotonicTimeMsEv();
}

}  // extern "C"
