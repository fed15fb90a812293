#ifndef ZO_TESTS_SUPPORT_ZO_TEST_EFFORT_H
#define ZO_TESTS_SUPPORT_ZO_TEST_EFFORT_H

#include <cstddef>
#include <cstdlib>

namespace zo {
namespace test {

/// How often to repeat what tests repeat only to meet more cases of the same kind: `full` times, or `quick`
/// times where ZO_TEST_QUICK is set, as it is in an emulator, which takes ten times as long for everything.
inline std::size_t repetitions(std::size_t full, std::size_t quick) {
  return std::getenv("ZO_TEST_QUICK") == nullptr ? full : quick;
}

}  // namespace test
}  // namespace zo

#endif
