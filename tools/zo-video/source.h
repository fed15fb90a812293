#ifndef ZO_TOOL_SOURCE_H
#define ZO_TOOL_SOURCE_H

#include "options.h"
#include "stop.h"
#include "zo_video/zo_video.h"

namespace zo_tool {

/// How much a command wants to know about a video before the first picture.
enum class Access {
  IN_ORDER,         ///< read from the start
  NUMBERED,         ///< any frame by its number, where the container allows it
  NUMBERED_CACHED,  ///< the same, with the index kept in the file beside the video
};

/// The video that a command works on. Every call throws Stopped once a signal asked to end.
class Source {
 public:
  explicit Source(const SourceOptions& options);

  /// A file that cannot be gone through for its index, and a pipe, are opened to be read in order instead.
  void open(Access access);

  /// True when the frames have numbers that can be gone to.
  bool isNumbered() const { return _numbered; }
  /// Number of frames, 0 when the source is not numbered.
  long long frameCount() const { return _reader.frameCount(); }
  const zo::VideoReader& reader() const { return _reader; }

  /// Delivers the next frame, false at the end. A picture that could not be decoded is an empty frame. A file
  /// whose index turns out empty (some still images) is read in order.
  bool read(zo::Frame& frame);

  /// Goes on with that frame: jumps, or reads up to it where frames have no numbers.
  /// @throws zo::Exception  ZO_STATUS_OUT_OF_RANGE: the video ends before.
  void goTo(long long index);

  /// Throws ZO_STATUS_OUT_OF_RANGE: the video has only that many frames.
  [[noreturn]] void failOutOfRange(long long index, long long count) const;

  /// Throws ZO_STATUS_NOT_ALLOWED for a pipe or the like, which cannot be started again. Reads nothing.
  void requireRestart() const;

  /// Throws unless the frames have numbers: why indexing failed, or ZO_STATUS_NOT_ALLOWED.
  void requireNumbers() const;

 private:
  void openReader(bool navigation, bool cached);
  bool readFrame(zo::Frame& frame);

  const SourceOptions& _options;
  const std::string _url;  // for the library; messages name what the user gave
  const bool _is_pipe;
  zo::VideoReader _reader;
  StopRequest _stop_request;
  bool _numbered = false;
  bool _may_reopen = false;      // to read in order, should there be no frame at all
  zo::Exception _index_failure;  // ZO_STATUS_OK when there was none
};

}  // namespace zo_tool

#endif
