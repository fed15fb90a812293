// What the plain functions make of failures in the middle of their work: an opening that is stopped late, a
// record that can be filled in part only, and exceptions of other kinds, which name the function they left.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <stdexcept>
#include <string>

#include "zo_failing_memory.h"
#include "zo_ffmpeg_calls.h"
#include "zo_test_support.h"
#include "zo_video/zo_video_reader.h"
#include "zo_video_c/zo_video_c.h"

extern "C" {
#include <libavutil/error.h>
}

namespace {

// What the reader says about its rotation, when set.
std::function<zo::VideoRotation()> rotation_answer;  // NOLINT: read by the function below
// Whether it says that each reading was interrupted.
bool readings_interrupted = false;  // NOLINT: the same

}  // namespace

// VideoReader::rotation() of this program: a member function is called like a plain one with the object
// first.
extern "C" {

zo::VideoRotation __real__ZNK2zo11VideoReader8rotationEv(const zo::VideoReader* p_reader);
zo::VideoRotation __wrap__ZNK2zo11VideoReader8rotationEv(const zo::VideoReader* p_reader);

zo::VideoRotation __wrap__ZNK2zo11VideoReader8rotationEv(const zo::VideoReader* p_reader) {
  return rotation_answer ? rotation_answer() : __real__ZNK2zo11VideoReader8rotationEv(p_reader);
}

int __real__ZN2zo11VideoReader4readERNS_5FrameERbPNS_14IInterruptableE(zo::VideoReader* p_reader,
                                                                       zo::Frame& frame, bool& got_frame,
                                                                       zo::IInterruptable* p_interruptable);
int __wrap__ZN2zo11VideoReader4readERNS_5FrameERbPNS_14IInterruptableE(zo::VideoReader* p_reader,
                                                                       zo::Frame& frame, bool& got_frame,
                                                                       zo::IInterruptable* p_interruptable);

int __wrap__ZN2zo11VideoReader4readERNS_5FrameERbPNS_14IInterruptableE(zo::VideoReader* p_reader,
                                                                       zo::Frame& frame, bool& got_frame,
                                                                       zo::IInterruptable* p_interruptable) {
  const int result = __real__ZN2zo11VideoReader4readERNS_5FrameERbPNS_14IInterruptableE(
      p_reader, frame, got_frame, p_interruptable);
  return readings_interrupted ? 1 : result;
}

}  // extern "C"

namespace zo {
namespace test {
namespace {

constexpr unsigned LONGEST = std::numeric_limits<unsigned>::max();

std::string stoppedText() {
  char text[AV_ERROR_MAX_STRING_SIZE] = "";
  av_strerror(AVERROR_EXIT, text, sizeof(text));
  return std::to_string(AVERROR_EXIT) + " (" + text + ")";
}

class PlainFailures : public testing::Test {
 protected:
  PlainFailures() { ffmpegCalls().reset(); }
  ~PlainFailures() override {
    rotation_answer = nullptr;
    readings_interrupted = false;
    ffmpegCalls().reset();
    zoVideoReader_release(&_p_reader);
    zoFrame_release(&_p_frame);
  }

  static const std::string& clip() {
    static const TempDir DIRECTORY;
    static const std::string PATH = makeClip(DIRECTORY.file("clip.mp4"), ClipOptions()).path;
    return PATH;
  }

  int create(int (*callback)(void*) = nullptr, void* p_opaque = nullptr, int skip_errors = 0) {
    return zoVideoReader_create(callback, p_opaque, clip().c_str(), LONGEST, -1, 1, skip_errors, 0,
                                &_p_reader, _message, sizeof(_message));
  }
  int read() {
    _ready = -1;
    return zoVideoReader_read(_p_reader, _p_frame, &_ready, _message, sizeof(_message));
  }
  int move(long long index) {
    return zoVideoReader_moveByIndex(_p_reader, index, _message, sizeof(_message));
  }
  void createAll() {
    ASSERT_EQ(::ZO_STATUS_OK, zoFrame_create(&_p_frame, nullptr, 0));
    ASSERT_EQ(::ZO_STATUS_OK, create());
  }

  ZoVideoReader* _p_reader = nullptr;
  ZoFrame* _p_frame = nullptr;
  int _ready = -1;
  char _message[256] = "";
};

// --- An opening that is stopped behind its first step ----------------------------------------------------

// Stops at the first poll behind that many packets and seeks.
struct StopBehind {
  int packets;
  std::size_t seeks;

  static int query(void* p_opaque) {
    const StopBehind& stop = *static_cast<const StopBehind*>(p_opaque);
    const FfmpegCalls& calls = ffmpegCalls();
    return calls.packets_read >= stop.packets && calls.seeks.size() >= stop.seeks ? 1 : 0;
  }
};

// Counts packets from the last seek on: what is read in front of the scan depends on FFmpeg.
void countFromTheLastSeek() {
  ffmpegCalls().on_seek = [](const FfmpegCalls::Seek&, int&) {
    ffmpegCalls().packets_read = 0;
    return false;
  };
}

TEST_F(PlainFailures, CreateThatIsStoppedWithinTheScanIsAReadError) {
  StopBehind stop{5, 1};
  ffmpegCalls().poll_before_reading = true;
  countFromTheLastSeek();
  EXPECT_EQ(::ZO_STATUS_READ_ERROR, create(StopBehind::query, &stop));
  EXPECT_EQ("_readAllPackets: av_read_frame() returned " + stoppedText(), _message);
  EXPECT_EQ(nullptr, _p_reader);
}

TEST_F(PlainFailures, CreateThatIsStoppedWithinTheScanKeepsTheBeginningOfTheIndexWhenErrorsAreSkipped) {
  StopBehind stop{5, 1};
  ffmpegCalls().poll_before_reading = true;
  countFromTheLastSeek();
  ASSERT_EQ(::ZO_STATUS_OK, zoFrame_create(&_p_frame, nullptr, 0));
  ASSERT_EQ(::ZO_STATUS_OK, create(StopBehind::query, &stop, 1)) << _message;
  ASSERT_NE(nullptr, _p_reader);
  EXPECT_EQ(5, _p_reader->frame_count);
  EXPECT_EQ(::ZO_FRAME_FORMAT_YUV420_PLANAR_I420, _p_reader->format);
  for (int index = 0; index < 5; ++index) {
    ASSERT_EQ(::ZO_STATUS_OK, read()) << _message;
    EXPECT_EQ(1, _ready);
    EXPECT_EQ(index, _p_reader->frame_index);
    EXPECT_EQ(index, paintedNumber(*static_cast<const Frame*>(_p_frame->p_handle)));
  }
  EXPECT_EQ(::ZO_STATUS_OK, read());
  EXPECT_EQ(0, _ready);
  EXPECT_EQ(::ZO_STATUS_OUT_OF_RANGE, move(5));
  EXPECT_EQ(::ZO_STATUS_OK, move(4)) << _message;
}

// Before the scan and behind it the stream goes to its start.
TEST_F(PlainFailures, CreateThatIsStoppedWithinASeekIsASeekErrorEvenWhenErrorsAreSkipped) {
  for (const std::size_t seeks : {1U, 2U}) {
    for (const int skip_errors : {0, 1}) {
      StopBehind stop{0, seeks};
      ffmpegCalls().reset();
      ffmpegCalls().poll_before_seeking = true;
      EXPECT_EQ(::ZO_STATUS_SEEK_ERROR, create(StopBehind::query, &stop, skip_errors));
      EXPECT_EQ(
          "_seekToStart: failed to seek to the start frame. av_seek_frame(...) returned " + stoppedText(),
          _message);
      EXPECT_EQ(nullptr, _p_reader);
    }
  }
}

// --- Reading --------------------------------------------------------------------------------------------

int countAndGoOn(void* p_opaque) {
  ++*static_cast<int*>(p_opaque);
  return 0;
}

TEST_F(PlainFailures, TheCallbackIsNotAskedOnceTheReaderIsOpen) {
  int polls = 0;
  ffmpegCalls().poll_before_reading = true;
  ffmpegCalls().poll_before_seeking = true;
  ASSERT_EQ(::ZO_STATUS_OK, zoFrame_create(&_p_frame, nullptr, 0));
  ASSERT_EQ(::ZO_STATUS_OK, create(countAndGoOn, &polls)) << _message;
  const int polls_of_opening = polls;
  EXPECT_GT(polls_of_opening, 0);
  do {
    ASSERT_EQ(::ZO_STATUS_OK, read()) << _message;
  } while (_ready == 1);
  ASSERT_EQ(::ZO_STATUS_OK, move(3)) << _message;
  ASSERT_EQ(::ZO_STATUS_OK, read()) << _message;
  EXPECT_EQ(3, _p_reader->frame_index);
  EXPECT_EQ(polls_of_opening, polls);
}

TEST_F(PlainFailures, AnInterruptedReadIsNoFailureAndHasNoFrame) {
  createAll();
  readings_interrupted = true;
  EXPECT_EQ(::ZO_STATUS_OK, read());
  EXPECT_EQ(0, _ready);
  readings_interrupted = false;
  EXPECT_EQ(::ZO_STATUS_OK, read());
  EXPECT_EQ(1, _ready);
}

// --- A rotation that has no plain code --------------------------------------------------------------------

constexpr char NO_CODE[] = "Failed to convert video rotation 7";

VideoRotation unknownRotation() {
  return static_cast<VideoRotation>(7);
}

// Values that no reader has.
void spoil(ZoVideoReader* p_reader) {
  p_reader->format = ::ZO_FRAME_FORMAT_CUSTOM_3;
  p_reader->frame_count = -50;
  p_reader->frame_index = -51;
  p_reader->width = -52;
  p_reader->height = -53;
  p_reader->timestamp = -54;
  p_reader->fps = -55;
  p_reader->rotation = ::ZO_VIDEO_ROTATION_OTHER;
  p_reader->url = "another url";
}

// Everything in front of the rotation is new, the rotation and the url behind it are not.
void expectNewUpToTheRotation(const ZoVideoReader& reader, long long index) {
  EXPECT_EQ(::ZO_FRAME_FORMAT_YUV420_PLANAR_I420, reader.format);
  EXPECT_EQ(30, reader.frame_count);
  EXPECT_EQ(index, reader.frame_index);
  EXPECT_EQ(64, reader.width);
  EXPECT_EQ(48, reader.height);
  EXPECT_NE(-54, reader.timestamp);
  EXPECT_EQ(25.0, reader.fps);
  EXPECT_EQ(::ZO_VIDEO_ROTATION_OTHER, reader.rotation);
  EXPECT_STREQ("another url", reader.url);
}

TEST_F(PlainFailures, CreateWithARotationWithoutACodeLeavesTheCallersPointer) {
  ZoVideoReader untouched = {};
  _p_reader = &untouched;
  rotation_answer = unknownRotation;
  EXPECT_EQ(::ZO_STATUS_INTERNAL_ERROR, create());
  EXPECT_STREQ(NO_CODE, _message);
  EXPECT_EQ(&untouched, _p_reader);
  _p_reader = nullptr;
}

TEST_F(PlainFailures, ReadWithARotationWithoutACodeRenewsWhatComesBeforeIt) {
  createAll();
  ASSERT_EQ(::ZO_STATUS_OK, read());
  spoil(_p_reader);
  rotation_answer = unknownRotation;
  EXPECT_EQ(::ZO_STATUS_INTERNAL_ERROR, read());
  EXPECT_STREQ(NO_CODE, _message);
  expectNewUpToTheRotation(*_p_reader, 1);
  EXPECT_EQ(40, _p_reader->timestamp);
  EXPECT_EQ(1, _ready) << "told before the record is renewed";
  EXPECT_EQ(40, static_cast<const Frame*>(_p_frame->p_handle)->timestamp());
  EXPECT_EQ(0, _p_frame->timestamp) << "described after the record is renewed";
  rotation_answer = nullptr;
  EXPECT_EQ(::ZO_STATUS_OK, read());
  EXPECT_EQ(2, _p_reader->frame_index);
  EXPECT_EQ(::ZO_VIDEO_ROTATION_0, _p_reader->rotation);
  EXPECT_EQ(clip(), _p_reader->url);
  EXPECT_EQ(80, _p_frame->timestamp);
}

TEST_F(PlainFailures, MoveWithARotationWithoutACodeRenewsWhatComesBeforeIt) {
  createAll();
  ASSERT_EQ(::ZO_STATUS_OK, read());
  spoil(_p_reader);
  rotation_answer = unknownRotation;
  EXPECT_EQ(::ZO_STATUS_INTERNAL_ERROR, move(7));
  EXPECT_STREQ(NO_CODE, _message);
  expectNewUpToTheRotation(*_p_reader, 6);
}

// --- Exceptions of other kinds
// ------------------------------------------------------------------------------

struct KindCase {
  const char* name;
  VideoRotation (*p_throw)();
  int status = -1;
  const char* text;  // behind the function's name
};

class PlainFailureKinds : public PlainFailures, public testing::WithParamInterface<KindCase> {
 protected:
  std::string messageOf(const char* p_function) const { return std::string(p_function) + GetParam().text; }
};

TEST_P(PlainFailureKinds, AreReportedByCreateInItsOwnName) {
  rotation_answer = GetParam().p_throw;
  EXPECT_EQ(GetParam().status, create());
  EXPECT_EQ(messageOf("zoVideoReader_create"), _message);
  EXPECT_EQ(nullptr, _p_reader);
}

TEST_P(PlainFailureKinds, AreReportedByReadInItsOwnName) {
  createAll();
  rotation_answer = GetParam().p_throw;
  EXPECT_EQ(GetParam().status, read());
  EXPECT_EQ(messageOf("zoVideoReader_read"), _message);
}

TEST_P(PlainFailureKinds, AreReportedByMoveByIndexInItsOwnName) {
  createAll();
  rotation_answer = GetParam().p_throw;
  EXPECT_EQ(GetParam().status, move(3));
  EXPECT_EQ(messageOf("zoVideoReader_moveByIndex"), _message);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, PlainFailureKinds,
    testing::Values(KindCase{"Standard", []() -> VideoRotation { throw std::runtime_error("odd"); },
                             ::ZO_STATUS_STD_EXCEPTION, ": caught standard exception: odd"},
                    KindCase{"OutOfMemory", []() -> VideoRotation { throw std::bad_alloc(); },
                             ::ZO_STATUS_STD_EXCEPTION, ": caught standard exception: std::bad_alloc"},
                    KindCase{"Unknown", []() -> VideoRotation { throw 42; }, ::ZO_STATUS_UNKNOWN_ERROR,
                             ": caught unknown exception."}),
    CaseName());

// --- Out of memory at the first step
// ------------------------------------------------------------------------

struct FirstAllocation : testing::Test {
  char message[128] = "";
};

TEST_F(FirstAllocation, OfAReaderComesBeforeTheUrlIsLookedAt) {
  ZoVideoReader untouched = {};
  ZoVideoReader* p_reader = &untouched;
  int status = -1;
  {
    const MemoryShortage shortage(Requests::OURS, 0);
    status = zoVideoReader_create(nullptr, nullptr, "x", 0, -1, 0, 0, 0, &p_reader, message, sizeof(message));
  }
  EXPECT_EQ(::ZO_STATUS_STD_EXCEPTION, status);
  EXPECT_STREQ("zoVideoReader_create: caught standard exception: std::bad_alloc", message);
  EXPECT_EQ(&untouched, p_reader);
  EXPECT_EQ(::ZO_STATUS_INVALID_ARGUMENT,
            zoVideoReader_create(nullptr, nullptr, "x", 0, -1, 0, 0, 0, &p_reader, message, sizeof(message)));
}

TEST_F(FirstAllocation, OfAReaderComesAfterTheCallersPlaceIsLookedAt) {
  int status = -1;
  {
    const MemoryShortage shortage(Requests::OURS, 0);
    status = zoVideoReader_create(nullptr, nullptr, "x", 0, -1, 0, 0, 0, nullptr, message, sizeof(message));
  }
  EXPECT_EQ(::ZO_STATUS_NULL_POINTER, status);
  EXPECT_STREQ("Parameter 'pp_reader' is null", message);
}

TEST_F(FirstAllocation, OfAConverterIsReportedInTheNameOfItsFunction) {
  int place = 0;
  auto* const p_untouched = reinterpret_cast<ZoVideoConverter*>(&place);
  ZoVideoConverter* p_converter = p_untouched;
  int status = -1;
  {
    const MemoryShortage shortage(Requests::OURS, 0);
    status = zoVideoConverter_create(&p_converter, message, sizeof(message));
  }
  EXPECT_EQ(::ZO_STATUS_STD_EXCEPTION, status);
  EXPECT_STREQ("zoVideoConverter_create: caught standard exception: std::bad_alloc", message);
  EXPECT_EQ(p_untouched, p_converter);
}

}  // namespace
}  // namespace test
}  // namespace zo
