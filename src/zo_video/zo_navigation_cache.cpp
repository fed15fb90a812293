#include "zo_navigation_cache.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace zo {
namespace {

constexpr std::size_t BLOCK_BYTES = 16 * 1024;  // lives on the stack
constexpr std::size_t LONGEST_ENTRY = 11;       // ten digits and the line feed

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

// Takes the text byte by byte, across block borders.
class NumberParser {
 public:
  explicit NumberParser(std::vector<unsigned>& words) : _words(words) {}

  /// False once the list has ended.
  bool parse(const char* p_text, std::size_t size) {
    for (const char* p_end = p_text + size; p_text != p_end; ++p_text) {
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
