#ifndef ZO_TOOL_FAILURE_H
#define ZO_TOOL_FAILURE_H

#include "zo_core/zo_core.h"

namespace zo_tool {

/// Throws a zo::Exception of the tool's own.
[[noreturn]] void fail(zo::Status status, const char* p_format, ...) ZO_PRINTF_FORMAT(2, 3);

}  // namespace zo_tool

#endif
