#ifndef ZO_VIDEO_SRC_ZO_IMAGE_FILE_TYPE_H
#define ZO_VIDEO_SRC_ZO_IMAGE_FILE_TYPE_H

#include <string>

#include "Simd/SimdLib.hpp"

namespace zo {

/// The image file type that a path's extension stands for, in any case: JPEG, PNG, binary PGM or binary PPM.
/// Throws zo::Exception (ZO_STATUS_NOT_SUPPORTED) for any other extension and for none.
SimdImageFileType detectFileType(const std::string& path);

}  // namespace zo

#endif
