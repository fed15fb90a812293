/* Every plain function of libzo_video and libzo_core. Valid C99 and C++. */
#ifndef ZO_VIDEO_C_ZO_VIDEO_C_H
#define ZO_VIDEO_C_ZO_VIDEO_C_H

#include "zo_core/zo_frame_c.h"
#include "zo_core/zo_types_c.h"
#include "zo_video_c/zo_video_c_converter.h"
#include "zo_video_c/zo_video_c_reader.h"

#endif
