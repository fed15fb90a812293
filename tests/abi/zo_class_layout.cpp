// Sizes that callers' programs have compiled in: they must not change within a major version. Classes with a
// private part are one pointer, plus one for their virtual functions where they have any.
#include "zo_record_layout.h"
#include "zo_video/zo_video.h"

namespace {

constexpr std::size_t POINTER = sizeof(void*);

constexpr std::size_t byPointer(std::size_t on_64, std::size_t on_32) {
  return POINTER == 8 ? on_64 : on_32;
}

static_assert(sizeof(zo::VideoReader) == POINTER, "");
static_assert(sizeof(zo::VideoConverter) == POINTER, "");
static_assert(sizeof(zo::JpegEncoder) == POINTER, "");
static_assert(sizeof(zo::JpegDecoder) == POINTER, "");
static_assert(sizeof(zo::FrameDeleter) == POINTER, "");
static_assert(sizeof(zo::ICapture) == POINTER, "");
static_assert(sizeof(zo::VideoCapture) == 2 * POINTER, "");
static_assert(sizeof(zo::IInterruptable) == POINTER, "");
static_assert(sizeof(zo::InterruptCallback) == 3 * POINTER, "");

static_assert(sizeof(zo::Size) == 8, "");
static_assert(sizeof(zo::Point) == 8, "");
static_assert(sizeof(zo::Rect) == 16, "");
static_assert(sizeof(zo::DevicePtr) == 3 * POINTER, "");
static_assert(sizeof(zo::Buffer) == POINTER + 8, "");
static_assert(sizeof(zo::FrameLayout) == 28, "");
static_assert(sizeof(zo::Frame) == byPointer(88, 72), "");
static_assert(sizeof(zo::Exception) == byPointer(4320, 4308), "");
static_assert(sizeof(zo::FastMutex) == sizeof(pthread_mutex_t), "");

// Enumerations travel as 32-bit integers, any value of them.
static_assert(sizeof(zo::Status) == 4 && sizeof(zo::FrameFormat) == 4 && sizeof(zo::VideoRotation) == 4, "");
static_assert(sizeof(zo::VideoConverter::ScaleAlgorithm) == 4, "");

}  // namespace
