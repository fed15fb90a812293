#include "zo_core/zo_geometry.h"

#include <algorithm>
#include <cstdint>

namespace zo {
namespace {

// Clips the span [start, start + length) to [0, limit); an empty result has length 0.
void cropSpan(int& start, int& length, int limit) {
  const int64_t bound = std::max(limit, 0);
  const int64_t begin = std::clamp<int64_t>(start, 0, bound);
  const int64_t end = std::clamp<int64_t>(static_cast<int64_t>(start) + std::max(length, 0), begin, bound);
  start = static_cast<int>(begin);
  length = static_cast<int>(end - begin);
}

}  // namespace

void Rect::crop(const Size& size) {
  cropSpan(x, width, size.width);
  cropSpan(y, height, size.height);
}

}  // namespace zo
