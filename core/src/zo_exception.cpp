#include "zo_core/zo_exception.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>

namespace zo {
namespace {

template <std::size_t Capacity>
void copyText(char (&destination)[Capacity], const char* p_text) noexcept {
  const std::size_t length = p_text == nullptr ? 0 : strnlen(p_text, Capacity - 1);
  if (length != 0) {
    std::memcpy(destination, p_text, length);
  }
  destination[length] = '\0';
}

}  // namespace

Exception::Exception() noexcept : _status(ZO_STATUS_OK), _message{}, _function{}, _file{}, _line(0) {}

Exception::Exception(const Exception* p_previous, Status status, const char* function, const char* file,
                     int line, const char* format, ...) noexcept
    : _status(status), _line(line) {
  _message[0] = '\0';
  if (format != nullptr) {
    va_list arguments;
    va_start(arguments, format);
    // A negative result leaves the storage unspecified.
    if (std::vsnprintf(_message, sizeof(_message), format, arguments) < 0) {
      _message[0] = '\0';
    }
    va_end(arguments);
  }
  copyText(_function, function);
  copyText(_file, file);
  if (p_previous != nullptr) {
    try {
      _p_previous = std::make_shared<const Exception>(*p_previous);
    } catch (const std::bad_alloc&) {
      // The texts that matter are in the message; losing the chain is better than losing the error.
    }
  }
}

// Only the used part of the texts is copied: the storage is large, the texts are short.
Exception::Exception(const Exception& other) noexcept
    : std::exception(other), _status(other._status), _line(other._line), _p_previous(other._p_previous) {
  copyText(_message, other._message);
  copyText(_function, other._function);
  copyText(_file, other._file);
}

Exception& Exception::operator=(const Exception& other) noexcept {
  if (this != &other) {
    _status = other._status;
    copyText(_message, other._message);
    copyText(_function, other._function);
    copyText(_file, other._file);
    _line = other._line;
    _p_previous = other._p_previous;
  }
  return *this;
}

Exception::~Exception() = default;

const char* Exception::what() const noexcept {
  return _message;
}

Status Exception::status() const noexcept {
  return _status;
}

const char* Exception::function() const noexcept {
  return _function;
}

const char* Exception::file() const noexcept {
  return _file;
}

int Exception::line() const noexcept {
  return _line;
}

const Exception* Exception::previous() const noexcept {
  return _p_previous.get();
}

}  // namespace zo
