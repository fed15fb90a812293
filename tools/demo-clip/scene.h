#ifndef ZO_DEMO_CLIP_SCENE_H
#define ZO_DEMO_CLIP_SCENE_H

#include "zo_core/zo_core.h"

/// Paints an evening at the sea into a frame in ZO_FRAME_FORMAT_BGR24.
/// @param time  0: the sun stands high, 1: night.
void paintScene(zo::Frame& frame, double time);

#endif
