#ifndef ZO_CORE_INTERNAL_ZO_GUARDED_H
#define ZO_CORE_INTERNAL_ZO_GUARDED_H

#include <exception>

#include "zo_core/zo_error_handlers.h"
#include "zo_core/zo_exception.h"
#include "zo_core/zo_status.h"

namespace zo {

/// The edge to callers that know no exceptions: runs `body`, and turns whatever it throws into a status and
/// a message. Every plain function consists of one call of this, parameter checks included.
///
/// @param function  Name of the plain function.
template <class Body>
int guarded(const char* function, char* p_message, unsigned message_size, Body&& body) noexcept {
  try {
    body();
    return ZO_STATUS_OK;
  } catch (const Exception& exception) {
    return handleZoException(function, exception, p_message, message_size);
  } catch (const std::exception& exception) {
    return handleStdException(function, exception, p_message, message_size);
  } catch (...) {
    return handleUnknownException(function, p_message, message_size);
  }
}

}  // namespace zo

#endif
