#ifndef ZO_CORE_ZO_FRAME_H
#define ZO_CORE_ZO_FRAME_H

#include <array>
#include <cstddef>

#include "zo_core/zo_device.h"
#include "zo_core/zo_export.h"
#include "zo_core/zo_frame_c.h"
#include "zo_core/zo_frame_format.h"
#include "zo_core/zo_geometry.h"

namespace zo {

class FrameMemory;

/// Describes memory that already holds an image, for the frame constructor that wraps it: the planes follow
/// one another, each stride x rows bytes. Strides are in bytes, 0 for unused planes.
class ZO_CORE_API FrameLayout {
 public:
  /// Describes memory in that format, size in pixels, and strides in bytes.
  FrameLayout(FrameFormat format, Size size, const std::array<unsigned, 4>& strides) noexcept;

  /// Pixel layout.
  FrameFormat format() const noexcept;
  /// Size in pixels.
  Size size() const noexcept;
  /// Bytes from one row of each plane to the next.
  const std::array<unsigned, 4>& strides() const noexcept;

 private:
  FrameFormat _format;
  Size _size;
  std::array<unsigned, 4> _strides;
};

/// An image of up to four planes with a format, a size in pixels and a time in milliseconds.
///
/// Copying a frame shares its pixels (cheap, reference-counted, no copy of memory); copyTo() makes a deep
/// copy. A moved-from frame is empty. One frame object serves one thread at a time; frames that share pixels
/// may live in different threads as long as nobody writes the pixels.
class ZO_CORE_API Frame {
 public:
  /// An empty frame: format ZO_FRAME_FORMAT_UNDEFINED, size 0 x 0, no planes, timestamp 0.
  Frame() noexcept;

  /// A frame over memory that already exists; nothing is copied. A format that the library knows no layout of
  /// (custom, reserved or unknown) has a plane for each stride up to the first 0, as high as the image. A
  /// size below 1, a stride too small for its row or beyond INT_MAX, more bytes than memory can hold or a
  /// null pointer gives a frame with that format and size but no planes. Throws std::bad_alloc.
  Frame(const FrameLayout& layout, const DeviceContext& context, const DevicePtr& memory);

  Frame(const Frame& other) noexcept;
  Frame(Frame&& other) noexcept;
  Frame& operator=(const Frame& other) noexcept;
  Frame& operator=(Frame&& other) noexcept;
  ~Frame();

  /// Makes the frame hold an image of that format and size. The pixels are undefined afterwards unless
  /// nothing changed; the timestamp is kept.
  ///
  /// - A format without a layout (undefined, reserved, custom or unknown) or a size below 1 is no error: the
  ///   frame records format and size and holds no planes.
  /// - Memory is kept when it is large enough and no other frame shares it; shared pixels are never
  ///   overwritten, new memory is allocated instead.
  /// - A frame over outside memory keeps that memory while format and size stay the same and nothing else
  ///   shares it; otherwise it gets memory of its own.
  ///
  /// @param alignment  Row strides become multiples of this many bytes; 0 is the default, which suits the
  ///                   widest vector unit. Each plane starts at a multiple of 64 bytes, and has room for
  ///                   one row and 64 bytes more than it holds.
  /// @throws std::bad_alloc  Too many bytes, or no memory; the frame stays as it was.
  /// Cost: nothing when format, size and alignment are unchanged.
  void reuse(FrameFormat format, Size size, const DeviceContext& context, unsigned alignment);

  /// Deep copy of format, size, pixels and timestamp into `destination`, which is reused. Copying onto
  /// itself changes nothing; copying an empty frame leaves an empty one. Two frames over outside memory must
  /// be over the same planes with the same strides, or not overlap.
  /// @throws std::bad_alloc  `destination` stays as it was.
  void copyTo(Frame& destination) const;

  /// Lets go of the memory and leaves the frame as after default construction.
  void clear() noexcept;

  /// True when pixels are attached.
  bool initialized() const noexcept;
  /// Pixel layout.
  FrameFormat format() const noexcept;
  /// Size in pixels.
  Size size() const noexcept;
  /// Number of planes: 0 when no pixels are attached, otherwise 1 to 4.
  unsigned planeCount() const noexcept;
  /// First byte of a plane, valid until the frame is reshaped, cleared or destroyed. Null for an index not
  /// below planeCount().
  unsigned char* planeData(unsigned index) noexcept;
  /// The same for reading.
  const unsigned char* planeData(unsigned index) const noexcept;
  /// Bytes from one row of a plane to the next; 0 for an index not below planeCount().
  unsigned planeStride(unsigned index) const noexcept;
  /// Bytes of a row that hold pixels (at most the stride); 0 for an index not below planeCount().
  unsigned planeRowBytes(unsigned index) const noexcept;
  /// Number of rows of a plane; 0 for an index not below planeCount().
  unsigned planeRows(unsigned index) const noexcept;

  /// True when the frame's memory was allocated by it: then the bytes between the rows are nobody else's, and
  /// at least one row and 64 bytes follow each plane. False for memory from outside, of which nothing but the
  /// pixels is known, for a format without a layout, and for a frame without pixels.
  bool hasSlack() const noexcept;

  /// Milliseconds; 0 in a fresh frame.
  long long timestamp() const noexcept;
  /// Sets the time, milliseconds.
  void setTimestamp(long long timestamp) noexcept;

 private:
  ZO_CORE_PRIVATE void attach(FrameMemory* p_memory, FrameFormat format, Size size, unsigned plane_count,
                              const std::array<unsigned, 4>& strides,
                              const std::array<std::size_t, 4>& offsets) noexcept;
  ZO_CORE_PRIVATE void detach() noexcept;
  ZO_CORE_PRIVATE void reuseLike(const Frame& other);
  ZO_CORE_PRIVATE void clearSlack(std::size_t block_bytes) noexcept;

  FrameFormat _format;
  unsigned _plane_count;  // 0 exactly when no pixel memory is attached
  Size _size;
  unsigned _alignment;  // that the strides were made for
  std::array<unsigned, 4> _strides;
  std::array<unsigned char*, 4> _planes;
  long long _timestamp;
  FrameMemory* _p_memory;  // counted reference
};

/// Copies format, size, planes and timestamp of the frame behind `p_frame->p_handle` into the record.
/// @throws zo::Exception  ZO_STATUS_NULL_POINTER: p_frame is null; ZO_STATUS_NOT_INITIALIZED: its handle is.
ZO_CORE_API void updateFrame(ZoFrame* p_frame);

}  // namespace zo

#endif
