// What the tests of faults share: letting something fail at every place in turn, and adding up what came of
// it.
#ifndef ZO_TESTS_FAULTS_ZO_FAULT_TRIALS_H
#define ZO_TESTS_FAULTS_ZO_FAULT_TRIALS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "zo_core/zo_exception.h"
#include "zo_core/zo_frame.h"
#include "zo_failing_memory.h"

namespace zo {
namespace test {

/// How a call ended: a zo::Status, or that it threw something else. Nothing in it is allocated.
struct Ending {
  static constexpr int BAD_ALLOC = -1;
  static constexpr int OTHER_EXCEPTION = -2;

  int status = ZO_STATUS_OK;
  std::array<char, 512> message{};

  void set(const Exception& exception);
};

/// One run with a fault in it.
struct Trial {
  /// What is run while things fail. Allocates nothing of its own.
  std::function<void()> run;
  /// Afterwards, with `reported` telling whether run() threw: the same objects do what they should.
  std::function<void(bool reported)> check;
};

/// A row of the table that the program prints at its end.
struct FaultRow {
  std::string subject;
  long long tried = 0;
  long long reported = 0;        ///< by an exception or a status
  long long done_without = 0;    ///< the call succeeded all the same
  long long library_faults = 0;  ///< a library crashed or lost memory over its own failed request
  long long bytes_leaked = 0;
  long long descriptors_leaked = 0;
};

/// Adds to the row of that subject; rows come in the order in which they are met first.
void addToTable(const FaultRow& row);

/// Files, sockets and the like that this process has open.
long long openDescriptors();

/// Lets the first, the second, ... request for memory fail until `prepare` has given a trial that meets no
/// failing one. Each call may end in success or in one of `allowed`; it leaks nothing, and its objects pass
/// their check.
///
/// Libraries do not survive every failing request of their own. When those are to fail, each trial is run in
/// a child process first, which tells where it crashed; what FFmpeg, TurboJPEG and the like do wrong is
/// counted, and passed over here.
/// @param lost_by_libraries  Bytes that a library is known to lose for good when its own request fails.
void failEachRequest(const std::string& subject, Requests requests, const std::vector<int>& allowed,
                     const std::function<Trial()>& prepare, long long lost_by_libraries = 0);

/// A number that frames with the same format, size and pixels share; 0 for an empty one. Does not allocate.
std::uint64_t digest(const Frame& frame);

/// A list of fixed capacity, for what is noted while memory fails.
template <class T, std::size_t Capacity>
class Notes {
 public:
  void clear() { _size = 0; }
  void add(const T& value) {
    if (_size < Capacity) {
      _values[_size++] = value;
    }
  }
  std::size_t size() const { return _size; }
  const T& operator[](std::size_t i) const { return _values[i]; }
  bool operator==(const Notes& other) const {
    bool same = _size == other._size;
    for (std::size_t i = 0; same && i < _size; ++i) {
      same = _values[i] == other._values[i];
    }
    return same;
  }

 private:
  std::array<T, Capacity> _values{};
  std::size_t _size = 0;
};

}  // namespace test
}  // namespace zo

#endif
