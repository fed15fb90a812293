#ifndef ZO_CORE_ZO_EXCEPTION_H
#define ZO_CORE_ZO_EXCEPTION_H

#include <exception>
#include <memory>

#include "zo_core/zo_export.h"
#include "zo_core/zo_status.h"

namespace zo {

/// The only exception type that the libraries throw themselves (a failed allocation stays std::bad_alloc).
///
/// All texts live inside the object and are cut to fit, so throwing needs no memory for text, and copying
/// never throws. An exception may be copied and kept, and read from any thread while nobody assigns to it.
class ZO_CORE_API Exception : public std::exception {
 public:
  /// Bytes kept of the message, the terminating zero included.
  static constexpr unsigned MESSAGE_CAPACITY = 4096;

  /// ZO_STATUS_OK with empty texts: a place to keep another exception in.
  Exception() noexcept;

  /// @param p_previous  The exception that this one wraps, or null. It is copied (with what it wraps in
  ///                    turn); when there is no memory for the copy, previous() is null.
  /// @param status      What went wrong.
  /// @param function    Name of the raising function, without class or namespace; null counts as empty.
  /// @param file        Source path without extension; null counts as empty.
  /// @param line        Source line of the throw.
  /// @param format      printf-style message, followed by its arguments.
  Exception(const Exception* p_previous, Status status, const char* function, const char* file, int line,
            const char* format, ...) noexcept ZO_PRINTF_FORMAT(7, 8);

  Exception(const Exception& other) noexcept;
  Exception& operator=(const Exception& other) noexcept;
  ~Exception() override;

  /// The formatted message; valid as long as the object, never null.
  const char* what() const noexcept override;

  /// What went wrong.
  Status status() const noexcept;
  /// Name of the raising function; valid as long as the object, never null.
  const char* function() const noexcept;
  /// Source path without extension; valid as long as the object, never null.
  const char* file() const noexcept;
  /// Source line of the throw.
  int line() const noexcept;
  /// The wrapped exception, or null. It stays valid as long as this object or a copy of it.
  const Exception* previous() const noexcept;

 private:
  Status _status;
  char _message[MESSAGE_CAPACITY];
  char _function[64];
  char _file[128];
  int _line;
  std::shared_ptr<const Exception> _p_previous;
};

}  // namespace zo

#endif
