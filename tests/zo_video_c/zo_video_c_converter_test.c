#include <string.h>

#include "zo_c_media.h"
#include "zo_c_test.h"
#include "zo_video_c/zo_video_c.h"

enum { MESSAGE_SIZE = 512 };

static char message[MESSAGE_SIZE];

/* What most cases start from: a converter and two frames. */
typedef struct Fixture {
  ZoVideoConverter* p_converter;
  ZoFrame* p_source; /* 40 x 30 BGR24, number 21 */
  ZoFrame* p_destination;
} Fixture;

static ZoSize sizeOf(int width, int height) {
  ZoSize size;
  size.width = width;
  size.height = height;
  return size;
}

static Fixture setUp(void) {
  Fixture fixture = {NULL, NULL, NULL};
  CHECK_EQ(ZO_STATUS_OK, zoVideoConverter_create(&fixture.p_converter, message, MESSAGE_SIZE));
  CHECK_EQ(ZO_STATUS_OK, zoFrame_create(&fixture.p_source, message, MESSAGE_SIZE));
  CHECK_EQ(ZO_STATUS_OK, zoFrame_create(&fixture.p_destination, message, MESSAGE_SIZE));
  paintFrame(fixture.p_source, ZO_FRAME_FORMAT_BGR24, 40, 30, 21);
  return fixture;
}

static void tearDown(Fixture* p_fixture) {
  CHECK_EQ(ZO_STATUS_OK, zoVideoConverter_release(&p_fixture->p_converter));
  CHECK(p_fixture->p_converter == NULL);
  zoFrame_release(&p_fixture->p_source);
  zoFrame_release(&p_fixture->p_destination);
}

static int convert(Fixture* p_fixture, ZoFrameFormat format, int width, int height) {
  message[0] = '\0';
  return zoVideoConverter_convert(p_fixture->p_converter, p_fixture->p_source, format, sizeOf(width, height),
                                  p_fixture->p_destination, message, MESSAGE_SIZE);
}

static void createWithoutAPlaceIsRefused(void) {
  CHECK_EQ(ZO_STATUS_NULL_POINTER, zoVideoConverter_create(NULL, message, MESSAGE_SIZE));
  CHECK_TEXT("Parameter 'pp_converter' is null", message);
}

static void releaseOfANullHandleDoesNothing(void) {
  ZoVideoConverter* p_converter = NULL;
  CHECK_EQ(ZO_STATUS_OK, zoVideoConverter_release(&p_converter));
  CHECK(p_converter == NULL);
}

static void releaseWithoutAPlaceIsRefused(void) {
  CHECK_EQ(ZO_STATUS_NULL_POINTER, zoVideoConverter_release(NULL));
}

static void releaseTwiceIsHarmless(void) {
  ZoVideoConverter* p_converter = NULL;
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoConverter_create(&p_converter, message, MESSAGE_SIZE));
  CHECK_EQ(ZO_STATUS_OK, zoVideoConverter_release(&p_converter));
  CHECK_EQ(ZO_STATUS_OK, zoVideoConverter_release(&p_converter));
}

static void convertWithoutAConverterIsRefused(void) {
  Fixture fixture = setUp();
  CHECK_EQ(ZO_STATUS_NULL_POINTER,
           zoVideoConverter_convert(NULL, fixture.p_source, ZO_FRAME_FORMAT_BGR24, sizeOf(40, 30),
                                    fixture.p_destination, message, MESSAGE_SIZE));
  CHECK_TEXT("Parameter 'p_converter' is null", message);
  CHECK_EQ(0, fixture.p_destination->plane_count);
  tearDown(&fixture);
}

static void missingConverterIsReportedBeforeTheFramesAreLookedAt(void) {
  CHECK_EQ(ZO_STATUS_NULL_POINTER, zoVideoConverter_convert(NULL, NULL, ZO_FRAME_FORMAT_BGR24, sizeOf(1, 1),
                                                            NULL, message, MESSAGE_SIZE));
  CHECK_TEXT("Parameter 'p_converter' is null", message);
}

static void convertToTheSameFormatAndSizeRefreshesTheDestination(void) {
  Fixture fixture = setUp();
  int row;
  CHECK_EQ(ZO_STATUS_OK, convert(&fixture, ZO_FRAME_FORMAT_BGR24, 40, 30));
  CHECK_EQ(ZO_FRAME_FORMAT_BGR24, fixture.p_destination->format);
  CHECK_EQ(40, fixture.p_destination->width);
  CHECK_EQ(30, fixture.p_destination->height);
  REQUIRE_EQ(1, fixture.p_destination->plane_count);
  for (row = 0; row < 30; ++row) {
    CHECK(memcmp(fixture.p_source->p_planes[0] + (size_t)row * fixture.p_source->strides[0],
                 fixture.p_destination->p_planes[0] + (size_t)row * fixture.p_destination->strides[0],
                 40 * 3) == 0);
  }
  tearDown(&fixture);
}

static void convertChangesFormatAndSize(void) {
  Fixture fixture = setUp();
  CHECK_EQ(ZO_STATUS_OK, convert(&fixture, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, 80, 61));
  CHECK_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, fixture.p_destination->format);
  CHECK_EQ(80, fixture.p_destination->width);
  CHECK_EQ(61, fixture.p_destination->height);
  CHECK_EQ(3, fixture.p_destination->plane_count);
  CHECK_EQ(21, numberOf(fixture.p_destination));
  tearDown(&fixture);
}

static void timestampIsCopied(void) {
  Fixture fixture = setUp();
  ZoVideoReader* p_reader = NULL;
  int ready = 0;
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_create(NULL, NULL, numberedClip(), 4095, -1, 1, 0, 0, &p_reader,
                                                message, MESSAGE_SIZE));
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_moveByIndex(p_reader, 9, message, MESSAGE_SIZE));
  REQUIRE_EQ(ZO_STATUS_OK, zoVideoReader_read(p_reader, fixture.p_source, &ready, message, MESSAGE_SIZE));
  CHECK_EQ(ZO_STATUS_OK, convert(&fixture, ZO_FRAME_FORMAT_RGB24, 32, 24));
  CHECK_EQ(360, fixture.p_destination->timestamp);
  CHECK_EQ(9, numberOf(fixture.p_destination));
  zoVideoReader_release(&p_reader);
  tearDown(&fixture);
}

static void oneConverterServesDifferentFrames(void) {
  static const int SIZES[] = {64, 16, 33, 64};
  Fixture fixture = setUp();
  unsigned i;
  for (i = 0; i < 4; ++i) {
    CHECK_EQ(ZO_STATUS_OK, convert(&fixture, ZO_FRAME_FORMAT_GRAY8, SIZES[i], SIZES[i]));
    CHECK_EQ(SIZES[i], fixture.p_destination->width);
    CHECK_EQ(21, numberOf(fixture.p_destination));
  }
  tearDown(&fixture);
}

static void convertWithinOneFrame(void) {
  Fixture fixture = setUp();
  CHECK_EQ(ZO_STATUS_OK,
           zoVideoConverter_convert(fixture.p_converter, fixture.p_source, ZO_FRAME_FORMAT_GRAY8,
                                    sizeOf(40, 30), fixture.p_source, message, MESSAGE_SIZE));
  CHECK_EQ(ZO_FRAME_FORMAT_GRAY8, fixture.p_source->format);
  CHECK_EQ(21, numberOf(fixture.p_source));
  tearDown(&fixture);
}

static void checkRefused(ZoFrameFormat format, int expected_status, const char* expected_message) {
  Fixture fixture = setUp();
  ZoFrame before;
  REQUIRE_EQ(ZO_STATUS_OK, convert(&fixture, ZO_FRAME_FORMAT_GRAY8, 20, 10));
  memcpy(&before, fixture.p_destination, sizeof(before));
  CHECK_EQ(expected_status, convert(&fixture, format, 40, 31));
  CHECK_TEXT(expected_message, message);
  CHECK(memcmp(&before, fixture.p_destination, sizeof(before)) == 0);
  /* Frame and record come together again. */
  CHECK_EQ(ZO_STATUS_OK,
           zoFrame_reuse(fixture.p_destination, ZO_FRAME_FORMAT_GRAY8, sizeOf(8, 8), message, MESSAGE_SIZE));
  CHECK_EQ(8, fixture.p_destination->width);
  tearDown(&fixture);
}

static void unknownFormatLeavesTheDestinationsRecord(void) {
  checkRefused((ZoFrameFormat)21, ZO_STATUS_INVALID_ARGUMENT, "FrameFormat with value (21) does not exist");
}

static void reservedFormatIsReportedAsNotExisting(void) {
  checkRefused(ZO_FRAME_FORMAT_RESERVED_3, ZO_STATUS_INVALID_ARGUMENT,
               "FrameFormat with value (3) does not exist");
}

static void unsupportedFormatLeavesTheDestinationsRecord(void) {
  checkRefused(ZO_FRAME_FORMAT_YUV420_PLANAR_YV12, ZO_STATUS_NOT_SUPPORTED,
               "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV420_PLANAR_YV12");
}

static void customFormatLeavesTheDestinationsRecord(void) {
  checkRefused(ZO_FRAME_FORMAT_CUSTOM_2, ZO_STATUS_NOT_SUPPORTED,
               "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_CUSTOM_*");
}

static const TestCase CASES[] = {
    {"createWithoutAPlaceIsRefused", createWithoutAPlaceIsRefused},
    {"releaseOfANullHandleDoesNothing", releaseOfANullHandleDoesNothing},
    {"releaseWithoutAPlaceIsRefused", releaseWithoutAPlaceIsRefused},
    {"releaseTwiceIsHarmless", releaseTwiceIsHarmless},
    {"convertWithoutAConverterIsRefused", convertWithoutAConverterIsRefused},
    {"missingConverterIsReportedBeforeTheFramesAreLookedAt",
     missingConverterIsReportedBeforeTheFramesAreLookedAt},
    {"convertToTheSameFormatAndSizeRefreshesTheDestination",
     convertToTheSameFormatAndSizeRefreshesTheDestination},
    {"convertChangesFormatAndSize", convertChangesFormatAndSize},
    {"timestampIsCopied", timestampIsCopied},
    {"oneConverterServesDifferentFrames", oneConverterServesDifferentFrames},
    {"convertWithinOneFrame", convertWithinOneFrame},
    {"unknownFormatLeavesTheDestinationsRecord", unknownFormatLeavesTheDestinationsRecord},
    {"reservedFormatIsReportedAsNotExisting", reservedFormatIsReportedAsNotExisting},
    {"unsupportedFormatLeavesTheDestinationsRecord", unsupportedFormatLeavesTheDestinationsRecord},
    {"customFormatLeavesTheDestinationsRecord", customFormatLeavesTheDestinationsRecord},
};

int main(int argc, char** argv) {
  return runTestCases("PlainConverter", CASES, sizeof(CASES) / sizeof(CASES[0]), argc, argv);
}
