// Jumps: how to get to a frame by its index, exactly, with demuxers that seek where they please.
#include <algorithm>
#include <cstdint>

#include "zo_av_error.h"
#include "zo_ffmpeg_compat.h"
#include "zo_saturating.h"
#include "zo_video_reader_impl.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_reader_impl";

// What is tried, one after the other, when a seek led behind the wanted frame: the same key frame by its
// decoding and by its presentation time, then key frames further and further back.
constexpr int LAST_STEP_AT_SAME_KEY = 2;
constexpr int LAST_STEP_BACK = 5;

// Bytes of an MPEG-4 picture that only says that there is nothing new.
constexpr int LARGEST_EMPTY_PICTURE = 19;

}  // namespace

void VideoReader::Impl::moveByIndex(long long frame_index) {
  static const char FUNCTION[] = "moveByIndex";
  _checkIfGood();
  if (!_navigation) {
    throw Exception(nullptr, ZO_STATUS_NOT_ALLOWED, FUNCTION, SOURCE_FILE, __LINE__,
                    "Failure in VideoReader::move(frame_index == %lli): navigation is not allowed.",
                    frame_index);
  }
  if (frame_index < 0 || frame_index >= _frame_count) {
    throw Exception(nullptr, ZO_STATUS_OUT_OF_RANGE, FUNCTION, SOURCE_FILE, __LINE__,
                    "Failure in VideoReader::move(frame_index == %lli): frame index is out of range.",
                    frame_index);
  }
  if (_packets_ts.size() != static_cast<std::size_t>(_frame_count)) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "Assertion failed: %s", "_packets_ts.size() == (size_t)_frame_count");
  }
  _frame_index = frame_index - 1;

  const bool position_known = !_endOfStream() && !_position_from_picture && !_packet_lost;
  // An interrupted or failed read has given the held picture up.
  const bool holds_picture = _p_av_frame->format != -1;
  if (position_known &&
      (frame_index == _decoded_index + 1 || (frame_index == _decoded_index && holds_picture))) {
    return;
  }
  const long long key_index = keyIndexAtOrBefore(_packets_ts, frame_index);
  if (position_known && key_index <= _decoded_index && _decoded_index < frame_index) {
    const bool identified =
        holds_picture && _p_av_frame->best_effort_timestamp == _getPktTsInBaseTime(_decoded_index);
    if (_decodeUpTo(frame_index, key_index, identified) != Decoded::DAMAGED) {
      return;
    }
  }
  _jump(frame_index, key_index);
}

void VideoReader::Impl::_jump(long long frame_index, long long key_index) {
  _seekForMove(frame_index, key_index);
  Landing landing = _lookAtLanding(frame_index, key_index);
  if (landing == Landing::EARLIER && !_seek_by_presentation && !_presentation_seek_fails) {
    landing = _improveLanding(frame_index, key_index);
  }
  int step = 0;
  for (;;) {
    if (landing != Landing::UNUSABLE) {
      const Decoded decoded = _decodeUpTo(frame_index, key_index, landing != Landing::UNKNOWN);
      if (decoded == Decoded::DAMAGED) {
        // Once: from now on every picture is decoded. What the decoder has learnt about the order of pictures
        // it learnt from damage.
        _p_codec_ctx = _makeDecoder(_p_codec_ctx->codec, "moveByIndex", "", "");
        _jump(frame_index, key_index);
        return;
      }
      // Having come past the frame means that the decoder has no such picture; having met nothing before it
      // means that the seek was late, or that the decoder needed a longer run-up. So does the stream's end,
      // and a first picture without a time, as nothing tells which one it is.
      const bool counted = landing == Landing::UNKNOWN || _first_picture_index != _frame_count;
      const bool come_past =
          counted && (_decoded_index == frame_index || _first_picture_index <= frame_index);
      if (decoded == Decoded::STREAM_ENDED ? landing == Landing::UNKNOWN : come_past) {
        return;
      }
      if (landing != Landing::UNKNOWN) {
        step = std::max(step, LAST_STEP_AT_SAME_KEY);  // the same key frame would give the same again
      }
    }
    do {
      ++step;
    } while (step <= LAST_STEP_BACK && !_seekBack(step, key_index));
    if (step > LAST_STEP_BACK) {
      if (landing == Landing::UNUSABLE) {
        _decodeUpTo(frame_index, key_index, false);
      }
      return;
    }
    landing = _lookAtLanding(frame_index, key_index);
  }
}

// Relative to the first decoding time, so that it lies at or before the key packet when decoding runs ahead
// of presentation.
int64_t VideoReader::Impl::_writtenTarget(long long key_index) const {
  return saturatingAdd(_first_dts, packetTime(_packets_ts[static_cast<std::size_t>(key_index)]));
}

void VideoReader::Impl::_seekForMove(long long frame_index, long long key_index) {
  if (_seek_by_presentation &&
      _seekTo(_getPktTsInBaseTime(key_index), AVSEEK_FLAG_BACKWARD, key_index) == 0) {
    return;
  }
  const int64_t target = _writtenTarget(key_index);
  const int flags = frame_index < _decoded_index ? AVSEEK_FLAG_BACKWARD : 0;
  int result = _seekTo(target, flags, key_index);
  if (result < 0) {
    result = _seekTo(target, flags | AVSEEK_FLAG_ANY, key_index);
  }
  if (result != 0) {
    _position_from_picture = true;  // the demuxer may have moved all the same
    throw Exception(nullptr, ZO_STATUS_SEEK_ERROR, "moveByIndex", SOURCE_FILE, __LINE__,
                    "Failure in VideoReader::move(frame_index == %lli): failed to seek to new frame. "
                    "av_seek_frame(...) returned %d (%s)",
                    frame_index, result, AvErrorText(result).text());
  }
}

// Returns what seekStream() returned; 0 is success.
int VideoReader::Impl::_seekTo(int64_t target, int flags, long long key_index) {
  if (_packet_pending) {
    av_packet_unref(_p_av_packet.get());
    _packet_pending = false;
  }
  const int result = seekStream(_p_format_ctx.get(), _stream_index, target, flags);
  if (result == 0) {
    flushDecoder(_p_codec_ctx.get(), _p_av_frame.get());
    _p_codec_ctx->flags &= ~AV_CODEC_FLAG_OUTPUT_CORRUPT;
    _pictures_queued = false;
    _state = STATE_OPEN;
    _packet_lost = false;
    _decoded_index = key_index - 1;
    _position_from_picture = true;
    _first_picture = true;
  }
  return result;
}

// False when the step leads nowhere.
bool VideoReader::Impl::_seekBack(int step, long long key_index) {
  int64_t target;
  if (step < LAST_STEP_AT_SAME_KEY) {
    target = _writtenTarget(key_index);
  } else {
    const int most_back = (1 << (step - LAST_STEP_AT_SAME_KEY)) - 1;
    int keys_back = 0;
    for (; keys_back < most_back && key_index > 0; ++keys_back) {
      key_index = keyIndexAtOrBefore(_packets_ts, key_index - 1);
    }
    if (keys_back < most_back && keys_back <= most_back / 2) {
      return false;  // the stream's start, where the step before has been
    }
    // Nothing lies before the first packet that could make up for a seek that leads behind it.
    if (keys_back > 0 && key_index == 0 && _seekTo(_writtenTarget(0), AVSEEK_FLAG_BACKWARD, 0) == 0) {
      return true;
    }
    target = _getPktTsInBaseTime(key_index);
  }
  return _seekTo(target, AVSEEK_FLAG_BACKWARD, key_index) == 0;
}

// Reads on to the packet that decoding will start with, and leaves it in _p_av_packet.
VideoReader::Impl::Landing VideoReader::Impl::_lookAtLanding(long long frame_index, long long key_index) {
  if (_index_order == IndexOrder::UNORDERED) {
    return Landing::UNKNOWN;
  }
  _forgetCutOffCall();
  while (_readVideoPacket() == PacketRead::PACKET) {
    _packet_pending = true;
    const int64_t time = _packetTimestamp();
    const long long index =
        time == AV_NOPTS_VALUE ? -1 : findPacketTime(_packets_ts, _relativeTimestamp(time), key_index);
    if (index < 0) {
      return Landing::UNKNOWN;
    }
    if (index > frame_index) {
      return Landing::UNUSABLE;
    }
    // Where two pictures share a packet, one without content makes up for it. Files call even that a key
    // frame.
    const bool says_nothing =
        _p_codec_ctx->codec_id == AV_CODEC_ID_MPEG4 && _p_av_packet->size <= LARGEST_EMPTY_PICTURE;
    if ((_p_av_packet->flags & AV_PKT_FLAG_KEY) != 0 && !says_nothing) {
      return index < key_index ? Landing::EARLIER : Landing::AT_KEY;
    }
    if (index >= key_index || !isKeyPacket(_packets_ts[static_cast<std::size_t>(key_index)])) {
      // Only at the very start of a stream may decoding begin without a key frame.
      const bool at_start = key_index == 0 && _p_av_packet->dts == _first_dts;
      return at_start ? Landing::AT_KEY : Landing::UNUSABLE;
    }
    // In the middle of what comes before the key frame: of no use to the decoder.
    av_packet_unref(_p_av_packet.get());
    _packet_pending = false;
  }
  return Landing::UNUSABLE;
}

// The seek led to an earlier key frame than asked for. Demuxers that take targets as presentation times do
// that; asked that way they land right, and what is learnt once serves all later jumps in this file.
VideoReader::Impl::Landing VideoReader::Impl::_improveLanding(long long frame_index, long long key_index) {
  if (_seekTo(_getPktTsInBaseTime(key_index), AVSEEK_FLAG_BACKWARD, key_index) == 0) {
    const Landing landing = _lookAtLanding(frame_index, key_index);
    if (landing == Landing::AT_KEY) {
      _seek_by_presentation = true;
      return landing;
    }
  }
  _presentation_seek_fails = true;
  return _seekTo(_writtenTarget(key_index), AVSEEK_FLAG_BACKWARD, key_index) == 0
             ? _lookAtLanding(frame_index, key_index)
             : Landing::UNUSABLE;
}

// Decodes until the wanted picture is held, or a later one when the decoder has none for that index.
//
// Pictures before the wanted one that nothing refers to are left out where the index tells every picture by
// its time and no packet seems to be missing. At a variable rate only the decoder can tell that. Decoders
// conceal damage with whatever picture came before, so should the stream prove damaged on that way, nothing
// is left out in it any more, and the way has to be gone again.
VideoReader::Impl::Decoded VideoReader::Impl::_decodeUpTo(long long frame_index, long long key_index,
                                                          bool times_identify_pictures) {
  _state = STATE_OPEN;
  _pictures_skipped = false;
  _damage_met = false;
  struct SkippingOff {
    Impl& reader;
    ~SkippingOff() {
      reader._skip_before = NO_SKIPPING;
      reader._losses_watched = false;
      reader._p_codec_ctx->skip_frame = AVDISCARD_DEFAULT;
    }
  } skipping_off{*this};
  if (times_identify_pictures && _may_skip && _maySkipByTime() &&
      _index_order == IndexOrder::STRICT_ASCENDING) {
    const bool even = evenlySpaced(_packets_ts, key_index, frame_index);
    if (even || _lostPicturesShow()) {
      _skip_before = _getPktTsInBaseTime(frame_index);
      _losses_watched = !even;
    }
  }
  bool ended = false;
  try {
    while (_decoded_index < frame_index && !ended) {
      bool got_frame = false;
      _read(got_frame, nullptr);
      ended = !got_frame;
    }
  } catch (const Exception&) {
    if (!_pictures_skipped || !_damage_met) {
      throw;
    }
  }
  if (_pictures_skipped && _damage_met) {
    _may_skip = false;
    return Decoded::DAMAGED;
  }
  return ended ? Decoded::STREAM_ENDED : Decoded::REACHED;
}

// Where packets come without a presentation time, decoders tell times from the order in which pictures come
// out. With MPEG-4 leaving out B-pictures, which come out at once and do have a time, changes nothing in
// that.
bool VideoReader::Impl::_maySkipByTime() const {
  return _presentation_times || _p_codec_ctx->codec_id == AV_CODEC_ID_MPEG4;
}

// An H.264 decoder counts the pictures that others refer to, and makes up those that are missing before it
// decodes the next one. Where it is given all of them and nothing else, each loss shows that way: one packet,
// more than one picture.
bool VideoReader::Impl::_lostPicturesShow() {
  if (_p_codec_ctx->get_buffer2 != &Impl::_countPicture) {
    return false;
  }
  if (_rate == Rate::UNKNOWN) {
    _rate = paceChangesOften(_packets_ts) ? Rate::VARIABLE : Rate::CONSTANT;
  }
  return _rate == Rate::VARIABLE;
}

int VideoReader::Impl::_countPicture(AVCodecContext* p_codec, AVFrame* p_frame, int flags) {
  ++static_cast<Impl*>(p_codec->opaque)->_pictures_begun;
  return avcodec_default_get_buffer2(p_codec, p_frame, flags);
}

// What came before the first picture after a seek counts as missing to the decoder.
void VideoReader::Impl::_lookForLostPictures() {
  if (_losses_watched && !_first_picture && _pictures_begun > 1) {
    _damage_met = true;
  }
  _first_picture = _first_picture && _pictures_begun == 0;
}

// Called for every packet until the wanted picture's has come.
void VideoReader::Impl::_chooseSkipping(PacketRead result) {
  const bool timed = result == PacketRead::PACKET && _p_av_packet->pts != AV_NOPTS_VALUE;
  if (result == PacketRead::PACKET && !timed) {
    _presentation_times = false;
    // Where two pictures share a packet, packets without content make up for it; times come out of step when
    // pictures are left out there.
    _damage_met = _damage_met || _p_av_packet->size <= LARGEST_EMPTY_PICTURE;
  }
  const bool skip = timed && _maySkipByTime() && _p_av_packet->pts < _skip_before;
  _p_codec_ctx->skip_frame = skip ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
  _pictures_skipped = _pictures_skipped || skip;
  if (!_maySkipByTime() || result != PacketRead::PACKET || (timed && _p_av_packet->pts == _skip_before)) {
    _skip_before = NO_SKIPPING;
  }
}

}  // namespace zo
