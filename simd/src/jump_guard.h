#ifndef SIMD_SRC_JUMP_GUARD_H
#define SIMD_SRC_JUMP_GUARD_H

#include <csetjmp>

namespace Simd {
namespace Detail {

/// Where a C library's error handler jumps to.
struct JumpPoint {
  jmp_buf buffer;
};

/// Runs calls into a C library that reports errors by jumping out of them. False when it did. A jump runs no
/// destructors: the body keeps nothing but plain values, and everything it works on has an owner outside.
template <class Body>
__attribute__((noinline)) bool runGuarded(JumpPoint& point, const Body& body) {
  if (setjmp(point.buffer) != 0) {
    return false;
  }
  body();
  return true;
}

}  // namespace Detail
}  // namespace Simd

#endif
