#ifndef ZO_BENCHMARKS_ZO_BENCHMARK_H
#define ZO_BENCHMARKS_ZO_BENCHMARK_H

// Two ways to do the same: ratios of processor time, medians of rounds in which both take turns, so that a
// machine that is busy or slow disturbs both alike.

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

namespace zo {
namespace benchmark {

constexpr int ROUNDS = 41;

inline double processorSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

inline double secondsOf(const std::function<void()>& work) {
  const double start = processorSeconds();
  work();
  return processorSeconds() - start;
}

inline double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

/// Prints a line: name, milliseconds of `ours` and of `bare`, their ratio.
inline void compare(const char* p_name, const std::function<void()>& ours,
                    const std::function<void()>& bare) {
  ours();
  bare();
  std::vector<double> ours_ms;
  std::vector<double> bare_ms;
  std::vector<double> ratios;
  for (int round = 0; round < ROUNDS; ++round) {
    const bool first = round % 2 == 0;
    const double a = secondsOf(first ? ours : bare);
    const double b = secondsOf(first ? bare : ours);
    ours_ms.push_back(1000 * (first ? a : b));
    bare_ms.push_back(1000 * (first ? b : a));
    ratios.push_back(ours_ms.back() / bare_ms.back());
  }
  std::printf("%-40s %8.3f %8.3f %7.4f\n", p_name, median(ours_ms), median(bare_ms), median(ratios));
}

}  // namespace benchmark
}  // namespace zo

#endif
