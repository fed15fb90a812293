#ifndef ZO_VIDEO_C_SRC_ZO_VIDEO_C_READER_RECORD_H
#define ZO_VIDEO_C_SRC_ZO_VIDEO_C_READER_RECORD_H

#include "zo_core/zo_interrupt.h"
#include "zo_video/zo_video_reader.h"
#include "zo_video_c/zo_video_c_reader.h"

namespace zo {

/// What the record's p_handle points to. The callback is polled while the reader opens, and goes first.
struct ReaderHandle {
  VideoReader reader;
  InterruptCallback interrupt_callback;
};

/// The plain code of a rotation. Throws zo::Exception for a value that has none.
ZoVideoRotation toZoVideoRotation(VideoRotation rotation);

/// Copies the reader's properties into the record, the url last. Throws zo::Exception when the record or its
/// handle is null, or the rotation has no plain code; the fields before it are new then.
void updateReader(ZoVideoReader* p_reader);

}  // namespace zo

#endif
