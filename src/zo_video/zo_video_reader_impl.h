#ifndef ZO_VIDEO_SRC_ZO_VIDEO_READER_IMPL_H
#define ZO_VIDEO_SRC_ZO_VIDEO_READER_IMPL_H

#include <cstdint>
#include <string>
#include <vector>

#include "zo_core/zo_exception.h"
#include "zo_ffmpeg_handles.h"
#include "zo_packet_index.h"
#include "zo_video/zo_video_reader.h"
#include "zo_video_converter_impl.h"

namespace zo {

/// The reader behind VideoReader. Opening, sequential reading and decoding are in zo_video_reader_impl.cpp,
/// interruption and time budgets in zo_video_reader_interrupt.cpp, the frame index in
/// zo_video_reader_navigation.cpp, jumps in zo_video_reader_jump.cpp.
class VideoReader::Impl {
 public:
  Impl();
  ~Impl();
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  int open(const char* url, int timeout_ms, IInterruptable* open_interruptable, bool enable_navigation,
           bool skip_errors, bool use_navigation_cache);
  void close() noexcept;
  int read(Frame& frame, bool& got_frame, IInterruptable* interruptable);
  void moveByIndex(long long frame_index);

  /// From now on jumps decode the pictures on their way that nothing refers to as well. The frames are the
  /// same; this is for comparing. Holds until the next open().
  void decodeEveryPicture() { _may_skip = false; }

  const char* getMetadataValue(const char* key) const;
  const char* url() const { return _url.c_str(); }
  long long frameCount() const { return _frame_count; }
  long long frameIndex() const { return _frame_index; }
  double fps() const { return _fps; }
  VideoRotation rotation() const;
  long long timestamp() const { return _timestamp; }
  FrameFormat format() const { return _format; }
  Size size() const { return _size; }

 private:
  static constexpr int64_t NO_SKIPPING = INT64_MIN;

  enum State { STATE_CLOSED = 0, STATE_OPEN = 1, STATE_END_OF_STREAM = 2, STATE_FAILED = 3 };

  enum CallbackStatus {
    CALLBACK_OK = 0,
    CALLBACK_INTERRUPTED = 1,
    CALLBACK_TIMEOUT = 2,
    CALLBACK_ZO_EXCEPTION = 3,
    CALLBACK_STD_EXCEPTION = 4,
    CALLBACK_UNKNOWN_EXCEPTION = 5
  };

  /// What reading one packet of the video stream came to.
  enum class PacketRead { PACKET, END_OF_FILE, INTERRUPTED };

  /// Where a seek has brought the demuxer, told from the first packet that it delivers.
  enum class Landing {
    AT_KEY,    // at the wanted key frame
    EARLIER,   // at a key frame before it
    UNUSABLE,  // behind the wanted frame, or at a packet that decoding cannot start from
    UNKNOWN    // the packet's time is not in the index
  };

  enum class Rate { UNKNOWN, CONSTANT, VARIABLE };

  enum class Decoded { REACHED, STREAM_ENDED, DAMAGED };

  // Lifecycle and decoding.
  void _clear() noexcept;
  bool _openInput(const char* url);
  void _openDecoder();
  CodecContextPtr _makeDecoder(const AVCodec* p_decoder, const char* function, const char* separator,
                               const char* reason);
  int _read(bool& got_frame, IInterruptable* interruptable);
  void _forgetCutOffCall();
  PacketRead _readVideoPacket();
  int _decodePacket(const AVPacket* p_packet, bool& got_frame);
  int _receivePicture(bool& got_frame);
  void _copyToOutFrame(Frame& frame);
  void _setEndOfStream();
  bool _endOfStream() const { return _state == STATE_END_OF_STREAM; }
  void _checkIfGood() const;
  long long _getTimestampMs(int64_t timestamp) const;
  int _readInOrder(Frame& frame, bool& got_frame);
  int64_t _packetTimestamp();

  // Interruption and time budgets.
  void _restartBudget();
  static int _av_interrupt_cb(void* opaque);
  int _pollInterrupt() noexcept;
  int _checkCallBackStatus() const;

  // Navigation.
  void _readAllPackets(bool use_navigation_cache);
  void _reserveIndex();
  void _scanPackets();
  void _findFirstDts();
  void _seekToStart();
  bool _loadNavigationCache();
  void _saveNavigationCache() const;
  std::string _navigationCachePath() const;
  int _readIndexed(Frame& frame, bool& got_frame);
  int64_t _indexOrigin() const;
  int64_t _relativeTimestamp(int64_t timestamp) const;
  int64_t _getPktTsInBaseTime(long long index) const;
  void _correctFrameIndex();
  void _takePositionFromPicture(int64_t picture_time);

  // Jumps.
  void _jump(long long frame_index, long long key_index);
  void _seekForMove(long long frame_index, long long key_index);
  bool _seekBack(int step, long long key_index);
  int _seekTo(int64_t target, int flags, long long key_index);
  int64_t _writtenTarget(long long key_index) const;
  Landing _lookAtLanding(long long frame_index, long long key_index);
  Landing _improveLanding(long long frame_index, long long key_index);
  Decoded _decodeUpTo(long long frame_index, long long key_index, bool times_identify_pictures);
  bool _maySkipByTime() const;
  static int _countPicture(AVCodecContext* p_codec, AVFrame* p_frame, int flags);
  bool _lostPicturesShow();
  void _lookForLostPictures();
  void _chooseSkipping(PacketRead result);

  // Declared in the order of use; closing frees decoder objects before the demuxer.
  State _state;
  std::string _url;
  FrameFormat _format;
  int64_t _timeout_ms;
  Size _size;
  int64_t _frame_count;
  int64_t _timestamp;
  double _fps;
  IInterruptable* _p_interruptable;
  int _callback_status;
  int64_t _callback_start_ms;
  Exception _callback_exception;
  int64_t _decoded_index;
  int64_t _frame_index;
  int64_t _eos_index;
  FormatContextPtr _p_format_ctx;
  CodecContextPtr _p_codec_ctx;
  PacketPtr _p_av_packet;
  AvFramePtr _p_av_frame;
  int _stream_index;
  AVPixelFormat _pix_fmt;
  VideoConverter::Impl _converter;
  bool _navigation;
  bool _skip_errors;
  int64_t _start_time;
  int64_t _first_dts;
  std::vector<unsigned> _packets_ts;
  std::vector<int64_t> _pts_heap;
  double _rotation;

  AVPixelFormat _picture_format;  // the decoder's when it gave the held picture
  double _time_base;              // of the chosen stream, seconds per tick
  IndexOrder _index_order;        // of _packets_ts
  Rate _rate;                     // looked at when it is needed
  bool _presentation_times;       // every packet met so far told its presentation time
  bool _pictures_queued;          // the decoder may have further pictures without a further packet
  bool _packet_pending;           // _p_av_packet was read to look at a landing and is still to be decoded
  bool _packet_lost;              // a read has failed: going on from here may miss a picture
  bool _position_from_picture;    // the next decoded picture's time tells where a seek has led
  int64_t _first_picture_index;   // of the first picture decoded since the last seek; _frame_count: not told
  bool _seek_by_presentation;     // this demuxer takes seek targets as presentation times
  bool _presentation_seek_fails;  // seeking by presentation time was tried and did no better
  int64_t _skip_before;    // pictures before this time that nothing refers to are left out; or NO_SKIPPING
  bool _may_skip;          // until the stream proves damaged
  bool _losses_watched;    // pictures are left out although the times have holes
  int _pictures_begun;     // by the decoder while it took the last packet
  bool _first_picture;     // since the last seek is still to begin
  bool _pictures_skipped;  // on the way to the wanted picture
  bool _damage_met;        // on the way to the wanted picture
};

}  // namespace zo

#endif
