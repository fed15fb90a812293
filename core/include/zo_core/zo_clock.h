#ifndef ZO_CORE_ZO_CLOCK_H
#define ZO_CORE_ZO_CLOCK_H

#include "zo_core/zo_export.h"

namespace zo {

/// Milliseconds of a clock that never goes back. Only differences mean anything.
ZO_CORE_API long long getMonotonicTimeMs();

}  // namespace zo

#endif
