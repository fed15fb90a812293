#ifndef ZO_CORE_ZO_PATH_H
#define ZO_CORE_ZO_PATH_H

#include <string>

#include "zo_core/zo_export.h"

namespace zo {

/// The extension of a path's last component, leading dot included, as it is written ("dir.d/a.JPG" gives
/// ".JPG"); empty when there is none.
ZO_CORE_API std::string fileExtension(const std::string& path);

}  // namespace zo

#endif
