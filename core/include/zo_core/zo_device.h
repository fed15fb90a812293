#ifndef ZO_CORE_ZO_DEVICE_H
#define ZO_CORE_ZO_DEVICE_H

#include <memory>

#include "zo_core/zo_export.h"

namespace zo {

/// Names the memory that a frame's pixels live in. The default one, ordinary host memory, is the only one.
class DeviceContext {};

/// A shared handle to pixel memory that was made outside the frame classes.
///
/// Copies share the memory. With an owner, the memory is freed when the last copy (and the last frame over
/// it) is gone; without one, the caller keeps it alive for as long as any frame uses it.
class ZO_CORE_API DevicePtr {
 public:
  /// No memory.
  DevicePtr() noexcept;
  /// Memory at p_base that somebody else owns.
  explicit DevicePtr(void* p_base) noexcept;
  /// Memory at p_owner.get(), kept alive by this handle and its copies.
  explicit DevicePtr(std::shared_ptr<void> p_owner) noexcept;

  DevicePtr(const DevicePtr&) noexcept;
  DevicePtr(DevicePtr&&) noexcept;
  DevicePtr& operator=(const DevicePtr&) noexcept;
  DevicePtr& operator=(DevicePtr&&) noexcept;
  ~DevicePtr();

  /// First byte of the memory, or null.
  unsigned char* get() const noexcept;

 private:
  std::shared_ptr<void> _p_owner;
  unsigned char* _p_base;
};

}  // namespace zo

#endif
