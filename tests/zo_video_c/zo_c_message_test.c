/* The caller's message buffer, of each function that takes one. */
#include <string.h>

#include "zo_c_media.h"
#include "zo_c_test.h"
#include "zo_video_c/zo_video_c.h"

enum { CAPACITY = 128, FILLER = '#' };

/* A call that fails, with its status and whole message. */
typedef struct FailingCall {
  const char* name;
  int (*p_call)(char* p_message, unsigned int message_size);
  int status;
  const char* message;
} FailingCall;

static int createReader(char* p_message, unsigned int message_size) {
  return zoVideoReader_create(NULL, NULL, "", 0, -1, 0, 0, 0, NULL, p_message, message_size);
}

static int moveReader(char* p_message, unsigned int message_size) {
  return zoVideoReader_moveByIndex(NULL, 0, p_message, message_size);
}

static int readReader(char* p_message, unsigned int message_size) {
  return zoVideoReader_read(NULL, NULL, NULL, p_message, message_size);
}

static int createConverter(char* p_message, unsigned int message_size) {
  return zoVideoConverter_create(NULL, p_message, message_size);
}

static int convert(char* p_message, unsigned int message_size) {
  ZoSize size = {1, 1};
  return zoVideoConverter_convert(NULL, NULL, ZO_FRAME_FORMAT_GRAY8, size, NULL, p_message, message_size);
}

static int createFrame(char* p_message, unsigned int message_size) {
  return zoFrame_create(NULL, p_message, message_size);
}

static int reuseFrame(char* p_message, unsigned int message_size) {
  ZoSize size = {1, 1};
  return zoFrame_reuse(NULL, ZO_FRAME_FORMAT_GRAY8, size, p_message, message_size);
}

static const FailingCall CALLS[] = {
    {"zoVideoReader_create", createReader, ZO_STATUS_NULL_POINTER, "Parameter 'pp_reader' is null"},
    {"zoVideoReader_moveByIndex", moveReader, ZO_STATUS_NULL_POINTER, "Parameter 'p_reader' is null"},
    {"zoVideoReader_read", readReader, ZO_STATUS_NULL_POINTER, "Parameter 'p_reader' is null"},
    {"zoVideoConverter_create", createConverter, ZO_STATUS_NULL_POINTER, "Parameter 'pp_converter' is null"},
    {"zoVideoConverter_convert", convert, ZO_STATUS_NULL_POINTER, "Parameter 'p_converter' is null"},
    {"zoFrame_create", createFrame, ZO_STATUS_NULL_POINTER, "Parameter 'pp_frame' is null"},
    {"zoFrame_reuse", reuseFrame, ZO_STATUS_NULL_POINTER, "Parameter 'p_frame' is null"},
};
enum { CALL_COUNT = sizeof(CALLS) / sizeof(CALLS[0]) };

/* Calls with that much room and checks what was written, the bytes behind the room included. */
static void checkWithRoom(const FailingCall* p_call, size_t room) {
  char buffer[CAPACITY];
  char expected[CAPACITY];
  const size_t length = strlen(p_call->message);
  const size_t kept = room == 0 ? 0 : (length < room - 1 ? length : room - 1);
  memset(buffer, FILLER, sizeof(buffer));
  memset(expected, FILLER, sizeof(expected));
  if (room != 0) {
    memcpy(expected, p_call->message, kept);
    expected[kept] = '\0';
  }
  CHECK_EQ(p_call->status, p_call->p_call(buffer, (unsigned int)room));
  if (!CHECK(memcmp(expected, buffer, kept + (room != 0)) == 0 &&
             memcmp(expected + room, buffer + room, CAPACITY - room) == 0)) {
    CHECK_TEXT("the function that failed", p_call->name);
  }
}

static void nullBufferIsNotWritten(void) {
  unsigned i;
  for (i = 0; i < CALL_COUNT; ++i) {
    CHECK_EQ(CALLS[i].status, CALLS[i].p_call(NULL, 0));
    CHECK_EQ(CALLS[i].status, CALLS[i].p_call(NULL, 100));
  }
}

static void sizeZeroIsNotWritten(void) {
  unsigned i;
  for (i = 0; i < CALL_COUNT; ++i) {
    checkWithRoom(&CALLS[i], 0);
  }
}

static void sizeOneReceivesTheTerminator(void) {
  unsigned i;
  for (i = 0; i < CALL_COUNT; ++i) {
    checkWithRoom(&CALLS[i], 1);
  }
}

static void shortBufferReceivesTheBeginning(void) {
  unsigned i;
  for (i = 0; i < CALL_COUNT; ++i) {
    checkWithRoom(&CALLS[i], 2);
    checkWithRoom(&CALLS[i], 10);
  }
}

static void oneByteTooFewCutsTheLastCharacter(void) {
  unsigned i;
  for (i = 0; i < CALL_COUNT; ++i) {
    checkWithRoom(&CALLS[i], strlen(CALLS[i].message));
  }
}

static void exactBufferReceivesAll(void) {
  unsigned i;
  for (i = 0; i < CALL_COUNT; ++i) {
    checkWithRoom(&CALLS[i], strlen(CALLS[i].message) + 1);
  }
}

static void largeBufferReceivesAll(void) {
  unsigned i;
  for (i = 0; i < CALL_COUNT; ++i) {
    checkWithRoom(&CALLS[i], CAPACITY);
  }
}

static void successLeavesTheBufferAlone(void) {
  char buffer[CAPACITY];
  char before[CAPACITY];
  ZoVideoReader* p_reader = NULL;
  ZoVideoConverter* p_converter = NULL;
  ZoFrame* p_frame = NULL;
  int ready = 0;
  ZoSize size = {8, 6};
  memset(buffer, FILLER, sizeof(buffer));
  memset(before, FILLER, sizeof(before));
  REQUIRE_EQ(0, zoFrame_create(&p_frame, buffer, CAPACITY));
  REQUIRE_EQ(0, zoVideoConverter_create(&p_converter, buffer, CAPACITY));
  REQUIRE_EQ(
      0, zoVideoReader_create(NULL, NULL, numberedClip(), 4095, -1, 1, 0, 0, &p_reader, buffer, CAPACITY));
  CHECK_EQ(0, zoVideoReader_moveByIndex(p_reader, 1, buffer, CAPACITY));
  CHECK_EQ(0, zoVideoReader_read(p_reader, p_frame, &ready, buffer, CAPACITY));
  CHECK_EQ(0, zoVideoConverter_convert(p_converter, p_frame, ZO_FRAME_FORMAT_GRAY8, size, p_frame, buffer,
                                       CAPACITY));
  CHECK_EQ(0, zoFrame_reuse(p_frame, ZO_FRAME_FORMAT_GRAY8, size, buffer, CAPACITY));
  CHECK(memcmp(before, buffer, CAPACITY) == 0);
  zoVideoReader_release(&p_reader);
  zoVideoConverter_release(&p_converter);
  zoFrame_release(&p_frame);
}

static const TestCase CASES[] = {
    {"nullBufferIsNotWritten", nullBufferIsNotWritten},
    {"sizeZeroIsNotWritten", sizeZeroIsNotWritten},
    {"sizeOneReceivesTheTerminator", sizeOneReceivesTheTerminator},
    {"shortBufferReceivesTheBeginning", shortBufferReceivesTheBeginning},
    {"oneByteTooFewCutsTheLastCharacter", oneByteTooFewCutsTheLastCharacter},
    {"exactBufferReceivesAll", exactBufferReceivesAll},
    {"largeBufferReceivesAll", largeBufferReceivesAll},
    {"successLeavesTheBufferAlone", successLeavesTheBufferAlone},
};

int main(int argc, char** argv) {
  return runTestCases("PlainMessage", CASES, sizeof(CASES) / sizeof(CASES[0]), argc, argv);
}
