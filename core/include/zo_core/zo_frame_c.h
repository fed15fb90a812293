/* Frames for callers of the plain functions. Valid C99 and C++. */
#ifndef ZO_CORE_ZO_FRAME_C_H
#define ZO_CORE_ZO_FRAME_C_H

#include "zo_core/zo_export.h"
#include "zo_core/zo_types_c.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The plain view of a frame: an image of up to four planes with its time. One thread at a time per frame.
 *
 * Only the library writes these fields. They describe the frame as it was after the last call that succeeded
 * with this record; the plane pointers stay valid until the next call that is given it, or the release. A
 * call that fails leaves the fields alone but may have reshaped the frame: do not follow the pointers then.
 * The next call that succeeds, zoFrame_reuse for one, refreshes them.
 */
typedef struct ZoFrame {
  void* p_handle;             /* the zo::Frame described */
  ZoFrameFormat format;       /* pixel layout, ZO_FRAME_FORMAT_UNDEFINED when empty */
  int width;                  /* pixels */
  int height;                 /* pixels */
  int plane_count;            /* 0 when the frame holds no pixels */
  unsigned char* p_planes[4]; /* first byte of each plane, null beyond plane_count */
  unsigned int strides[4];    /* bytes from one row to the next, 0 beyond plane_count */
  long long timestamp;        /* milliseconds */
} ZoFrame;

/*
 * Makes a new, empty frame and stores it in *pp_frame; release it with zoFrame_release.
 *
 * p_message (may be null) receives the error text: always terminated, never more than message_size bytes.
 * Returns 0, or ZO_STATUS_NULL_POINTER when pp_frame is null, or ZO_STATUS_STD_EXCEPTION when there
 * is no memory; on failure *pp_frame is left as it was.
 */
ZO_CORE_API int zoFrame_create(ZoFrame** pp_frame, char* p_message, unsigned int message_size);

/*
 * Makes the frame hold an image of that format and size, with undefined pixels, and refreshes the record.
 * The memory is kept when it is large enough. A format without a layout or a size below 1 is no error: the
 * frame then holds no planes. The timestamp is kept.
 *
 * Returns 0; ZO_STATUS_NULL_POINTER when p_frame is null; ZO_STATUS_NOT_INITIALIZED when its p_handle is
 * null; ZO_STATUS_STD_EXCEPTION when there is no memory, with frame and record as they were.
 */
ZO_CORE_API int zoFrame_reuse(ZoFrame* p_frame, ZoFrameFormat format, ZoSize size, char* p_message,
                              unsigned int message_size);

/*
 * Frees the frame behind *pp_frame and sets the caller's pointer to null. A null *pp_frame is no error.
 * Returns 0, or ZO_STATUS_NULL_POINTER when pp_frame is null.
 */
ZO_CORE_API int zoFrame_release(ZoFrame** pp_frame);

#ifdef __cplusplus
}
#endif

#endif
