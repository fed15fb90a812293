// Opening with navigation: with an index made anew and with one from the navigation file.
#include <memory>

#include "zo_bench_bare.h"
#include "zo_bench_jobs.h"
#include "zo_bench_peers.h"
#include "zo_video/zo_video.h"

namespace zo {
namespace bench {
namespace {

void passBare(const std::string& path, Stopwatch& watch) {
  watch.start();
  BareReader(path).readPackets();
  watch.stop();
}

void openOnlyBare(const std::string& path, Stopwatch& watch) {
  watch.start();
  { BareReader reader(path); }
  watch.stop();
}

void open(const std::string& path, bool use_navigation_cache, Stopwatch& watch) {
  watch.start();
  {
    VideoReader reader;
    reader.open(path.c_str(), -1, nullptr, true, false, use_navigation_cache);
  }
  watch.stop();
}

}  // namespace

void addOpeningJobs(Jobs& jobs, const std::string& clips) {
  for (const char* p_name :
       {"open_10min.mp4", "open_10min.mkv", "open_2h.mp4", "open_2h.mkv", "sequential_h264.mp4"}) {
    const std::string path = clips + "/" + p_name;
    jobs.push_back({"open, fresh index", p_name,
                    [=] {
                      std::vector<Contender> contenders = {
                          {"bare", [=](Stopwatch& watch) { passBare(path, watch); }},
                          {"ours", [=](Stopwatch& watch) { open(path, false, watch); }}};
                      if (haveFfms()) {
                        contenders.push_back({"FFMS2", [=](Stopwatch& watch) {
                                                watch.start();
                                                openFfms(path);
                                                watch.stop();
                                              }});
                      }
                      return contenders;
                    },
                    Place::APART});
  }
  for (const Place place : {Place::SHARED, Place::APART}) {
    for (const char* p_name : {"open_10min.mp4", "open_10min.mkv", "open_2h.mp4", "open_2h.mkv"}) {
      const std::string path = clips + "/" + p_name;
      const std::string name = std::string(p_name) + (place == Place::APART ? ", first in its process" : "");
      jobs.push_back({"open, saved index", name,
                      [=]() -> std::vector<Contender> {
                        VideoReader().open(path.c_str(), -1, nullptr, true, false, true);  // leaves the file
                        return {{"fresh index", [=](Stopwatch& watch) { open(path, false, watch); }},
                                {"ours", [=](Stopwatch& watch) { open(path, true, watch); }},
                                {"bare open", [=](Stopwatch& watch) { openOnlyBare(path, watch); }}};
                      },
                      place});
    }
  }
}

}  // namespace bench
}  // namespace zo
