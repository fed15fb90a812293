#include "zo_ffmpeg_compat.h"

#include <cstddef>
#include <cstring>

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/avutil.h>
#include <libavutil/channel_layout.h>
}

namespace zo {

void registerFormatsAndCodecs() {
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(58, 9, 100)
  av_register_all();
#endif
}

int findBestVideoStream(AVFormatContext* p_format, const AVCodec** pp_decoder) {
#if LIBAVFORMAT_VERSION_MAJOR < 59
  AVCodec* p_decoder = nullptr;
#else
  const AVCodec* p_decoder = nullptr;
#endif
  const int index = av_find_best_stream(p_format, AVMEDIA_TYPE_VIDEO, -1, -1, &p_decoder, 0);
  *pp_decoder = p_decoder;
  return index;
}

const int32_t* displayMatrix(AVStream* p_stream) {
  const uint8_t* p_data = nullptr;
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(60, 15, 100)
  p_data = av_stream_get_side_data(p_stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
#else
  const AVCodecParameters* p_parameters = p_stream->codecpar;
  const AVPacketSideData* p_side_data = av_packet_side_data_get(
      p_parameters->coded_side_data, p_parameters->nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX);
  if (p_side_data != nullptr) {
    p_data = p_side_data->data;
  }
#endif
  return static_cast<const int32_t*>(static_cast<const void*>(p_data));  // FFmpeg allocates it aligned
}

bool hasFirstDts() {
  return LIBAVFORMAT_VERSION_MAJOR < 59;
}

int64_t firstDts(const AVStream* p_stream) {
#if LIBAVFORMAT_VERSION_MAJOR < 59
  // Where the first packet has no decoding time, the field tells that of a later one. The right one cannot
  // lie behind the first presentation time.
  const bool of_a_later_packet = p_stream->first_dts != AV_NOPTS_VALUE &&
                                 p_stream->start_time != AV_NOPTS_VALUE &&
                                 p_stream->first_dts > p_stream->start_time;
  return of_a_later_packet ? p_stream->start_time : p_stream->first_dts;
#else
  static_cast<void>(p_stream);
  return AV_NOPTS_VALUE;
#endif
}

// The demuxer of single pictures reads on where the file stands, and its seek leaves that as it is.
int seekStream(AVFormatContext* p_format, int stream_index, int64_t target, int flags) {
  const int result = av_seek_frame(p_format, stream_index, target, flags);
  if (result >= 0 && p_format->pb != nullptr && std::strcmp(p_format->iformat->name, "image2") == 0) {
    const int64_t position = avio_seek(p_format->pb, 0, SEEK_SET);
    return position < 0 ? static_cast<int>(position) : result;
  }
  return result;
}

bool decodersQueuePictures() {
  return LIBAVCODEC_VERSION_MAJOR >= 61;  // HEVC in FFmpeg 7.1
}

void flushDecoder(AVCodecContext* p_codec, AVFrame* p_spare) {
#if LIBAVCODEC_VERSION_MAJOR < 61
  static_cast<void>(p_spare);
#else
  // The HEVC decoder of FFmpeg 7.1 queues finished pictures, and would deliver them after the flush.
  while (avcodec_receive_frame(p_codec, p_spare) == 0) {
  }
#endif
  avcodec_flush_buffers(p_codec);
}

const char* renamedSocketTimeoutOption(const char* url, int64_t timeout_us) {
#if LIBAVFORMAT_VERSION_MAJOR < 59
  static_cast<void>(url);
  static_cast<void>(timeout_us);
  return nullptr;
#else
  if (av_strstart(url, "rtmp", nullptr) != 0) {
    return nullptr;
  }
  const bool is_rtsp = av_strstart(url, "rtsp", nullptr) != 0 || av_strstart(url, "satip:", nullptr) != 0;
  return is_rtsp || timeout_us <= INT32_MAX ? "timeout" : nullptr;
#endif
}

void setDisplayMatrix(AVStream* p_stream, const int32_t* p_matrix) {
  constexpr std::size_t BYTES = 9 * sizeof(int32_t);
  uint8_t* p_data = nullptr;
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(60, 15, 100)
  p_data = av_stream_new_side_data(p_stream, AV_PKT_DATA_DISPLAYMATRIX, BYTES);
#else
  AVCodecParameters* p_parameters = p_stream->codecpar;
  AVPacketSideData* p_side_data = av_packet_side_data_new(
      &p_parameters->coded_side_data, &p_parameters->nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX, BYTES, 0);
  if (p_side_data != nullptr) {
    p_data = p_side_data->data;
  }
#endif
  if (p_data != nullptr) {
    std::memcpy(p_data, p_matrix, BYTES);
  }
}

namespace {

// Channel layouts became records in libavutil 57.24.
template <class Target>
void setMonoLayout(Target* p_target) {
#if LIBAVUTIL_VERSION_INT < AV_VERSION_INT(57, 24, 100)
  p_target->channels = 1;
  p_target->channel_layout = AV_CH_LAYOUT_MONO;
#else
  av_channel_layout_default(&p_target->ch_layout, 1);
#endif
}

}  // namespace

void setMono(AVCodecContext* p_codec) {
  setMonoLayout(p_codec);
}

void setMono(AVFrame* p_frame) {
  setMonoLayout(p_frame);
}

}  // namespace zo
