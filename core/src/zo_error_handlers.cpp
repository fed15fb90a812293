#include "zo_core/zo_error_handlers.h"

#include <cstdio>

namespace zo {
namespace {

const char* orEmpty(const char* p_text) {
  return p_text == nullptr ? "" : p_text;
}

bool writable(const char* p_message, unsigned message_size) {
  return p_message != nullptr && message_size != 0;
}

}  // namespace

Status handleZoException(const char*, const Exception& exception, char* p_message,
                         unsigned message_size) noexcept {
  if (writable(p_message, message_size)) {
    std::snprintf(p_message, message_size, "%s", exception.what());
  }
  return exception.status();
}

Status handleStdException(const char* function, const std::exception& exception, char* p_message,
                          unsigned message_size) noexcept {
  if (writable(p_message, message_size)) {
    std::snprintf(p_message, message_size, "%s: caught standard exception: %s", orEmpty(function),
                  orEmpty(exception.what()));
  }
  return ZO_STATUS_STD_EXCEPTION;
}

Status handleUnknownException(const char* function, char* p_message, unsigned message_size) noexcept {
  if (writable(p_message, message_size)) {
    std::snprintf(p_message, message_size, "%s: caught unknown exception.", orEmpty(function));
  }
  return ZO_STATUS_UNKNOWN_ERROR;
}

}  // namespace zo
