#include "zo_frame_memory.h"

#include <cstdlib>
#include <memory>
#include <new>

#include "zo_plane_geometry.h"

namespace zo {

FrameMemory* FrameMemory::allocate(std::size_t bytes) {
  void* p_block = nullptr;
  if (posix_memalign(&p_block, PLANE_ALIGNMENT, bytes) != 0) {
    throw std::bad_alloc();
  }
  std::unique_ptr<void, void (*)(void*)> owner(p_block, &std::free);
  FrameMemory* p_memory = new FrameMemory(static_cast<unsigned char*>(p_block), bytes, DevicePtr());
  owner.release();
  return p_memory;
}

FrameMemory* FrameMemory::wrap(const DevicePtr& memory) {
  return new FrameMemory(memory.get(), 0, memory);
}

FrameMemory::FrameMemory(unsigned char* p_base, std::size_t capacity, const DevicePtr& outside) noexcept
    : _holders(1), _p_base(p_base), _capacity(capacity), _outside(outside) {}

FrameMemory::~FrameMemory() {
  if (!fromOutside()) {
    std::free(_p_base);
  }
}

}  // namespace zo
