#include "zo_test_reference.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "zo_test_encoder.h"
#include "zo_video/zo_ffmpeg_compat.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace zo {
namespace test {
namespace {

// Hands a packet (null to drain) to the decoder and keeps what comes out.
void decode(AVCodecContext* p_codec, const AVPacket* p_packet, AVFrame* p_frame, bool keep_pixels,
            ReferenceStream& stream) {
  avcodec_send_packet(p_codec, p_packet);
  while (avcodec_receive_frame(p_codec, p_frame) == 0) {
    ReferencePicture picture;
    if (keep_pixels) {
      picture = copyPicture(p_frame);
    }
    picture.format = static_cast<AVPixelFormat>(p_frame->format);
    picture.width = p_frame->width;
    picture.height = p_frame->height;
    picture.best_effort_timestamp = p_frame->best_effort_timestamp;
    stream.pictures.push_back(std::move(picture));
  }
}

}  // namespace

std::string ReferencePicture::bytes() const {
  std::string all;
  for (const std::string& plane : planes) {
    all += plane;
  }
  return all;
}

ReferencePicture copyPicture(const AVFrame* p_frame) {
  ReferencePicture picture;
  picture.format = static_cast<AVPixelFormat>(p_frame->format);
  picture.width = p_frame->width;
  picture.height = p_frame->height;
  picture.best_effort_timestamp = p_frame->best_effort_timestamp;
  const AVPixFmtDescriptor* p_format = av_pix_fmt_desc_get(picture.format);
  for (int plane = 0; plane < av_pix_fmt_count_planes(picture.format); ++plane) {
    const bool subsampled = plane == 1 || plane == 2;
    const int rows = subsampled ? -((-p_frame->height) >> p_format->log2_chroma_h) : p_frame->height;
    const int row_bytes = av_image_get_linesize(picture.format, p_frame->width, plane);
    std::string bytes;
    for (int row = 0; row < rows; ++row) {
      const uint8_t* p_row =
          p_frame->data[plane] + static_cast<std::ptrdiff_t>(row) * p_frame->linesize[plane];
      bytes.append(reinterpret_cast<const char*>(p_row), static_cast<std::size_t>(row_bytes));
    }
    picture.planes.push_back(std::move(bytes));
  }
  return picture;
}

ReferenceStream decodeReference(const std::string& path, bool keep_pixels) {
  const QuietLog quiet;
  registerFormatsAndCodecs();
  AVFormatContext* p_raw_format = nullptr;
  checkFfmpeg(avformat_open_input(&p_raw_format, path.c_str(), nullptr, nullptr), "cannot open " + path);
  const FormatContextPtr p_format(p_raw_format);
  checkFfmpeg(avformat_find_stream_info(p_format.get(), nullptr), "avformat_find_stream_info");
  const AVCodec* p_decoder = nullptr;
  const int index = findBestVideoStream(p_format.get(), &p_decoder);
  checkFfmpeg(index, "no video stream");
  const AVStream* p_stream = p_format->streams[index];
  const CodecContextPtr p_codec(avcodec_alloc_context3(p_decoder));
  checkFfmpeg(avcodec_parameters_to_context(p_codec.get(), p_stream->codecpar),
              "avcodec_parameters_to_context");
  p_codec->thread_count = 1;
  checkFfmpeg(avcodec_open2(p_codec.get(), p_decoder, nullptr), "avcodec_open2");

  ReferenceStream stream;
  stream.index = index;
  if (p_stream->codecpar->extradata_size > 0) {
    stream.set_up.assign(reinterpret_cast<const char*>(p_stream->codecpar->extradata),
                         static_cast<std::size_t>(p_stream->codecpar->extradata_size));
  }
  stream.time_base = p_stream->time_base;
  stream.average_frame_rate = p_stream->avg_frame_rate;
  stream.start_time = p_stream->start_time;
  stream.container_duration = p_format->duration;
  stream.format = p_codec->pix_fmt;
  stream.width = p_codec->width;
  stream.height = p_codec->height;

  const PacketPtr p_packet(av_packet_alloc());
  const AvFramePtr p_frame(av_frame_alloc());
  while (av_read_frame(p_format.get(), p_packet.get()) == 0) {
    if (p_packet->stream_index == index) {
      stream.packets.push_back({p_packet->pts, p_packet->dts, (p_packet->flags & AV_PKT_FLAG_KEY) != 0});
      decode(p_codec.get(), p_packet.get(), p_frame.get(), keep_pixels, stream);
    }
    av_packet_unref(p_packet.get());
  }
  decode(p_codec.get(), nullptr, p_frame.get(), keep_pixels, stream);
  return stream;
}

std::string errorText(int code) {
  char text[64] = {};
  av_strerror(code, text, sizeof(text));
  return text;
}

std::string openErrorText(const std::string& url) {
  const QuietLog quiet;
  registerFormatsAndCodecs();
  AVFormatContext* p_raw_format = nullptr;
  const int result = avformat_open_input(&p_raw_format, url.c_str(), nullptr, nullptr);
  if (result >= 0) {
    avformat_close_input(&p_raw_format);
    throw std::runtime_error(url + " can be opened");
  }
  return errorText(result);
}

long long timestampToMs(int64_t timestamp, AVRational time_base) {
  const double seconds_per_tick = static_cast<double>(time_base.num) / time_base.den;
  const double ms = std::trunc(seconds_per_tick * static_cast<double>(timestamp) * 1000);
  if (ms >= 9223372036854775808.0) {
    return std::numeric_limits<long long>::max();
  }
  return ms <= -9223372036854775808.0 ? std::numeric_limits<long long>::min() : static_cast<long long>(ms);
}

}  // namespace test
}  // namespace zo
