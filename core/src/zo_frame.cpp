#include "zo_core/zo_frame.h"

#include <cstring>
#include <utility>

#include "zo_core/zo_exception.h"
#include "zo_frame_memory.h"
#include "zo_plane_geometry.h"

namespace zo {

FrameLayout::FrameLayout(FrameFormat format, Size size, const std::array<unsigned, 4>& strides) noexcept
    : _format(format), _size(size), _strides(strides) {}

FrameFormat FrameLayout::format() const noexcept {
  return _format;
}

Size FrameLayout::size() const noexcept {
  return _size;
}

const std::array<unsigned, 4>& FrameLayout::strides() const noexcept {
  return _strides;
}

Frame::Frame() noexcept
    : _format(ZO_FRAME_FORMAT_UNDEFINED),
      _plane_count(0),
      _alignment(0),
      _strides{},
      _planes{},
      _timestamp(0),
      _p_memory(nullptr) {}

Frame::Frame(const FrameLayout& layout, const DeviceContext&, const DevicePtr& memory) : Frame() {
  _format = layout.format();
  _size = layout.size();
  const BlockLayout block = packedLayout(_format, _size, layout.strides());
  if (block.plane_count != 0 && memory.get() != nullptr) {
    attach(FrameMemory::wrap(memory), _format, _size, block.plane_count, block.strides, block.offsets);
  }
}

Frame::Frame(const Frame& other) noexcept
    : _format(other._format),
      _plane_count(other._plane_count),
      _size(other._size),
      _alignment(other._alignment),
      _strides(other._strides),
      _planes(other._planes),
      _timestamp(other._timestamp),
      _p_memory(other._p_memory) {
  if (_p_memory != nullptr) {
    _p_memory->retain();
  }
}

Frame::Frame(Frame&& other) noexcept : Frame() {
  *this = std::move(other);
}

Frame& Frame::operator=(const Frame& other) noexcept {
  if (this != &other) {
    *this = Frame(other);
  }
  return *this;
}

Frame& Frame::operator=(Frame&& other) noexcept {
  std::swap(_format, other._format);
  std::swap(_plane_count, other._plane_count);
  std::swap(_size, other._size);
  std::swap(_alignment, other._alignment);
  std::swap(_strides, other._strides);
  std::swap(_planes, other._planes);
  std::swap(_timestamp, other._timestamp);
  std::swap(_p_memory, other._p_memory);
  if (this != &other) {
    other.clear();
  }
  return *this;
}

Frame::~Frame() {
  detach();
}

void Frame::attach(FrameMemory* p_memory, FrameFormat format, Size size, unsigned plane_count,
                   const std::array<unsigned, 4>& strides,
                   const std::array<std::size_t, 4>& offsets) noexcept {
  if (p_memory != _p_memory) {
    detach();
    _p_memory = p_memory;
  }
  _format = format;
  _size = size;
  _plane_count = plane_count;
  _strides = strides;
  for (unsigned i = 0; i < _planes.size(); ++i) {
    _planes[i] = i < plane_count ? p_memory->base() + offsets[i] : nullptr;
  }
}

void Frame::detach() noexcept {
  if (_p_memory != nullptr) {
    _p_memory->release();
    _p_memory = nullptr;
  }
  _plane_count = 0;
  _strides = {};
  _planes = {};
}

void Frame::reuse(FrameFormat format, Size size, const DeviceContext&, unsigned alignment) {
  if (formatPlaneCount(format) == 0 || size.width < 1 || size.height < 1) {
    detach();
    _format = format;
    _size = size;
    return;
  }
  const bool exclusive = _p_memory != nullptr && _p_memory->heldOnce();
  if (exclusive && format == _format && size == _size &&
      (_p_memory->fromOutside() || alignment == _alignment)) {
    return;
  }
  const BlockLayout block = allocationLayout(format, size, alignment);
  const bool fits = exclusive && !_p_memory->fromOutside() && _p_memory->capacity() >= block.bytes;
  FrameMemory* p_memory = fits ? _p_memory : FrameMemory::allocate(block.bytes);
  attach(p_memory, format, size, block.plane_count, block.strides, block.offsets);
  _alignment = alignment;
  clearSlack(block.bytes);
}

// Whoever works on pixels in vectors reads what lies beside them, and may let it show. It is not to be what
// the block's former owner left there.
void Frame::clearSlack(std::size_t block_bytes) noexcept {
  const unsigned char* const p_end = _p_memory->base() + block_bytes;
  for (unsigned i = 0; i < _plane_count; ++i) {
    const std::size_t row_bytes = planeRowBytes(i);
    const std::size_t padding = _strides[i] - row_bytes;
    unsigned char* p_row = _planes[i];
    for (unsigned row = planeRows(i); row > 1 && padding != 0; --row) {
      std::memset(p_row + row_bytes, 0, padding);
      p_row += _strides[i];
    }
    unsigned char* const p_behind = _planes[i] + std::size_t{_strides[i]} * (planeRows(i) - 1) + row_bytes;
    const unsigned char* const p_next = i + 1 < _plane_count ? _planes[i + 1] : p_end;
    std::memset(p_behind, 0, static_cast<std::size_t>(p_next - p_behind));
  }
}

// Memory for the planes of a frame whose format only its maker knows.
void Frame::reuseLike(const Frame& other) {
  const bool exclusive = _p_memory != nullptr && _p_memory->heldOnce();
  if (exclusive && _format == other._format && _size == other._size && _plane_count == other._plane_count &&
      _strides == other._strides) {
    return;
  }
  const BlockLayout block = packedLayout(other._format, other._size, other._strides);
  const std::size_t bytes = block.bytes + PLANE_ALIGNMENT;
  const bool fits = exclusive && !_p_memory->fromOutside() && _p_memory->capacity() >= bytes;
  attach(fits ? _p_memory : FrameMemory::allocate(bytes), other._format, other._size, block.plane_count,
         block.strides, block.offsets);
}

void Frame::copyTo(Frame& destination) const {
  if (this == &destination) {
    return;
  }
  if (!initialized()) {
    destination = *this;
    return;
  }
  if (formatPlaneCount(_format) != 0) {
    destination.reuse(_format, _size, DeviceContext(), 0);
  } else {
    destination.reuseLike(*this);
  }
  for (unsigned i = 0; i < _plane_count; ++i) {
    const std::size_t row_bytes = planeRowBytes(i);
    const std::size_t rows = planeRows(i);
    const std::size_t stride = _strides[i];
    const std::size_t destination_stride = destination._strides[i];
    const unsigned char* p_source = _planes[i];
    unsigned char* p_destination = destination._planes[i];
    if (p_source == p_destination) {
      continue;  // two frames over the same outside memory
    }
    if (stride == row_bytes && destination_stride == row_bytes) {
      std::memcpy(p_destination, p_source, row_bytes * rows);
      continue;
    }
    for (std::size_t row = 0; row < rows; ++row) {
      std::memcpy(p_destination + row * destination_stride, p_source + row * stride, row_bytes);
    }
  }
  destination._timestamp = _timestamp;
}

void Frame::clear() noexcept {
  detach();
  _format = ZO_FRAME_FORMAT_UNDEFINED;
  _size = Size();
  _alignment = 0;
  _timestamp = 0;
}

bool Frame::initialized() const noexcept {
  return _plane_count != 0;
}

FrameFormat Frame::format() const noexcept {
  return _format;
}

Size Frame::size() const noexcept {
  return _size;
}

unsigned Frame::planeCount() const noexcept {
  return _plane_count;
}

unsigned char* Frame::planeData(unsigned index) noexcept {
  return index < _plane_count ? _planes[index] : nullptr;
}

const unsigned char* Frame::planeData(unsigned index) const noexcept {
  return index < _plane_count ? _planes[index] : nullptr;
}

unsigned Frame::planeStride(unsigned index) const noexcept {
  return index < _plane_count ? _strides[index] : 0;
}

unsigned Frame::planeRowBytes(unsigned index) const noexcept {
  if (index >= _plane_count || formatPlaneCount(_format) == 0) {
    return planeStride(index);
  }
  return static_cast<unsigned>(planeExtent(_format, _size, index).row_bytes);
}

unsigned Frame::planeRows(unsigned index) const noexcept {
  return index < _plane_count ? static_cast<unsigned>(planeExtent(_format, _size, index).rows) : 0;
}

bool Frame::hasSlack() const noexcept {
  return _plane_count != 0 && formatPlaneCount(_format) != 0 && !_p_memory->fromOutside();
}

long long Frame::timestamp() const noexcept {
  return _timestamp;
}

void Frame::setTimestamp(long long timestamp) noexcept {
  _timestamp = timestamp;
}

}  // namespace zo
