#include "zo_navigation_cache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zo {
namespace {

constexpr std::size_t BLOCK_BYTES = 32 * 1024;  // lives on the stack
constexpr uint64_t MOST_WORDS_RESERVED = uint64_t{1} << 20;
constexpr std::size_t LONGEST_ENTRY = 11;  // ten digits and the line feed

class FileDescriptor {
 public:
  FileDescriptor(const std::string& path, int flags)
      : _descriptor(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
  ~FileDescriptor() {
    if (isOpen()) {
      ::close(_descriptor);
    }
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  bool isOpen() const { return _descriptor >= 0; }

  /// Bytes in the file, 0 when that cannot be told.
  uint64_t size() const {
    struct stat status;
    return ::fstat(_descriptor, &status) == 0 && status.st_size > 0 ? static_cast<uint64_t>(status.st_size)
                                                                    : 0;
  }

  /// Bytes read, 0 at the end of the file, negative on failure.
  ssize_t read(char* p_data, std::size_t size) {
    ssize_t count;
    do {
      count = ::read(_descriptor, p_data, size);
    } while (count < 0 && errno == EINTR);
    return count;
  }

  bool write(const char* p_data, std::size_t size) {
    while (size != 0) {
      const ssize_t count = ::write(_descriptor, p_data, size);
      if (count < 0 && errno == EINTR) {
        continue;
      }
      if (count <= 0) {
        return false;
      }
      p_data += count;
      size -= static_cast<std::size_t>(count);
    }
    return true;
  }

  void truncate() {
    if (::ftruncate(_descriptor, 0) != 0) {
      // Nothing else can be done for a file that cannot even be emptied.
    }
  }

 private:
  int _descriptor;
};

bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr bool FIRST_BYTE_LOWEST = true;
#else
constexpr bool FIRST_BYTE_LOWEST = false;
#endif

constexpr uint64_t everyByte(uint64_t value) {
  return value * 0x0101010101010101U;
}

uint64_t loadWord(const char* p_text) {
  uint64_t word;
  std::memcpy(&word, p_text, sizeof(word));
  return word;
}

// The digits of a word's characters, each in its byte; anything else becomes 10 or more.
uint64_t digitValues(uint64_t word) {
  return word ^ everyByte('0');
}

// A bit 7 for every byte that is no digit. Carries out of such bytes may add some to the bytes behind them.
uint64_t notDigits(uint64_t values) {
  return (values | (values + everyByte(0x80 - 10))) & everyByte(0x80);
}

// The number that 8 digits make: neighbours are joined to pairs, pairs to fours, fours to the whole.
unsigned eightDigits(uint64_t values) {
  values = values * (1 + (10U << 8)) >> 8;
  values = (values & 0x00FF00FF00FF00FFU) * (1 + (uint64_t{100} << 16)) >> 16;
  return static_cast<unsigned>((values & 0x0000FFFF0000FFFFU) * (1 + (uint64_t{10000} << 32)) >> 32);
}

constexpr std::size_t MOST_DIGITS = LONGEST_ENTRY - 1;
constexpr std::size_t WORDS_AT_A_TIME = 512;

// Takes entries as they are written, a number of up to 10 digits and a line feed each, eight bytes at a time.
// Neighbours are mostly of the same length. Expecting that, the place of the next entry is known before this
// one has been looked at, and the processor can work on several of them at once.
class PlainEntries {
 public:
  explicit PlainEntries(std::vector<unsigned>& words) : _words(words) {}

  /// Stops in front of the first entry that looks otherwise or lies too near to the end. Returns how far it
  /// came.
  const char* parse(const char* p_text, const char* p_end) {
    while (FIRST_BYTE_LOWEST && p_end - p_text >= LOOKED_AT) {
      const char* const p_run = p_text;
      p_text = parseRun(p_text, p_end - LOOKED_AT);
      if (p_text > p_end - LOOKED_AT) {
        break;
      }
      const std::size_t digits = digitsBeforeLineFeed(p_text);
      if (digits == 0) {
        break;
      }
      // A single one among many of another length does not change what is expected.
      if (p_text == p_run && digits != _digits) {
        _digits = digits;
      } else if (const char* p_next = parseOne(p_text, digits)) {
        p_text = p_next;
      } else {
        break;
      }
    }
    return p_text;
  }

 private:
  static constexpr std::ptrdiff_t LOOKED_AT = 16;  // bytes of an entry and behind it

  // 0 when there is no such number.
  static std::size_t digitsBeforeLineFeed(const char* p_text) {
    std::size_t digits = 0;
    while (digits < MOST_DIGITS && isDigit(p_text[digits])) {
      ++digits;
    }
    return p_text[digits] == '\n' ? digits : 0;
  }

  const char* parseOne(const char* p_text, std::size_t digits) {
    uint64_t value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      value = value * 10 + static_cast<unsigned>(p_text[i] - '0');
    }
    if (value > UINT32_MAX) {
      return nullptr;
    }
    _words.push_back(static_cast<unsigned>(value));
    return p_text + digits + 1;
  }

  // Entries of the expected length that begin at or before p_last.
  const char* parseRun(const char* p_text, const char* p_last) {
    switch (_digits) {
      case MOST_DIGITS:
        return parseRunOf<2>(p_text, p_last);
      case MOST_DIGITS - 1:
        return parseRunOf<1>(p_text, p_last);
      default:
        return parseRunOf<0>(p_text, p_last);
    }
  }

  // The first LEADING digits are looked at one by one, the others as a word. Shorter numbers are moved to the
  // word's end and get zeros in front.
  template <std::size_t LEADING>
  const char* parseRunOf(const char* p_text, const char* p_last) {
    const std::size_t digits = _digits;
    const std::size_t shift = LEADING > 0 ? 0 : 64 - 8 * digits;
    const uint64_t zeros = shift == 0 ? 0 : everyByte('0') >> (64 - shift);
    std::array<unsigned, WORDS_AT_A_TIME> found;
    std::size_t count = 0;
    while (p_text <= p_last) {
      const uint64_t values = digitValues((loadWord(p_text + LEADING) << shift) | zeros);
      uint64_t value = 0;
      bool good = (notDigits(values) == 0) & (p_text[digits] == '\n');
      for (std::size_t i = 0; i != LEADING; ++i) {
        const unsigned digit = static_cast<unsigned char>(p_text[i]) - unsigned{'0'};
        good &= digit < 10;
        value = value * 10 + digit;
      }
      value = value * 100000000 + eightDigits(values);
      if (!good || value > UINT32_MAX) {
        break;
      }
      found[count++] = static_cast<unsigned>(value);
      p_text += digits + 1;
      if (count == found.size()) {
        _words.insert(_words.end(), found.begin(), found.end());
        count = 0;
      }
    }
    _words.insert(_words.end(), found.data(), found.data() + count);
    return p_text;
  }

  std::vector<unsigned>& _words;
  std::size_t _digits = MOST_DIGITS;
};

// Takes the text byte by byte, across block borders.
class NumberParser {
 public:
  explicit NumberParser(std::vector<unsigned>& words) : _words(words), _plain_entries(words) {}

  /// False once the list has ended.
  bool parse(const char* p_text, std::size_t size) {
    for (const char* const p_end = p_text + size; p_text != p_end; ++p_text) {
      if (!_has_digits && !_has_sign) {
        p_text = _plain_entries.parse(p_text, p_end);
        if (p_text == p_end) {
          break;
        }
      }
      const char c = *p_text;
      if (isDigit(c)) {
        _value = _value * 10 + static_cast<unsigned>(c - '0');
        if (_value > UINT32_MAX) {
          return false;
        }
        _has_digits = true;
      } else {
        if (_has_digits) {
          store();
        } else if (_has_sign) {
          return false;
        }
        if (c == '+' || c == '-') {
          _has_sign = true;
          _negative = c == '-';
        } else if (!isSpace(c)) {
          return false;
        }
      }
    }
    return true;
  }

  /// The text has ended.
  void finish() {
    if (_has_digits) {
      store();
    }
  }

 private:
  void store() {
    const uint32_t value = static_cast<uint32_t>(_value);
    _words.push_back(_negative ? 0U - value : value);
    _value = 0;
    _has_digits = _has_sign = _negative = false;
  }

  std::vector<unsigned>& _words;
  PlainEntries _plain_entries;
  uint64_t _value = 0;
  bool _has_digits = false;
  bool _has_sign = false;
  bool _negative = false;
};

char* formatEntry(unsigned word, char* p_out) {
  char digits[LONGEST_ENTRY];
  std::size_t count = 0;
  do {
    digits[count++] = static_cast<char>('0' + word % 10);
    word /= 10;
  } while (word != 0);
  while (count != 0) {
    *p_out++ = digits[--count];
  }
  *p_out++ = '\n';
  return p_out;
}

}  // namespace

CacheLoad loadNavigationCache(const std::string& path, std::vector<unsigned>& words) {
  FileDescriptor file(path, O_RDONLY);
  if (!file.isOpen()) {
    return CacheLoad::NOT_OPENED;
  }
  std::array<char, BLOCK_BYTES> block;
  NumberParser parser(words);
  bool reserved = false;
  for (;;) {
    const ssize_t count = file.read(block.data(), block.size());
    if (count < 0) {
      return CacheLoad::FAILED;
    }
    if (count == 0) {
      parser.finish();
      return CacheLoad::LOADED;
    }
    if (!parser.parse(block.data(), static_cast<std::size_t>(count))) {
      return CacheLoad::LOADED;
    }
    if (!reserved) {
      // The rest will look like the beginning. Room that nearly suffices was made by somebody who knows
      // better.
      const uint64_t blocks = file.size() / static_cast<uint64_t>(count) + 1;
      const uint64_t expected = words.size() * blocks;
      if (expected > words.capacity() + words.capacity() / 4) {
        words.reserve(static_cast<std::size_t>(std::min(expected, MOST_WORDS_RESERVED)));
      }
      reserved = true;
    }
  }
}

void saveNavigationCache(const std::string& path, const std::vector<unsigned>& words) {
  FileDescriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.isOpen()) {
    return;
  }
  std::array<char, BLOCK_BYTES> block;
  char* const p_begin = block.data();
  char* p_out = p_begin;
  for (const unsigned word : words) {
    if (p_out + LONGEST_ENTRY > p_begin + BLOCK_BYTES) {
      if (!file.write(p_begin, static_cast<std::size_t>(p_out - p_begin))) {
        file.truncate();
        return;
      }
      p_out = p_begin;
    }
    p_out = formatEntry(word, p_out);
  }
  if (!file.write(p_begin, static_cast<std::size_t>(p_out - p_begin))) {
    file.truncate();
  }
}

}  // namespace zo
