#include "zo_packet_index.h"

#include <algorithm>

namespace zo {
namespace {

bool earlier(unsigned a, unsigned b) {
  return packetTime(a) < packetTime(b);
}

// Rounding to coarse ticks makes steps differ a little; a missing frame makes one twice as long.
bool samePace(unsigned shortest, unsigned longest) {
  return uint64_t{2} * longest < uint64_t{3} * shortest;
}

}  // namespace

std::size_t sortLastTimestamp(std::vector<unsigned>& timestamps) {
  if (timestamps.size() < 2) {
    return 0;
  }
  const std::size_t last = timestamps.size() - 1;
  std::size_t position = last;
  const unsigned word = timestamps[last];
  while (position > 0 && earlier(word, timestamps[position - 1])) {
    timestamps[position] = timestamps[position - 1];
    --position;
  }
  timestamps[position] = word;
  return last - position;
}

void PacketIndexBuilder::place(int64_t relative_time) {
  if (_deferred) {
    // A time beyond 31 bits stays where it was appended, behind everything that came before it. Sorting later
    // would move it, so the words are put in order now and insertion goes on as usual.
    if (relative_time > static_cast<int64_t>(PACKET_TIME_MASK)) {
      const unsigned word = _words.back();
      _words.pop_back();
      finish();
      _words.push_back(word);
    }
    return;
  }
  _steps += sortLastTimestamp(_words);
  if (_steps > _step_limit) {
    _step_limit *= 2;
    _deferred = indexOrder(_words) != IndexOrder::UNORDERED;
  }
}

void PacketIndexBuilder::finish() {
  if (_deferred) {
    std::stable_sort(_words.begin(), _words.end(), &earlier);
    _deferred = false;
  }
}

IndexOrder indexOrder(const std::vector<unsigned>& words) {
  bool strict = true;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const unsigned before = packetTime(words[i - 1]);
    const unsigned after = packetTime(words[i]);
    if (after < before) {
      return IndexOrder::UNORDERED;
    }
    strict = strict && before != after;
  }
  return strict ? IndexOrder::STRICT_ASCENDING : IndexOrder::ASCENDING;
}

long long findPacketTime(const std::vector<unsigned>& words, int64_t relative_time, long long expected) {
  if (relative_time < 0 || relative_time > static_cast<int64_t>(PACKET_TIME_MASK)) {
    return -1;
  }
  const unsigned time = static_cast<unsigned>(relative_time);
  const auto range = std::equal_range(words.begin(), words.end(), time, &earlier);
  const long long first = range.first - words.begin();
  const long long end = range.second - words.begin();
  if (first == end) {
    return -1;
  }
  return first <= expected && expected < end ? expected : first;
}

long long keyIndexAtOrBefore(const std::vector<unsigned>& words, long long index) {
  while (index > 0 && !isKeyPacket(words[static_cast<std::size_t>(index)])) {
    --index;
  }
  return index;
}

bool evenlySpaced(const std::vector<unsigned>& words, long long key_index, long long index) {
  constexpr std::size_t REORDERING = 16;  // no codec holds more pictures back
  std::size_t i = static_cast<std::size_t>(key_index) + 1;
  const std::size_t end = std::min(words.size(), static_cast<std::size_t>(index) + REORDERING + 1);
  unsigned shortest = PACKET_TIME_MASK;
  unsigned longest = 0;
  for (; i < end && !isKeyPacket(words[i]); ++i) {
    const unsigned step = packetTime(words[i]) - packetTime(words[i - 1]);
    shortest = std::min(shortest, step);
    longest = std::max(longest, step);
  }
  return samePace(shortest, longest);
}

bool paceChangesOften(const std::vector<unsigned>& words) {
  constexpr std::size_t OFTEN = 8;  // once in so many steps; a lost packet makes two changes
  std::size_t changes = 0;
  for (std::size_t i = 2; i < words.size(); ++i) {
    const unsigned before = packetTime(words[i - 1]) - packetTime(words[i - 2]);
    const unsigned step = packetTime(words[i]) - packetTime(words[i - 1]);
    changes += samePace(std::min(before, step), std::max(before, step)) ? 0 : 1;
  }
  return changes > words.size() / OFTEN;
}

}  // namespace zo
