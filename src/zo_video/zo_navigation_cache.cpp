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

// How many of the word's bytes, from the first one on, are digits.
unsigned leadingDigits(uint64_t word) {
  // A digit has 3 in its upper half, and still has when 6 is added. Carries only go into later bytes.
  const uint64_t other = ((word & everyByte(0xF0)) ^ everyByte(0x30)) |
                         (((word + everyByte(0x06)) & everyByte(0xF0)) ^ everyByte(0x30));
  return other == 0 ? 8 : static_cast<unsigned>(__builtin_ctzll(other)) / 8;
}

// The number that 8 digits make: neighbours are joined to pairs, pairs to fours, fours to the whole.
unsigned eightDigits(uint64_t word) {
  word = (word & everyByte(0x0F)) * (1 + (10U << 8)) >> 8;
  word = (word & 0x00FF00FF00FF00FFU) * (1 + (uint64_t{100} << 16)) >> 16;
  return static_cast<unsigned>((word & 0x0000FFFF0000FFFFU) * (1 + (uint64_t{10000} << 32)) >> 32);
}

// Takes entries as they are written, up to 10 digits and a line feed each, eight bytes at a time; stops in
// front of the first one that looks otherwise or lies too near to the end. Returns how far it came.
const char* parsePlainEntries(const char* p_text, const char* p_end, std::vector<unsigned>& words) {
  while (FIRST_BYTE_LOWEST && p_end - p_text >= 16) {
    const uint64_t word = loadWord(p_text);
    const unsigned digits = leadingDigits(word);
    uint64_t value;
    const char* p_separator;
    if (digits == 8) {
      value = eightDigits(word);
      const unsigned more = leadingDigits(loadWord(p_text + 8));
      if (more > 2) {
        break;
      }
      p_separator = p_text + 8 + more;
      for (const char* p_digit = p_text + 8; p_digit != p_separator; ++p_digit) {
        value = value * 10 + static_cast<unsigned>(*p_digit - '0');
      }
    } else if (digits != 0) {
      value = eightDigits(word << (64 - 8 * digits));  // zeros in front
      p_separator = p_text + digits;
    } else {
      break;
    }
    if (*p_separator != '\n' || value > UINT32_MAX) {
      break;
    }
    words.push_back(static_cast<unsigned>(value));
    p_text = p_separator + 1;
  }
  return p_text;
}

// Takes the text byte by byte, across block borders.
class NumberParser {
 public:
  explicit NumberParser(std::vector<unsigned>& words) : _words(words) {}

  /// False once the list has ended.
  bool parse(const char* p_text, std::size_t size) {
    for (const char* const p_end = p_text + size; p_text != p_end; ++p_text) {
      if (!_has_digits && !_has_sign) {
        p_text = parsePlainEntries(p_text, p_end, _words);
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
      // The rest will look like the beginning.
      const uint64_t blocks = file.size() / static_cast<uint64_t>(count) + 1;
      const uint64_t expected = words.size() * blocks;
      words.reserve(static_cast<std::size_t>(std::min(expected, MOST_WORDS_RESERVED)));
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
