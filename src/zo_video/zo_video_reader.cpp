#include "zo_video/zo_video_reader.h"

#include "zo_video_reader_impl.h"

namespace zo {

const char* const VideoReader::NAVIGATION_FILE_EXTENSION = ".zo";

VideoReader::VideoReader() : _p_impl(new Impl()) {}

VideoReader::~VideoReader() {
  delete _p_impl;
}

int VideoReader::open(const char* url, int timeout_ms, IInterruptable* open_interruptable,
                      bool enable_navigation, bool skip_errors, bool use_navigation_cache) {
  return _p_impl->open(url, timeout_ms, open_interruptable, enable_navigation, skip_errors,
                       use_navigation_cache);
}

void VideoReader::close() {
  _p_impl->close();
}

int VideoReader::read(Frame& frame, bool& got_frame, IInterruptable* interruptable) {
  return _p_impl->read(frame, got_frame, interruptable);
}

void VideoReader::moveByIndex(long long frame_index) {
  _p_impl->moveByIndex(frame_index);
}

const char* VideoReader::getMetadataValue(const char* key) const {
  return _p_impl->getMetadataValue(key);
}

const char* VideoReader::url() const {
  return _p_impl->url();
}

long long VideoReader::frameCount() const {
  return _p_impl->frameCount();
}

long long VideoReader::frameIndex() const {
  return _p_impl->frameIndex();
}

double VideoReader::fps() const {
  return _p_impl->fps();
}

VideoRotation VideoReader::rotation() const {
  return _p_impl->rotation();
}

long long VideoReader::timestamp() const {
  return _p_impl->timestamp();
}

FrameFormat VideoReader::format() const {
  return _p_impl->format();
}

Size VideoReader::size() const {
  return _p_impl->size();
}

}  // namespace zo
