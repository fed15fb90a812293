/* Enumerations and small records shared by all plain functions. Valid C99 and C++. */
#ifndef ZO_CORE_ZO_TYPES_C_H
#define ZO_CORE_ZO_TYPES_C_H

#ifdef __cplusplus
#include <cstdint>
/* In C++ the width is fixed, so that every integer is a legal (if unknown) value. */
#define ZO_C_ENUM(name) enum name : int32_t
#else
#define ZO_C_ENUM(name) enum name
#endif

/* Result of every plain function: 0 is success. The numbers never change. */
typedef ZO_C_ENUM(ZoStatus){
    ZO_STATUS_OK = 0,                 /* success */
    ZO_STATUS_UNKNOWN_ERROR = 1,      /* an exception of unknown type was caught */
    ZO_STATUS_INTERNAL_ERROR = 2,     /* a broken assumption inside the library */
    ZO_STATUS_STD_EXCEPTION = 3,      /* a standard-library exception was caught: for one, no memory */
    ZO_STATUS_NULL_POINTER = 4,       /* a required pointer is null */
    ZO_STATUS_OUT_OF_RANGE = 5,       /* an index or enumeration value outside its range */
    ZO_STATUS_INVALID_ARGUMENT = 6,   /* a wrong parameter value */
    ZO_STATUS_NOT_INITIALIZED = 7,    /* an object is used before it holds anything */
    ZO_STATUS_NOT_SUPPORTED = 8,      /* a format or file type that the operation does not handle */
    ZO_STATUS_INVALID_STATE = 10,     /* a call that the object's state forbids */
    ZO_STATUS_NOT_ALLOWED = 11,       /* an operation that is switched off for this stream */
    ZO_STATUS_UNEXPECTED_RESULT = 12, /* a library call gave another result than the required one */
    ZO_STATUS_TIMEOUT = 13,           /* the time budget of an open or read ran out */
    ZO_STATUS_OUT_OF_MEMORY = 18,     /* a library underneath had no memory */
    ZO_STATUS_OPEN_ERROR = 20,        /* a stream or file cannot be opened */
    ZO_STATUS_READ_ERROR = 21,        /* reading a stream, packet or file failed */
    ZO_STATUS_WRITE_ERROR = 22,       /* writing a file failed */
    ZO_STATUS_SEEK_ERROR = 23,        /* seeking within a stream failed */
    ZO_STATUS_NOT_OPENED = 24,        /* the reader is not open */
    ZO_STATUS_DECODER_ERROR = 27,     /* setting up or driving the video decoder failed */
    ZO_STATUS_CODEC_ERROR = 28        /* an image failed to encode or decode */
} ZoStatus;

/* Pixel layouts. The numbers never change. */
typedef ZO_C_ENUM(ZoFrameFormat){
    ZO_FRAME_FORMAT_UNDEFINED = 0,               /* no format set */
    ZO_FRAME_FORMAT_GRAY8 = 1,                   /* one plane, 8-bit luma */
    ZO_FRAME_FORMAT_RGB24 = 2,                   /* one plane, packed R, G, B bytes */
    ZO_FRAME_FORMAT_RESERVED_3 = 3,              /* not accepted by any operation */
    ZO_FRAME_FORMAT_BGR24 = 4,                   /* one plane, packed B, G, R bytes */
    ZO_FRAME_FORMAT_RESERVED_5 = 5,              /* not accepted by any operation */
    ZO_FRAME_FORMAT_YUV420_PLANAR_I420 = 6,      /* planes Y, U, V; chroma halved both ways */
    ZO_FRAME_FORMAT_YUV420_PLANAR_YV12 = 7,      /* planes Y, V, U; chroma halved both ways */
    ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12 = 8,  /* plane Y and one interleaved U/V plane */
    ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21 = 9,  /* plane Y and one interleaved V/U plane */
    ZO_FRAME_FORMAT_YUV422_PLANAR = 10,          /* three planes; chroma halved horizontally */
    ZO_FRAME_FORMAT_YUV422_PACKED_YUY2 = 11,     /* one plane, Y0 U Y1 V */
    ZO_FRAME_FORMAT_YUV422_PACKED_UYVY = 12,     /* one plane, U Y0 V Y1 */
    ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16 = 13, /* plane Y and one U/V plane, chroma halved horizontally */
    ZO_FRAME_FORMAT_YUV444_PACKED_IYU2 = 14,     /* one plane, packed 4:4:4, 3 bytes per pixel */
    ZO_FRAME_FORMAT_YUV444_PLANAR = 15,          /* planes Y, U, V at full size */
    ZO_FRAME_FORMAT_CUSTOM_1 = 16,               /* caller-defined content */
    ZO_FRAME_FORMAT_RESERVED_17 = 17,            /* not accepted by any operation */
    ZO_FRAME_FORMAT_RESERVED_18 = 18,            /* not accepted by any operation */
    ZO_FRAME_FORMAT_CUSTOM_2 = 19,               /* caller-defined content */
    ZO_FRAME_FORMAT_CUSTOM_3 = 20                /* caller-defined content */
} ZoFrameFormat;

/* Width and height in pixels. */
typedef struct ZoSize {
  int width;  /* pixels */
  int height; /* pixels */
} ZoSize;

#endif
