#include "zo_bench_harness.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <stdexcept>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_TOGGLE_COLLECT static_cast<void>(0)
#endif

namespace zo {
namespace bench {
namespace {

// A turn that is shorter than this is repeated, so that the clock's grain does not count.
constexpr double SHORTEST_TURN_SECONDS = 0.02;
constexpr double LONG_TURN_SECONDS = 0.3;  // a first pass so long need not be done again
// Jobs that take long have fewer rounds, but not fewer than this; short ones have more.
constexpr double LONG_JOB_SECONDS = 20;  // for USUAL_ROUNDS; who asks for more rounds gets more time as well
constexpr int USUAL_ROUNDS = 9;
constexpr int FEWEST_ROUNDS = 3;
constexpr double SHORT_JOB_SECONDS = 8;
constexpr int MORE_ROUNDS = 8;  // times as many at most
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

struct Turn {
  double cpu = 0;
  double wall = 0;
};

void runSlices(const Contender& contender, int slices, Stopwatch& watch) {
  for (int i = 0; i < slices; ++i) {
    contender.run(watch);
  }
}

Turn measure(const Contender& contender, int slices, int repetitions) {
  Stopwatch watch;
  runSlices(contender, slices * repetitions, watch);
  return {watch.cpuSeconds() / repetitions, watch.wallSeconds() / repetitions};
}

// A copy of this process does it and tells the result through a pipe.
Turn measureApart(const Contender& contender, int repetitions) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw std::runtime_error("cannot make a pipe");
  }
  std::fflush(stdout);
  const pid_t child = fork();
  if (child < 0) {
    throw std::runtime_error("cannot start a process");
  }
  if (child == 0) {
    bool told = false;
    try {
      const Turn turn = measure(contender, 1, repetitions);
      told = write(ends[1], &turn, sizeof(turn)) == static_cast<ssize_t>(sizeof(turn));
    } catch (const std::exception& exception) {
      std::fprintf(stderr, "zo_bench: %s: %s\n", contender.name.c_str(), exception.what());
    }
    _exit(told ? 0 : 1);
  }
  close(ends[1]);
  Turn turn;
  const bool told = read(ends[0], &turn, sizeof(turn)) == static_cast<ssize_t>(sizeof(turn));
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (!told) {
    throw std::runtime_error("a measuring process failed");
  }
  return turn;
}

// Every contender does the job once, or as often as its turn repeats it.
void takeTurns(const Job& job, Place place, const std::vector<Contender>& contenders, std::size_t round,
               std::vector<Course>& courses) {
  bool repeated = false;
  for (Course& course : courses) {
    course.cpu.push_back(0);
    course.wall.push_back(0);
    repeated = repeated || course.repetitions > 1;
  }
  const int cuts = repeated ? 1 : job.slices;
  for (int cut = 0; cut < cuts; ++cut) {
    for (std::size_t i = 0; i < contenders.size(); ++i) {
      const std::size_t next = (i + round + static_cast<std::size_t>(cut)) % contenders.size();
      const Turn turn = place == Place::APART
                            ? measureApart(contenders[next], courses[next].repetitions)
                            : measure(contenders[next], job.slices / cuts, courses[next].repetitions);
      courses[next].cpu.back() += turn.cpu;
      courses[next].wall.back() += turn.wall;
    }
  }
}

// A first pass warms caches, checks the results and tells how often a turn has to repeat the job.
void warmUp(const Contender& contender, const Job& job, Place place, Course& course, bool repeat) {
  double once;
  if (place == Place::APART) {
    once = measureApart(contender, 1).cpu;
  } else {
    const double start = now(CLOCK_PROCESS_CPUTIME_ID);
    Stopwatch watch;
    watch.arm(repeat);
    if (contender.wrong) {
      course.wrong = contender.wrong();
    } else {
      runSlices(contender, job.slices, watch);
    }
    if (!repeat || now(CLOCK_PROCESS_CPUTIME_ID) - start > LONG_TURN_SECONDS) {
      return;
    }
    watch.reset();
    runSlices(contender, job.slices, watch);
    once = watch.cpuSeconds();
  }
  const double times = once > 0 ? SHORTEST_TURN_SECONDS / once : MOST_REPETITIONS;
  course.repetitions = 1 + static_cast<int>(std::min<double>(times, MOST_REPETITIONS));
}

void printCourse(const Contender& contender, const Course& course, const Course& basis, const Course& ours,
                 bool first) {
  const std::vector<double> against = ratios(course.cpu, basis.cpu);
  std::printf(
      "%s{\"name\": \"%s\", \"cpu_ms\": %.6g, \"wall_ms\": %.6g, \"ratio\": %.5f, \"low\": %.5f, "
      "\"high\": %.5f, \"ours\": %.5f, \"wrong\": %lld}",
      first ? "" : ", ", contender.name.c_str(), quantile(course.cpu, 0.5) * 1e3,
      quantile(course.wall, 0.5) * 1e3, quantile(against, 0.5), quantile(against, 0.25),
      quantile(against, 0.75), quantile(ratios(ours.cpu, course.cpu), 0.5), course.wrong);
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
  const Place place = options.once ? Place::SHARED : job.place;
  if (options.peak) {
    Stopwatch watch;
    for (const Contender& contender : contenders) {
      runSlices(contender, job.slices, watch);
    }
    return;
  }
  for (std::size_t i = 0; i < contenders.size(); ++i) {
    warmUp(contenders[i], job, place, courses[i], !options.once);
  }
  const int rounds = options.once ? 1 : options.rounds;
  double spent = 0;
  int round = 0;
  const double longest = LONG_JOB_SECONDS * std::max(rounds, USUAL_ROUNDS) / USUAL_ROUNDS;
  const auto enough = [&] {
    if (options.once || options.rounds < FEWEST_ROUNDS) {
      return round >= rounds;
    }
    return round < rounds ? round >= FEWEST_ROUNDS && spent > longest
                          : round >= MORE_ROUNDS * rounds || spent > SHORT_JOB_SECONDS;
  };
  for (; !enough(); ++round) {
    takeTurns(job, place, contenders, static_cast<std::size_t>(round), courses);
    for (const Course& course : courses) {
      spent += course.cpu.back() * course.repetitions;
    }
  }
  std::printf("{\"group\": \"%s\", \"job\": \"%s\", \"rounds\": %d, \"contenders\": [", job.group.c_str(),
              job.name.c_str(), round);
  std::size_t ours = 0;
  while (ours + 1 < contenders.size() && contenders[ours].name != "ours") {
    ++ours;
  }
  for (std::size_t i = 0; i < contenders.size(); ++i) {
    printCourse(contenders[i], courses[i], courses[0], courses[ours], i == 0);
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
