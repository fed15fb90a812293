#ifndef ZO_VIDEO_SRC_ZO_VIDEO_HELPERS_H
#define ZO_VIDEO_SRC_ZO_VIDEO_HELPERS_H

#include "zo_core/zo_frame_format.h"
#include "zo_video/zo_video_converter.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

namespace zo {

/// The scaler's name for a frame format; AV_PIX_FMT_NONE for the undefined one. Throws zo::Exception for a
/// format that the scaler does not know or that does not exist.
AVPixelFormat frameFormatToAvPixelFormat(FrameFormat format);

/// The frame format that pictures of a decoder's pixel format are delivered in: the equal one, the
/// limited-range one for the full-range "J" formats, and ZO_FRAME_FORMAT_YUV444_PLANAR for all others.
/// Throws zo::Exception for a value that this FFmpeg does not define.
FrameFormat avPixelFormatToFrameFormat(AVPixelFormat format);

/// The scaler's flag word for an algorithm. Throws zo::Exception for an unknown one.
int videoConvertorAlgorithmToAvScaleFlags(VideoConverter::ScaleAlgorithm algorithm);

/// The largest power of two, at most 64, that divides the address and the line size of every plane in use.
/// Throws zo::Exception for a null frame or one without planes.
unsigned avFrameAlignment(const AVFrame* p_frame);

}  // namespace zo

#endif
