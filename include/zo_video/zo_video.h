/// Every public C++ header of libzo_video.
#ifndef ZO_VIDEO_ZO_VIDEO_H
#define ZO_VIDEO_ZO_VIDEO_H

#include "zo_core/zo_core.h"
#include "zo_video/zo_capture.h"
#include "zo_video/zo_drawing.h"
#include "zo_video/zo_image_io.h"
#include "zo_video/zo_jpeg_decoder.h"
#include "zo_video/zo_jpeg_encoder.h"
#include "zo_video/zo_video_capture.h"
#include "zo_video/zo_video_converter.h"
#include "zo_video/zo_video_reader.h"

#endif
