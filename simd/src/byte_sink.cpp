#include "byte_sink.h"

#include <algorithm>
#include <cstring>

namespace Simd {
namespace Detail {

bool ByteSink::reserve(size_t capacity) noexcept {
  if (capacity <= _capacity) {
    return true;
  }
  void* p_moved = realloc(_bytes.get(), capacity);
  if (p_moved == nullptr) {
    return false;
  }
  static_cast<void>(_bytes.release());
  _bytes.reset(static_cast<uint8_t*>(p_moved));
  _capacity = capacity;
  return true;
}

bool ByteSink::grow(size_t at_least) noexcept {
  const size_t more = std::max(at_least, _capacity / 2);
  return _capacity <= SIZE_MAX - more && reserve(_capacity + more);
}

bool ByteSink::append(const void* p_bytes, size_t size) noexcept {
  if (size > room() && !grow(size)) {
    return false;
  }
  memcpy(end(), p_bytes, size);
  _size += size;
  return true;
}

uint8_t* ByteSink::release(size_t* p_size) noexcept {
  *p_size = _size;
  return _bytes.release();
}

}  // namespace Detail
}  // namespace Simd
