/* Clips and pictures for tests that are compiled as C. They live as long as the process. */
#ifndef ZO_TESTS_ZO_C_MEDIA_H
#define ZO_TESTS_ZO_C_MEDIA_H

#include "zo_core/zo_frame_c.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Thirty pictures of 64 x 48, one every 40 ms, a key frame every 12. Picture i carries the number i. */
const char* numberedClip(void);
/* The same with a display matrix that asks for a turn by that many degrees clockwise. */
const char* rotatedClip(int degrees);
/* Ten JPEG pictures of which the third (number 2) is damaged. */
const char* damagedClip(void);
/* A path in a directory of the tests where nothing is. */
const char* missingPath(void);
int fileExists(const char* path);

/* The number that a picture carries. */
int numberOf(const ZoFrame* p_frame);
/* Fills the frame with a picture that carries the number. */
void paintFrame(ZoFrame* p_frame, ZoFrameFormat format, int width, int height, int number);

#ifdef __cplusplus
}
#endif

#endif
