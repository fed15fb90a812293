#include "zo_packet_index.h"

#include <algorithm>
#include <iterator>
#include <map>

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

// The order of words that are not ascending.
//
// A word that is added goes behind the last one whose time is not later than its own. Only words with nothing
// but later ones behind them can be that one. Their times ascend from front to back, so it is looked up.
class PacketIndexBuilder::LinkedWords {
 public:
  /// For words that stand in their order.
  explicit LinkedWords(const std::vector<unsigned>& words) {
    for (const unsigned word : words) {
      append(packetTime(word));
    }
  }

  void add(unsigned time, bool at_end) {
    if (at_end) {
      append(time);
      return;
    }
    const auto later = _places.upper_bound(time);
    if (later == _places.end()) {
      append(time);
      return;
    }
    const std::size_t item = newItem();
    if (later == _places.begin()) {
      _next[item] = _first;
      _first = item;
    } else {
      const std::size_t before = std::prev(later)->second;
      _next[item] = _next[before];
      _next[before] = item;
    }
    _places[time] = item;
  }

  std::vector<unsigned> inOrder(const std::vector<unsigned>& words) const {
    std::vector<unsigned> ordered;
    ordered.reserve(words.size());
    for (std::size_t item = _first; item != NONE; item = _next[item]) {
      ordered.push_back(words[item]);
    }
    return ordered;
  }

 private:
  static constexpr std::size_t NONE = static_cast<std::size_t>(-1);

  std::size_t newItem() {
    _next.push_back(NONE);
    return _next.size() - 1;
  }

  void append(unsigned time) {
    const std::size_t item = newItem();
    (_last == NONE ? _first : _next[_last]) = item;
    _last = item;
    _places.erase(_places.lower_bound(time), _places.end());
    _places.emplace_hint(_places.end(), time, item);
  }

  std::vector<std::size_t> _next;  // an item is a word's place in file order
  std::size_t _first = NONE;
  std::size_t _last = NONE;
  std::map<unsigned, std::size_t> _places;  // by time, the words that another may come behind
};

PacketIndexBuilder::PacketIndexBuilder(std::vector<unsigned>& words, uint64_t step_limit)
    : _words(words), _step_limit(step_limit) {}

PacketIndexBuilder::~PacketIndexBuilder() = default;

void PacketIndexBuilder::place(int64_t relative_time) {
  const bool beyond = relative_time > static_cast<int64_t>(PACKET_TIME_MASK);
  switch (_mode) {
    case Mode::INSERTING:
      _steps += sortLastTimestamp(_words);
      if (_steps > _step_limit && indexOrder(_words) != IndexOrder::UNORDERED) {
        _mode = Mode::SORTING;
      } else if (_steps > _step_limit) {
        link();
      }
      break;
    case Mode::SORTING:
      // A time beyond 31 bits stays where it was appended, behind everything that came before it. Sorting
      // later would move it.
      if (beyond) {
        const unsigned word = _words.back();
        _words.pop_back();
        finish();
        _words.push_back(word);
        link();
      }
      break;
    case Mode::LINKING:
      _p_linked->add(packetTime(_words.back()), beyond);
      break;
  }
}

void PacketIndexBuilder::link() {
  _p_linked = std::make_unique<LinkedWords>(_words);
  _mode = Mode::LINKING;
}

void PacketIndexBuilder::finish() {
  if (_mode == Mode::SORTING) {
    std::stable_sort(_words.begin(), _words.end(), &earlier);
  } else if (_mode == Mode::LINKING) {
    _words = _p_linked->inOrder(_words);
    _p_linked.reset();
  }
  _mode = Mode::INSERTING;
}

// Looks at every word without leaving early: compilers compare several at a time then.
IndexOrder indexOrder(const std::vector<unsigned>& words) {
  unsigned falls = 0;
  unsigned repeats = 0;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const unsigned before = packetTime(words[i - 1]);
    const unsigned after = packetTime(words[i]);
    falls |= after < before ? 1U : 0U;
    repeats |= after == before ? 1U : 0U;
  }
  if (falls != 0) {
    return IndexOrder::UNORDERED;
  }
  return repeats != 0 ? IndexOrder::ASCENDING : IndexOrder::STRICT_ASCENDING;
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
