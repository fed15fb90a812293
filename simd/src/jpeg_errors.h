#ifndef SIMD_SRC_JPEG_ERRORS_H
#define SIMD_SRC_JPEG_ERRORS_H

#include <cstddef>
#include <cstdio>

#include <jpeglib.h>

#include "jump_guard.h"

namespace Simd {
namespace Detail {

/// The error handler of the JPEG library: silent, and fatal errors jump to the guard.
struct JpegErrors {
  jpeg_error_mgr manager;  // first, the library only knows this part
  JumpPoint point;

  jpeg_error_mgr* install() {
    jpeg_std_error(&manager);
    manager.error_exit = [](j_common_ptr p_info) {
      longjmp(static_cast<JpegErrors*>(static_cast<void*>(p_info->err))->point.buffer, 1);
    };
    manager.emit_message = [](j_common_ptr p_info, int level) {
      if (level < 0) {
        ++p_info->err->num_warnings;
      }
    };
    manager.output_message = [](j_common_ptr) {};
    return &manager;
  }
};

}  // namespace Detail
}  // namespace Simd

#endif
