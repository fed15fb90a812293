#ifndef ZO_TESTS_SUPPORT_ZO_FAILING_MEMORY_H
#define ZO_TESTS_SUPPORT_ZO_FAILING_MEMORY_H

#include <new>

namespace zo {
namespace test {

/// Whose requests for memory fail.
enum class Requests {
  OURS,      ///< operator new
  LIBRARIES  ///< malloc() and its relatives: FFmpeg, TurboJPEG, libpng, the C library, aligned pixel memory
};

/// What a failing operator new throws.
enum class Thrown { BAD_ALLOC, STANDARD_EXCEPTION, NUMBER };

/// Lets requests for memory fail while it lives, or until end(). A program that is linked with
/// zo_failing_memory replaces the allocation functions for all libraries in it. Requests of other threads are
/// served.
class MemoryShortage {
 public:
  /// Request number `first`, counted from 0, fails; with `lasting`, so do all later ones.
  MemoryShortage(Requests requests, long long first, bool lasting = false, Thrown thrown = Thrown::BAD_ALLOC);
  ~MemoryShortage();
  MemoryShortage(const MemoryShortage&) = delete;
  MemoryShortage& operator=(const MemoryShortage&) = delete;

  void end();
  /// Whether a request has failed.
  bool met() const;
};

/// False in sanitizer builds, whose own allocation functions leave no room for it.
bool librariesCanFail();

/// What this program holds at the moment.
struct HeldMemory {
  long long blocks;
  long long bytes;
};
HeldMemory heldMemory();

/// True when `body` runs out of memory with every request of operator new failing. EXPECT_THROW would
/// allocate for itself.
template <class Body>
bool runsOutOfMemory(Body&& body) {
  const MemoryShortage shortage(Requests::OURS, 0, true);
  try {
    body();
  } catch (const std::bad_alloc&) {
    return true;
  }
  return false;
}

}  // namespace test
}  // namespace zo

#endif
