#ifndef ZO_CORE_ZO_BUFFER_H
#define ZO_CORE_ZO_BUFFER_H

#include <memory>

#include "zo_core/zo_export.h"

namespace zo {

/// An owned, growable byte array, for example an encoded image. One thread at a time.
class ZO_CORE_API Buffer {
 public:
  /// Empty, without memory.
  Buffer() noexcept;
  /// A copy of `size` bytes at `p_data` (which may be null when size is 0). Throws std::bad_alloc.
  Buffer(const void* p_data, unsigned size);

  Buffer(const Buffer& other);
  Buffer(Buffer&& other) noexcept;
  Buffer& operator=(const Buffer& other);
  Buffer& operator=(Buffer&& other) noexcept;
  ~Buffer();

  /// Makes the buffer `size` bytes long. With `keep` the bytes up to the smaller of both sizes survive,
  /// otherwise all are undefined. Memory is only allocated when the buffer grows beyond what it ever was.
  /// @throws std::bad_alloc  The buffer stays as it was.
  void resize(unsigned size, bool keep);

  /// Makes the buffer empty. The memory is kept for the next use.
  void clear() noexcept;

  /// First byte; null while nothing was ever stored.
  unsigned char* data() noexcept;
  /// The same for reading.
  const unsigned char* data() const noexcept;
  /// Length in bytes.
  unsigned size() const noexcept;

 private:
  std::unique_ptr<unsigned char[]> _p_data;
  unsigned _size;
  unsigned _capacity;
};

}  // namespace zo

#endif
