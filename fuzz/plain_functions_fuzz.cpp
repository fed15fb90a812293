// The input is a list of calls of the plain functions: arguments, null pointers and lifetimes in any order.
#include <climits>
#include <vector>

#include "zo_fuzz.h"
#include "zo_test_clip.h"
#include "zo_video_c/zo_video_c.h"

namespace {

using namespace zo::fuzz;

constexpr int SLOTS = 3;

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

  // Takes the status of the call; the message belongs to it.
  void check(int status) const {
    require(status >= 0 && status <= 28, "the status is a known one");
    require(status != zo::ZO_STATUS_INTERNAL_ERROR, _bytes.data() + GUARD);
    for (size_t i = 0; i < GUARD; ++i) {
      require(_bytes[i] == '\x5A' && _bytes[GUARD + _size + i] == '\x5A', "only the buffer is written");
    }
    if (status != 0 && !_null && _size != 0) {
      require(strnlen(_bytes.data() + GUARD, _size) < _size, "the message is terminated");
    }
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

class Caller {
 public:
  ~Caller() {
    for (int i = 0; i < SLOTS; ++i) {
      zoVideoReader_release(&_readers[i]);
      zoVideoConverter_release(&_converters[i]);
      zoFrame_release(&_frames[i]);
    }
  }

  // One call. A slot that is in use is released first, as a caller has to.
  void call(Arguments& arguments, const std::string& clip);

 private:
  template <class T>
  T*& some(Arguments& arguments, T* (&slots)[SLOTS]) {
    return slots[arguments.byte() % SLOTS];
  }
  void createReader(Arguments& arguments, const std::string& clip);

  ZoVideoReader* _readers[SLOTS] = {};
  ZoVideoConverter* _converters[SLOTS] = {};
  ZoFrame* _frames[SLOTS] = {};
};

int neverStop(void* p_opaque) {
  return p_opaque == nullptr ? 0 : 1;
}

void Caller::createReader(Arguments& arguments, const std::string& clip) {
  ZoVideoReader*& p_reader = some(arguments, _readers);
  require(zoVideoReader_release(&p_reader) == 0, "releasing succeeds");
  const uint8_t options = arguments.byte();
  std::string url = (options & 1) == 0 ? clip : scratchDirectory() + "/" + arguments.text(12);
  // The length that is told ends within the text, at its terminator or behind it, inside this block.
  std::vector<char> block(url.c_str(), url.c_str() + url.size() + 1);
  block.resize(block.size() + 8, 'x');
  const unsigned length = (options & 2) == 0 ? static_cast<unsigned>(url.size())
                                             : arguments.below(static_cast<unsigned>(block.size()));
  int opaque = 0;
  Message message(arguments);
  const int status = zoVideoReader_create(
      (options & 4) == 0 ? nullptr : neverStop, (options & 8) == 0 ? nullptr : &opaque,
      (options & 16) == 0 ? block.data() : nullptr, length, 5000, options & 32, options & 64, 0,
      (options & 128) == 0 || length % 5 != 0 ? &p_reader : nullptr, message.data(), message.size());
  message.check(status);
  require(status == 0 || p_reader == nullptr, "a failed creation gives no reader");
  if (status == 0 && p_reader != nullptr) {
    require(p_reader->p_handle != nullptr && p_reader->url != nullptr, "a reader's record is filled in");
  }
}

void Caller::call(Arguments& arguments, const std::string& clip) {
  const uint8_t operation = arguments.byte();
  switch (operation % 10) {
    case 0:
      return createReader(arguments, clip);
    case 1: {
      ZoVideoReader* p_reader = some(arguments, _readers);
      ZoFrame* p_frame = some(arguments, _frames);
      int ready = -1;
      Message message(arguments);
      const int status = zoVideoReader_read(p_reader, p_frame, &ready, message.data(), message.size());
      message.check(status);
      require((p_reader != nullptr && p_frame != nullptr) || status != 0,
              "nothing is read without both records");
      require(status != 0 || ready == 0 || ready == 1, "a frame is ready or not");
      return;
    }
    case 2: {
      Message message(arguments);
      message.check(zoVideoReader_moveByIndex(some(arguments, _readers), arguments.coordinate(),
                                              message.data(), message.size()));
      return;
    }
    case 3: {
      ZoVideoReader*& p_reader = some(arguments, _readers);
      require(zoVideoReader_release(&p_reader) == 0 && p_reader == nullptr, "released readers are null");
      require(zoVideoReader_release(nullptr) != 0, "releasing needs a place to clear");
      return;
    }
    case 4: {
      ZoVideoConverter*& p_converter = some(arguments, _converters);
      zoVideoConverter_release(&p_converter);
      Message message(arguments);
      message.check(
          zoVideoConverter_create(operation < 200 ? &p_converter : nullptr, message.data(), message.size()));
      return;
    }
    case 5: {
      ZoVideoConverter*& p_converter = some(arguments, _converters);
      require(zoVideoConverter_release(&p_converter) == 0 && p_converter == nullptr,
              "released converters are null");
      return;
    }
    case 6: {
      Message message(arguments);
      const ZoSize size = {static_cast<int>(arguments.below(100)) - 2,
                           static_cast<int>(arguments.below(100)) - 2};
      ZoVideoConverter* p_converter = some(arguments, _converters);
      const ZoFrame* p_source = some(arguments, _frames);
      ZoFrame* p_destination = some(arguments, _frames);
      if (p_converter != nullptr && (p_source == nullptr || p_destination == nullptr)) {
        return;  // the frames are the caller's responsibility
      }
      message.check(zoVideoConverter_convert(p_converter, p_source,
                                             static_cast<ZoFrameFormat>(arguments.byte() % 23), size,
                                             p_destination, message.data(), message.size()));
      return;
    }
    case 7: {
      ZoFrame*& p_frame = some(arguments, _frames);
      zoFrame_release(&p_frame);
      Message message(arguments);
      message.check(zoFrame_create(operation < 200 ? &p_frame : nullptr, message.data(), message.size()));
      return;
    }
    case 8: {
      Message message(arguments);
      const ZoSize size = {static_cast<int>(arguments.below(100)) - 2,
                           static_cast<int>(arguments.below(100)) - 2};
      ZoFrame* p_frame = some(arguments, _frames);
      const int status = zoFrame_reuse(p_frame, static_cast<ZoFrameFormat>(arguments.byte() % 23), size,
                                       message.data(), message.size());
      message.check(status);
      for (int i = 0; status == 0 && i < p_frame->plane_count; ++i) {
        std::memset(p_frame->p_planes[i], 0x33, p_frame->strides[i]);
      }
      return;
    }
    default: {
      ZoFrame*& p_frame = some(arguments, _frames);
      require(zoFrame_release(&p_frame) == 0 && p_frame == nullptr, "released frames are null");
      return;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  static const std::string CLIP = makeSoundClip();
  Arguments arguments(p_data, size);
  Caller caller;
  for (int call = 0; call < 60 && !arguments.empty(); ++call) {
    caller.call(arguments, CLIP);
  }
  return 0;
}
