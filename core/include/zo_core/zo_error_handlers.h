#ifndef ZO_CORE_ZO_ERROR_HANDLERS_H
#define ZO_CORE_ZO_ERROR_HANDLERS_H

#include <exception>

#include "zo_core/zo_exception.h"
#include "zo_core/zo_export.h"
#include "zo_core/zo_status.h"

namespace zo {

// Turn a caught exception into a status and a message, at the edge to callers that know no exceptions.
// The message is always terminated and never takes more than message_size bytes; with a null buffer or a
// size of 0 nothing is written. `function` is the name of the plain function that caught the exception.

/// Writes the exception's message as it is and returns its status.
ZO_CORE_API Status handleZoException(const char* function, const Exception& exception, char* p_message,
                                     unsigned message_size) noexcept;

/// Writes "<function>: caught standard exception: <text>" and returns ZO_STATUS_STD_EXCEPTION.
ZO_CORE_API Status handleStdException(const char* function, const std::exception& exception, char* p_message,
                                      unsigned message_size) noexcept;

/// Writes "<function>: caught unknown exception." and returns ZO_STATUS_UNKNOWN_ERROR.
ZO_CORE_API Status handleUnknownException(const char* function, char* p_message,
                                          unsigned message_size) noexcept;

}  // namespace zo

#endif
