#ifndef ZO_VIDEO_SRC_ZO_TURBOJPEG_HANDLES_H
#define ZO_VIDEO_SRC_ZO_TURBOJPEG_HANDLES_H

#include <turbojpeg.h>

#include <memory>
#include <type_traits>

namespace zo {

// Owners for TurboJPEG's instances. Both kinds share one C type and one way to free them; two tags keep a
// decompressor from being handed to a compressing call.

struct DestroyCompressor {
  void operator()(tjhandle p_instance) const noexcept { tjDestroy(p_instance); }
};

struct DestroyDecompressor {
  void operator()(tjhandle p_instance) const noexcept { tjDestroy(p_instance); }
};

using TurboJpegCompressorPtr = std::unique_ptr<std::remove_pointer_t<tjhandle>, DestroyCompressor>;
using TurboJpegDecompressorPtr = std::unique_ptr<std::remove_pointer_t<tjhandle>, DestroyDecompressor>;

}  // namespace zo

#endif
