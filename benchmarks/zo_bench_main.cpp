#include <sched.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "zo_bench_jobs.h"

namespace {

// Some libraries start a thread per processor. With one processor to run on, everybody has one thread.
void useOneProcessor() {
  cpu_set_t set;
  if (sched_getaffinity(0, sizeof(set), &set) != 0) {
    return;
  }
  int chosen = -1;
  for (int i = 0; i < CPU_SETSIZE; ++i) {
    if (CPU_ISSET(i, &set)) {
      chosen = i;  // the last one: interrupts tend to go to the first
    }
  }
  if (chosen >= 0) {
    CPU_ZERO(&set);
    CPU_SET(chosen, &set);
    sched_setaffinity(0, sizeof(set), &set);
  }
}

int usage() {
  std::fprintf(stderr,
               "usage: zo_bench [--clips DIR] [--job PART-OF-NAME] [--contender NAME] [--rounds N] [--once] "
               "[--peak] [--list]\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  useOneProcessor();
  zo::bench::Options options;
  std::string clips = ".";
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    const char* const p_value = i + 1 < argc ? argv[i + 1] : nullptr;
    if (option == "--once") {
      options.once = true;
    } else if (option == "--peak") {
      options.peak = true;
    } else if (option == "--list") {
      options.list = true;
    } else if (p_value == nullptr) {
      return usage();
    } else {
      ++i;
      if (option == "--clips") {
        clips = p_value;
      } else if (option == "--job") {
        options.job = p_value;
      } else if (option == "--contender") {
        options.contender = p_value;
      } else if (option == "--rounds") {
        options.rounds = std::atoi(p_value);
      } else {
        return usage();
      }
    }
  }
  try {
    zo::bench::Jobs jobs;
    zo::bench::addReadingJobs(jobs, clips);
    zo::bench::addOpeningJobs(jobs, clips);
    zo::bench::addJumpJobs(jobs, clips);
    zo::bench::addIndexJobs(jobs, clips);
    zo::bench::addConversionJobs(jobs);
    zo::bench::addImageJobs(jobs, clips);
    zo::bench::addDrawingJobs(jobs);
    zo::bench::runJobs(jobs, options);
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "zo_bench: %s\n", exception.what());
    return 1;
  }
}
