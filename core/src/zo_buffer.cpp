#include "zo_core/zo_buffer.h"

#include <cstring>
#include <utility>

namespace zo {

Buffer::Buffer() noexcept : _size(0), _capacity(0) {}

Buffer::Buffer(const void* p_data, unsigned size) : Buffer() {
  resize(size, false);
  if (size != 0) {
    std::memcpy(_p_data.get(), p_data, size);
  }
}

Buffer::Buffer(const Buffer& other) : Buffer(other.data(), other.size()) {}

Buffer::Buffer(Buffer&& other) noexcept : Buffer() {
  *this = std::move(other);
}

Buffer& Buffer::operator=(const Buffer& other) {
  if (this != &other) {
    resize(other._size, false);
    if (_size != 0) {
      std::memcpy(_p_data.get(), other._p_data.get(), _size);
    }
  }
  return *this;
}

Buffer& Buffer::operator=(Buffer&& other) noexcept {
  if (this != &other) {
    _p_data = std::move(other._p_data);
    _size = std::exchange(other._size, 0);
    _capacity = std::exchange(other._capacity, 0);
  }
  return *this;
}

Buffer::~Buffer() = default;

void Buffer::resize(unsigned size, bool keep) {
  if (size > _capacity) {
    std::unique_ptr<unsigned char[]> p_data(new unsigned char[size]);
    if (keep && _size != 0) {
      std::memcpy(p_data.get(), _p_data.get(), _size);
    }
    _p_data = std::move(p_data);
    _capacity = size;
  }
  _size = size;
}

void Buffer::clear() noexcept {
  _size = 0;
}

unsigned char* Buffer::data() noexcept {
  return _p_data.get();
}

const unsigned char* Buffer::data() const noexcept {
  return _p_data.get();
}

unsigned Buffer::size() const noexcept {
  return _size;
}

}  // namespace zo
