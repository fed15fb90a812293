/* Reading video through plain functions. Valid C99 and C++. */
#ifndef ZO_VIDEO_C_ZO_VIDEO_C_READER_H
#define ZO_VIDEO_C_ZO_VIDEO_C_READER_H

#include "zo_core/zo_frame_c.h"
#include "zo_video/zo_video_export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How far a picture has to be turned clockwise to stand upright. The numbers never change. */
typedef ZO_C_ENUM(ZoVideoRotation){ZO_VIDEO_ROTATION_0 = 0, ZO_VIDEO_ROTATION_90 = 1,
                                   ZO_VIDEO_ROTATION_180 = 2, ZO_VIDEO_ROTATION_270 = 3,
                                   ZO_VIDEO_ROTATION_OTHER = 4} ZoVideoRotation;

/*
 * A reader and its properties. Only the library writes these fields; they are refreshed by every call that
 * succeeds and left alone by one that fails. One thread at a time per reader.
 */
typedef struct ZoVideoReader {
  void* p_handle;        /* the reader object; null when there is none */
  const char* url;       /* owned by the reader */
  long long timestamp;   /* time of the last frame, milliseconds */
  ZoFrameFormat format;  /* format of the frames; ZO_FRAME_FORMAT_UNDEFINED when closed */
  int width;             /* pixels */
  int height;            /* pixels */
  long long frame_count; /* 0 unless opened with navigation */
  long long
      frame_index; /* index of the last frame, -1 before the first; after a move, one before the target */
  double fps;      /* average frames per second, 0 when unknown */
  ZoVideoRotation rotation; /* of the stream */
} ZoVideoReader;

/*
 * Opens a video file or stream and stores a new reader in *pp_reader; release it with zoVideoReader_release.
 *
 * callback              Polled with callback_opaque while opening, and only then; non-zero stops.
 *                       May be null. It must not throw or jump out.
 * p_url                 Path or URL, terminated by a zero within the first url_length + 1 bytes.
 *                       Null is reported as ZO_STATUS_NULL_POINTER.
 * url_length            Longest length of the text in bytes, without the zero; any number is fine.
 * timeout_ms            Longest time of each blocking call, now and in later reads, in milliseconds;
 *                       negative: no limit.
 * enable_navigation     Non-zero: build the frame index that zoVideoReader_moveByIndex needs.
 * skip_errors           Non-zero: skip what cannot be read or decoded instead of failing.
 * use_navigation_cache  Non-zero: keep the frame index in a file beside it, its name plus ".zo".
 * p_message             Receives the error text (may be null): always terminated, never more than
 *                       message_size bytes.
 *
 * Returns 0, or the status of the failure, with *pp_reader as it was.
 *
 * What a stop by the callback comes to depends on when it comes. While the input is being opened it is no
 * failure: 0, and the record of a closed reader. Later it cuts short the step it meets: an open reader of
 * ZO_FRAME_FORMAT_UNDEFINED, whose stream was not looked at to the end, or ZO_STATUS_DECODER_ERROR, or, while
 * indexing, ZO_STATUS_READ_ERROR or ZO_STATUS_SEEK_ERROR. With skip_errors a stopped indexing leaves an index
 * of the frames seen so far, which use_navigation_cache saves. So note in the callback that it stopped the
 * opening, and release the reader, if there is one.
 */
ZO_VIDEO_API int zoVideoReader_create(int (*callback)(void*), void* callback_opaque, const char* p_url,
                                      unsigned int url_length, int timeout_ms, int enable_navigation,
                                      int skip_errors, int use_navigation_cache, ZoVideoReader** pp_reader,
                                      char* p_message, unsigned int message_size);

/*
 * Closes and frees the reader behind *pp_reader and sets the caller's pointer to null. A null *pp_reader is
 * no error. Returns 0, or ZO_STATUS_NULL_POINTER when pp_reader is null.
 */
ZO_VIDEO_API int zoVideoReader_release(ZoVideoReader** pp_reader);

/*
 * Positions the reader so that the next zoVideoReader_read delivers the frame with that index (counted from
 * 0, below frame_count). Returns 0; ZO_STATUS_NULL_POINTER when p_reader is null; ZO_STATUS_NOT_INITIALIZED
 * when its p_handle is; otherwise what zo::VideoReader::moveByIndex reports.
 */
ZO_VIDEO_API int zoVideoReader_moveByIndex(ZoVideoReader* p_reader, long long index, char* p_message,
                                           unsigned int message_size);

/*
 * Reads the next frame into p_frame (from zoFrame_create) and refreshes both records. *p_frame_ready becomes
 * 1 when a frame was delivered and 0 at the end of the stream; it must not be null.
 *
 * A picture that the decoder did not produce is delivered as a frame without planes that carries its time.
 * Returns 0; ZO_STATUS_NULL_POINTER when p_reader or p_frame is null; ZO_STATUS_NOT_INITIALIZED when either
 * p_handle is; otherwise what zo::VideoReader::read reports, with the records as they were.
 */
ZO_VIDEO_API int zoVideoReader_read(ZoVideoReader* p_reader, ZoFrame* p_frame, int* p_frame_ready,
                                    char* p_message, unsigned int message_size);

#ifdef __cplusplus
}
#endif

#endif
