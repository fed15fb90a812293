#ifndef ZO_VIDEO_SRC_ZO_FFMPEG_COMPAT_H
#define ZO_VIDEO_SRC_ZO_FFMPEG_COMPAT_H

#include <cstdint>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace zo {

// Everything that differs between FFmpeg 3.x and the newest, under names for what the caller wants. The rest
// of the code reads as if there were one FFmpeg.

/// Makes all demuxers and decoders known, where FFmpeg does not do that by itself.
void registerFormatsAndCodecs();

/// Index of the best video stream, or a negative error; *pp_decoder receives its decoder.
int findBestVideoStream(AVFormatContext* p_format, const AVCodec** pp_decoder);

/// The 3 x 3 display matrix of a stream, or null when it carries none.
const int32_t* displayMatrix(AVStream* p_stream);

/// True when a stream's first decoding timestamp is still a public field; otherwise the caller has to read
/// ahead to the stream's first packet for it.
bool hasFirstDts();
/// That field, AV_NOPTS_VALUE where it does not exist.
int64_t firstDts(const AVStream* p_stream);

/// av_seek_frame(), with the same arguments and result, that also works in the file of a single picture.
int seekStream(AVFormatContext* p_format, int stream_index, int64_t target, int flags);

/// True where a decoder may have finished several pictures with one packet and keeps the others: unless they
/// are asked for, it takes no more packets.
bool decodersQueuePictures();

/// Makes a decoder forget all that it was given, pictures that it has finished included.
/// @param p_spare  Loses what it holds.
void flushDecoder(AVCodecContext* p_codec, AVFrame* p_spare);

/// The option that bounds socket waits in the RTSP demuxer where "stimeout" is no longer known; null where it
/// still is. Other sources ignore it or take it for the same, but for those where it would do harm, and null
/// then as well: RTMP would wait for a caller instead of calling, and most refuse more than 31 bits.
const char* renamedSocketTimeoutOption(const char* url, int64_t timeout_us);

// For writing media, which only the tests do.

/// Gives a stream that is about to be written a copy of a 3 x 3 display matrix.
void setDisplayMatrix(AVStream* p_stream, const int32_t* p_matrix);

/// One channel of sound, before the encoder is opened or the frame's samples are allocated.
void setMono(AVCodecContext* p_codec);
void setMono(AVFrame* p_frame);

}  // namespace zo

#endif
