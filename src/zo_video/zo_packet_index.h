#ifndef ZO_VIDEO_SRC_ZO_PACKET_INDEX_H
#define ZO_VIDEO_SRC_ZO_PACKET_INDEX_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace zo {

// One 32-bit word per packet of a video stream: bit 31 marks a key frame, the other bits hold the packet's
// time relative to the stream's start, in the stream's time base. Words stand in presentation order.

constexpr unsigned PACKET_KEY_FLAG = 0x80000000U;
constexpr unsigned PACKET_TIME_MASK = 0x7FFFFFFFU;

inline unsigned packetTime(unsigned word) {
  return word & PACKET_TIME_MASK;
}

inline bool isKeyPacket(unsigned word) {
  return (word & PACKET_KEY_FLAG) != 0;
}

/// One insertion step: moves the last word towards the front, past every word with a later time.
/// Returns how many words it passed.
std::size_t sortLastTimestamp(std::vector<unsigned>& timestamps);

/// Builds the words of a stream from its packets in file order.
///
/// Packets arrive almost in presentation order, so each one is inserted from the back at little cost. A file
/// whose times run backwards would make that quadratic: once the insertions have cost too much, the words are
/// sorted at the end instead, or, where a time beyond 31 bits has left them unordered, put into a linked list
/// in which every place is found at once. The result is the same.
class PacketIndexBuilder {
 public:
  /// Words passed by insertions until they have cost too much: far more than the reordering of any real
  /// stream.
  static constexpr uint64_t STEP_LIMIT = uint64_t{1} << 26;

  /// Appends to `words`, which is empty and outlives the builder.
  explicit PacketIndexBuilder(std::vector<unsigned>& words, uint64_t step_limit = STEP_LIMIT);
  ~PacketIndexBuilder();
  PacketIndexBuilder(const PacketIndexBuilder&) = delete;
  PacketIndexBuilder& operator=(const PacketIndexBuilder&) = delete;

  /// @param relative_time  Not negative. Only the low 31 bits fit; what lies above runs into the key flag.
  void add(int64_t relative_time, bool key) {
    const unsigned word =
        static_cast<unsigned>(static_cast<uint64_t>(relative_time)) | (key ? PACKET_KEY_FLAG : 0);
    const bool late = !_words.empty() && static_cast<int64_t>(packetTime(_words.back())) > relative_time;
    _words.push_back(word);
    if (late || _mode != Mode::INSERTING) {
      place(relative_time);
    }
  }

  /// Brings the words into their final order.
  void finish();

 private:
  class LinkedWords;

  enum class Mode {
    INSERTING,  // _words are what plain insertion makes of the packets so far
    SORTING,    // _words are ascending when sorted
    LINKING     // _words stand in file order; _p_linked knows the real one
  };

  void place(int64_t relative_time);
  void link();

  std::vector<unsigned>& _words;
  uint64_t _steps = 0;
  uint64_t _step_limit;
  Mode _mode = Mode::INSERTING;
  std::unique_ptr<LinkedWords> _p_linked;
};

/// What the words allow.
enum class IndexOrder {
  UNORDERED,        // not ascending: the times overran 31 bits, or the words came from a foreign file
  ASCENDING,        // ascending, some packets share a time
  STRICT_ASCENDING  // every packet is told from the others by its time
};

IndexOrder indexOrder(const std::vector<unsigned>& words);

/// Index of the word with that relative time, in ascending words; -1 when there is none. Among words of equal
/// time `expected` is preferred, otherwise the first.
long long findPacketTime(const std::vector<unsigned>& words, int64_t relative_time, long long expected);

/// The last key frame at or before `index`; 0 when there is none: the stream's start always serves as one.
long long keyIndexAtOrBefore(const std::vector<unsigned>& words, long long index);

/// True when the frames of the group from `key_index` to `index`, and those a decoder may need on the way,
/// follow one another at an even pace. A hole may be a lost packet.
bool evenlySpaced(const std::vector<unsigned>& words, long long key_index, long long index);

/// True when frames change their pace throughout: the rate is variable, and a hole says nothing.
bool paceChangesOften(const std::vector<unsigned>& words);

}  // namespace zo

#endif
