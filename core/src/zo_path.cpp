#include "zo_core/zo_path.h"

namespace zo {

std::string fileExtension(const std::string& path) {
  const std::string::size_type slash = path.rfind('/');
  const std::string::size_type dot = path.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
    return std::string();
  }
  return path.substr(dot);
}

}  // namespace zo
