#ifndef ZO_CORE_ZO_EXPORT_H
#define ZO_CORE_ZO_EXPORT_H

/* Marks what leaves the shared libraries; everything else is hidden. */
#define ZO_CORE_API __attribute__((visibility("default")))

/* Marks what stays inside although its class leaves. */
#define ZO_CORE_PRIVATE __attribute__((visibility("hidden")))

/* Lets the compiler compare a printf-style format with its arguments (both positions counted from 1). */
#define ZO_PRINTF_FORMAT(format_position, first_argument) \
  __attribute__((format(printf, format_position, first_argument)))

#endif
