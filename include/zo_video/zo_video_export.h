#ifndef ZO_VIDEO_ZO_VIDEO_EXPORT_H
#define ZO_VIDEO_ZO_VIDEO_EXPORT_H

/* Marks what leaves libzo_video; everything else is hidden. */
#define ZO_VIDEO_API __attribute__((visibility("default")))
/* Keeps a part of an exported class inside. */
#define ZO_VIDEO_PRIVATE __attribute__((visibility("hidden")))

#endif
