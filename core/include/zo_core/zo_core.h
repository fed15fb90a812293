/// Every public header of libzo_core.
#ifndef ZO_CORE_ZO_CORE_H
#define ZO_CORE_ZO_CORE_H

#include "zo_core/zo_buffer.h"
#include "zo_core/zo_clock.h"
#include "zo_core/zo_device.h"
#include "zo_core/zo_error_handlers.h"
#include "zo_core/zo_exception.h"
#include "zo_core/zo_frame.h"
#include "zo_core/zo_frame_c.h"
#include "zo_core/zo_frame_format.h"
#include "zo_core/zo_geometry.h"
#include "zo_core/zo_interrupt.h"
#include "zo_core/zo_mutex.h"
#include "zo_core/zo_path.h"
#include "zo_core/zo_status.h"
#include "zo_core/zo_types_c.h"

#endif
