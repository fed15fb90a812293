#ifndef ZO_VIDEO_ZO_VIDEO_CAPTURE_H
#define ZO_VIDEO_ZO_VIDEO_CAPTURE_H

#include "zo_video/zo_capture.h"
#include "zo_video/zo_video_export.h"

namespace zo {

/// Frames of a file or stream in a fixed format and size, thinned to a highest rate where wanted, and as
/// JPEG. Frames are converted where the format or size that is set is not the stream's own. Otherwise one
/// frame still comes in the new size where the stream changes that, and all further frames come in the new
/// pixel format where it changes that: format() keeps telling the one at opening, Frame::format() tells.
///
/// Failures of the reader, converter and JPEG encoder inside reach the caller as zo::Exception with their own
/// status; std::bad_alloc comes out too. One thread at a time per object.
class ZO_VIDEO_API VideoCapture : public ICapture {
 public:
  class ZO_VIDEO_PRIVATE Impl;

  /// @param enable_navigation  Open with the frame index that setPosition() and frameCount() need.
  /// @param skip_empty         Leave out frames without pixels (pictures that the decoder did not produce).
  /// Throws std::bad_alloc.
  VideoCapture(bool enable_navigation, bool skip_empty);
  ~VideoCapture() override;
  VideoCapture(const VideoCapture&) = delete;
  VideoCapture& operator=(const VideoCapture&) = delete;

  FrameFormat format() const override;
  Size frameSize() const override;
  float fps() const override;
  long long frameIndex() const override;
  long long timestamp() const override;
  long long frameCount() const override;
  /// Always 0: there is no such mapping here.
  long long timestampToFrameIndex(long long timestamp) const override;
  /// Always false.
  bool isLive() const override;
  /// False also where nothing told the picture format at opening; see open().
  bool isOpen() const override;
  /// Always false; read() tells the end.
  bool isEof() const override;

  /// @param fps  Frames per second, cut to a whole number; below 1 or NaN: no limit. The limit holds against
  ///             the time of the first delivered frame, so a stream that was slow may catch up. Until there
  ///             is one, also after setPosition(), frames with negative times are left out.
  /// @throws zo::Exception  ZO_STATUS_INVALID_ARGUMENT "Invalid FPS": below 0.
  void setMaxFps(float fps) override;
  /// @param quality  0 to 100 (readJpeg() then refuses 0).
  /// @throws zo::Exception  ZO_STATUS_INVALID_ARGUMENT "Invalid JPEG quality": outside.
  void setJpegQuality(int quality) override;
  /// Takes effect at the next read(); close() forgets it. ZO_FRAME_FORMAT_UNDEFINED: open() takes the
  /// stream's own format.
  void setFormat(FrameFormat format) override;
  /// Takes effect at the next read(); close() forgets it. A size that is not set: open() takes the stream's.
  void setFrameSize(Size size) override;

  /// Opens as VideoReader::open() does, without skipping errors and without a navigation file.
  /// A stream whose picture format nothing tells at opening has format() ZO_FRAME_FORMAT_UNDEFINED and
  /// isOpen() false until the next open(); its frames come in their own format. Where its size is unknown too
  /// (0 x 0), or a size is set and no format, read() throws ZO_STATUS_OUT_OF_MEMORY for pictures, except
  /// perhaps the first one, until setFormat() and setFrameSize() are called.
  /// @param timeout_ms  Time budget of each blocking call in milliseconds; negative: none.
  void open(const std::string& url, int timeout_ms) override;
  /// Closes the reader and forgets format, size and rate limit; the JPEG quality stays.
  void close() override;
  /// The same as close().
  void clear();

  /// Delivers the next frame that the rate limit lets through, converted (bicubic) where format or size
  /// differ from the stream's. Frames with the time of the frame before are left out. When the first
  /// delivered time is negative, times are moved so that they start at 0.
  ///
  /// A frame that cannot be converted or copied counts as delivered: `frame` may have been reshaped, the next
  /// read() goes on with the next frame, and readJpeg() still gives this one. After any other failure `frame`
  /// is untouched and readJpeg() gives nothing; only where the reader itself could not convert the picture
  /// (ZO_STATUS_OUT_OF_MEMORY, std::bad_alloc) it may give an earlier one.
  /// @return false when there is no further frame; `frame` is untouched then.
  bool read(Frame& frame) override;

  /// JPEG of the frame of the last read(), made from the picture as decoded; `jpeg` is empty where that frame
  /// has no pixels. Pictures of 4:2:2 streams come out with U and V exchanged (see JpegEncoder::encode()).
  /// @param timestamp  Receives the same time as the delivered frame's, milliseconds.
  bool readJpeg(Buffer& jpeg, long long& timestamp) override;

  /// As VideoReader::moveByIndex(); the rate limit and the time base start anew. A position that is refused
  /// changes nothing, and readJpeg() still gives the frame of the last read().
  void setPosition(long long frame_index) override;

 private:
  Impl* _p_impl;
};

}  // namespace zo

#endif
