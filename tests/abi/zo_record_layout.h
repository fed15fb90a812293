// Where the fields of the plain records lie, for every program that was compiled against them: read by a C
// and by a C++ file, which compile only while this holds. Pointers of 8 bytes, or of 4 with 8-byte alignment
// of long long and double (32-bit ARM).
#ifndef ZO_TESTS_ZO_RECORD_LAYOUT_H
#define ZO_TESTS_ZO_RECORD_LAYOUT_H

#include <stddef.h>

#include "zo_video_c/zo_video_c.h"

#ifdef __cplusplus
#define ZO_HOLDS(name, condition) static_assert(condition, #name)
#else
#define ZO_HOLDS(name, condition) extern char zo_holds_##name[(condition) ? 1 : -1]
#endif
#define ZO_SIZE(type, on_64, on_32) \
  ZO_HOLDS(size_of_##type, sizeof(type) == (sizeof(void*) == 8 ? on_64 : on_32))
#define ZO_FIELD(type, field, on_64, on_32) \
  ZO_HOLDS(type##_##field, offsetof(type, field) == (sizeof(void*) == 8 ? on_64 : on_32))

ZO_SIZE(ZoStatus, 4, 4);
ZO_SIZE(ZoFrameFormat, 4, 4);
ZO_SIZE(ZoVideoRotation, 4, 4);

ZO_SIZE(ZoSize, 8, 8);
ZO_FIELD(ZoSize, width, 0, 0);
ZO_FIELD(ZoSize, height, 4, 4);

ZO_SIZE(ZoFrame, 80, 64);
ZO_FIELD(ZoFrame, p_handle, 0, 0);
ZO_FIELD(ZoFrame, format, 8, 4);
ZO_FIELD(ZoFrame, width, 12, 8);
ZO_FIELD(ZoFrame, height, 16, 12);
ZO_FIELD(ZoFrame, plane_count, 20, 16);
ZO_FIELD(ZoFrame, p_planes, 24, 20);
ZO_FIELD(ZoFrame, strides, 56, 36);
ZO_FIELD(ZoFrame, timestamp, 72, 56);

ZO_SIZE(ZoVideoReader, 72, 64);
ZO_FIELD(ZoVideoReader, p_handle, 0, 0);
ZO_FIELD(ZoVideoReader, url, 8, 4);
ZO_FIELD(ZoVideoReader, timestamp, 16, 8);
ZO_FIELD(ZoVideoReader, format, 24, 16);
ZO_FIELD(ZoVideoReader, width, 28, 20);
ZO_FIELD(ZoVideoReader, height, 32, 24);
ZO_FIELD(ZoVideoReader, frame_count, 40, 32);
ZO_FIELD(ZoVideoReader, frame_index, 48, 40);
ZO_FIELD(ZoVideoReader, fps, 56, 48);
ZO_FIELD(ZoVideoReader, rotation, 64, 56);

#endif
