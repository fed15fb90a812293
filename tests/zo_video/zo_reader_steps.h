#ifndef ZO_TESTS_ZO_VIDEO_ZO_READER_STEPS_H
#define ZO_TESTS_ZO_VIDEO_ZO_READER_STEPS_H

#include <string>
#include <vector>

#include "zo_core/zo_interrupt.h"
#include "zo_video/zo_video_reader.h"

namespace zo {
namespace test {

/// One delivery of a reader.
struct Delivery {
  Frame frame;  ///< empty where the decoder gave no picture
  long long index = -1;
  long long timestamp = 0;
};

/// Opens without navigation, budget or error skipping.
int openPlainly(VideoReader& reader, const std::string& url);

/// Reads up to the end of the stream, or until `most` frames are there. Checks at each step that frame and
/// reader tell the same time, that indices count up and that a read reports success.
std::vector<Delivery> readAll(VideoReader& reader, std::size_t most = 100000);

/// The numbers that the pictures carry; -1 for an empty frame.
std::vector<int> numbersOf(const std::vector<Delivery>& deliveries);
std::vector<long long> timesOf(const std::vector<Delivery>& deliveries);

/// 0, 1, ... count - 1.
std::vector<int> countTo(int count);

/// Asks to stop from its poll number `limit` on (counted from 1); never with 0. Counts the polls.
class StopAfter : public IInterruptable {
 public:
  explicit StopAfter(int limit) : _limit(limit) {}
  int isInterrupted() override {
    ++polls;
    return _limit != 0 && polls >= _limit ? 1 : 0;
  }

  int polls = 0;

 private:
  int _limit;
};

}  // namespace test
}  // namespace zo

#endif
