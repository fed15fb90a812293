/*
 * Prints a table of the frames of a clip, with the mean brightness of each:
 *   frame_table CLIP [FIRST [COUNT]]
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zo_video_c/zo_video_c.h>

/* What the program holds; a message of the last failed call is in `message`. */
typedef struct Session {
  ZoVideoReader* p_reader;
  ZoVideoConverter* p_converter;
  ZoFrame* p_frame;
  ZoFrame* p_grey;
  char message[512];
} Session;

static double meanOf(const ZoFrame* p_grey) {
  double sum = 0;
  int x;
  int y;
  for (y = 0; y < p_grey->height; ++y) {
    const unsigned char* p_row = p_grey->p_planes[0] + (size_t)y * p_grey->strides[0];
    for (x = 0; x < p_grey->width; ++x) {
      sum += p_row[x];
    }
  }
  return sum / p_grey->width / p_grey->height;
}

static int openAll(Session* p_session, const char* clip) {
  const unsigned int size = sizeof(p_session->message);
  int status = zoVideoReader_create(NULL, NULL, clip, (unsigned int)strlen(clip), -1, 1, 0, 0,
                                    &p_session->p_reader, p_session->message, size);
  if (status == ZO_STATUS_OK) {
    status = zoVideoConverter_create(&p_session->p_converter, p_session->message, size);
  }
  if (status == ZO_STATUS_OK) {
    status = zoFrame_create(&p_session->p_frame, p_session->message, size);
  }
  if (status == ZO_STATUS_OK) {
    status = zoFrame_create(&p_session->p_grey, p_session->message, size);
  }
  return status;
}

static int printRows(Session* p_session, long long first, long long count) {
  const unsigned int size = sizeof(p_session->message);
  int ready = 0;
  int status = zoVideoReader_moveByIndex(p_session->p_reader, first, p_session->message, size);
  printf("%8s %10s %12s %7s %6s\n", "frame", "ms", "size", "planes", "mean");
  while (status == ZO_STATUS_OK && count-- > 0) {
    const ZoFrame* p_frame = p_session->p_frame;
    status = zoVideoReader_read(p_session->p_reader, p_session->p_frame, &ready, p_session->message, size);
    if (status != ZO_STATUS_OK || !ready) {
      break; /* an error, or the end of the clip */
    }
    printf("%8lld %10lld ", p_session->p_reader->frame_index, p_frame->timestamp);
    if (p_frame->plane_count == 0) {
      printf("%12s\n", "no picture"); /* the decoder produced none */
      continue;
    }
    {
      ZoSize picture;
      picture.width = p_frame->width;
      picture.height = p_frame->height;
      status = zoVideoConverter_convert(p_session->p_converter, p_frame, ZO_FRAME_FORMAT_GRAY8, picture,
                                        p_session->p_grey, p_session->message, size);
    }
    if (status == ZO_STATUS_OK) {
      printf("%5d x %4d %7d %6.1f\n", p_frame->width, p_frame->height, p_frame->plane_count,
             meanOf(p_session->p_grey));
    }
  }
  return status;
}

int main(int argc, char** argv) {
  Session session = {NULL, NULL, NULL, NULL, ""};
  int status;
  if (argc < 2 || argc > 4) {
    fprintf(stderr, "usage: %s CLIP [FIRST [COUNT]]\n", argv[0]);
    return 2;
  }
  status = openAll(&session, argv[1]);
  if (status == ZO_STATUS_OK) {
    status = printRows(&session, argc > 2 ? atoll(argv[2]) : 0,
                       argc > 3 ? atoll(argv[3]) : session.p_reader->frame_count);
  }
  if (status != ZO_STATUS_OK) {
    fprintf(stderr, "%s: error %d: %s\n", argv[0], status, session.message);
  }
  zoFrame_release(&session.p_grey);
  zoFrame_release(&session.p_frame);
  zoVideoConverter_release(&session.p_converter);
  zoVideoReader_release(&session.p_reader);
  return status == ZO_STATUS_OK ? 0 : 1;
}
