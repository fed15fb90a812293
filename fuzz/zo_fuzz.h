#ifndef ZO_FUZZ_ZO_FUZZ_H
#define ZO_FUZZ_ZO_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "zo_core/zo_exception.h"
#include "zo_core/zo_frame.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size);

namespace zo {
namespace fuzz {

/// Ends the process with the rule that was broken: a finding.
void require(bool holds, const char* p_rule);

/// Takes arguments out of an input, from its front; zeros when it has run out.
class Arguments {
 public:
  Arguments(const uint8_t* p_data, size_t size) : _p_data(p_data), _size(size) {}

  bool empty() const { return _size == 0; }
  uint8_t byte() { return number<uint8_t>(); }
  bool flag() { return byte() % 2 != 0; }
  /// From 0 to limit - 1.
  unsigned below(unsigned limit) { return number<uint16_t>() % limit; }
  /// Mostly near the pictures that are in use, now and then anything.
  int coordinate();
  template <class T>
  T number() {
    T value{};
    const size_t length = sizeof(T) < _size ? sizeof(T) : _size;
    if (length != 0) {
      std::memcpy(&value, _p_data, length);
    }
    _p_data += length;
    _size -= length;
    return value;
  }
  std::string text(size_t length);

 private:
  const uint8_t* _p_data;
  size_t _size;
};

/// A directory that is removed at the end of the process, in memory where the system has such a place.
const std::string& scratchDirectory();
void writeScratchFile(const std::string& path, const uint8_t* p_data, size_t size);

/// A number that two frames with the same format, size and pixels share. Row padding does not count; every
/// byte of every row is read.
uint64_t digest(const Frame& frame);

/// How a call ended. Two runs of the same call end alike.
struct Outcome {
  static constexpr int NO_MEMORY = -1;
  static constexpr int TOO_LONG = -2;  // a file that claims more frames than any list can hold

  int status = ZO_STATUS_OK;
  std::string message;

  bool operator==(const Outcome& other) const { return status == other.status && message == other.message; }
};

/// Runs `body`; refusing bad data is success, an internal error or an exception of another kind is a finding.
template <class Body>
Outcome outcomeOf(Body&& body) {
  Outcome outcome;
  try {
    body();
  } catch (const Exception& e) {
    require(e.status() != ZO_STATUS_INTERNAL_ERROR, e.what());
    require(e.status() != ZO_STATUS_OK, "an error has a status");
    require(e.what()[0] != '\0', "an error has a message");
    outcome.status = e.status();
    outcome.message = e.what();
  } catch (const std::bad_alloc&) {
    outcome.status = Outcome::NO_MEMORY;
  } catch (const std::length_error&) {
    outcome.status = Outcome::TOO_LONG;
  }
  return outcome;
}

/// A frame over memory of its own with exactly the bytes that the planes need, between guard bytes.
class GuardedFrame {
 public:
  GuardedFrame(FrameFormat format, Size size, unsigned padding);
  GuardedFrame(const GuardedFrame&) = delete;
  GuardedFrame& operator=(const GuardedFrame&) = delete;

  Frame& frame() { return _frame; }
  /// A finding when a byte before, behind or between the rows was changed.
  void requireIntact() const;

 private:
  static constexpr size_t GUARD_BYTES = 512;
  static constexpr uint8_t GUARD = 0xA5;

  std::vector<uint8_t> _block;
  Frame _frame;  // as it was made; requireIntact() looks at this shape
  FrameFormat _format;
  Size _size;
  unsigned _padding;
};

}  // namespace fuzz
}  // namespace zo

#endif
