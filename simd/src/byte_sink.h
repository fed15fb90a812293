#ifndef SIMD_SRC_BYTE_SINK_H
#define SIMD_SRC_BYTE_SINK_H

#include <cstddef>
#include <cstdint>

#include "image.h"

namespace Simd {
namespace Detail {

/// Where an encoder writes a file's bytes. Nothing here throws.
class ByteSink {
 public:
  /// Makes room for that many bytes altogether. False without memory; what was written stays.
  bool reserve(size_t capacity) noexcept;

  /// False without memory.
  bool append(const void* p_bytes, size_t size) noexcept;

  /// For encoders that write by themselves: the free room, and how much of it was used.
  uint8_t* end() noexcept { return _bytes.get() + _size; }
  size_t room() const noexcept { return _capacity - _size; }
  void advance(size_t size) noexcept { _size += size; }
  /// Makes the free room larger, by at least half of what there is.
  bool grow(size_t at_least) noexcept;

  size_t size() const noexcept { return _size; }
  const uint8_t* data() const noexcept { return _bytes.get(); }

  /// Hands the bytes over to the caller.
  uint8_t* release(size_t* p_size) noexcept;

 private:
  Memory _bytes;
  size_t _size = 0;
  size_t _capacity = 0;
};

}  // namespace Detail
}  // namespace Simd

#endif
