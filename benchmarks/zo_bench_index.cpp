// The frame index by itself: building, loading and searching it, as it grows.
#include <fstream>
#include <memory>

#include "zo_bench_jobs.h"
#include "zo_video/zo_navigation_cache.h"
#include "zo_video/zo_packet_index.h"

namespace zo {
namespace bench {
namespace {

constexpr std::size_t BASE = 10000;

// Packets as a stream with three B-frames in a row has them: in coding order, a key frame every 48.
std::shared_ptr<std::vector<unsigned>> makePackets(std::size_t count) {
  auto p_packets = std::make_shared<std::vector<unsigned>>();
  const int order[] = {4, 2, 1, 3};
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t number = i == 0 ? 0 : (i - 1) / 4 * 4 + static_cast<std::size_t>(order[(i - 1) % 4]);
    const unsigned time = static_cast<unsigned>(number * 512);
    p_packets->push_back(time | (i % 48 == 0 ? PACKET_KEY_FLAG : 0));
  }
  return p_packets;
}

std::vector<unsigned> build(const std::vector<unsigned>& packets) {
  std::vector<unsigned> words;
  words.reserve(packets.size());  // as the reader does
  PacketIndexBuilder builder(words);
  for (const unsigned packet : packets) {
    builder.add(packetTime(packet), isKeyPacket(packet));
  }
  builder.finish();
  return words;
}

std::string label(std::size_t count) {
  return std::to_string(count);
}

std::vector<Contender> building() {
  std::vector<Contender> contenders;
  for (std::size_t count = BASE; count <= 100 * BASE; count *= 10) {
    const auto p_packets = makePackets(count);
    contenders.push_back({label(count), [=](Stopwatch& watch) {
                            watch.start();
                            build(*p_packets);
                            watch.stop();
                          }});
  }
  return contenders;
}

std::string savedIndex(const std::string& clips, std::size_t count) {
  const std::string path = clips + "/index_" + label(count) + ".zo";
  saveNavigationCache(path, build(*makePackets(count)));
  return path;
}

std::vector<Contender> loading(const std::string& clips) {
  std::vector<Contender> contenders;
  for (std::size_t count = BASE; count <= 100 * BASE; count *= 10) {
    const std::string path = savedIndex(clips, count);
    contenders.push_back({label(count), [=](Stopwatch& watch) {
                            watch.start();
                            std::vector<unsigned> words;
                            loadNavigationCache(path, words);
                            watch.stop();
                          }});
  }
  return contenders;
}

std::vector<Contender> saving(const std::string& clips) {
  std::vector<Contender> contenders;
  for (std::size_t count = BASE; count <= 100 * BASE; count *= 10) {
    const auto p_words = std::make_shared<std::vector<unsigned>>(build(*makePackets(count)));
    const std::string path = clips + "/index_saved_" + label(count) + ".zo";
    contenders.push_back({label(count), [=](Stopwatch& watch) {
                            watch.start();
                            saveNavigationCache(path, *p_words);
                            watch.stop();
                          }});
  }
  return contenders;
}

std::vector<Contender> parsing(const std::string& clips) {
  const std::string path = savedIndex(clips, 216000);
  return {{"stream extraction",
           [=](Stopwatch& watch) {
             watch.start();
             std::vector<unsigned> words;
             std::ifstream file(path);
             for (unsigned word; file >> word;) {
               words.push_back(word);
             }
             watch.stop();
           }},
          {"ours", [=](Stopwatch& watch) {
             watch.start();
             std::vector<unsigned> words;
             loadNavigationCache(path, words);
             watch.stop();
           }}};
}

}  // namespace

void addIndexJobs(Jobs& jobs, const std::string& clips) {
  jobs.push_back({"index size", "building", [] { return building(); }});
  jobs.push_back({"index size", "loading", [=] { return loading(clips); }});
  jobs.push_back({"index size", "saving", [=] { return saving(clips); }});
  jobs.push_back({"index parsing", "216000 entries", [=] { return parsing(clips); }});
}

}  // namespace bench
}  // namespace zo
