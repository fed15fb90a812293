// The allocation functions of test programs that want memory to run out. Behind them are the C library's own,
// under the names that it has for that: asking dlsym() for them would allocate in older C libraries.
#include "zo_failing_memory.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>

#ifdef ZO_TEST_LIBRARIES_CAN_FAIL
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* p_block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* p_block);
}
#endif

namespace zo {
namespace test {
namespace {

struct Plan {
  bool active = false;
  bool lasting = false;
  bool met = false;
  Requests requests = Requests::OURS;
  Thrown thrown = Thrown::BAD_ALLOC;
  long long requests_left = 0;
};

thread_local Plan plan;

// Whether this request is to fail.
bool fails(Requests requests) {
  if (!plan.active || plan.requests != requests) {
    return false;
  }
  if (plan.requests_left > 0) {
    --plan.requests_left;
    return false;
  }
  plan.active = plan.lasting;
  plan.met = true;
  return true;
}

std::atomic<long long> held_blocks{0};
std::atomic<long long> held_bytes{0};

void* taken(void* p_block) {
  if (p_block != nullptr) {
    held_blocks.fetch_add(1, std::memory_order_relaxed);
    held_bytes.fetch_add(static_cast<long long>(malloc_usable_size(p_block)), std::memory_order_relaxed);
  }
  return p_block;
}

void givenBack(void* p_block) {
  if (p_block != nullptr) {
    held_blocks.fetch_sub(1, std::memory_order_relaxed);
    held_bytes.fetch_sub(static_cast<long long>(malloc_usable_size(p_block)), std::memory_order_relaxed);
  }
}

#ifdef ZO_TEST_LIBRARIES_CAN_FAIL

void* refused() {
  errno = ENOMEM;
  return nullptr;
}

void* plainMalloc(std::size_t size) {
  return __libc_malloc(size);
}
void plainFree(void* p_block) {
  __libc_free(p_block);
}

#else

void* plainMalloc(std::size_t size) {
  return std::malloc(size);
}
void plainFree(void* p_block) {
  std::free(p_block);
}

#endif

void* allocateForNew(std::size_t size) {
  if (fails(Requests::OURS)) {
    switch (plan.thrown) {
      case Thrown::BAD_ALLOC:
        throw std::bad_alloc();
      case Thrown::STANDARD_EXCEPTION:
        throw std::runtime_error("something strange");
      case Thrown::NUMBER:
        throw 42;
    }
  }
  void* p_block = taken(plainMalloc(size == 0 ? 1 : size));
  if (p_block == nullptr) {
    throw std::bad_alloc();
  }
  return p_block;
}

void* allocateForNothrowNew(std::size_t size) {
  return fails(Requests::OURS) ? nullptr : taken(plainMalloc(size == 0 ? 1 : size));
}

void freeForDelete(void* p_block) {
  givenBack(p_block);
  plainFree(p_block);
}

}  // namespace

MemoryShortage::MemoryShortage(Requests requests, long long first, bool lasting, Thrown thrown) {
  plan = Plan{true, lasting, false, requests, thrown, first};
}

MemoryShortage::~MemoryShortage() {
  end();
}

void MemoryShortage::end() {
  plan.active = false;
}

bool MemoryShortage::met() const {
  return plan.met;
}

bool librariesCanFail() {
#ifdef ZO_TEST_LIBRARIES_CAN_FAIL
  return true;
#else
  return false;
#endif
}

HeldMemory heldMemory() {
  return {held_blocks.load(), held_bytes.load()};
}

}  // namespace test
}  // namespace zo

using namespace zo::test;

// NOLINTBEGIN: the whole program allocates through these. They are not inlined: the compiler would see
// malloc() and delete, or new and free(), meet in one function.
#define ZO_REPLACEMENT __attribute__((noinline, visibility("default")))

ZO_REPLACEMENT void* operator new(std::size_t size) {
  return allocateForNew(size);
}
ZO_REPLACEMENT void* operator new[](std::size_t size) {
  return allocateForNew(size);
}
ZO_REPLACEMENT void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocateForNothrowNew(size);
}
ZO_REPLACEMENT void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocateForNothrowNew(size);
}
ZO_REPLACEMENT void operator delete(void* p_block) noexcept {
  freeForDelete(p_block);
}
ZO_REPLACEMENT void operator delete[](void* p_block) noexcept {
  freeForDelete(p_block);
}
ZO_REPLACEMENT void operator delete(void* p_block, std::size_t) noexcept {
  freeForDelete(p_block);
}
ZO_REPLACEMENT void operator delete[](void* p_block, std::size_t) noexcept {
  freeForDelete(p_block);
}
ZO_REPLACEMENT void operator delete(void* p_block, const std::nothrow_t&) noexcept {
  freeForDelete(p_block);
}
ZO_REPLACEMENT void operator delete[](void* p_block, const std::nothrow_t&) noexcept {
  freeForDelete(p_block);
}

#ifdef ZO_TEST_LIBRARIES_CAN_FAIL

extern "C" {

ZO_REPLACEMENT void* malloc(std::size_t size) {
  return fails(Requests::LIBRARIES) ? refused() : taken(plainMalloc(size));
}

ZO_REPLACEMENT void* calloc(std::size_t count, std::size_t size) {
  return fails(Requests::LIBRARIES) ? refused() : taken(__libc_calloc(count, size));
}

ZO_REPLACEMENT void* realloc(void* p_block, std::size_t size) {
  if (fails(Requests::LIBRARIES)) {
    return refused();
  }
  givenBack(p_block);
  void* p_moved = __libc_realloc(p_block, size);
  if (p_moved == nullptr && size != 0) {
    taken(p_block);
  }
  return taken(p_moved);
}

ZO_REPLACEMENT int posix_memalign(void** pp_block, std::size_t alignment, std::size_t size) {
  if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0 || alignment == 0) {
    return EINVAL;
  }
  void* p_block = fails(Requests::LIBRARIES) ? nullptr : taken(__libc_memalign(alignment, size));
  if (p_block == nullptr) {
    return ENOMEM;
  }
  *pp_block = p_block;
  return 0;
}

ZO_REPLACEMENT void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return fails(Requests::LIBRARIES) ? refused() : taken(__libc_memalign(alignment, size));
}

ZO_REPLACEMENT void* memalign(std::size_t alignment, std::size_t size) {
  return fails(Requests::LIBRARIES) ? refused() : taken(__libc_memalign(alignment, size));
}

ZO_REPLACEMENT void free(void* p_block) {
  givenBack(p_block);
  plainFree(p_block);
}

}  // extern "C"

#endif
// NOLINTEND
