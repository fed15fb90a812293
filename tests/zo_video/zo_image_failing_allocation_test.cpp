// Every allocation of the still image functions fails in turn.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "zo_core/zo_exception.h"
#include "zo_failing_memory.h"
#include "zo_test_compare.h"
#include "zo_test_files.h"
#include "zo_test_picture.h"
#include "zo_video/zo_image_io.h"
#include "zo_video/zo_jpeg_decoder.h"
#include "zo_video/zo_jpeg_encoder.h"

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
Outcome runWithFailure(int n, Thrown thrown, Body&& body) {
  Outcome outcome;
  MemoryShortage shortage(Requests::OURS, n, false, thrown);
  try {
    body();
    outcome.complete = !shortage.met();
  } catch (const Exception& e) {
    shortage.end();
    outcome.error = e;
  } catch (...) {
    outcome.unchanged = true;
  }
  return outcome;
}

// Runs `body` until all of its allocations have failed once; each zo::Exception on the way has that status,
// line and message. Returns how many came.
template <class Body>
int expectWrapped(Thrown thrown, Status status, int line, const std::string& message, Body&& body) {
  int wrapped = 0;
  for (int n = 0; n < 1000; ++n) {
    const Outcome outcome = runWithFailure(n, thrown, body);
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
  Thrown thrown;
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
      GetParam().thrown, GetParam().status, GetParam().read_line,
      "Failure in imageRead(...): failed to read image file '" + _path + "', " + GetParam().text, [&] {
        Frame frame;
        imageRead(_path, frame);
      });
  EXPECT_GE(wrapped, 2);  // the file's bytes and the frame
}

TEST_P(ImageFileFailure, WithinWritingIsWrapped) {
  const int wrapped = expectWrapped(
      GetParam().thrown, GetParam().status, GetParam().write_line,
      "Failure in imageWrite(...): failed to write image file '" + _path + "', " + GetParam().text,
      [&] { imageWrite(_path, _picture, 90); });
  EXPECT_GE(wrapped, 2);  // the converted frame and the compressed bytes
}

INSTANTIATE_TEST_SUITE_P(Kinds, ImageFileFailure,
                         testing::Values(WrapCase{"OutOfMemory", Thrown::BAD_ALLOC, ZO_STATUS_OUT_OF_MEMORY,
                                                  454, 562, "not enough memory to read the image"},
                                         WrapCase{"OtherStandardException", Thrown::STANDARD_EXCEPTION,
                                                  ZO_STATUS_STD_EXCEPTION, 467, 575,
                                                  "caught standard exception: something strange"},
                                         WrapCase{"AnythingElse", Thrown::NUMBER, ZO_STATUS_UNKNOWN_ERROR,
                                                  479, 587, "caught unknown exception."}),
                         [](const auto& i) { return i.param.name; });

// The coders are made before anything else, and what fails there is not wrapped.
TEST_P(ImageFileFailure, WhileTheCoderIsMadeComesOutAsItIs) {
  const std::string missing = _directory.file("missing.jpg");
  Frame frame;
  EXPECT_TRUE(runWithFailure(0, GetParam().thrown, [&] { imageRead(missing, frame); }).unchanged);
  EXPECT_TRUE(runWithFailure(0, GetParam().thrown, [&] { imageWrite(missing, frame, 0); }).unchanged);
}

// The functions that do not wrap let std::bad_alloc through; the leak checker watches.
template <class Body>
void expectEachFailurePasses(Body&& body) {
  int failures = 0;
  for (int n = 0; n < 1000; ++n) {
    const Outcome outcome = runWithFailure(n, Thrown::BAD_ALLOC, body);
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
    runWithFailure(n, Thrown::BAD_ALLOC, [&] { encoder.encode(picture, 90, out); });
    encoder.encode(picture, 90, out);
    EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(out.data()), out.size()));

    JpegDecoder decoder;
    Frame frame;
    Frame reference;
    JpegDecoder().decode(out.data(), out.size(), reference);
    runWithFailure(n, Thrown::BAD_ALLOC, [&] { decoder.decode(out.data(), out.size(), frame); });
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
