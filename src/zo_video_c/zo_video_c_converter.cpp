#include "zo_video_c/zo_video_c_converter.h"

#include <memory>

#include "zo_core/zo_exception.h"
#include "zo_core/zo_frame.h"
#include "zo_core_internal/zo_guarded.h"
#include "zo_video/zo_video_converter.h"

namespace {

constexpr char SOURCE_FILE[] = "src/zo_video_c/zo_video_c_converter";

// The handle that callers hold is the address of the converter itself.
zo::VideoConverter* fromHandle(ZoVideoConverter* p_converter) {
  return reinterpret_cast<zo::VideoConverter*>(p_converter);
}

ZoVideoConverter* toHandle(zo::VideoConverter* p_converter) {
  return reinterpret_cast<ZoVideoConverter*>(p_converter);
}

[[noreturn]] void throwNullParameter(const char* function, int line, const char* p_name) {
  throw zo::Exception(nullptr, zo::ZO_STATUS_NULL_POINTER, function, SOURCE_FILE, line,
                      "Parameter '%s' is null", p_name);
}

}  // namespace

int zoVideoConverter_create(ZoVideoConverter** pp_converter, char* p_message, unsigned int message_size) {
  static const char FUNCTION[] = "zoVideoConverter_create";
  return zo::guarded(FUNCTION, p_message, message_size, [=] {
    if (pp_converter == nullptr) {
      throwNullParameter(FUNCTION, __LINE__, "pp_converter");
    }
    *pp_converter = toHandle(std::make_unique<zo::VideoConverter>().release());
  });
}

int zoVideoConverter_release(ZoVideoConverter** pp_converter) {
  static const char FUNCTION[] = "zoVideoConverter_release";
  return zo::guarded(FUNCTION, nullptr, 0, [=] {
    if (pp_converter == nullptr) {
      throwNullParameter(FUNCTION, __LINE__, "pp_converter");
    }
    delete fromHandle(*pp_converter);
    *pp_converter = nullptr;
  });
}

int zoVideoConverter_convert(ZoVideoConverter* p_converter, const ZoFrame* p_src_frame, ZoFrameFormat format,
                             ZoSize size, ZoFrame* p_dst_frame, char* p_message, unsigned int message_size) {
  static const char FUNCTION[] = "zoVideoConverter_convert";
  return zo::guarded(FUNCTION, p_message, message_size, [=] {
    if (p_converter == nullptr) {
      throwNullParameter(FUNCTION, __LINE__, "p_converter");
    }
    // The frames are the caller's responsibility: unlike those of zoVideoReader_read they are not checked.
    fromHandle(p_converter)
        ->convert(*static_cast<const zo::Frame*>(p_src_frame->p_handle), zo::toFrameFormat(format),
                  zo::Size(size.width, size.height), *static_cast<zo::Frame*>(p_dst_frame->p_handle),
                  zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
    zo::updateFrame(p_dst_frame);
  });
}
