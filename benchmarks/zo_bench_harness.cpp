#include "zo_bench_harness.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_TOGGLE_COLLECT static_cast<void>(0)
#endif

namespace zo {
namespace bench {
namespace {

// A turn that is shorter than this is repeated, so that the clock's grain does not count.
constexpr double SHORTEST_TURN_SECONDS = 0.08;
constexpr double LONG_TURN_SECONDS = 0.3;
// Jobs that take long have fewer rounds, but not fewer than this.
constexpr double LONG_JOB_SECONDS = 20;
constexpr int FEWEST_ROUNDS = 3;
constexpr int MOST_REPETITIONS = 20000;

double now(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double quantile(std::vector<double> values, double q) {
  if (values.empty()) {
    return 0;
  }
  std::sort(values.begin(), values.end());
  const double place = q * static_cast<double>(values.size() - 1);
  const std::size_t below = static_cast<std::size_t>(place);
  const std::size_t above = std::min(below + 1, values.size() - 1);
  return values[below] + (values[above] - values[below]) * (place - static_cast<double>(below));
}

struct Course {
  int repetitions = 1;
  std::vector<double> cpu;
  std::vector<double> wall;
  long long wrong = -1;
};

std::vector<double> ratios(const std::vector<double>& values, const std::vector<double>& basis) {
  std::vector<double> result;
  for (std::size_t i = 0; i < values.size(); ++i) {
    result.push_back(basis[i] > 0 ? values[i] / basis[i] : 0);
  }
  return result;
}

void takeTurn(const Contender& contender, Course& course) {
  Stopwatch watch;
  for (int i = 0; i < course.repetitions; ++i) {
    contender.run(watch);
  }
  course.cpu.push_back(watch.cpuSeconds() / course.repetitions);
  course.wall.push_back(watch.wallSeconds() / course.repetitions);
}

// A first pass warms caches, checks the results and tells how often a turn has to repeat the job.
void warmUp(const Contender& contender, Course& course, bool repeat) {
  const double start = now(CLOCK_PROCESS_CPUTIME_ID);
  Stopwatch watch;
  watch.arm(repeat);
  if (contender.wrong) {
    course.wrong = contender.wrong();
  } else {
    contender.run(watch);
  }
  if (!repeat || now(CLOCK_PROCESS_CPUTIME_ID) - start > LONG_TURN_SECONDS) {
    return;
  }
  watch.reset();
  contender.run(watch);
  const double once = watch.cpuSeconds();
  const double times = once > 0 ? SHORTEST_TURN_SECONDS / once : MOST_REPETITIONS;
  course.repetitions = 1 + static_cast<int>(std::min<double>(times, MOST_REPETITIONS));
}

void printCourse(const Contender& contender, const Course& course, const Course& basis, bool first) {
  const std::vector<double> against = ratios(course.cpu, basis.cpu);
  std::printf(
      "%s{\"name\": \"%s\", \"cpu_ms\": %.6g, \"wall_ms\": %.6g, \"ratio\": %.5f, \"low\": %.5f, "
      "\"high\": %.5f, \"wrong\": %lld}",
      first ? "" : ", ", contender.name.c_str(), quantile(course.cpu, 0.5) * 1e3,
      quantile(course.wall, 0.5) * 1e3, quantile(against, 0.5), quantile(against, 0.25),
      quantile(against, 0.75), course.wrong);
}

void runJob(const Job& job, const Options& options) {
  std::vector<Contender> contenders = job.prepare();
  if (!options.contender.empty()) {
    contenders.erase(std::remove_if(contenders.begin(), contenders.end(),
                                    [&](const Contender& c) { return c.name != options.contender; }),
                     contenders.end());
  }
  if (contenders.empty()) {
    return;
  }
  std::vector<Course> courses(contenders.size());
  if (options.peak) {
    Stopwatch watch;
    for (const Contender& contender : contenders) {
      contender.run(watch);
    }
    return;
  }
  for (std::size_t i = 0; i < contenders.size(); ++i) {
    warmUp(contenders[i], courses[i], !options.once);
  }
  const int rounds = options.once ? 1 : options.rounds;
  const double start = now(CLOCK_PROCESS_CPUTIME_ID);
  int round = 0;
  for (; round < rounds; ++round) {
    if (round >= FEWEST_ROUNDS && now(CLOCK_PROCESS_CPUTIME_ID) - start > LONG_JOB_SECONDS) {
      break;
    }
    for (std::size_t i = 0; i < contenders.size(); ++i) {
      const std::size_t turn = (i + static_cast<std::size_t>(round)) % contenders.size();
      takeTurn(contenders[turn], courses[turn]);
    }
  }
  std::printf("{\"group\": \"%s\", \"job\": \"%s\", \"rounds\": %d, \"contenders\": [", job.group.c_str(),
              job.name.c_str(), round);
  for (std::size_t i = 0; i < contenders.size(); ++i) {
    printCourse(contenders[i], courses[i], courses[0], i == 0);
  }
  std::printf("]}\n");
  std::fflush(stdout);
}

void printPeak() {
  std::FILE* const p_file = std::fopen("/proc/self/status", "r");
  if (p_file == nullptr) {
    return;
  }
  char line[256];
  while (std::fgets(line, sizeof(line), p_file) != nullptr) {
    if (std::strncmp(line, "VmHWM:", 6) == 0 || std::strncmp(line, "Threads:", 8) == 0) {
      std::fputs(line, stdout);
    }
  }
  std::fclose(p_file);
}

}  // namespace

void Stopwatch::start() {
  if (!_armed) {
    return;
  }
  _wall_start = now(CLOCK_MONOTONIC);
  _cpu_start = now(CLOCK_PROCESS_CPUTIME_ID);
  CALLGRIND_TOGGLE_COLLECT;
}

void Stopwatch::stop() {
  if (!_armed) {
    return;
  }
  CALLGRIND_TOGGLE_COLLECT;
  _cpu += now(CLOCK_PROCESS_CPUTIME_ID) - _cpu_start;
  _wall += now(CLOCK_MONOTONIC) - _wall_start;
}

void runJobs(const Jobs& jobs, const Options& options) {
  for (const Job& job : jobs) {
    const std::string name = job.group + "/" + job.name;
    if (name.find(options.job) == std::string::npos) {
      continue;
    }
    if (options.list) {
      std::printf("%s\n", name.c_str());
    } else {
      runJob(job, options);
    }
  }
  if (options.peak) {
    printPeak();
  }
}

}  // namespace bench
}  // namespace zo
