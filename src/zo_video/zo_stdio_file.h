#ifndef ZO_VIDEO_SRC_ZO_STDIO_FILE_H
#define ZO_VIDEO_SRC_ZO_STDIO_FILE_H

#include <cstdio>
#include <memory>

namespace zo {

struct CloseFile {
  void operator()(std::FILE* p_file) const noexcept { std::fclose(p_file); }
};

/// Owner of an open standard stream.
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

}  // namespace zo

#endif
