#ifndef ZO_CORE_ZO_FRAME_MEMORY_H
#define ZO_CORE_ZO_FRAME_MEMORY_H

#include <atomic>
#include <cstddef>

#include "zo_core/zo_device.h"

namespace zo {

/// The pixel memory that one or more frames share: a block of our own, or a handle to memory from outside.
///
/// Counted by hand rather than by std::shared_ptr because "am I the only holder?" has to be asked with
/// acquire ordering: only then may pixels be overwritten that another thread's frame has just let go of.
class FrameMemory {
 public:
  /// A block of `bytes` bytes, aligned to PLANE_ALIGNMENT, held once. Throws std::bad_alloc.
  static FrameMemory* allocate(std::size_t bytes);
  /// Memory from outside, held once. Throws std::bad_alloc.
  static FrameMemory* wrap(const DevicePtr& memory);

  FrameMemory(const FrameMemory&) = delete;
  FrameMemory& operator=(const FrameMemory&) = delete;

  void retain() noexcept { _holders.fetch_add(1, std::memory_order_relaxed); }
  /// Frees this object when the last holder lets go.
  void release() noexcept {
    if (_holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      delete this;
    }
  }
  bool heldOnce() const noexcept { return _holders.load(std::memory_order_acquire) == 1; }

  bool fromOutside() const noexcept { return _capacity == 0; }
  /// Bytes of a block of our own.
  std::size_t capacity() const noexcept { return _capacity; }
  unsigned char* base() const noexcept { return _p_base; }

 private:
  FrameMemory(unsigned char* p_base, std::size_t capacity, const DevicePtr& outside) noexcept;
  ~FrameMemory();

  std::atomic<int> _holders;
  unsigned char* _p_base;
  std::size_t _capacity;
  DevicePtr _outside;
};

}  // namespace zo

#endif
