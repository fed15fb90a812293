#ifndef ZO_VIDEO_ZO_VIDEO_READER_H
#define ZO_VIDEO_ZO_VIDEO_READER_H

#include <cstdint>

#include "zo_core/zo_frame.h"
#include "zo_core/zo_interrupt.h"
#include "zo_video/zo_video_export.h"

namespace zo {

/// How far a picture has to be turned clockwise to stand upright. The numbers never change.
enum VideoRotation : int32_t {
  ZO_VIDEO_ROTATION_0 = 0,     ///< upright
  ZO_VIDEO_ROTATION_90 = 1,    ///< 90 degrees
  ZO_VIDEO_ROTATION_180 = 2,   ///< 180 degrees
  ZO_VIDEO_ROTATION_270 = 3,   ///< 270 degrees
  ZO_VIDEO_ROTATION_OTHER = 4  ///< any other angle
};

/// Reads a video file or network stream picture by picture, in order or at any frame index.
///
/// Legal order of calls: open(), then any mix of read() and moveByIndex(), then close(). open() closes first,
/// so one object may be reopened any number of times, also after an error. The accessors may be called at
/// any time. Every failure is a thrown zo::Exception or a standard exception: std::bad_alloc, and in open()
/// std::length_error.
///
/// One thread at a time per reader; different readers are independent. The reader starts no thread, decodes
/// on the caller's thread with one decoder thread, and prints nothing (the first reader of the process turns
/// FFmpeg's own log output off).
class ZO_VIDEO_API VideoReader {
 public:
  class ZO_VIDEO_PRIVATE Impl;

  /// The navigation index of a file is kept beside it, under the file's name with this text appended: ".zo".
  static const char* const NAVIGATION_FILE_EXTENSION;

  /// A closed reader. The first one of the process initialises FFmpeg, under a lock. Throws std::bad_alloc.
  VideoReader();
  /// Closes. Never throws.
  ~VideoReader();
  VideoReader(const VideoReader&) = delete;
  VideoReader& operator=(const VideoReader&) = delete;

  /// Closes what was open, opens `url` and sets up the decoder of its best video stream.
  ///
  /// @param url                   Path or URL as FFmpeg knows them; copied, so it may be the reader's own
  ///                              text: url(), a part of it, a metadata value. RTSP goes over TCP.
  /// @param timeout_ms            Longest time, in milliseconds, that any single blocking call into the
  ///                              demuxer may take, at open and in later reads; negative: no limit. For RTSP
  ///                              at most 2147483 with FFmpeg before 5.0, which refuses more.
  /// @param open_interruptable    Polled while opening (and indexing), or null. Not kept.
  /// @param enable_navigation     Build the index that moveByIndex() and frameCount() need: one pass over the
  ///                              file's packets. Takes effect only where the container reports a duration.
  /// @param skip_errors           Skip packets that cannot be read or decoded instead of throwing.
  /// @param use_navigation_cache  Load the index from the file beside `url` if there is one (it is trusted
  ///                              as it is), and save it there after building it. A file that cannot be
  ///                              written is no error.
  /// @return 0 opened; 1 interrupted by open_interruptable before the stream was open: the reader is closed.
  /// @throws zo::Exception  ZO_STATUS_NULL_POINTER: url is null. ZO_STATUS_OPEN_ERROR: cannot be opened.
  ///                        ZO_STATUS_TIMEOUT: not opened in time. ZO_STATUS_DECODER_ERROR: no video stream,
  ///                        no decoder for it, or the stream information cannot be found.
  ///                        ZO_STATUS_READ_ERROR, ZO_STATUS_SEEK_ERROR: building the index failed.
  ///                        ZO_STATUS_OUT_OF_MEMORY. std::bad_alloc. std::length_error "vector::reserve":
  ///                        the file claims more than 0x3FFFFFFF frames.
  ///                        ZO_STATUS_STD_EXCEPTION, ZO_STATUS_UNKNOWN_ERROR or the status of a
  ///                        zo::Exception: open_interruptable threw. The reader is closed after any of these.
  ///
  /// An interruption or the end of the budget behind the first step comes as the error of the step it meets:
  /// ZO_STATUS_DECODER_ERROR in looking at the streams (or none, with a format() that stays UNDEFINED),
  /// ZO_STATUS_READ_ERROR or ZO_STATUS_SEEK_ERROR in indexing. With skip_errors it ends the indexing early:
  /// the index holds the frames seen so far, and use_navigation_cache saves it like that.
  int open(const char* url, int timeout_ms, IInterruptable* open_interruptable, bool enable_navigation,
           bool skip_errors, bool use_navigation_cache);

  /// Frees everything that belongs to the stream; fps() keeps its value. Closing a closed reader is fine.
  void close();

  /// Delivers the next frame in presentation order, with its timestamp in milliseconds.
  ///
  /// `frame` is reused, so reading into the same frame allocates nothing. A picture that the decoder did not
  /// produce is delivered as an empty frame (not initialized()) that carries its time. Pixels come in
  /// format(); a pixel format without an equivalent is converted to ZO_FRAME_FORMAT_YUV444_PLANAR. Opened
  /// without navigation, a frame whose time nobody tells gets the one that timestamp() describes.
  ///
  /// @param frame          Receives the picture; untouched when there is none and on interruption.
  /// @param got_frame      True when a frame was delivered, false at the end of the stream.
  /// @param interruptable  Polled during this call, or null. Not kept.
  /// @return 0 done; 1 interrupted: nothing was delivered, the next read() goes on.
  /// @throws zo::Exception  ZO_STATUS_NOT_OPENED: no open stream. ZO_STATUS_TIMEOUT: the time budget ran out.
  ///                        ZO_STATUS_READ_ERROR: a packet cannot be read or is refused by the decoder.
  ///                        ZO_STATUS_DECODER_ERROR: decoding failed. ZO_STATUS_OUT_OF_MEMORY or
  ///                        std::bad_alloc. A status from `interruptable` as for open(). The reader stays
  ///                        open: call read() again to go on behind what could not be read; after
  ///                        std::bad_alloc it delivers the same picture. Only where the picture could not be
  ///                        converted (ZO_STATUS_OUT_OF_MEMORY) its index is used up.
  int read(Frame& frame, bool& got_frame, IInterruptable* interruptable);

  /// Positions the reader so that the next read() delivers the frame with index `frame_index`.
  ///
  /// @param frame_index  Counted from 0 in presentation order, below frameCount().
  /// @throws zo::Exception  ZO_STATUS_NOT_OPENED: no open stream. ZO_STATUS_NOT_ALLOWED: opened without
  ///                        navigation, or the container reports no duration. ZO_STATUS_OUT_OF_RANGE: no such
  ///                        frame. In these cases the position is unchanged. ZO_STATUS_SEEK_ERROR: seeking
  ///                        failed. Otherwise as read(). After any of these move again or reopen; until then
  ///                        reads deliver empty frames or those of the old position.
  /// Seeks do not restart the time budget, packets do: where a seek was cut off because the last packet was
  /// read longer ago than the budget, read() once and move again.
  /// Cost: nothing for the next frame; otherwise at most the decoding from the key frame before the target.
  /// Only where the target does not come out of that, as in damaged or gradually refreshed streams, from 1, 3
  /// and 7 key frames further back as well.
  void moveByIndex(long long frame_index);

  /// Value of a container metadata entry (such as "title"), or null when there is none, when `key` is null
  /// or no stream is open. Case does not matter. The text belongs to the reader and lives until close().
  const char* getMetadataValue(const char* key) const;

  /// The url of the last open(), also of an interrupted one; empty when closed. Valid until the next open()
  /// or close().
  const char* url() const;
  /// Number of frames; 0 unless the stream was opened with navigation.
  long long frameCount() const;
  /// Index of the frame that the last read() delivered; -1 before the first; after moveByIndex() one less
  /// than its target, until the next read().
  long long frameIndex() const;
  /// Average frames per second as the container gives them, 0 when unknown. Survives close().
  double fps() const;
  /// How far the pictures have to be turned clockwise to stand upright.
  VideoRotation rotation() const;
  /// Time of the last delivered frame in milliseconds of stream time; the start time is not subtracted.
  /// Without navigation, where neither packet nor decoder tells it: -2^63 ticks of the stream, which is a
  /// time far before anything in it, or the lowest number a long long can hold where a tick is a millisecond
  /// or longer.
  long long timestamp() const;
  /// Format of the delivered frames as known at opening; ZO_FRAME_FORMAT_UNDEFINED when closed, or when
  /// nothing told it then. A stream that changes its pixel format on the way delivers frames in the new one:
  /// Frame::format() tells.
  FrameFormat format() const;
  /// Size of the pictures in pixels. A stream may change it on the way.
  Size size() const;

 private:
  Impl* _p_impl;
};

}  // namespace zo

#endif
