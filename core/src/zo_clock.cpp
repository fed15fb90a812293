#include "zo_core/zo_clock.h"

#include <chrono>

namespace zo {

long long getMonotonicTimeMs() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace zo
