#include "failure.h"

#include <cstdarg>
#include <cstdio>

namespace zo_tool {

void fail(zo::Status status, const char* p_format, ...) {
  char message[zo::Exception::MESSAGE_CAPACITY];
  va_list arguments;
  va_start(arguments, p_format);
  std::vsnprintf(message, sizeof message, p_format, arguments);
  va_end(arguments);
  throw zo::Exception(nullptr, status, "fail", "tools/zo-video/failure", __LINE__, "%s", message);
}

}  // namespace zo_tool
