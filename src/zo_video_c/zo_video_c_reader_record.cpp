#include "zo_video_c/zo_video_c_reader_record.h"

#include "zo_core/zo_exception.h"
#include "zo_core/zo_frame_format.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video_c/zo_video_c_reader";

}  // namespace

ZoVideoRotation toZoVideoRotation(VideoRotation rotation) {
  switch (rotation) {
    case ZO_VIDEO_ROTATION_0:
      return ::ZO_VIDEO_ROTATION_0;
    case ZO_VIDEO_ROTATION_90:
      return ::ZO_VIDEO_ROTATION_90;
    case ZO_VIDEO_ROTATION_180:
      return ::ZO_VIDEO_ROTATION_180;
    case ZO_VIDEO_ROTATION_270:
      return ::ZO_VIDEO_ROTATION_270;
    case ZO_VIDEO_ROTATION_OTHER:
      return ::ZO_VIDEO_ROTATION_OTHER;
  }
  throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, "toZoVideoRotation", SOURCE_FILE, __LINE__,
                  "Failed to convert video rotation %d", static_cast<int>(rotation));
}

void updateReader(ZoVideoReader* p_reader) {
  static const char FUNCTION[] = "updateReader";
  if (p_reader == nullptr) {
    throw Exception(nullptr, ZO_STATUS_NULL_POINTER, FUNCTION, SOURCE_FILE, __LINE__,
                    "Parameter 'p_reader' is null");
  }
  if (p_reader->p_handle == nullptr) {
    throw Exception(nullptr, ZO_STATUS_NOT_INITIALIZED, FUNCTION, SOURCE_FILE, __LINE__,
                    "Underlying C++ object is not initialized.");
  }
  const VideoReader& reader = static_cast<const ReaderHandle*>(p_reader->p_handle)->reader;
  p_reader->format = toZoFrameFormat(reader.format());
  p_reader->frame_count = reader.frameCount();
  p_reader->frame_index = reader.frameIndex();
  const Size size = reader.size();
  p_reader->width = size.width;
  p_reader->height = size.height;
  p_reader->timestamp = reader.timestamp();
  p_reader->fps = reader.fps();
  p_reader->rotation = toZoVideoRotation(reader.rotation());
  p_reader->url = reader.url();
}

}  // namespace zo
