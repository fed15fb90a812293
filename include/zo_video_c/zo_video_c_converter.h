/* Converting frames through plain functions. Valid C99 and C++. */
#ifndef ZO_VIDEO_C_ZO_VIDEO_C_CONVERTER_H
#define ZO_VIDEO_C_ZO_VIDEO_C_CONVERTER_H

#include "zo_core/zo_frame_c.h"
#include "zo_video/zo_video_export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A converter; keeps the scaler's set-up between calls. One thread at a time per converter. */
typedef struct ZoVideoConverter ZoVideoConverter;

/*
 * Makes a converter and stores it in *pp_converter; release it with zoVideoConverter_release.
 *
 * p_message (may be null) receives the error text: always terminated, never more than message_size bytes.
 * Returns 0; ZO_STATUS_NULL_POINTER when pp_converter is null; ZO_STATUS_STD_EXCEPTION when there is no
 * memory, with *pp_converter as it was.
 */
ZO_VIDEO_API int zoVideoConverter_create(ZoVideoConverter** pp_converter, char* p_message,
                                         unsigned int message_size);

/*
 * Frees the converter behind *pp_converter and sets the caller's pointer to null. A null *pp_converter is no
 * error. Returns 0, or ZO_STATUS_NULL_POINTER when pp_converter is null.
 */
ZO_VIDEO_API int zoVideoConverter_release(ZoVideoConverter** pp_converter);

/*
 * Converts p_src_frame into p_dst_frame, with bicubic scaling, as zo::VideoConverter::convert does, and
 * refreshes the destination's record. The timestamp is copied.
 *
 * Both frames come from zoFrame_create and are not checked: they must not be null, nor their p_handle. size
 * is in pixels. Returns 0; ZO_STATUS_NULL_POINTER when p_converter is null; otherwise the status of the
 * failure, with the destination's record as it was (the frame behind it may have been reshaped:
 * zoFrame_reuse brings both together again).
 */
ZO_VIDEO_API int zoVideoConverter_convert(ZoVideoConverter* p_converter, const ZoFrame* p_src_frame,
                                          ZoFrameFormat format, ZoSize size, ZoFrame* p_dst_frame,
                                          char* p_message, unsigned int message_size);

#ifdef __cplusplus
}
#endif

#endif
