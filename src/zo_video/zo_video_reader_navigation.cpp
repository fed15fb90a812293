// The frame index: which packet belongs to which frame, and which frame a decoded picture is.
#include <algorithm>
#include <stdexcept>

#include "zo_av_error.h"
#include "zo_ffmpeg_compat.h"
#include "zo_navigation_cache.h"
#include "zo_saturating.h"
#include "zo_video_reader_impl.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_reader_impl";

// A container's own frame count is only a hint: more than this is reserved when the packets are really there.
constexpr uint64_t MOST_WORDS_RESERVED = uint64_t{1} << 20;
constexpr uint64_t MOST_WORDS = 0x3FFFFFFF;
constexpr std::size_t LARGEST_SLACK = 32;  // one word for so many is not worth copying the others

}  // namespace

// --- The index -------------------------------------------------------------------------------------------

void VideoReader::Impl::_readAllPackets(bool use_navigation_cache) {
  _forgetCutOffCall();
  if (!hasFirstDts()) {
    _findFirstDts();
  }
  _seekToStart();
  _reserveIndex();
  const bool loaded = use_navigation_cache && _loadNavigationCache();
  if (!loaded) {
    _scanPackets();
    _seekToStart();
  }
  if (_packets_ts.capacity() - _packets_ts.size() > _packets_ts.size() / LARGEST_SLACK) {
    _packets_ts.shrink_to_fit();  // it stays as long as the file is open
  }
  _frame_count = static_cast<int64_t>(_packets_ts.size());
  _index_order = indexOrder(_packets_ts);
  if (use_navigation_cache && !loaded) {
    _saveNavigationCache();
  }
}

// An index that grows during the scan leaves holes behind, and what packets then take from there and give
// back costs several per cent of the scan. Where the container does not tell the number of frames, duration
// and rate do roughly.
void VideoReader::Impl::_reserveIndex() {
  uint64_t count = static_cast<uint64_t>(_frame_count);
  if (count > MOST_WORDS) {
    throw std::length_error("vector::reserve");
  }
  if (count == 0) {
    const double estimate = _fps * static_cast<double>(_p_format_ctx->duration) / AV_TIME_BASE;
    if (estimate > 0) {
      count = static_cast<uint64_t>(std::min(estimate, static_cast<double>(MOST_WORDS_RESERVED)));
      count += count / (2 * LARGEST_SLACK);
    }
  }
  _packets_ts.reserve(static_cast<std::size_t>(std::min(count, MOST_WORDS_RESERVED)));
}

void VideoReader::Impl::_scanPackets() {
  PacketIndexBuilder builder(_packets_ts);
  AVPacket* const p_packet = _p_av_packet.get();
  int result;
  for (;;) {
    _restartBudget();
    result = av_read_frame(_p_format_ctx.get(), p_packet);
    if (result != 0) {
      break;
    }
    if (p_packet->stream_index == _stream_index) {
      builder.add(_relativeTimestamp(_packetTimestamp()), (p_packet->flags & AV_PKT_FLAG_KEY) != 0);
    }
    av_packet_unref(p_packet);
  }
  av_packet_unref(p_packet);
  if (result != AVERROR_EOF && !_skip_errors) {
    throw Exception(nullptr, ZO_STATUS_READ_ERROR, "_readAllPackets", SOURCE_FILE, __LINE__,
                    "_readAllPackets: av_read_frame() returned %d (%s)", result, AvErrorText(result).text());
  }
  builder.finish();
}

// Where FFmpeg keeps a stream's first decoding timestamp to itself, the stream's first packet tells it.
void VideoReader::Impl::_findFirstDts() {
  AVPacket* const p_packet = _p_av_packet.get();
  bool found = false;
  while (!found) {
    _restartBudget();
    if (av_read_frame(_p_format_ctx.get(), p_packet) != 0) {
      break;
    }
    found = p_packet->stream_index == _stream_index;
    if (found && p_packet->dts != AV_NOPTS_VALUE) {
      _first_dts = p_packet->dts;
    }
    av_packet_unref(p_packet);
  }
  av_packet_unref(p_packet);
}

void VideoReader::Impl::_seekToStart() {
  AVFormatContext* const p_format = _p_format_ctx.get();
  int result = seekStream(p_format, _stream_index, _first_dts, AVSEEK_FLAG_BACKWARD);
  if (result < 0) {
    result = seekStream(p_format, _stream_index, _first_dts, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY);
  }
  if (result < 0) {
    throw Exception(nullptr, ZO_STATUS_SEEK_ERROR, "_seekToStart", SOURCE_FILE, __LINE__,
                    "_seekToStart: failed to seek to the start frame. av_seek_frame(...) returned %d (%s)",
                    result, AvErrorText(result).text());
  }
}

std::string VideoReader::Impl::_navigationCachePath() const {
  return _url + NAVIGATION_FILE_EXTENSION;
}

bool VideoReader::Impl::_loadNavigationCache() {
  if (loadNavigationCache(_navigationCachePath(), _packets_ts) == CacheLoad::FAILED) {
    throw Exception(nullptr, ZO_STATUS_READ_ERROR, "_loadNavigationCache", SOURCE_FILE, __LINE__,
                    "_loadNavigationCache: error while reading navigation cache");
  }
  return !_packets_ts.empty();
}

void VideoReader::Impl::_saveNavigationCache() const {
  saveNavigationCache(_navigationCachePath(), _packets_ts);
}

// --- Times and indices -----------------------------------------------------------------------------------

// A stream that does not know its start is counted from 0.
int64_t VideoReader::Impl::_indexOrigin() const {
  return _start_time == AV_NOPTS_VALUE ? 0 : _start_time;
}

int64_t VideoReader::Impl::_relativeTimestamp(int64_t timestamp) const {
  return std::max<int64_t>(saturatingSubtract(timestamp, _indexOrigin()), 0);
}

int64_t VideoReader::Impl::_getPktTsInBaseTime(long long index) const {
  return saturatingAdd(_indexOrigin(), packetTime(_packets_ts[static_cast<std::size_t>(index)]));
}

// A picture that comes after ones the decoder skipped gets the index of its own time.
void VideoReader::Impl::_correctFrameIndex() {
  const int64_t picture_time = _p_av_frame->best_effort_timestamp;
  if (_position_from_picture) {
    _takePositionFromPicture(picture_time);
  }
  while (_decoded_index < _frame_count - 1 && _getPktTsInBaseTime(_decoded_index) < picture_time) {
    ++_decoded_index;
  }
  if (_position_from_picture) {
    _position_from_picture = false;
    // Without a time the index is only what was hoped for.
    _first_picture_index = picture_time == AV_NOPTS_VALUE ? _frame_count : _decoded_index;
  }
}

// After a seek only the picture itself can tell where the stream goes on: demuxers land earlier or later than
// they were asked to. A time that is not in the index leaves the count as it is.
void VideoReader::Impl::_takePositionFromPicture(int64_t picture_time) {
  if (picture_time == AV_NOPTS_VALUE || _index_order == IndexOrder::UNORDERED) {
    return;
  }
  const long long index = findPacketTime(_packets_ts, _relativeTimestamp(picture_time), _decoded_index);
  if (index >= 0) {
    _decoded_index = index;
  }
}

// --- Reading ---------------------------------------------------------------------------------------------

int VideoReader::Impl::_readIndexed(Frame& frame, bool& got_frame) {
  got_frame = _frame_index < _frame_count - 1;
  if (!got_frame) {
    return 0;
  }
  ++_frame_index;
  int64_t time = AV_NOPTS_VALUE;
  // A failed read or seek gives the held picture up.
  if (_frame_index == _decoded_index && _p_av_frame->format != -1) {
    _copyToOutFrame(frame);
    time = _p_av_frame->best_effort_timestamp;
  } else {
    frame.clear();
  }
  if (time == AV_NOPTS_VALUE) {
    time = _getPktTsInBaseTime(_frame_index);
  }
  _timestamp = _getTimestampMs(time);
  frame.setTimestamp(_timestamp);
  return 0;
}

}  // namespace zo
