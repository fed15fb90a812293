#ifndef ZO_VIDEO_SRC_ZO_SATURATING_H
#define ZO_VIDEO_SRC_ZO_SATURATING_H

#include <cstdint>

namespace zo {

// Times come from files, "no time" among them, which is the smallest 64-bit value: sums and differences are
// clamped to the 64-bit range.

inline int64_t saturatingAdd(int64_t a, int64_t b) {
  int64_t result;
  if (__builtin_add_overflow(a, b, &result)) {
    return b < 0 ? INT64_MIN : INT64_MAX;
  }
  return result;
}

inline int64_t saturatingSubtract(int64_t a, int64_t b) {
  int64_t result;
  if (__builtin_sub_overflow(a, b, &result)) {
    return b < 0 ? INT64_MAX : INT64_MIN;
  }
  return result;
}

}  // namespace zo

#endif
