#include "zo_core/zo_frame_c.h"

#include <memory>

#include "zo_core/zo_exception.h"
#include "zo_core/zo_frame.h"
#include "zo_core_internal/zo_guarded.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "core/zo_frame_c";

Frame& describedFrame(const ZoFrame* p_frame, const char* function) {
  if (p_frame == nullptr) {
    throw Exception(nullptr, ZO_STATUS_NULL_POINTER, function, SOURCE_FILE, __LINE__,
                    "Parameter 'p_frame' is null");
  }
  if (p_frame->p_handle == nullptr) {
    throw Exception(nullptr, ZO_STATUS_NOT_INITIALIZED, function, SOURCE_FILE, __LINE__,
                    "Underlying C++ object is not initialized.");
  }
  return *static_cast<Frame*>(p_frame->p_handle);
}

}  // namespace

void updateFrame(ZoFrame* p_frame) {
  Frame& frame = describedFrame(p_frame, "updateFrame");
  p_frame->format = toZoFrameFormat(frame.format());
  p_frame->width = frame.size().width;
  p_frame->height = frame.size().height;
  p_frame->plane_count = static_cast<int>(frame.planeCount());
  for (unsigned i = 0; i < 4; ++i) {
    p_frame->p_planes[i] = frame.planeData(i);
    p_frame->strides[i] = frame.planeStride(i);
  }
  p_frame->timestamp = frame.timestamp();
}

}  // namespace zo

int zoFrame_create(ZoFrame** pp_frame, char* p_message, unsigned int message_size) {
  static const char FUNCTION[] = "zoFrame_create";
  return zo::guarded(FUNCTION, p_message, message_size, [=] {
    if (pp_frame == nullptr) {
      throw zo::Exception(nullptr, zo::ZO_STATUS_NULL_POINTER, FUNCTION, zo::SOURCE_FILE, __LINE__,
                          "Parameter 'pp_frame' is null");
    }
    auto p_record = std::make_unique<ZoFrame>();
    auto p_frame = std::make_unique<zo::Frame>();
    p_record->p_handle = p_frame.get();
    zo::updateFrame(p_record.get());
    p_frame.release();
    *pp_frame = p_record.release();
  });
}

int zoFrame_reuse(ZoFrame* p_frame, ZoFrameFormat format, ZoSize size, char* p_message,
                  unsigned int message_size) {
  static const char FUNCTION[] = "zoFrame_reuse";
  return zo::guarded(FUNCTION, p_message, message_size, [=] {
    zo::Frame& frame = zo::describedFrame(p_frame, FUNCTION);
    frame.reuse(zo::toFrameFormat(format), zo::Size(size.width, size.height), zo::DeviceContext(), 0);
    zo::updateFrame(p_frame);
  });
}

int zoFrame_release(ZoFrame** pp_frame) {
  static const char FUNCTION[] = "zoFrame_release";
  return zo::guarded(FUNCTION, nullptr, 0, [=] {
    if (pp_frame == nullptr) {
      throw zo::Exception(nullptr, zo::ZO_STATUS_NULL_POINTER, FUNCTION, zo::SOURCE_FILE, __LINE__,
                          "Parameter 'pp_frame' is null");
    }
    if (*pp_frame != nullptr) {
      delete static_cast<zo::Frame*>((*pp_frame)->p_handle);
      delete *pp_frame;
      *pp_frame = nullptr;
    }
  });
}
