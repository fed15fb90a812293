#ifndef ZO_BENCHMARKS_ZO_BENCH_JOBS_H
#define ZO_BENCHMARKS_ZO_BENCH_JOBS_H

#include <string>

#include "zo_bench_harness.h"

namespace zo {
namespace bench {

/// @param clips  The directory that make_clips.py has filled. Files made on the way are left in it.
void addReadingJobs(Jobs& jobs, const std::string& clips);
void addOpeningJobs(Jobs& jobs, const std::string& clips);
void addJumpJobs(Jobs& jobs, const std::string& clips);
void addIndexJobs(Jobs& jobs, const std::string& clips);
void addConversionJobs(Jobs& jobs);
void addImageJobs(Jobs& jobs, const std::string& clips);
void addDrawingJobs(Jobs& jobs);

}  // namespace bench
}  // namespace zo

#endif
