/* Uses the installed library from C99: a frame is made, reshaped and released. */
#include <stdio.h>
#include <string.h>

#include "zo_video_c/zo_video_c.h"

static int fail(const char* what, const char* message) {
  fprintf(stderr, "consumer_c: %s: %s\n", what, message);
  return 1;
}

int main(void) {
  char message[256] = "";
  const char url[] = "/no/such/clip.mp4";
  ZoVideoReader* p_reader = NULL;
  ZoFrame* p_frame = NULL;
  ZoSize size;
  size.width = 64;
  size.height = 48;
  if (zoFrame_create(&p_frame, message, sizeof message) != ZO_STATUS_OK) {
    return fail("zoFrame_create", message);
  }
  if (zoFrame_reuse(p_frame, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, size, message, sizeof message) !=
      ZO_STATUS_OK) {
    return fail("zoFrame_reuse", message);
  }
  if (p_frame->plane_count != 3 || p_frame->width != 64 || p_frame->height != 48) {
    return fail("zoFrame_reuse", "the record does not describe the frame");
  }
  memset(p_frame->p_planes[0], 16, (size_t)p_frame->strides[0] * 48U);
  if (zoFrame_release(&p_frame) != ZO_STATUS_OK || p_frame != NULL) {
    return fail("zoFrame_release", "the pointer was not set to null");
  }
  if (zoFrame_create(NULL, message, sizeof message) != ZO_STATUS_NULL_POINTER || message[0] == '\0') {
    return fail("zoFrame_create(NULL)", "no error reported");
  }
  if (zoVideoReader_create(NULL, NULL, url, sizeof url - 1, -1, 1, 0, 0, &p_reader, message,
                           sizeof message) != ZO_STATUS_OPEN_ERROR ||
      p_reader != NULL) {
    return fail("zoVideoReader_create", "a clip that does not exist was not refused");
  }
  puts("consumer_c: ok");
  return 0;
}
