#include "zo_video_reader_impl.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <utility>

#include "zo_av_error.h"
#include "zo_ffmpeg_compat.h"
#include "zo_ffmpeg_init.h"
#include "zo_video_helpers.h"

extern "C" {
#include <libavutil/display.h>
}

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_reader_impl";

// A source that fails this often in a row without delivering one packet will not recover.
constexpr int MOST_ERRORS_SKIPPED_IN_A_ROW = 10000;

// Drops the packet's data when the scope ends, however it ends.
class PacketContent {
 public:
  explicit PacketContent(AVPacket* p_packet) : _p_packet(p_packet) {}
  ~PacketContent() {
    if (_p_packet != nullptr) {
      av_packet_unref(_p_packet);
    }
  }
  PacketContent(const PacketContent&) = delete;
  PacketContent& operator=(const PacketContent&) = delete;

  void keep() { _p_packet = nullptr; }

 private:
  AVPacket* _p_packet;
};

// Lends the caller's interruptable to the reader for one call.
class InterruptableLoan {
 public:
  InterruptableLoan(IInterruptable*& p_slot, IInterruptable* p_interruptable) : _p_slot(p_slot) {
    _p_slot = p_interruptable;
  }
  ~InterruptableLoan() { _p_slot = nullptr; }
  InterruptableLoan(const InterruptableLoan&) = delete;
  InterruptableLoan& operator=(const InterruptableLoan&) = delete;

 private:
  IInterruptable*& _p_slot;
};

// The input remembers that a call was cut off and would refuse all further ones, although nothing is wrong
// with it.
void forgetInputError(AVIOContext* p_input) {
  if (p_input != nullptr) {
    p_input->error = 0;
    p_input->eof_reached = 0;
  }
}

void setOption(DictionaryPtr& p_options, const char* key, const char* value) {
  AVDictionary* p_raw = p_options.release();
  const int result = av_dict_set(&p_raw, key, value, 0);
  p_options.reset(p_raw);
  if (result < 0) {
    throw std::bad_alloc();
  }
}

// Turns theta into [-0.9, 359.1), so that angles a little below a full turn count as a little below 0.
double normalizedRotation(const int32_t* p_matrix) {
  const double theta = -av_display_rotation_get(p_matrix);
  return theta - 360.0 * std::floor(theta / 360.0 + 0.0025);
}

}  // namespace

VideoReader::Impl::Impl() : _fps(0), _callback_start_ms(0) {
  initializeFfmpeg();
  _clear();
}

VideoReader::Impl::~Impl() {
  close();
}

void VideoReader::Impl::_clear() noexcept {
  _state = STATE_CLOSED;
  _url.clear();
  _format = ZO_FRAME_FORMAT_UNDEFINED;
  _timeout_ms = 0;
  _size = Size();
  _frame_count = 0;
  _timestamp = 0;
  _p_interruptable = nullptr;
  _callback_status = CALLBACK_OK;
  _decoded_index = -1;
  _frame_index = -1;
  _eos_index = -1;
  _stream_index = -1;
  _pix_fmt = AV_PIX_FMT_NONE;
  _picture_format = AV_PIX_FMT_NONE;
  _navigation = false;
  _skip_errors = false;
  _start_time = 0;
  _first_dts = 0;
  _packets_ts.clear();
  std::vector<int64_t>().swap(_pts_heap);
  _rotation = 0;

  _time_base = 0;
  _index_order = IndexOrder::UNORDERED;
  _rate = Rate::UNKNOWN;
  _presentation_times = true;
  _pictures_queued = false;
  _packet_pending = false;
  _packet_lost = false;
  _position_from_picture = false;
  _first_picture_index = -1;
  _seek_by_presentation = false;
  _presentation_seek_fails = false;
  _skip_before = NO_SKIPPING;
  _may_skip = true;
  _losses_watched = false;
  _pictures_begun = 0;
  _first_picture = true;
  _pictures_skipped = false;
  _damage_met = false;
}

void VideoReader::Impl::close() noexcept {
  _p_av_frame.reset();
  _p_av_packet.reset();
  _p_codec_ctx.reset();
  _p_format_ctx.reset();
  _clear();
}

int VideoReader::Impl::open(const char* url, int timeout_ms, IInterruptable* open_interruptable,
                            bool enable_navigation, bool skip_errors, bool use_navigation_cache) {
  static const char FUNCTION[] = "open";
  // The text may be the reader's own, which closing takes away: url(), a part of it, a metadata value.
  std::string own_url;
  try {
    if (url != nullptr) {
      own_url = url;
    }
  } catch (...) {
    close();
    throw;
  }
  close();
  if (url == nullptr) {
    throw Exception(nullptr, ZO_STATUS_NULL_POINTER, FUNCTION, SOURCE_FILE, __LINE__,
                    "VideoReader::Impl::open(...): argument 'p_url' is NULL");
  }
  if (_state == STATE_OPEN || _state == STATE_END_OF_STREAM) {
    throw Exception(nullptr, ZO_STATUS_INVALID_STATE, FUNCTION, SOURCE_FILE, __LINE__,
                    "Call close() before reopening with new parameters");
  }
  try {
    _url.swap(own_url);
    _timeout_ms = timeout_ms;
    InterruptableLoan loan(_p_interruptable, open_interruptable);
    _skip_errors = skip_errors;
    if (!_openInput(_url.c_str())) {
      return 1;
    }
    _openDecoder();
    if (enable_navigation && _p_format_ctx->duration != AV_NOPTS_VALUE) {
      _frame_count = _p_format_ctx->streams[_stream_index]->nb_frames;
      _readAllPackets(use_navigation_cache);
      _navigation = true;
    }
    _state = STATE_OPEN;
    return 0;
  } catch (...) {
    close();
    throw;
  }
}

// Returns false when the caller interrupted it.
bool VideoReader::Impl::_openInput(const char* url) {
  static const char FUNCTION[] = "open";
  _p_format_ctx.reset(avformat_alloc_context());
  if (_p_format_ctx == nullptr) {
    throw Exception(nullptr, ZO_STATUS_OUT_OF_MEMORY, FUNCTION, SOURCE_FILE, __LINE__,
                    "avformat_alloc_context() returned NULL");
  }
  _p_format_ctx->interrupt_callback.callback = &Impl::_av_interrupt_cb;
  _p_format_ctx->interrupt_callback.opaque = this;

  DictionaryPtr p_options;
  setOption(p_options, "rtsp_transport", "tcp");
  const long long budget_us = static_cast<long long>(_timeout_ms) * 1000;
  char budget_text[32];
  std::snprintf(budget_text, sizeof(budget_text), "%lli", budget_us);
  setOption(p_options, "stimeout", budget_text);
  const char* p_new_name = renamedSocketTimeoutOption(url, budget_us);
  if (p_new_name != nullptr && _timeout_ms >= 0) {
    setOption(p_options, p_new_name, budget_text);
  }

  _restartBudget();
  AVFormatContext* p_format = _p_format_ctx.release();  // freed by a failing open
  AVDictionary* p_raw_options = p_options.release();
  const int opened = avformat_open_input(&p_format, url, nullptr, &p_raw_options);
  p_options.reset(p_raw_options);
  _p_format_ctx.reset(p_format);
  if (opened < 0) {
    if (_checkCallBackStatus() != 0) {
      return false;
    }
    throw Exception(nullptr, ZO_STATUS_OPEN_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "Failed to open video stream: \"%s\", avformat_open_input() returned error %s", url,
                    AvErrorText(opened).text());
  }

  const int found = avformat_find_stream_info(_p_format_ctx.get(), nullptr);
  if (found < 0) {
    throw Exception(nullptr, ZO_STATUS_DECODER_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "initializing decoder: avformat_find_stream_info() returned error %s",
                    AvErrorText(found).text());
  }
  return true;
}

void VideoReader::Impl::_openDecoder() {
  static const char FUNCTION[] = "open";
  const AVCodec* p_decoder = nullptr;
  _stream_index = findBestVideoStream(_p_format_ctx.get(), &p_decoder);
  if (_stream_index < 0) {
    throw Exception(nullptr, ZO_STATUS_DECODER_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "initializing decoder: avformat_find_stream_info() returned error %s",
                    AvErrorText(_stream_index).text());
  }
  // The demuxer need not read what nobody will look at.
  for (unsigned i = 0; i < _p_format_ctx->nb_streams; ++i) {
    if (static_cast<int>(i) != _stream_index) {
      _p_format_ctx->streams[i]->discard = AVDISCARD_ALL;
    }
  }
  if (p_decoder->id == AV_CODEC_ID_H264) {
    const AVCodec* p_hardware = avcodec_find_decoder_by_name("h264_mmal");
    if (p_hardware != nullptr) {
      p_decoder = p_hardware;
    }
  }
  // The two messages with a reason carry the text for the stream index, not for the error.
  const AvErrorText reason(_stream_index);
  _p_codec_ctx = _makeDecoder(p_decoder, FUNCTION, " ", reason.text());

  AVStream* p_stream = _p_format_ctx->streams[_stream_index];
  const int32_t* p_matrix = displayMatrix(p_stream);
  _rotation = p_matrix == nullptr ? 0 : normalizedRotation(p_matrix);
  _pix_fmt = _p_codec_ctx->pix_fmt;
  _format = avPixelFormatToFrameFormat(_pix_fmt);
  _size = Size(_p_codec_ctx->width, _p_codec_ctx->height);

  _p_av_packet.reset(av_packet_alloc());
  if (_p_av_packet == nullptr) {
    throw Exception(nullptr, ZO_STATUS_DECODER_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "initializing decoder: av_packet_alloc() returned NULL");
  }
  _p_av_frame.reset(av_frame_alloc());
  if (_p_av_frame == nullptr) {
    throw Exception(nullptr, ZO_STATUS_DECODER_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "initializing decoder: av_frame_alloc() returned NULL");
  }

  const AVRational rate = p_stream->avg_frame_rate;
  _fps = rate.den != 0 ? static_cast<double>(rate.num) / rate.den : 0;
  _time_base = static_cast<double>(p_stream->time_base.num) / p_stream->time_base.den;
  _start_time = p_stream->start_time;
  const int64_t first_dts = firstDts(p_stream);
  _first_dts = first_dts == AV_NOPTS_VALUE ? 0 : first_dts;
}

// A decoder for the chosen stream, opened. The failures of its two steps end in `separator` and `reason`.
CodecContextPtr VideoReader::Impl::_makeDecoder(const AVCodec* p_decoder, const char* function,
                                                const char* separator, const char* reason) {
  CodecContextPtr p_context(avcodec_alloc_context3(p_decoder));
  if (p_context == nullptr) {
    throw Exception(nullptr, ZO_STATUS_DECODER_ERROR, function, SOURCE_FILE, __LINE__,
                    "initializing decoder: avcodec_alloc_context3() returned NULL");
  }
  if (avcodec_parameters_to_context(p_context.get(), _p_format_ctx->streams[_stream_index]->codecpar) < 0) {
    throw Exception(nullptr, ZO_STATUS_DECODER_ERROR, function, SOURCE_FILE, __LINE__,
                    "initializing decoder: avcodec_parameters_to_context() returned error%s%s", separator,
                    reason);
  }
  p_context->thread_count = 1;
  if (std::strcmp(p_decoder->name, "h264") == 0) {
    p_context->opaque = this;
    p_context->get_buffer2 = &Impl::_countPicture;
  }
  if (avcodec_open2(p_context.get(), p_decoder, nullptr) < 0) {
    throw Exception(nullptr, ZO_STATUS_DECODER_ERROR, function, SOURCE_FILE, __LINE__,
                    "initializing decoder: avcodec_open2() returned error%s%s", separator, reason);
  }
  return p_context;
}

int VideoReader::Impl::read(Frame& frame, bool& got_frame, IInterruptable* interruptable) {
  _checkIfGood();
  if (_frame_index >= _decoded_index && !_endOfStream() && _read(got_frame, interruptable) != 0) {
    return 1;
  }
  return _navigation ? _readIndexed(frame, got_frame) : _readInOrder(frame, got_frame);
}

// Every packet's timestamp must be seen on a frame: a picture later than the earliest waiting timestamp means
// that the decoder dropped one, and an empty frame takes its place.
int VideoReader::Impl::_readInOrder(Frame& frame, bool& got_frame) {
  got_frame = !_endOfStream() || !_pts_heap.empty();
  if (!got_frame) {
    return 0;
  }
  ++_frame_index;
  const int64_t picture_time = _p_av_frame->best_effort_timestamp;
  // Some containers yield more pictures than timestamps; those go out with their own.
  const int64_t packet_time = _pts_heap.empty() ? picture_time : _pts_heap.front();
  const bool no_packet_left = _pts_heap.empty();
  int64_t time = packet_time;
  if (_frame_index == _decoded_index &&
      (no_packet_left || (packet_time >= picture_time && picture_time != AV_NOPTS_VALUE))) {
    _copyToOutFrame(frame);
    time = picture_time;
  } else {
    frame.clear();
    if (packet_time < picture_time) {
      ++_decoded_index;
    }
  }
  _timestamp = _getTimestampMs(time);
  frame.setTimestamp(_timestamp);
  if (!no_packet_left) {
    std::pop_heap(_pts_heap.begin(), _pts_heap.end(), std::greater<int64_t>());
    _pts_heap.pop_back();
  }
  return 0;
}

int VideoReader::Impl::_read(bool& got_frame, IInterruptable* interruptable) {
  _forgetCutOffCall();
  got_frame = false;
  if (_stream_index < 0) {
    throw Exception(nullptr, ZO_STATUS_NOT_OPENED, "_read", SOURCE_FILE, __LINE__,
                    "read frame: video stream was not opened");
  }
  InterruptableLoan loan(_p_interruptable, interruptable);
  try {
    for (int decoded = 0; decoded == 0;) {
      if (_pictures_queued) {
        _pictures_queued = false;
        decoded = _receivePicture(got_frame);
        continue;
      }
      // A packet whose time finds no room would be lost.
      if (!_navigation && _pts_heap.size() == _pts_heap.capacity()) {
        _pts_heap.reserve(2 * _pts_heap.size() + 16);
      }
      const PacketRead result = _packet_pending ? PacketRead::PACKET : _readVideoPacket();
      if (result == PacketRead::INTERRUPTED) {
        return 1;
      }
      PacketContent content(_p_av_packet.get());
      _packet_pending = false;
      if (result == PacketRead::PACKET && !_navigation) {
        _pts_heap.push_back(_packetTimestamp());
        std::push_heap(_pts_heap.begin(), _pts_heap.end(), std::greater<int64_t>());
      }
      if (_skip_before != NO_SKIPPING) {
        _chooseSkipping(result);
      }
      // What comes before a key frame counts as lost to the decoder until that key frame has come out; where
      // the stream ends first, it would keep back pictures that are whole.
      if (result == PacketRead::END_OF_FILE && _first_picture_index >= 0 && !_position_from_picture) {
        _p_codec_ctx->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
      }
      decoded = _decodePacket(_p_av_packet.get(), got_frame);
    }
  } catch (...) {
    _packet_lost = true;
    throw;
  }
  if (got_frame) {
    _pictures_queued = decodersQueuePictures();
    // A fresh decoder takes over at the end of the stream and knows only what the stream begins with.
    _picture_format = _p_codec_ctx->pix_fmt;
    _size = Size(_p_codec_ctx->width, _p_codec_ctx->height);
    ++_decoded_index;
    if (_navigation) {
      _correctFrameIndex();
    }
  }
  if (_decoded_index == _eos_index && !_endOfStream()) {
    _setEndOfStream();
  }
  return 0;
}

// A call that was cut off where nobody asks why, while the streams were looked at or in a seek, is over.
void VideoReader::Impl::_forgetCutOffCall() {
  if (_callback_status != CALLBACK_OK && _p_format_ctx != nullptr) {
    forgetInputError(_p_format_ctx->pb);
  }
  _callback_status = CALLBACK_OK;
}

// The next packet of the chosen stream in _p_av_packet; a blank one at the end of the file.
VideoReader::Impl::PacketRead VideoReader::Impl::_readVideoPacket() {
  for (int errors_skipped = 0;;) {
    _restartBudget();
    PacketContent content(_p_av_packet.get());
    const int result = av_read_frame(_p_format_ctx.get(), _p_av_packet.get());
    if (_callback_status != CALLBACK_OK) {
      forgetInputError(_p_format_ctx->pb);
      // A packet that came all the same is dropped, and some demuxers lose their place: a jump has to seek,
      // and the picture decoded next tells its index by its time.
      _position_from_picture = _position_from_picture || _navigation;
      _packet_lost = true;
    }
    if (_checkCallBackStatus() != 0) {
      return PacketRead::INTERRUPTED;
    }
    if (result == AVERROR_EOF) {
      return PacketRead::END_OF_FILE;
    }
    if (result != 0) {
      if (_skip_errors && errors_skipped < MOST_ERRORS_SKIPPED_IN_A_ROW) {
        ++errors_skipped;
        _packet_lost = true;
        continue;
      }
      throw Exception(nullptr, ZO_STATUS_READ_ERROR, "_read", SOURCE_FILE, __LINE__,
                      "read frame: av_read_frame() returned %d (%s)", result, AvErrorText(result).text());
    }
    if (_p_av_packet->stream_index == _stream_index) {
      content.keep();
      return PacketRead::PACKET;
    }
  }
}

int64_t VideoReader::Impl::_packetTimestamp() {
  if (_p_av_packet->pts != AV_NOPTS_VALUE) {
    return _p_av_packet->pts;
  }
  _presentation_times = false;
  return _p_av_packet->dts;
}

// Sends one packet and asks for one picture. Returns 1 when there is a picture or none will come any more.
int VideoReader::Impl::_decodePacket(const AVPacket* p_packet, bool& got_frame) {
  static const char FUNCTION[] = "_decodePacket";
  // Given up before the decoder begins the next picture, the held one's memory is taken for that and is still
  // in the processor's cache: large pictures that refer to no others decode up to a tenth faster.
  av_frame_unref(_p_av_frame.get());
  _pictures_begun = 0;
  const int sent = avcodec_send_packet(_p_codec_ctx.get(), p_packet);
  if (sent != 0 && sent != AVERROR(EAGAIN) && sent != AVERROR_EOF) {
    _damage_met = true;
    if (_skip_errors) {
      return 0;
    }
    throw Exception(nullptr, ZO_STATUS_READ_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "read frame: avcodec_send_packet() returned error %s", AvErrorText(sent).text());
  }
  const int got = _receivePicture(got_frame);
  _lookForLostPictures();
  return got;
}

// Its second half; a step by itself where decoders queue pictures.
int VideoReader::Impl::_receivePicture(bool& got_frame) {
  static const char FUNCTION[] = "_decodePacket";
  got_frame = false;
  const int received = avcodec_receive_frame(_p_codec_ctx.get(), _p_av_frame.get());
  if (received == AVERROR_EOF) {
    _setEndOfStream();
    return 1;
  }
  if (received == AVERROR(EAGAIN)) {
    return 0;
  }
  if (received != 0) {
    _damage_met = true;
    throw Exception(nullptr, ZO_STATUS_DECODER_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "read frame: avcodec_receive_frame() returned error %s", AvErrorText(received).text());
  }
  if (_p_av_frame->format == -1 || _p_av_frame->width <= 0 || _p_av_frame->height <= 0) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "Assertion failed: %s",
                    "_p_av_frame->format != -1 && (0 < _p_av_frame->width) && (0 < _p_av_frame->height)");
  }
  if (_p_av_frame->decode_error_flags != 0 || (_p_av_frame->flags & AV_FRAME_FLAG_CORRUPT) != 0) {
    _damage_met = true;
  }
  got_frame = true;
  return 1;
}

void VideoReader::Impl::_setEndOfStream() {
  if (_navigation) {
    // A drained decoder takes no more packets; a fresh one can decode again after a jump.
    _p_codec_ctx = _makeDecoder(_p_codec_ctx->codec, "_setEndOfStream", "", "");
  }
  _pictures_queued = false;
  _state = STATE_END_OF_STREAM;
  // Before the first picture after a seek the index is only what was hoped for, and after a lost packet the
  // stream's real last picture may be one that did not come this time. Nor does it come where a decoder that
  // began in the middle of the stream keeps pictures back.
  const bool is_last = !_navigation || _decoded_index >= _frame_count - 1;
  if (is_last && !_position_from_picture && !_packet_lost) {
    _eos_index = _decoded_index;
  }
}

void VideoReader::Impl::_copyToOutFrame(Frame& frame) {
  static const char FUNCTION[] = "_copyToOutFrame";
  if (_p_av_frame == nullptr) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, FUNCTION, SOURCE_FILE, __LINE__, "No frame was read.");
  }
  if (_p_av_frame->format == -1) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "Attempt to copy an empty frame.");
  }
  try {
    _converter.convertAvFrame(_p_av_frame.get(), _picture_format, frame);
  } catch (const std::bad_alloc&) {
    --_frame_index;  // the picture is still held: the next read delivers it
    throw;
  }
}

void VideoReader::Impl::_checkIfGood() const {
  static const char FUNCTION[] = "_checkIfGood";
  if (_state == STATE_CLOSED) {
    throw Exception(nullptr, ZO_STATUS_NOT_OPENED, FUNCTION, SOURCE_FILE, __LINE__,
                    "call VideoReader.open(...) before this operation");
  }
  if (_state == STATE_FAILED) {
    throw Exception(
        nullptr, ZO_STATUS_NOT_OPENED, FUNCTION, SOURCE_FILE, __LINE__,
        "error occurred, VideoReader is closed, need to reopen with call to VideoReader.open(...) "
        "for next use");
  }
}

long long VideoReader::Impl::_getTimestampMs(int64_t timestamp) const {
  const double ms = _time_base * static_cast<double>(timestamp) * 1000;
  constexpr double LIMIT = 9223372036854775808.0;  // 2^63
  if (std::isnan(ms)) {
    return 0;
  }
  if (ms >= LIMIT) {
    return std::numeric_limits<long long>::max();
  }
  return ms < -LIMIT ? std::numeric_limits<long long>::min() : static_cast<long long>(ms);
}

const char* VideoReader::Impl::getMetadataValue(const char* key) const {
  if (key == nullptr || _p_format_ctx == nullptr) {
    return nullptr;
  }
  const AVDictionaryEntry* p_entry = av_dict_get(_p_format_ctx->metadata, key, nullptr, 0);
  return p_entry == nullptr ? nullptr : p_entry->value;
}

VideoRotation VideoReader::Impl::rotation() const {
  if (std::fabs(_rotation) < 1) {
    return ZO_VIDEO_ROTATION_0;
  }
  if (std::fabs(_rotation - 90) < 1) {
    return ZO_VIDEO_ROTATION_90;
  }
  if (std::fabs(_rotation - 180) < 1) {
    return ZO_VIDEO_ROTATION_180;
  }
  if (std::fabs(_rotation - 270) < 1) {
    return ZO_VIDEO_ROTATION_270;
  }
  return ZO_VIDEO_ROTATION_OTHER;
}

}  // namespace zo
