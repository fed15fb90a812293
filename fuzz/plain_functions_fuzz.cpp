// The input is a list of calls of the plain functions: arguments, null pointers and lifetimes in any order.
// It is run twice, and every status, message, record and picture has to be the same.
#include <climits>
#include <cstdio>
#include <string>
#include <vector>

#include "zo_fuzz.h"
#include "zo_test_clip.h"
#include "zo_video_c/zo_video_c.h"

namespace {

using namespace zo::fuzz;

constexpr int SLOTS = 3;
constexpr int HOUR_MS = 3600000;

std::string makeSoundClip() {
  zo::test::ClipOptions options;
  options.width = 32;
  options.height = 24;
  options.frames = 8;
  options.gop = 4;
  const std::string path = scratchDirectory() + "/clip.mp4";
  zo::test::makeClip(path, options);
  return path;
}

// A message buffer of the size that the function is told, between guard bytes.
class Message {
 public:
  explicit Message(Arguments& arguments) : _null(arguments.byte() % 8 == 0), _size(size(arguments)) {
    _bytes.assign(GUARD + _size + GUARD, '\x5A');
  }
  char* data() { return _null ? nullptr : _bytes.data() + GUARD; }
  unsigned size() const { return _null ? 0 : _size; }

  // Takes the status of the call that had this message; returns the answer.
  std::string checked(int status) const {
    require(status >= 0 && status <= 28, "the status is a known one");
    require(status != zo::ZO_STATUS_INTERNAL_ERROR, _bytes.data() + GUARD);
    for (size_t i = 0; i < GUARD; ++i) {
      require(_bytes[i] == '\x5A' && _bytes[GUARD + _size + i] == '\x5A', "only the buffer is written");
    }
    std::string answer = std::to_string(status);
    if (status != 0 && !_null && _size != 0) {
      require(strnlen(_bytes.data() + GUARD, _size) < _size, "the message is terminated");
      require(_size == 1 || _bytes[GUARD] != '\0', "a failure has a message");
      answer += _bytes.data() + GUARD;
    }
    return answer + "; ";
  }

 private:
  static constexpr size_t GUARD = 16;

  static unsigned size(Arguments& arguments) {
    static const unsigned SIZES[] = {0, 1, 2, 16, 256, 4096, 5000};
    return SIZES[arguments.byte() % 7];
  }

  bool _null;
  unsigned _size;
  std::vector<char> _bytes;
};

// Stops the opening at a poll with a given number.
struct Stopper {
  unsigned polls_left;
  unsigned polls;

  static int poll(void* p_opaque) {
    Stopper* const p_stopper = static_cast<Stopper*>(p_opaque);
    return p_stopper != nullptr && ++p_stopper->polls > p_stopper->polls_left ? 1 : 0;
  }
};

zo::Frame& frameOf(const ZoFrame* p_frame) {
  return *static_cast<zo::Frame*>(p_frame->p_handle);
}

std::string described(const ZoFrame* p_frame) {
  if (p_frame == nullptr) {
    return "none; ";
  }
  std::string text = std::to_string(p_frame->format) + " " + std::to_string(p_frame->width) + "x" +
                     std::to_string(p_frame->height) + " at " + std::to_string(p_frame->timestamp);
  for (int i = 0; i < p_frame->plane_count; ++i) {
    text += " " + std::to_string(p_frame->strides[i]);
  }
  return text + "; ";
}

std::string described(const ZoVideoReader* p_reader) {
  if (p_reader == nullptr) {
    return "none; ";
  }
  char numbers[200];
  std::snprintf(numbers, sizeof(numbers), "%lld of %lld at %lld, %d %dx%d, %a fps, turned %d ",
                p_reader->frame_index, p_reader->frame_count, p_reader->timestamp,
                static_cast<int>(p_reader->format), p_reader->width, p_reader->height, p_reader->fps,
                static_cast<int>(p_reader->rotation));
  return numbers + std::string(p_reader->url == nullptr ? "" : p_reader->url) + "; ";
}

// New memory holds anything.
void paint(const ZoFrame* p_frame) {
  zo::Frame& frame = frameOf(p_frame);
  for (unsigned i = 0; i < frame.planeCount(); ++i) {
    std::memset(frame.planeData(i), 0x33, size_t{frame.planeStride(i)} * frame.planeRows(i));
  }
}

// What a record without an object behind it, or none at all, is answered; 0 when there is one.
template <class Record>
int refusal(const Record* p_record) {
  return p_record == nullptr             ? zo::ZO_STATUS_NULL_POINTER
         : p_record->p_handle == nullptr ? zo::ZO_STATUS_NOT_INITIALIZED
                                         : 0;
}

class Caller {
 public:
  explicit Caller(const std::string& clip) : _clip(clip) { std::remove((clip + ".zo").c_str()); }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;
  ~Caller() {
    for (int i = 0; i < SLOTS; ++i) {
      zoVideoReader_release(&_readers[i]);
      zoVideoConverter_release(&_converters[i]);
      zoFrame_release(&_frames[i]);
    }
  }

  // One call. A slot that is in use is released first, as a caller has to.
  void call(Arguments& arguments);
  const std::string& answers() const { return _answers; }

 private:
  template <class T>
  static T*& some(Arguments& arguments, T* (&slots)[SLOTS]) {
    return slots[arguments.byte() % SLOTS];
  }
  // Now and then a record without an object behind it.
  template <class T>
  static T* someRecord(Arguments& arguments, T* (&slots)[SLOTS], T& zeros) {
    const uint8_t which = arguments.byte();
    return which < 240 ? slots[which % SLOTS] : &zeros;
  }
  static ZoSize someSize(Arguments& arguments) {
    const int width = static_cast<int>(arguments.below(100)) - 2;
    return ZoSize{width, static_cast<int>(arguments.below(100)) - 2};
  }
  static ZoFrameFormat someFormat(Arguments& arguments) {
    return static_cast<ZoFrameFormat>(arguments.byte() % 23);
  }
  void createReader(Arguments& arguments);
  void read(Arguments& arguments);
  void move(Arguments& arguments);
  void convert(Arguments& arguments);
  void reuse(Arguments& arguments);

  const std::string& _clip;
  std::string _answers;
  ZoVideoReader* _readers[SLOTS] = {};
  ZoVideoConverter* _converters[SLOTS] = {};
  ZoFrame* _frames[SLOTS] = {};
  ZoVideoReader _no_reader{};
  ZoFrame _no_frame{};
};

void Caller::createReader(Arguments& arguments) {
  // No time-out that the processor's speed could decide about: 0 is over at the first look at the clock.
  static const int TIMEOUTS[] = {-1, HOUR_MS, INT_MAX, INT_MIN, 0};
  ZoVideoReader*& p_reader = some(arguments, _readers);
  require(zoVideoReader_release(&p_reader) == 0, "releasing succeeds");
  const uint8_t source = arguments.byte() % 8;
  const std::string url = source < 5 ? _clip : scratchDirectory() + "/" + arguments.text(12);
  // The length that is told ends within the text, at its terminator or behind it, inside this block.
  std::vector<char> block(url.c_str(), url.c_str() + url.size() + 1);
  block.resize(block.size() + 8, 'x');
  const uint8_t lengths = arguments.byte() % 8;
  const unsigned length = lengths < 5   ? static_cast<unsigned>(url.size())
                          : lengths < 6 ? UINT_MAX
                                        : arguments.below(static_cast<unsigned>(block.size()));
  const int timeout_ms = TIMEOUTS[arguments.byte() % 5];
  const uint8_t options = arguments.byte();
  Stopper stopper = {arguments.byte(), 0};
  const bool has_place = arguments.byte() < 240;
  Message message(arguments);
  const int status = zoVideoReader_create(
      (options & 1) == 0 ? nullptr : Stopper::poll, (options & 2) == 0 ? nullptr : &stopper,
      source < 7 ? block.data() : nullptr, length, timeout_ms, options & 4, options & 8, options & 16,
      has_place ? &p_reader : nullptr, message.data(), message.size());
  _answers += message.checked(status) + std::to_string(stopper.polls) + described(p_reader);
  require(has_place || status == zo::ZO_STATUS_NULL_POINTER, "a reader needs a place to be stored");
  require((status == 0) == (p_reader != nullptr), "there is a reader exactly when it was created");
  require(p_reader == nullptr || (p_reader->p_handle != nullptr && p_reader->url != nullptr),
          "a reader's record is filled in");
}

void Caller::read(Arguments& arguments) {
  ZoVideoReader* const p_reader = someRecord(arguments, _readers, _no_reader);
  ZoFrame* const p_frame = someRecord(arguments, _frames, _no_frame);
  const std::string before = described(p_reader) + described(p_frame);
  int ready = -1;
  Message message(arguments);
  const int status = zoVideoReader_read(p_reader, p_frame, &ready, message.data(), message.size());
  _answers += message.checked(status);
  const int refused = refusal(p_reader) != 0 ? refusal(p_reader) : refusal(p_frame);
  require(refused == 0 || status == refused, "nothing is read without both objects");
  const std::string after = described(p_reader) + described(p_frame);
  require(status == 0 || before == after, "a failed read leaves the records alone");
  if (status == 0) {
    require(ready == 0 || ready == 1, "a frame is ready or not");
    require(ready == 0 || p_frame->timestamp == p_reader->timestamp, "the frame carries the reader's time");
    _answers += std::to_string(ready) + after + std::to_string(digest(frameOf(p_frame)));
  }
}

void Caller::move(Arguments& arguments) {
  ZoVideoReader* const p_reader = someRecord(arguments, _readers, _no_reader);
  const std::string before = described(p_reader);
  const uint8_t kind = arguments.byte() % 4;
  const long long index = kind == 0   ? arguments.number<int64_t>()
                          : kind == 1 ? arguments.coordinate()
                                      : arguments.byte() % 10 - 1;
  Message message(arguments);
  const int status = zoVideoReader_moveByIndex(p_reader, index, message.data(), message.size());
  _answers += message.checked(status) + described(p_reader);
  require(refusal(p_reader) == 0 || status == refusal(p_reader), "nothing moves without an object");
  require(status == 0 || before == described(p_reader), "a failed move leaves the record alone");
  require(status != 0 || (p_reader->frame_index == index - 1 && index >= 0 && index < p_reader->frame_count),
          "a move leads before a frame that is there");
}

void Caller::convert(Arguments& arguments) {
  ZoVideoConverter* const p_converter = some(arguments, _converters);
  const ZoFrame* const p_source = some(arguments, _frames);
  ZoFrame* const p_destination = some(arguments, _frames);
  const ZoSize size = someSize(arguments);
  const ZoFrameFormat format = someFormat(arguments);
  const bool new_memory = arguments.flag();
  Message message(arguments);
  if (p_converter != nullptr && (p_source == nullptr || p_destination == nullptr)) {
    return;  // the frames are the caller's responsibility
  }
  // In pictures of odd size the scaler leaves some bytes as they were.
  bool defined = size.width % 2 == 0 && size.height % 2 == 0;
  if (p_converter != nullptr && p_source != p_destination && !new_memory) {
    require(zoFrame_reuse(p_destination, format, size, nullptr, 0) == 0, "frames are reshaped");
    paint(p_destination);
    defined = true;
  }
  const std::string before = described(p_destination);
  const int status = zoVideoConverter_convert(p_converter, p_source, format, size, p_destination,
                                              message.data(), message.size());
  _answers += message.checked(status);
  require(p_converter != nullptr || status == zo::ZO_STATUS_NULL_POINTER, "nothing converts by itself");
  require(status == 0 || before == described(p_destination), "a failed conversion leaves the record alone");
  if (status == 0 && defined) {
    _answers += described(p_destination) + std::to_string(digest(frameOf(p_destination)));
  } else if (p_converter != nullptr) {
    paint(p_destination);
  }
}

void Caller::reuse(Arguments& arguments) {
  ZoFrame* const p_frame = someRecord(arguments, _frames, _no_frame);
  const ZoSize size = someSize(arguments);
  const ZoFrameFormat format = someFormat(arguments);
  Message message(arguments);
  const int status = zoFrame_reuse(p_frame, format, size, message.data(), message.size());
  _answers += message.checked(status) + described(p_frame);
  require(status == refusal(p_frame), "every frame takes every shape");
  if (status == 0) {
    paint(p_frame);
  }
}

void Caller::call(Arguments& arguments) {
  const uint8_t operation = arguments.byte();
  switch (operation % 10) {
    case 0:
      return createReader(arguments);
    case 1:
      return read(arguments);
    case 2:
      return move(arguments);
    case 3: {
      ZoVideoReader*& p_reader = some(arguments, _readers);
      require(zoVideoReader_release(&p_reader) == 0 && p_reader == nullptr, "released readers are null");
      require(zoVideoReader_release(nullptr) == zo::ZO_STATUS_NULL_POINTER,
              "releasing needs a place to clear");
      return;
    }
    case 4: {
      ZoVideoConverter*& p_converter = some(arguments, _converters);
      zoVideoConverter_release(&p_converter);
      Message message(arguments);
      _answers += message.checked(
          zoVideoConverter_create(operation < 200 ? &p_converter : nullptr, message.data(), message.size()));
      return;
    }
    case 5: {
      ZoVideoConverter*& p_converter = some(arguments, _converters);
      require(zoVideoConverter_release(&p_converter) == 0 && p_converter == nullptr,
              "released converters are null");
      require(zoVideoConverter_release(nullptr) == zo::ZO_STATUS_NULL_POINTER,
              "releasing needs a place to clear");
      return;
    }
    case 6:
      return convert(arguments);
    case 7: {
      ZoFrame*& p_frame = some(arguments, _frames);
      zoFrame_release(&p_frame);
      Message message(arguments);
      _answers += message.checked(
          zoFrame_create(operation < 200 ? &p_frame : nullptr, message.data(), message.size()));
      return;
    }
    case 8:
      return reuse(arguments);
    default: {
      ZoFrame*& p_frame = some(arguments, _frames);
      require(zoFrame_release(&p_frame) == 0 && p_frame == nullptr, "released frames are null");
      require(zoFrame_release(nullptr) == zo::ZO_STATUS_NULL_POINTER, "releasing needs a place to clear");
      return;
    }
  }
}

std::string answersTo(Arguments arguments, const std::string& clip) {
  Caller caller(clip);
  for (int call = 0; call < 60 && !arguments.empty(); ++call) {
    caller.call(arguments);
  }
  return caller.answers();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  static const std::string CLIP = makeSoundClip();
  const Arguments arguments(p_data, size);
  const std::string answers = answersTo(arguments, CLIP);
  require(answersTo(arguments, CLIP) == answers, "the same calls give the same answers twice");
  return 0;
}
