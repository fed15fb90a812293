#include "zo_core/zo_device.h"

#include <utility>

namespace zo {

DevicePtr::DevicePtr() noexcept : _p_base(nullptr) {}
DevicePtr::DevicePtr(void* p_base) noexcept : _p_base(static_cast<unsigned char*>(p_base)) {}
DevicePtr::DevicePtr(std::shared_ptr<void> p_owner) noexcept
    : _p_owner(std::move(p_owner)), _p_base(static_cast<unsigned char*>(_p_owner.get())) {}

DevicePtr::DevicePtr(const DevicePtr&) noexcept = default;
DevicePtr& DevicePtr::operator=(const DevicePtr&) noexcept = default;
DevicePtr::~DevicePtr() = default;

DevicePtr::DevicePtr(DevicePtr&& other) noexcept
    : _p_owner(std::move(other._p_owner)), _p_base(std::exchange(other._p_base, nullptr)) {}

DevicePtr& DevicePtr::operator=(DevicePtr&& other) noexcept {
  if (this != &other) {
    _p_owner = std::move(other._p_owner);
    _p_base = std::exchange(other._p_base, nullptr);
  }
  return *this;
}

unsigned char* DevicePtr::get() const noexcept {
  return _p_base;
}

}  // namespace zo
