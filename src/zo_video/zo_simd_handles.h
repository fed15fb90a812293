#ifndef ZO_VIDEO_SRC_ZO_SIMD_HANDLES_H
#define ZO_VIDEO_SRC_ZO_SIMD_HANDLES_H

#include <cstdint>
#include <memory>

#include "Simd/SimdLib.hpp"

namespace zo {

struct ReleaseSimdBlock {
  void operator()(uint8_t* p_block) const noexcept { SimdFree(p_block); }
};

/// Owner of memory that the image library has allocated: loaded pixels or an encoded image.
using SimdBlockPtr = std::unique_ptr<uint8_t, ReleaseSimdBlock>;

}  // namespace zo

#endif
