#ifndef ZO_BENCHMARKS_ZO_BENCH_HARNESS_H
#define ZO_BENCHMARKS_ZO_BENCH_HARNESS_H

#include <functional>
#include <string>
#include <vector>

namespace zo {
namespace bench {

/// Measures what lies between start() and stop(): processor time of the whole process, and wall time. Under
/// callgrind only that part is counted.
class Stopwatch {
 public:
  void start();
  void stop();
  void reset() { _cpu = _wall = 0; }
  /// From now on start() and stop() do nothing or, again, what they are for.
  void arm(bool armed) { _armed = armed; }

  double cpuSeconds() const { return _cpu; }
  double wallSeconds() const { return _wall; }

 private:
  bool _armed = true;
  double _cpu = 0;
  double _wall = 0;
  double _cpu_start = 0;
  double _wall_start = 0;
};

/// One way of doing a job. Run as often as the job has slices it does all of it once, with the watch running
/// where it counts.
struct Contender {
  std::string name;  // the first contender of a job is what the others are measured against
  std::function<void(Stopwatch&)> run;
  /// Counts wrong results; without it there is nothing to check.
  std::function<long long()> wrong = nullptr;
};

/// Where the contenders of a job are measured.
enum class Place {
  SHARED,  // all in one process, turn by turn
  APART    // every turn in a process of its own, so that nobody works in a heap that others have left behind
};

struct Job {
  std::string group;
  std::string name;
  /// Opens what the job needs. Called only when the job is really done.
  std::function<std::vector<Contender>()> prepare;
  Place place = Place::SHARED;
  /// Contenders take turns slice by slice. What else the machine does changes within seconds, so turns that
  /// take long are cut.
  int slices = 1;
};

using Jobs = std::vector<Job>;

struct Options {
  std::string job;        // part of "group/name"
  std::string contender;  // exact name
  int rounds = 9;
  bool once = false;  // after one run that is not measured exactly one that is
  bool peak = false;  // one run of each, then print the process's peak memory
  bool list = false;
};

/// Does the jobs and prints one JSON object per job and line. In each round every contender gets its turn,
/// beginning with another one each time, so that whatever else the machine does meets all of them alike; what
/// is reported are medians over the rounds, of times and of ratios within a round.
void runJobs(const Jobs& jobs, const Options& options);

}  // namespace bench
}  // namespace zo

#endif
