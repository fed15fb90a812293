// Every allocation of the still image functions fails in turn. This program replaces the global allocation
// functions, which the shared libraries use as well.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "zo_core/zo_exception.h"
#include "zo_test_compare.h"
#include "zo_test_files.h"
#include "zo_test_picture.h"
#include "zo_video/zo_image_io.h"
#include "zo_video/zo_jpeg_decoder.h"
#include "zo_video/zo_jpeg_encoder.h"

namespace {

enum class Failure { BAD_ALLOC, STD_EXCEPTION, UNKNOWN };

int allocations_to_go = -1;  // the failing one comes after so many; negative: none fails
Failure failure = Failure::BAD_ALLOC;

void failWhenDue() {
  if (allocations_to_go < 0 || allocations_to_go-- > 0) {
    return;
  }
  switch (failure) {
    case Failure::BAD_ALLOC:
      throw std::bad_alloc();
    case Failure::STD_EXCEPTION:
      throw std::runtime_error("something strange");
    case Failure::UNKNOWN:
      throw 42;
  }
}

}  // namespace

// Not inlined: the compiler would see malloc() and delete, or new and free(), meet in one function.
__attribute__((noinline)) void* operator new(std::size_t size) {
  failWhenDue();
  void* p_memory = std::malloc(size == 0 ? 1 : size);
  if (p_memory == nullptr) {
    throw std::bad_alloc();
  }
  return p_memory;
}
__attribute__((noinline)) void* operator new[](std::size_t size) {
  return ::operator new(size);
}
__attribute__((noinline)) void operator delete(void* p_memory) noexcept {
  std::free(p_memory);
}
__attribute__((noinline)) void operator delete(void* p_memory, std::size_t) noexcept {
  std::free(p_memory);
}
__attribute__((noinline)) void operator delete[](void* p_memory) noexcept {
  std::free(p_memory);
}
__attribute__((noinline)) void operator delete[](void* p_memory, std::size_t) noexcept {
  std::free(p_memory);
}

namespace zo {
namespace test {
namespace {

// What came of one run of `body` in which the n-th allocation fails.
struct Outcome {
  bool complete = false;   // there was no n-th allocation
  bool unchanged = false;  // the failure came out as it was
  Exception error;
};

template <class Body>
Outcome runWithFailure(int n, Failure kind, Body&& body) {
  Outcome outcome;
  failure = kind;
  allocations_to_go = n;
  try {
    body();
    outcome.complete = allocations_to_go >= 0;
  } catch (const Exception& e) {
    allocations_to_go = -1;
    outcome.error = e;
  } catch (...) {
    outcome.unchanged = true;
  }
  allocations_to_go = -1;
  return outcome;
}

// Runs `body` until all of its allocations have failed once; each zo::Exception on the way has that status,
// line and message. Returns how many came.
template <class Body>
int expectWrapped(Failure kind, Status status, int line, const std::string& message, Body&& body) {
  int wrapped = 0;
  for (int n = 0; n < 1000; ++n) {
    const Outcome outcome = runWithFailure(n, kind, body);
    if (outcome.complete) {
      return wrapped;
    }
    if (!outcome.unchanged) {
      EXPECT_EQ(status, outcome.error.status());
      EXPECT_EQ(line, outcome.error.line());
      EXPECT_EQ(message, outcome.error.what());
      EXPECT_EQ(nullptr, outcome.error.previous());
      ++wrapped;
    }
  }
  ADD_FAILURE() << "never finished";
  return wrapped;
}

struct WrapCase {
  const char* name;
  Failure failure;
  Status status;
  int read_line;
  int write_line;
  const char* text;  // what follows the path
};

class ImageFileFailure : public testing::TestWithParam<WrapCase> {
 protected:
  const TempDir _directory;
  const std::string _path = _directory.file("a.jpg");
  const Frame _picture = makeNumberedFrame(ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, Size(33, 17), 5);
};

TEST_P(ImageFileFailure, WithinReadingIsWrapped) {
  imageWrite(_path, _picture, 90);
  const int wrapped = expectWrapped(
      GetParam().failure, GetParam().status, GetParam().read_line,
      "Failure in imageRead(...): failed to read image file '" + _path + "', " + GetParam().text, [&] {
        Frame frame;
        imageRead(_path, frame);
      });
  EXPECT_GE(wrapped, 2);  // the file's bytes and the frame
}

TEST_P(ImageFileFailure, WithinWritingIsWrapped) {
  const int wrapped = expectWrapped(
      GetParam().failure, GetParam().status, GetParam().write_line,
      "Failure in imageWrite(...): failed to write image file '" + _path + "', " + GetParam().text,
      [&] { imageWrite(_path, _picture, 90); });
  EXPECT_GE(wrapped, 2);  // the converted frame and the compressed bytes
}

INSTANTIATE_TEST_SUITE_P(Kinds, ImageFileFailure,
                         testing::Values(WrapCase{"OutOfMemory", Failure::BAD_ALLOC, ZO_STATUS_OUT_OF_MEMORY,
                                                  454, 562, "not enough memory to read the image"},
                                         WrapCase{"OtherStandardException", Failure::STD_EXCEPTION,
                                                  ZO_STATUS_STD_EXCEPTION, 467, 575,
                                                  "caught standard exception: something strange"},
                                         WrapCase{"AnythingElse", Failure::UNKNOWN, ZO_STATUS_UNKNOWN_ERROR,
                                                  479, 587, "caught unknown exception."}),
                         [](const auto& i) { return i.param.name; });

// The functions that do not wrap let std::bad_alloc through; the leak checker watches.
template <class Body>
void expectEachFailurePasses(Body&& body) {
  int failures = 0;
  for (int n = 0; n < 1000; ++n) {
    const Outcome outcome = runWithFailure(n, Failure::BAD_ALLOC, body);
    if (outcome.complete) {
      EXPECT_GT(failures, 0);
      return;
    }
    EXPECT_TRUE(outcome.unchanged) << outcome.error.what();
    ++failures;
  }
  ADD_FAILURE() << "never finished";
}

TEST(FailingAllocation, PassesThroughTheFunctionsOfTheImageLibrary) {
  const TempDir directory;
  const std::string path = directory.file("a.png");
  const Frame picture = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 5);
  const std::shared_ptr<Buffer> p_jpeg = encodeJpeg(picture, 90);
  imageSave(path, picture, 90);
  expectEachFailurePasses([&] { imageLoad(path); });
  expectEachFailurePasses([&] { encodeJpeg(picture, 90); });
  expectEachFailurePasses([&] { decodeJpeg(p_jpeg->data(), p_jpeg->size()); });
}

TEST(FailingAllocation, LeavesTheCodersUsable) {
  const Frame picture = makeNumberedFrame(ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, Size(33, 17), 5);
  Buffer expected;
  JpegEncoder().encode(picture, 90, expected);
  const std::string bytes(reinterpret_cast<const char*>(expected.data()), expected.size());
  for (int n = 0; n < 20; ++n) {
    JpegEncoder encoder;
    Buffer out;
    runWithFailure(n, Failure::BAD_ALLOC, [&] { encoder.encode(picture, 90, out); });
    encoder.encode(picture, 90, out);
    EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(out.data()), out.size()));

    JpegDecoder decoder;
    Frame frame;
    Frame reference;
    JpegDecoder().decode(out.data(), out.size(), reference);
    runWithFailure(n, Failure::BAD_ALLOC, [&] { decoder.decode(out.data(), out.size(), frame); });
    decoder.decode(out.data(), out.size(), frame);
    EXPECT_TRUE(samePixels(reference, frame));
  }
}

TEST(FailingAllocation, PassesThroughTheConstructors) {
  expectEachFailurePasses([] { JpegEncoder(); });
  expectEachFailurePasses([] { JpegDecoder(); });
}

}  // namespace
}  // namespace test
}  // namespace zo
