#ifndef ZO_CORE_ZO_STATUS_H
#define ZO_CORE_ZO_STATUS_H

#include <cstdint>

namespace zo {

/// What went wrong. Every zo::Exception carries one of these, and every plain function returns one.
/// The numbers are part of the binary interface and never change.
enum Status : int32_t {
  ZO_STATUS_OK = 0,                  ///< success
  ZO_STATUS_UNKNOWN_ERROR = 1,       ///< an exception of unknown type was caught
  ZO_STATUS_INTERNAL_ERROR = 2,      ///< a broken assumption inside the library
  ZO_STATUS_STD_EXCEPTION = 3,       ///< a standard-library exception was caught, in C std::bad_alloc too
  ZO_STATUS_NULL_POINTER = 4,        ///< a required pointer is null
  ZO_STATUS_OUT_OF_RANGE = 5,        ///< an index or enumeration value outside its range
  ZO_STATUS_INVALID_ARGUMENT = 6,    ///< a wrong parameter value
  ZO_STATUS_NOT_INITIALIZED = 7,     ///< an object is used before it holds anything
  ZO_STATUS_NOT_SUPPORTED = 8,       ///< a format or file type that the operation does not handle
  ZO_STATUS_INVALID_STATE = 10,      ///< a call that the object's state forbids
  ZO_STATUS_NOT_ALLOWED = 11,        ///< an operation that is switched off for this stream
  ZO_STATUS_UNEXPECTED_RESULT = 12,  ///< a library call gave another result than the required one
  ZO_STATUS_TIMEOUT = 13,            ///< the time budget of an open or read ran out
  ZO_STATUS_OUT_OF_MEMORY = 18,      ///< a library underneath had no memory
  ZO_STATUS_OPEN_ERROR = 20,         ///< a stream or file cannot be opened
  ZO_STATUS_READ_ERROR = 21,         ///< reading a stream, packet or file failed
  ZO_STATUS_WRITE_ERROR = 22,        ///< writing a file failed
  ZO_STATUS_SEEK_ERROR = 23,         ///< seeking within a stream failed
  ZO_STATUS_NOT_OPENED = 24,         ///< the reader is not open
  ZO_STATUS_DECODER_ERROR = 27,      ///< setting up or driving the video decoder failed
  ZO_STATUS_CODEC_ERROR = 28         ///< an image failed to encode or decode
};

}  // namespace zo

#endif
