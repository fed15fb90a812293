#ifndef ZO_VIDEO_SRC_ZO_FFMPEG_HANDLES_H
#define ZO_VIDEO_SRC_ZO_FFMPEG_HANDLES_H

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

namespace zo {

// Owners for FFmpeg's objects: the only file that names the functions that free them.

template <auto Free>
struct FreeByAddress {
  template <class T>
  void operator()(T* p_object) const noexcept {
    Free(&p_object);
  }
};

template <auto Free>
struct FreeByValue {
  template <class T>
  void operator()(T* p_object) const noexcept {
    Free(p_object);
  }
};

using FormatContextPtr = std::unique_ptr<AVFormatContext, FreeByAddress<&avformat_close_input>>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, FreeByAddress<&avcodec_free_context>>;
using PacketPtr = std::unique_ptr<AVPacket, FreeByAddress<&av_packet_free>>;
using AvFramePtr = std::unique_ptr<AVFrame, FreeByAddress<&av_frame_free>>;
using DictionaryPtr = std::unique_ptr<AVDictionary, FreeByAddress<&av_dict_free>>;
using ScalerPtr = std::unique_ptr<SwsContext, FreeByValue<&sws_freeContext>>;

}  // namespace zo

#endif
