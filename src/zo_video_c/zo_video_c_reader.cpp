#include "zo_video_c/zo_video_c_reader.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "zo_core/zo_exception.h"
#include "zo_core/zo_frame.h"
#include "zo_core_internal/zo_guarded.h"
#include "zo_video_c/zo_video_c_reader_record.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video_c/zo_video_c_reader";

[[noreturn]] void throwNullParameter(const char* function, int line, const char* p_name) {
  throw Exception(nullptr, ZO_STATUS_NULL_POINTER, function, SOURCE_FILE, line, "Parameter '%s' is null",
                  p_name);
}

[[noreturn]] void throwNoObject(const char* function, int line) {
  throw Exception(nullptr, ZO_STATUS_NOT_INITIALIZED, function, SOURCE_FILE, line,
                  "Underlying C++ object is not initialized.");
}

VideoReader& describedReader(const ZoVideoReader* p_reader, const char* function) {
  if (p_reader == nullptr) {
    throwNullParameter(function, __LINE__, "p_reader");
  }
  if (p_reader->p_handle == nullptr) {
    throwNoObject(function, __LINE__);
  }
  return static_cast<ReaderHandle*>(p_reader->p_handle)->reader;
}

/// True when a zero stands within the first `length` + 1 bytes. The limit does not fit into 32 bits for the
/// largest length.
bool terminatedWithin(const char* p_text, unsigned length) {
  const std::uint64_t limit = std::uint64_t{length} + 1;
  if (limit > SIZE_MAX) {
    return true;  // beyond what memory can hold
  }
  return strnlen(p_text, static_cast<std::size_t>(limit)) != limit;
}

}  // namespace
}  // namespace zo

int zoVideoReader_create(int (*callback)(void*), void* callback_opaque, const char* p_url,
                         unsigned int url_length, int timeout_ms, int enable_navigation, int skip_errors,
                         int use_navigation_cache, ZoVideoReader** pp_reader, char* p_message,
                         unsigned int message_size) {
  static const char FUNCTION[] = "zoVideoReader_create";
  return zo::guarded(FUNCTION, p_message, message_size, [=] {
    if (pp_reader == nullptr) {
      zo::throwNullParameter(FUNCTION, __LINE__, "pp_reader");
    }
    auto p_record = std::make_unique<ZoVideoReader>();
    // A null url has no length to look at; the reader reports it.
    if (p_url != nullptr && !zo::terminatedWithin(p_url, url_length)) {
      throw zo::Exception(nullptr, zo::ZO_STATUS_INVALID_ARGUMENT, FUNCTION, zo::SOURCE_FILE, __LINE__,
                          "Parameter 'p_url' is not null terminated");
    }
    auto p_handle = std::make_unique<zo::ReaderHandle>();
    p_handle->interrupt_callback.setCallback(callback, callback_opaque);
    // An interrupted open is no failure: the caller gets a record whose reader is closed.
    p_handle->reader.open(p_url, timeout_ms, &p_handle->interrupt_callback, enable_navigation != 0,
                          skip_errors != 0, use_navigation_cache != 0);
    p_record->p_handle = p_handle.get();
    zo::updateReader(p_record.get());
    p_handle.release();
    *pp_reader = p_record.release();
  });
}

int zoVideoReader_release(ZoVideoReader** pp_reader) {
  static const char FUNCTION[] = "zoVideoReader_release";
  return zo::guarded(FUNCTION, nullptr, 0, [=] {
    if (pp_reader == nullptr) {
      zo::throwNullParameter(FUNCTION, __LINE__, "pp_reader");
    }
    if (*pp_reader != nullptr) {
      delete static_cast<zo::ReaderHandle*>((*pp_reader)->p_handle);
      delete *pp_reader;
      *pp_reader = nullptr;
    }
  });
}

int zoVideoReader_moveByIndex(ZoVideoReader* p_reader, long long index, char* p_message,
                              unsigned int message_size) {
  static const char FUNCTION[] = "zoVideoReader_moveByIndex";
  return zo::guarded(FUNCTION, p_message, message_size, [=] {
    zo::describedReader(p_reader, FUNCTION).moveByIndex(index);
    zo::updateReader(p_reader);
  });
}

int zoVideoReader_read(ZoVideoReader* p_reader, ZoFrame* p_frame, int* p_frame_ready, char* p_message,
                       unsigned int message_size) {
  static const char FUNCTION[] = "zoVideoReader_read";
  return zo::guarded(FUNCTION, p_message, message_size, [=] {
    zo::VideoReader& reader = zo::describedReader(p_reader, FUNCTION);
    if (p_frame == nullptr) {
      zo::throwNullParameter(FUNCTION, __LINE__, "p_frame");
    }
    if (p_frame->p_handle == nullptr) {
      zo::throwNoObject(FUNCTION, __LINE__);
    }
    bool got_frame = false;
    const int interrupted = reader.read(*static_cast<zo::Frame*>(p_frame->p_handle), got_frame, nullptr);
    *p_frame_ready = interrupted != 1 && got_frame ? 1 : 0;
    zo::updateReader(p_reader);
    zo::updateFrame(p_frame);
  });
}
