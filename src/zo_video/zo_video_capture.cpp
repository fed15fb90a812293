#include "zo_video/zo_video_capture.h"

#include "zo_core/zo_exception.h"
#include "zo_frame_rate_limit.h"
#include "zo_video/zo_jpeg_encoder.h"
#include "zo_video/zo_video_converter.h"
#include "zo_video/zo_video_reader.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_capture";

}  // namespace

class VideoCapture::Impl {
 public:
  Impl(bool enable_navigation, bool skip_empty)
      : _enable_navigation(enable_navigation), _skip_empty(skip_empty) {}

  void open(const std::string& url, int timeout_ms);
  void clear();
  bool read(Frame& out);
  bool readJpeg(Buffer& jpeg, long long& timestamp);
  void setPosition(long long frame_index);
  void setMaxFps(float fps);
  void setJpegQuality(int quality);

  VideoReader _reader;
  VideoConverter _converter;
  JpegEncoder _jpeg_encoder;
  int _jpeg_quality = 90;
  bool _enable_navigation;
  Frame _frame;  // as decoded
  FrameFormat _format = ZO_FRAME_FORMAT_UNDEFINED;
  Size _frame_size;
  std::int32_t _max_fps = 0;
  std::int32_t _frame_counter = 0;
  long long _first_ts = 0;
  long long _last_ts = 0;
  bool _frame_ready = false;
  bool _skip_empty;
  bool _is_eof = false;
  bool _is_live = false;

 private:
  bool readWanted();
  void restart();
};

void VideoCapture::Impl::open(const std::string& url, int timeout_ms) {
  _reader.open(url.c_str(), timeout_ms, nullptr, _enable_navigation, false, false);
  if (_format == ZO_FRAME_FORMAT_UNDEFINED) {
    _format = _reader.format();
  }
  if (_frame_size.width <= 0 || _frame_size.height <= 0) {
    _frame_size = _reader.size();
  }
}

void VideoCapture::Impl::clear() {
  _reader.close();
  _format = ZO_FRAME_FORMAT_UNDEFINED;
  _frame_size = Size();
  _max_fps = 0;
  restart();
}

void VideoCapture::Impl::restart() {
  _frame_counter = 0;
  _frame_ready = false;
  _first_ts = 0;
  _last_ts = 0;
}

void VideoCapture::Impl::setPosition(long long frame_index) {
  _reader.moveByIndex(frame_index);
  restart();
}

void VideoCapture::Impl::setMaxFps(float fps) {
  if (fps < 0.0F) {
    throw Exception(nullptr, ZO_STATUS_INVALID_ARGUMENT, "setMaxFps", SOURCE_FILE, __LINE__, "Invalid FPS");
  }
  _max_fps = wholeFps(fps);
}

void VideoCapture::Impl::setJpegQuality(int quality) {
  if (static_cast<unsigned>(quality) > 100U) {
    throw Exception(nullptr, ZO_STATUS_INVALID_ARGUMENT, "setJpegQuality", SOURCE_FILE, __LINE__,
                    "Invalid JPEG quality");
  }
  _jpeg_quality = quality;
}

// Reads on until `_frame` holds a frame that is to be delivered; false at the end.
bool VideoCapture::Impl::readWanted() {
  const bool limited = _max_fps != 0;
  const long long earliest = limited ? earliestTimestamp(_first_ts, _frame_counter, _max_fps) : 0;
  for (;;) {
    _reader.read(_frame, _frame_ready, nullptr);
    if (!_frame_ready) {
      return false;
    }
    const long long timestamp = _frame.timestamp();
    const bool early = limited && timestamp < earliest;
    const bool skipped = _skip_empty && !_frame.initialized();
    const bool duplicate = _frame_counter != 0 && timestamp == _last_ts;
    if (early || skipped || duplicate) {
      continue;
    }
    if (_frame_counter == 0) {
      _first_ts = timestamp;
    }
    return true;
  }
}

bool VideoCapture::Impl::read(Frame& out) {
  _frame_ready = false;
  const bool convert = _format != _reader.format() || _frame_size != _reader.size();
  if (!readWanted()) {
    return false;
  }
  _frame_counter = static_cast<std::int32_t>(static_cast<std::uint32_t>(_frame_counter) + 1U);
  _last_ts = _frame.timestamp();
  if (!_frame.initialized()) {
    out.clear();
  } else if (convert) {
    _converter.convert(_frame, _format, _frame_size, out, VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  } else {
    _frame.copyTo(out);
  }
  out.setTimestamp(rebasedTimestamp(_last_ts, _first_ts));
  return _frame_ready;
}

bool VideoCapture::Impl::readJpeg(Buffer& jpeg, long long& timestamp) {
  if (!_frame_ready) {
    return false;
  }
  if (_frame.initialized()) {
    _jpeg_encoder.encode(_frame, _jpeg_quality, jpeg);
  } else {
    jpeg.clear();
  }
  timestamp = rebasedTimestamp(_last_ts, _first_ts);
  return true;
}

ICapture::~ICapture() = default;

VideoCapture::VideoCapture(bool enable_navigation, bool skip_empty)
    : _p_impl(new Impl(enable_navigation, skip_empty)) {}

VideoCapture::~VideoCapture() {
  delete _p_impl;
}

FrameFormat VideoCapture::format() const {
  return _p_impl->_format;
}

Size VideoCapture::frameSize() const {
  return _p_impl->_frame_size;
}

float VideoCapture::fps() const {
  return static_cast<float>(_p_impl->_reader.fps());
}

long long VideoCapture::frameIndex() const {
  return _p_impl->_reader.frameIndex();
}

long long VideoCapture::timestamp() const {
  return _p_impl->_reader.timestamp();
}

long long VideoCapture::frameCount() const {
  return _p_impl->_reader.frameCount();
}

long long VideoCapture::timestampToFrameIndex(long long) const {
  return 0;
}

bool VideoCapture::isLive() const {
  return _p_impl->_is_live;
}

bool VideoCapture::isOpen() const {
  return _p_impl->_reader.format() != ZO_FRAME_FORMAT_UNDEFINED;
}

bool VideoCapture::isEof() const {
  return _p_impl->_is_eof;
}

void VideoCapture::setMaxFps(float fps) {
  _p_impl->setMaxFps(fps);
}

void VideoCapture::setJpegQuality(int quality) {
  _p_impl->setJpegQuality(quality);
}

void VideoCapture::setFormat(FrameFormat format) {
  _p_impl->_format = format;
}

void VideoCapture::setFrameSize(Size size) {
  _p_impl->_frame_size = size;
}

void VideoCapture::open(const std::string& url, int timeout_ms) {
  _p_impl->open(url, timeout_ms);
}

void VideoCapture::close() {
  _p_impl->clear();
}

void VideoCapture::clear() {
  _p_impl->clear();
}

bool VideoCapture::read(Frame& frame) {
  return _p_impl->read(frame);
}

bool VideoCapture::readJpeg(Buffer& jpeg, long long& timestamp) {
  return _p_impl->readJpeg(jpeg, timestamp);
}

void VideoCapture::setPosition(long long frame_index) {
  _p_impl->setPosition(frame_index);
}

}  // namespace zo
