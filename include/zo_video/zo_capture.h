#ifndef ZO_VIDEO_ZO_CAPTURE_H
#define ZO_VIDEO_ZO_CAPTURE_H

#include <string>

#include "zo_core/zo_buffer.h"
#include "zo_core/zo_frame.h"
#include "zo_video/zo_video_export.h"

namespace zo {

/// A source of frames in a format and size of the caller's choice. The order of the virtual functions is part
/// of the binary interface.
class ZO_VIDEO_API ICapture {
 public:
  /// Format of the frames that read() delivers; ZO_FRAME_FORMAT_UNDEFINED: the source's own, known once open.
  /// A source that changes its pixel format on the way may deliver another one: Frame::format() tells.
  virtual FrameFormat format() const = 0;
  /// Size in pixels of the frames that read() delivers; 0 x 0: the source's own, known once open.
  virtual Size frameSize() const = 0;
  /// Average frames per second of the source.
  virtual float fps() const = 0;
  /// Index of the source's last frame.
  virtual long long frameIndex() const = 0;
  /// Time of the source's last frame, milliseconds.
  virtual long long timestamp() const = 0;
  /// Number of frames of the source, 0 when unknown.
  virtual long long frameCount() const = 0;
  /// Index of the frame shown at a time in milliseconds, where the source has such a mapping.
  virtual long long timestampToFrameIndex(long long timestamp) const = 0;
  /// True for a source that cannot be gone back in.
  virtual bool isLive() const = 0;
  /// True between open() and close(), provided that the picture format was known at opening.
  virtual bool isOpen() const = 0;
  /// True once the end of the source was met, where the source tells.
  virtual bool isEof() const = 0;
  /// Highest rate at which frames are delivered, frames per second; below 1: no limit.
  virtual void setMaxFps(float fps) = 0;
  /// Quality of readJpeg(), 0 to 100.
  virtual void setJpegQuality(int quality) = 0;
  /// Format of the frames to deliver; ZO_FRAME_FORMAT_UNDEFINED: the source's own, taken when it is
  /// opened.
  virtual void setFormat(FrameFormat format) = 0;
  /// Size in pixels of the frames to deliver; a side below 1: the source's own size, taken when it is opened.
  virtual void setFrameSize(Size size) = 0;
  /// Opens a source; timeout_ms bounds each blocking call in milliseconds, negative: no limit.
  virtual void open(const std::string& url, int timeout_ms) = 0;
  /// Closes the source. Closing a closed one is fine.
  virtual void close() = 0;
  /// Delivers the next frame; false when there is none, `frame` is untouched then.
  virtual bool read(Frame& frame) = 0;
  /// The frame of the last read() as JPEG; false when there is none, both arguments are untouched then.
  virtual bool readJpeg(Buffer& jpeg, long long& timestamp) = 0;
  /// Goes on with the frame of that index.
  virtual void setPosition(long long frame_index) = 0;

  virtual ~ICapture();

 protected:
  ICapture() = default;
  ICapture(const ICapture&) = default;
  ICapture& operator=(const ICapture&) = default;
};

}  // namespace zo

#endif
