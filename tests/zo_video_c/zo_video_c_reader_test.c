#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include "zo_c_media.h"
#include "zo_c_test.h"
#include "zo_video_c/zo_video_c.h"

enum { MESSAGE_SIZE = 512 };

static char message[MESSAGE_SIZE];

/* A record that nobody dereferences: it tells whether a caller's pointer was written. */
static ZoVideoReader untouched_record;

static int createReader(const char* url, int enable_navigation, ZoVideoReader** pp_reader) {
  message[0] = '\0';
  return zoVideoReader_create(NULL, NULL, url, (unsigned int)strlen(url), -1, enable_navigation, 0, 0,
                              pp_reader, message, MESSAGE_SIZE);
}

static int readFrame(ZoVideoReader* p_reader, ZoFrame* p_frame, int* p_ready) {
  message[0] = '\0';
  return zoVideoReader_read(p_reader, p_frame, p_ready, message, MESSAGE_SIZE);
}

static int moveTo(ZoVideoReader* p_reader, long long index) {
  message[0] = '\0';
  return zoVideoReader_moveByIndex(p_reader, index, message, MESSAGE_SIZE);
}

static ZoFrame* newFrame(void) {
  ZoFrame* p_frame = NULL;
  CHECK_EQ(ZO_STATUS_OK, zoFrame_create(&p_frame, message, MESSAGE_SIZE));
  return p_frame;
}

/* --- create ----------------------------------------------------------------------------------------------
 */

static void createFillsTheRecord(void) {
  ZoVideoReader* p_reader = NULL;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 1, &p_reader));
  CHECK(p_reader->p_handle != NULL);
  CHECK_TEXT(numberedClip(), p_reader->url);
  CHECK(p_reader->url != numberedClip());
  CHECK_EQ(0, p_reader->timestamp);
  CHECK_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, p_reader->format);
  CHECK_EQ(64, p_reader->width);
  CHECK_EQ(48, p_reader->height);
  CHECK_EQ(30, p_reader->frame_count);
  CHECK_EQ(-1, p_reader->frame_index);
  CHECK(p_reader->fps == 25.0);
  CHECK_EQ(ZO_VIDEO_ROTATION_0, p_reader->rotation);
  CHECK_EQ(ZO_STATUS_OK, zoVideoReader_release(&p_reader));
  CHECK(p_reader == NULL);
}

static void createReportsTheRotation(void) {
  static const int DEGREES[] = {0, 90, 180, 270, 45};
  static const ZoVideoRotation CODES[] = {ZO_VIDEO_ROTATION_0, ZO_VIDEO_ROTATION_90, ZO_VIDEO_ROTATION_180,
                                          ZO_VIDEO_ROTATION_270, ZO_VIDEO_ROTATION_OTHER};
  unsigned i;
  for (i = 0; i < 5; ++i) {
    ZoVideoReader* p_reader = NULL;
    REQUIRE_EQ(ZO_STATUS_OK, createReader(rotatedClip(DEGREES[i]), 0, &p_reader));
    CHECK_EQ(CODES[i], p_reader->rotation);
    CHECK_EQ((long long)i, p_reader->rotation);
    zoVideoReader_release(&p_reader);
  }
}

static void createWithoutAPlaceForTheReaderIsRefused(void) {
  CHECK_EQ(ZO_STATUS_NULL_POINTER, createReader(numberedClip(), 0, NULL));
  CHECK_TEXT("Parameter 'pp_reader' is null", message);
}

static void missingPlaceIsReportedBeforeABadUrl(void) {
  CHECK_EQ(ZO_STATUS_NULL_POINTER,
           zoVideoReader_create(NULL, NULL, "abc", 1, -1, 0, 0, 0, NULL, message, MESSAGE_SIZE));
  CHECK_TEXT("Parameter 'pp_reader' is null", message);
}

static void urlLengthMayBeTheExactLength(void) {
  ZoVideoReader* p_reader = NULL;
  const unsigned int length = (unsigned int)strlen(numberedClip());
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_create(NULL, NULL, numberedClip(), length, -1, 0, 0, 0, &p_reader,
                                                message, MESSAGE_SIZE));
  zoVideoReader_release(&p_reader);
}

static void urlLengthMayBeLonger(void) {
  ZoVideoReader* p_reader = NULL;
  const unsigned int length = (unsigned int)strlen(numberedClip());
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_create(NULL, NULL, numberedClip(), length + 1, -1, 0, 0, 0,
                                                &p_reader, message, MESSAGE_SIZE));
  zoVideoReader_release(&p_reader);
}

static void urlLengthMayBeTheLargestNumber(void) {
  ZoVideoReader* p_reader = NULL;
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_create(NULL, NULL, numberedClip(), UINT_MAX, -1, 0, 0, 0, &p_reader,
                                                message, MESSAGE_SIZE));
  zoVideoReader_release(&p_reader);
}

static void shortUrlLengthIsRefused(void) {
  ZoVideoReader* p_reader = &untouched_record;
  const unsigned int length = (unsigned int)strlen(numberedClip());
  CHECK_EQ(ZO_STATUS_INVALID_ARGUMENT, zoVideoReader_create(NULL, NULL, numberedClip(), length - 1, -1, 0, 0,
                                                            0, &p_reader, message, MESSAGE_SIZE));
  CHECK_TEXT("Parameter 'p_url' is not null terminated", message);
  CHECK(p_reader == &untouched_record);
}

static void urlLengthZeroLeavesRoomForTheEmptyTextOnly(void) {
  ZoVideoReader* p_reader = &untouched_record;
  CHECK_EQ(ZO_STATUS_INVALID_ARGUMENT,
           zoVideoReader_create(NULL, NULL, "x", 0, -1, 0, 0, 0, &p_reader, message, MESSAGE_SIZE));
  CHECK_TEXT("Parameter 'p_url' is not null terminated", message);
  CHECK_EQ(ZO_STATUS_OPEN_ERROR,
           zoVideoReader_create(NULL, NULL, "", 0, -1, 0, 0, 0, &p_reader, message, MESSAGE_SIZE));
  CHECK(p_reader == &untouched_record);
}

static void unterminatedUrlIsNotReadBeyondItsLength(void) {
  /* Exactly the bytes that may be looked at; an address checker sees one more. */
  enum { LENGTH = 3 };
  ZoVideoReader* p_reader = &untouched_record;
  char* p_url = malloc(LENGTH + 1);
  REQUIRE(p_url != NULL);
  memset(p_url, 'x', LENGTH + 1);
  CHECK_EQ(ZO_STATUS_INVALID_ARGUMENT,
           zoVideoReader_create(NULL, NULL, p_url, LENGTH, -1, 0, 0, 0, &p_reader, message, MESSAGE_SIZE));
  CHECK_TEXT("Parameter 'p_url' is not null terminated", message);
  CHECK(p_reader == &untouched_record);
  free(p_url);
}

static void nullUrlIsReportedByTheReader(void) {
  ZoVideoReader* p_reader = &untouched_record;
  CHECK_EQ(ZO_STATUS_NULL_POINTER,
           zoVideoReader_create(NULL, NULL, NULL, 10, -1, 0, 0, 0, &p_reader, message, MESSAGE_SIZE));
  CHECK_TEXT("VideoReader::Impl::open(...): argument 'p_url' is NULL", message);
  CHECK(p_reader == &untouched_record);
}

static void missingFileLeavesTheCallersPointer(void) {
  ZoVideoReader* p_reader = &untouched_record;
  CHECK_EQ(ZO_STATUS_OPEN_ERROR, createReader(missingPath(), 0, &p_reader));
  CHECK(strncmp("Failed to open video stream: \"", message, 30) == 0);
  CHECK(p_reader == &untouched_record);
}

static void anyNonZeroNavigationFlagCounts(void) {
  static const int FLAGS[] = {1, 2, -1, INT_MIN, 256};
  unsigned i;
  for (i = 0; i < 5; ++i) {
    ZoVideoReader* p_reader = NULL;
    REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), FLAGS[i], &p_reader));
    CHECK_EQ(30, p_reader->frame_count);
    zoVideoReader_release(&p_reader);
  }
}

static void withoutNavigationThereIsNoFrameCount(void) {
  ZoVideoReader* p_reader = NULL;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 0, &p_reader));
  CHECK_EQ(0, p_reader->frame_count);
  zoVideoReader_release(&p_reader);
}

static void navigationCacheFlagKeepsTheIndexInAFile(void) {
  ZoVideoReader* p_reader = NULL;
  char sidecar[4096];
  const char* p_clip = rotatedClip(0);
  strcpy(sidecar, p_clip);
  strcat(sidecar, ".zo");
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_create(NULL, NULL, p_clip, UINT_MAX, -1, 1, 0, 0, &p_reader, message,
                                                MESSAGE_SIZE));
  zoVideoReader_release(&p_reader);
  CHECK(!fileExists(sidecar));
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_create(NULL, NULL, p_clip, UINT_MAX, -1, 1, 0, 4, &p_reader, message,
                                                MESSAGE_SIZE));
  zoVideoReader_release(&p_reader);
  CHECK(fileExists(sidecar));
}

static int countErrors(int skip_errors, int* p_pictures) {
  ZoVideoReader* p_reader = NULL;
  ZoFrame* p_frame = newFrame();
  int errors = 0;
  int ready = 1;
  *p_pictures = 0;
  CHECK_EQ(ZO_STATUS_OK, zoVideoReader_create(NULL, NULL, damagedClip(), UINT_MAX, -1, 0, skip_errors, 0,
                                              &p_reader, message, MESSAGE_SIZE));
  while (p_reader != NULL && ready && errors < 20) {
    if (readFrame(p_reader, p_frame, &ready) != ZO_STATUS_OK) {
      ++errors;
    } else if (ready) {
      *p_pictures += p_frame->plane_count != 0;
    }
  }
  zoVideoReader_release(&p_reader);
  zoFrame_release(&p_frame);
  return errors;
}

static void skipErrorsFlagIsPassedOn(void) {
  int pictures = 0;
  CHECK_EQ(1, countErrors(0, &pictures));
  CHECK_EQ(9, pictures);
  CHECK_EQ(0, countErrors(8, &pictures));
  CHECK_EQ(9, pictures);
}

/* --- interruption and time-outs --------------------------------------------------------------------------
 */

static int countAndGoOn(void* p_opaque) {
  ++*(int*)p_opaque;
  return 0;
}

static int countAndStop(void* p_opaque) {
  ++*(int*)p_opaque;
  return 5;
}

static void callbackIsPolledWhileOpeningOnly(void) {
  ZoVideoReader* p_reader = NULL;
  ZoFrame* p_frame = newFrame();
  int calls = 0;
  int after_open;
  int ready = 1;
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_create(countAndGoOn, &calls, numberedClip(), UINT_MAX, -1, 1, 0, 0,
                                                &p_reader, message, MESSAGE_SIZE));
  CHECK(calls > 0);
  after_open = calls;
  while (ready) {
    REQUIRE_EQ(ZO_STATUS_OK, readFrame(p_reader, p_frame, &ready));
  }
  CHECK_EQ(ZO_STATUS_OK, moveTo(p_reader, 3));
  CHECK_EQ(after_open, calls);
  zoVideoReader_release(&p_reader);
  zoFrame_release(&p_frame);
}

static void interruptedCreateGivesARecordWhoseReaderIsClosed(void) {
  ZoVideoReader* p_reader = NULL;
  ZoFrame* p_frame = newFrame();
  int calls = 0;
  int ready = 7;
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_create(countAndStop, &calls, numberedClip(), UINT_MAX, -1, 1, 0, 0,
                                                &p_reader, message, MESSAGE_SIZE));
  CHECK(calls > 0);
  REQUIRE(p_reader != NULL);
  CHECK(p_reader->p_handle != NULL);
  CHECK_EQ(ZO_FRAME_FORMAT_UNDEFINED, p_reader->format);
  CHECK_EQ(0, p_reader->width);
  CHECK_EQ(0, p_reader->height);
  CHECK_EQ(0, p_reader->frame_count);
  CHECK_EQ(-1, p_reader->frame_index);
  CHECK_TEXT(numberedClip(), p_reader->url);
  CHECK_EQ(ZO_STATUS_NOT_OPENED, readFrame(p_reader, p_frame, &ready));
  CHECK_TEXT("call VideoReader.open(...) before this operation", message);
  CHECK_EQ(7, ready);
  CHECK_EQ(ZO_STATUS_NOT_OPENED, moveTo(p_reader, 0));
  CHECK_TEXT("call VideoReader.open(...) before this operation", message);
  CHECK_EQ(ZO_STATUS_OK, zoVideoReader_release(&p_reader));
  zoFrame_release(&p_frame);
}

static void timeBudgetOfZeroRunsOutWhileOpening(void) {
  ZoVideoReader* p_reader = &untouched_record;
  CHECK_EQ(ZO_STATUS_TIMEOUT, zoVideoReader_create(NULL, NULL, numberedClip(), UINT_MAX, 0, 0, 0, 0,
                                                   &p_reader, message, MESSAGE_SIZE));
  CHECK_TEXT("Video stream read/open timeout.", message);
  CHECK(p_reader == &untouched_record);
}

/* --- release ---------------------------------------------------------------------------------------------
 */

static void releaseOfANullRecordDoesNothing(void) {
  ZoVideoReader* p_reader = NULL;
  CHECK_EQ(ZO_STATUS_OK, zoVideoReader_release(&p_reader));
  CHECK(p_reader == NULL);
}

static void releaseWithoutAPlaceIsRefused(void) {
  CHECK_EQ(ZO_STATUS_NULL_POINTER, zoVideoReader_release(NULL));
}

static void releaseTwiceIsHarmless(void) {
  ZoVideoReader* p_reader = NULL;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 0, &p_reader));
  CHECK_EQ(ZO_STATUS_OK, zoVideoReader_release(&p_reader));
  CHECK_EQ(ZO_STATUS_OK, zoVideoReader_release(&p_reader));
}

/* --- read ------------------------------------------------------------------------------------------------
 */

static void readDeliversEveryFrameAndThenTheEnd(void) {
  ZoVideoReader* p_reader = NULL;
  ZoFrame* p_frame = newFrame();
  int ready = 0;
  int i;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 0, &p_reader));
  for (i = 0; i < 30; ++i) {
    ready = -1;
    REQUIRE_EQ(ZO_STATUS_OK, readFrame(p_reader, p_frame, &ready));
    REQUIRE_EQ(1, ready);
    CHECK_EQ(i, p_reader->frame_index);
    CHECK_EQ(40 * i, p_reader->timestamp);
    CHECK_EQ(40 * i, p_frame->timestamp);
    CHECK_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, p_frame->format);
    CHECK_EQ(64, p_frame->width);
    CHECK_EQ(48, p_frame->height);
    REQUIRE_EQ(3, p_frame->plane_count);
    CHECK(p_frame->strides[0] >= 64 && p_frame->strides[1] >= 32 && p_frame->strides[2] >= 32);
    CHECK(p_frame->p_planes[2] != NULL && p_frame->p_planes[3] == NULL);
    CHECK_EQ(i, numberOf(p_frame));
  }
  CHECK_EQ(ZO_STATUS_OK, readFrame(p_reader, p_frame, &ready));
  CHECK_EQ(0, ready);
  CHECK_EQ(29, numberOf(p_frame));
  CHECK_EQ(29 * 40, p_frame->timestamp);
  CHECK_EQ(29, p_reader->frame_index);
  ready = -1;
  CHECK_EQ(ZO_STATUS_OK, readFrame(p_reader, p_frame, &ready));
  CHECK_EQ(0, ready);
  zoVideoReader_release(&p_reader);
  zoFrame_release(&p_frame);
}

static void readWithoutAReaderIsRefused(void) {
  int ready = 7;
  CHECK_EQ(ZO_STATUS_NULL_POINTER, readFrame(NULL, NULL, &ready));
  CHECK_TEXT("Parameter 'p_reader' is null", message);
  CHECK_EQ(7, ready);
}

static void readWithARecordWithoutAReaderIsRefused(void) {
  ZoVideoReader empty;
  int ready = 7;
  memset(&empty, 0, sizeof(empty));
  CHECK_EQ(ZO_STATUS_NOT_INITIALIZED, readFrame(&empty, NULL, &ready));
  CHECK_TEXT("Underlying C++ object is not initialized.", message);
  CHECK_EQ(7, ready);
}

static void readWithoutAFrameIsRefused(void) {
  ZoVideoReader* p_reader = NULL;
  int ready = 7;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 0, &p_reader));
  CHECK_EQ(ZO_STATUS_NULL_POINTER, readFrame(p_reader, NULL, &ready));
  CHECK_TEXT("Parameter 'p_frame' is null", message);
  CHECK_EQ(7, ready);
  CHECK_EQ(-1, p_reader->frame_index);
  zoVideoReader_release(&p_reader);
}

static void readIntoARecordWithoutAFrameIsRefused(void) {
  ZoVideoReader* p_reader = NULL;
  ZoFrame empty;
  int ready = 7;
  memset(&empty, 0, sizeof(empty));
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 0, &p_reader));
  CHECK_EQ(ZO_STATUS_NOT_INITIALIZED, readFrame(p_reader, &empty, &ready));
  CHECK_TEXT("Underlying C++ object is not initialized.", message);
  CHECK_EQ(7, ready);
  zoVideoReader_release(&p_reader);
}

static void failedReadLeavesTheRecordAsItWas(void) {
  ZoVideoReader* p_reader = NULL;
  ZoFrame* p_frame = newFrame();
  ZoVideoReader before;
  int status = ZO_STATUS_OK;
  int ready = 1;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(damagedClip(), 0, &p_reader));
  memcpy(&before, p_reader, sizeof(before));
  while (ready && status == ZO_STATUS_OK) {
    memcpy(&before, p_reader, sizeof(before));
    status = readFrame(p_reader, p_frame, &ready);
  }
  CHECK_EQ(ZO_STATUS_READ_ERROR, status);
  CHECK(strlen(message) > 0);
  CHECK(memcmp(&before, p_reader, sizeof(before)) == 0);
  zoVideoReader_release(&p_reader);
  zoFrame_release(&p_frame);
}

/* --- moveByIndex -----------------------------------------------------------------------------------------
 */

static void moveByIndexMakesThatFrameTheNextOne(void) {
  static const int INDICES[] = {17, 3, 29, 0, 28, 12, 11};
  ZoVideoReader* p_reader = NULL;
  ZoFrame* p_frame = newFrame();
  unsigned i;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 1, &p_reader));
  for (i = 0; i < sizeof(INDICES) / sizeof(INDICES[0]); ++i) {
    int ready = 0;
    REQUIRE_EQ(ZO_STATUS_OK, moveTo(p_reader, INDICES[i]));
    CHECK_EQ(INDICES[i] - 1, p_reader->frame_index);
    REQUIRE_EQ(ZO_STATUS_OK, readFrame(p_reader, p_frame, &ready));
    CHECK_EQ(1, ready);
    CHECK_EQ(INDICES[i], p_reader->frame_index);
    CHECK_EQ(INDICES[i], numberOf(p_frame));
    CHECK_EQ(40 * INDICES[i], p_frame->timestamp);
  }
  zoVideoReader_release(&p_reader);
  zoFrame_release(&p_frame);
}

static void moveByIndexWithoutAReaderIsRefused(void) {
  CHECK_EQ(ZO_STATUS_NULL_POINTER, moveTo(NULL, 0));
  CHECK_TEXT("Parameter 'p_reader' is null", message);
}

static void moveByIndexWithARecordWithoutAReaderIsRefused(void) {
  ZoVideoReader empty;
  memset(&empty, 0, sizeof(empty));
  CHECK_EQ(ZO_STATUS_NOT_INITIALIZED, moveTo(&empty, 0));
  CHECK_TEXT("Underlying C++ object is not initialized.", message);
}

static void moveByIndexOutsideLeavesTheRecordAsItWas(void) {
  ZoVideoReader* p_reader = NULL;
  ZoVideoReader before;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 1, &p_reader));
  memcpy(&before, p_reader, sizeof(before));
  CHECK_EQ(ZO_STATUS_OUT_OF_RANGE, moveTo(p_reader, 30));
  CHECK_TEXT("Failure in VideoReader::move(frame_index == 30): frame index is out of range.", message);
  CHECK_EQ(ZO_STATUS_OUT_OF_RANGE, moveTo(p_reader, -1));
  CHECK_TEXT("Failure in VideoReader::move(frame_index == -1): frame index is out of range.", message);
  CHECK_EQ(ZO_STATUS_OUT_OF_RANGE, moveTo(p_reader, LLONG_MIN));
  CHECK_EQ(ZO_STATUS_OUT_OF_RANGE, moveTo(p_reader, LLONG_MAX));
  CHECK(memcmp(&before, p_reader, sizeof(before)) == 0);
  zoVideoReader_release(&p_reader);
}

static void moveByIndexWithoutNavigationIsRefused(void) {
  ZoVideoReader* p_reader = NULL;
  REQUIRE_EQ(ZO_STATUS_OK, createReader(numberedClip(), 0, &p_reader));
  CHECK_EQ(ZO_STATUS_NOT_ALLOWED, moveTo(p_reader, 99));
  CHECK_TEXT("Failure in VideoReader::move(frame_index == 99): navigation is not allowed.", message);
  zoVideoReader_release(&p_reader);
}

static const TestCase CASES[] = {
    {"createFillsTheRecord", createFillsTheRecord},
    {"createReportsTheRotation", createReportsTheRotation},
    {"createWithoutAPlaceForTheReaderIsRefused", createWithoutAPlaceForTheReaderIsRefused},
    {"missingPlaceIsReportedBeforeABadUrl", missingPlaceIsReportedBeforeABadUrl},
    {"urlLengthMayBeTheExactLength", urlLengthMayBeTheExactLength},
    {"urlLengthMayBeLonger", urlLengthMayBeLonger},
    {"urlLengthMayBeTheLargestNumber", urlLengthMayBeTheLargestNumber},
    {"shortUrlLengthIsRefused", shortUrlLengthIsRefused},
    {"urlLengthZeroLeavesRoomForTheEmptyTextOnly", urlLengthZeroLeavesRoomForTheEmptyTextOnly},
    {"unterminatedUrlIsNotReadBeyondItsLength", unterminatedUrlIsNotReadBeyondItsLength},
    {"nullUrlIsReportedByTheReader", nullUrlIsReportedByTheReader},
    {"missingFileLeavesTheCallersPointer", missingFileLeavesTheCallersPointer},
    {"anyNonZeroNavigationFlagCounts", anyNonZeroNavigationFlagCounts},
    {"withoutNavigationThereIsNoFrameCount", withoutNavigationThereIsNoFrameCount},
    {"navigationCacheFlagKeepsTheIndexInAFile", navigationCacheFlagKeepsTheIndexInAFile},
    {"skipErrorsFlagIsPassedOn", skipErrorsFlagIsPassedOn},
    {"callbackIsPolledWhileOpeningOnly", callbackIsPolledWhileOpeningOnly},
    {"interruptedCreateGivesARecordWhoseReaderIsClosed", interruptedCreateGivesARecordWhoseReaderIsClosed},
    {"timeBudgetOfZeroRunsOutWhileOpening", timeBudgetOfZeroRunsOutWhileOpening},
    {"releaseOfANullRecordDoesNothing", releaseOfANullRecordDoesNothing},
    {"releaseWithoutAPlaceIsRefused", releaseWithoutAPlaceIsRefused},
    {"releaseTwiceIsHarmless", releaseTwiceIsHarmless},
    {"readDeliversEveryFrameAndThenTheEnd", readDeliversEveryFrameAndThenTheEnd},
    {"readWithoutAReaderIsRefused", readWithoutAReaderIsRefused},
    {"readWithARecordWithoutAReaderIsRefused", readWithARecordWithoutAReaderIsRefused},
    {"readWithoutAFrameIsRefused", readWithoutAFrameIsRefused},
    {"readIntoARecordWithoutAFrameIsRefused", readIntoARecordWithoutAFrameIsRefused},
    {"failedReadLeavesTheRecordAsItWas", failedReadLeavesTheRecordAsItWas},
    {"moveByIndexMakesThatFrameTheNextOne", moveByIndexMakesThatFrameTheNextOne},
    {"moveByIndexWithoutAReaderIsRefused", moveByIndexWithoutAReaderIsRefused},
    {"moveByIndexWithARecordWithoutAReaderIsRefused", moveByIndexWithARecordWithoutAReaderIsRefused},
    {"moveByIndexOutsideLeavesTheRecordAsItWas", moveByIndexOutsideLeavesTheRecordAsItWas},
    {"moveByIndexWithoutNavigationIsRefused", moveByIndexWithoutNavigationIsRefused},
};

int main(int argc, char** argv) {
  return runTestCases("PlainReader", CASES, sizeof(CASES) / sizeof(CASES[0]), argc, argv);
}
