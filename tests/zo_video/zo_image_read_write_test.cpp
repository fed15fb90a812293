#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <turbojpeg.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <string>

#include "zo_core/zo_exception.h"
#include "zo_jpeg_test_support.h"
#include "zo_test_compare.h"
#include "zo_test_exception.h"
#include "zo_test_files.h"
#include "zo_test_picture.h"
#include "zo_turbojpeg_calls.h"
#include "zo_video/zo_image_io.h"
#include "zo_video/zo_jpeg_decoder.h"
#include "zo_video/zo_jpeg_encoder.h"

namespace zo {
namespace test {
namespace {

constexpr char FILE_NAME[] = "src/zo_video/zo_image_io";

std::string text(const Bytes& bytes) {
  return std::string(bytes.begin(), bytes.end());
}

// The error that a caller sees and the one that it wraps, each with its line.
void expectWrapped(const Exception& e, Status status, const char* p_function, int line,
                   const std::string& message, int reason_line, const std::string& reason) {
  EXPECT_EQ(status, e.status());
  EXPECT_STREQ(p_function, e.function());
  EXPECT_STREQ(FILE_NAME, e.file());
  EXPECT_EQ(line, e.line());
  EXPECT_EQ(message, e.what());
  ASSERT_NE(nullptr, e.previous());
  EXPECT_EQ(status, e.previous()->status());
  EXPECT_EQ(reason, e.previous()->what());
  EXPECT_EQ(nullptr, e.previous()->previous());
  if (reason_line != 0) {
    EXPECT_STREQ(p_function, e.previous()->function());
    EXPECT_STREQ(FILE_NAME, e.previous()->file());
    EXPECT_EQ(reason_line, e.previous()->line());
  }
}

void expectReadFailure(const std::string& path, Status status, int reason_line, const std::string& reason) {
  Frame frame;
  expectWrapped(caughtZoException([&] { imageRead(path, frame); }), status, "imageRead", 442,
                "Failure in imageRead function: failed to read file: '" + path + "' due to " + reason,
                reason_line, reason);
}

void expectWriteFailure(const std::string& path, const Frame& frame, int quality, Status status,
                        int reason_line, const std::string& reason) {
  expectWrapped(caughtZoException([&] { imageWrite(path, frame, quality); }), status, "imageWrite", 550,
                "Failure in imageWrite(...): failed to write image file '" + path + "' due to " + reason,
                reason_line, reason);
}

int openDescriptors() {
  int count = 0;
  for (int fd = 0; fd < 256; ++fd) {
    count += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
  }
  return count;
}

// The most memory that the process may have, for as long as this object lives.
class AddressSpaceLimit {
 public:
  explicit AddressSpaceLimit(rlim_t bytes) {
    getrlimit(RLIMIT_AS, &_saved);
    rlimit limit = _saved;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_AS, &limit);
  }
  ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &_saved); }

  /// False where limits mean nothing: in an emulator.
  static bool works() {
    constexpr std::size_t BYTES = std::size_t{1} << 30;
    const AddressSpaceLimit limit(BYTES);
    void* p_block = mmap(nullptr, BYTES, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p_block == MAP_FAILED) {
      return true;
    }
    munmap(p_block, BYTES);
    return false;
  }
  AddressSpaceLimit(const AddressSpaceLimit&) = delete;
  AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

 private:
  rlimit _saved{};
};

// --- Reading
// ------------------------------------------------------------------------------------------------

TEST(ImageRead, GivesWhatTheJpegDecoderGives) {
  const TempDir directory;
  const Bytes jpeg = bareEncodeYuv(makeYuvPicture(Size(33, 17), TJSAMP_422), 90);
  writeFile(directory.file("a.jpg"), text(jpeg));
  Frame expected;
  JpegDecoder().decode(jpeg.data(), static_cast<unsigned>(jpeg.size()), expected);
  Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(3, 3), 1);
  imageRead(directory.file("a.jpg"), frame);
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV422_PLANAR, frame.format());
  EXPECT_TRUE(samePixels(expected, frame));
}

TEST(ImageRead, DoesNotLookAtTheExtension) {
  const TempDir directory;
  const Bytes jpeg = bareEncodeYuv(makeYuvPicture(Size(8, 8), TJSAMP_444), 90);
  for (const char* p_name : {"a.png", "a", "a.txt", ".jpg"}) {
    writeFile(directory.file(p_name), text(jpeg));
    Frame frame;
    imageRead(directory.file(p_name), frame);
    EXPECT_EQ(Size(8, 8), frame.size()) << p_name;
  }
}

TEST(ImageRead, ReadsAFileThatIsLargerThanAnyBuffering) {
  const TempDir directory;
  imageWrite(directory.file("a.jpg"), makeNoiseFrame(ZO_FRAME_FORMAT_BGR24, Size(700, 500), 3), 100);
  ASSERT_GT(readFile(directory.file("a.jpg")).size(), 400000U);
  Frame frame;
  imageRead(directory.file("a.jpg"), frame);
  EXPECT_EQ(Size(700, 500), frame.size());
}

TEST(ImageRead, RefusesAPngByTheNameOfAJpegWithTheErrorOfTheDecoder) {
  const TempDir directory;
  imageSave(directory.file("a.png"), makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8), 1), 0);
  writeFile(directory.file("a.jpg"), readFile(directory.file("a.png")));
  expectReadFailure(directory.file("a.jpg"), ZO_STATUS_CODEC_ERROR, 0,
                    "Failed to decode frame. Error code -1");
}

TEST(ImageRead, ReportsAFileThatCannotBeOpened) {
  const TempDir directory;
  const std::string path = directory.file("missing.jpg");
  expectReadFailure(path, ZO_STATUS_OPEN_ERROR, 383,
                    "Failure in imageRead(...): can not open image file " + path);
  expectReadFailure("", ZO_STATUS_OPEN_ERROR, 383, "Failure in imageRead(...): can not open image file ");
}

TEST(ImageRead, ShowsAPathWithPercentSignsAsItIs) {
  const std::string path = "/nonexistent/%s%n%d.jpg";
  expectReadFailure(path, ZO_STATUS_OPEN_ERROR, 383,
                    "Failure in imageRead(...): can not open image file " + path);
}

TEST(ImageRead, CutsTheMessageOfAVeryLongPath) {
  const std::string path(100000, 'x');
  Frame frame;
  const Exception e = caughtZoException([&] { imageRead(path, frame); });
  EXPECT_EQ(ZO_STATUS_OPEN_ERROR, e.status());
  EXPECT_EQ(std::string::npos, std::string(e.what()).find("due to"));
  ASSERT_NE(nullptr, e.previous());
  EXPECT_EQ(383, e.previous()->line());
}

TEST(ImageRead, ReportsAStreamThatCannotSeek) {
  const TempDir directory;
  const std::string path = directory.file("fifo");
  ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
  const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);  // so that opening it for reading does not wait
  ASSERT_GE(fd, 0);
  expectReadFailure(path, ZO_STATUS_READ_ERROR, 394,
                    "Failure in imageRead(...): failed to read image file " + path);
  close(fd);
}

TEST(ImageRead, ReportsAFolder) {
  const TempDir directory;
  Frame frame;
  const Exception e = caughtZoException([&] { imageRead(directory.path(), frame); });
  EXPECT_EQ(ZO_STATUS_READ_ERROR, e.status());
  ASSERT_NE(nullptr, e.previous());
  // Which of the steps fails is up to the file system: some say that a folder has no end, some that it is
  // larger than any file, some only that it cannot be read.
  const int line = e.previous()->line();
  EXPECT_TRUE(line == 394 || line == 405 || line == 423) << line;
  EXPECT_EQ("Failure in imageRead(...): failed to read image file " + directory.path(),
            std::string(e.previous()->what()));
}

TEST(ImageRead, ReportsAFileThatIsTooLargeForABuffer) {
  const TempDir directory;
  const std::string path = directory.file("huge.jpg");
  writeFile(path, "");
  if (truncate(path.c_str(), off_t{UINT_MAX} + 1) != 0) {
    GTEST_SKIP() << "no file of that size here";
  }
  expectReadFailure(path, ZO_STATUS_READ_ERROR, 405,
                    "Failure in imageRead(...): failed to read image file " + path);
}

TEST(ImageRead, ReportsAFileThatHoldsLessThanItSays) {
  // The kernel's settings claim a page and hold a line.
  const std::string path = "/sys/kernel/mm/transparent_hugepage/enabled";
  struct stat information;
  if (stat(path.c_str(), &information) != 0 || information.st_size < 4096) {
    GTEST_SKIP() << "no such file here";
  }
  expectReadFailure(path, ZO_STATUS_READ_ERROR, 423,
                    "Failure in imageRead(...): failed to read image file " + path);
}

TEST(ImageRead, GivesAnEmptyFileToTheDecoder) {
  const TempDir directory;
  writeFile(directory.file("empty.jpg"), "");
  expectReadFailure(directory.file("empty.jpg"), ZO_STATUS_CODEC_ERROR, 0,
                    "Failed to decode frame. Error code -1");
}

TEST(ImageRead, ReportsADecoderThatCannotBeMadeAsItIsAndBeforeItLooksForTheFile) {
  TurboJpegAnswers answers;
  answers.refuseInstances();
  Frame frame;
  for (const char* p_path : {"/nonexistent/a.jpg", ""}) {
    const Exception e = caughtZoException([&] { imageRead(p_path, frame); });
    EXPECT_EQ(ZO_STATUS_OUT_OF_MEMORY, e.status());
    EXPECT_STREQ("Not enough memory to initialize JPEG decoder.", e.what());
    EXPECT_STREQ("Impl", e.function());
    EXPECT_STREQ("src/zo_video/zo_jpeg_decoder", e.file());
    EXPECT_EQ(nullptr, e.previous());
  }
}

TEST(ImageRead, LeavesTheFrameAloneUntilAHeaderWasRead) {
  const TempDir directory;
  writeFile(directory.file("text.jpg"), "no picture");
  const Frame before = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(9, 7), 3);
  Frame frame = before;
  EXPECT_THROW(imageRead(directory.file("text.jpg"), frame), Exception);
  EXPECT_THROW(imageRead(directory.file("missing.jpg"), frame), Exception);
  EXPECT_TRUE(samePixels(before, frame));
}

TEST(ImageRead, ReportsThatThereIsNotEnoughMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers need the address space themselves";
#endif
  const TempDir directory;
  const std::string path = directory.file("large.jpg");
  writeFile(path, "");
  ASSERT_EQ(0, truncate(path.c_str(), off_t{3} << 30));
  Frame frame;
  const AddressSpaceLimit limit(rlim_t{1} << 30);
  const Exception e = caughtZoException([&] { imageRead(path, frame); });
  EXPECT_EQ(ZO_STATUS_OUT_OF_MEMORY, e.status());
  EXPECT_STREQ("imageRead", e.function());
  EXPECT_STREQ(FILE_NAME, e.file());
  EXPECT_EQ(454, e.line());
  EXPECT_EQ(nullptr, e.previous());
  EXPECT_EQ("Failure in imageRead(...): failed to read image file '" + path +
                "', not enough memory to read the image",
            std::string(e.what()));
}

// --- Writing
// ------------------------------------------------------------------------------------------------

TEST(ImageWrite, WritesWhatTheJpegEncoderGives) {
  const TempDir directory;
  for (FrameFormat format : {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                             ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21, ZO_FRAME_FORMAT_YUV422_PACKED_UYVY}) {
    const Frame frame = makeNumberedFrame(format, Size(40, 30), 4);
    Buffer expected;
    JpegEncoder().encode(frame, 70, expected);
    imageWrite(directory.file("a.png"), frame, 70);  // the name does not matter
    EXPECT_EQ(text(bytesOf(expected)), readFile(directory.file("a.png"))) << toString(format);
  }
}

TEST(ImageWrite, ReplacesAFile) {
  const TempDir directory;
  writeFile(directory.file("a.jpg"), std::string(100000, 'x'));
  imageWrite(directory.file("a.jpg"), makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(8, 8), 4), 70);
  EXPECT_LT(readFile(directory.file("a.jpg")).size(), 1000U);
}

TEST(ImageWrite, RefusesAFrameWithoutPixelsAndCreatesNoFile) {
  const TempDir directory;
  expectWriteFailure(directory.file("a.jpg"), Frame(), 90, ZO_STATUS_NOT_INITIALIZED, 499,
                     "Failure in imageWrite(...): trying to save non-initialized frame");
  EXPECT_NE(0, access(directory.file("a.jpg").c_str(), F_OK));
}

class ImageWriteQuality : public testing::TestWithParam<int> {};

TEST_P(ImageWriteQuality, IsRefusedOutsideOneToHundredAndNoFileIsCreated) {
  const TempDir directory;
  expectWriteFailure(directory.file("a.jpg"), makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8), 1),
                     GetParam(), ZO_STATUS_INVALID_ARGUMENT, 508,
                     "Failure in imageWrite(...): 'quality' arg should lie in segment (0; 100]");
  EXPECT_NE(0, access(directory.file("a.jpg").c_str(), F_OK));
}

INSTANTIATE_TEST_SUITE_P(Values, ImageWriteQuality, testing::Values(INT_MIN, -1, 0, 101, INT_MAX));

TEST(ImageWrite, AcceptsTheBoundsOfTheQuality) {
  const TempDir directory;
  const Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(64, 64), 1);
  imageWrite(directory.file("low.jpg"), frame, 1);
  imageWrite(directory.file("high.jpg"), frame, 100);
  EXPECT_LT(readFile(directory.file("low.jpg")).size(), readFile(directory.file("high.jpg")).size());
}

TEST(ImageWrite, ChecksFrameThenQualityThenFileThenFormat) {
  const Frame good = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8), 1);
  const Frame unsupported = makeNumberedFrame(ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, Size(8, 8), 1);
  const std::string nowhere = "/nonexistent/a.jpg";
  expectWriteFailure(nowhere, Frame(), 0, ZO_STATUS_NOT_INITIALIZED, 499,
                     "Failure in imageWrite(...): trying to save non-initialized frame");
  expectWriteFailure(nowhere, good, 0, ZO_STATUS_INVALID_ARGUMENT, 508,
                     "Failure in imageWrite(...): 'quality' arg should lie in segment (0; 100]");
  expectWriteFailure(nowhere, unsupported, 90, ZO_STATUS_OPEN_ERROR, 519,
                     "Failure in imageWrite(...): cannot open file '/nonexistent/a.jpg' for writing");
}

TEST(ImageWrite, LeavesAnEmptyFileForAFrameThatTheEncoderRefuses) {
  const TempDir directory;
  writeFile(directory.file("a.jpg"), "what was here before");
  expectWriteFailure(
      directory.file("a.jpg"), makeNumberedFrame(ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, Size(8, 8), 1), 90,
      ZO_STATUS_NOT_SUPPORTED, 0, "No corresponding AVPixelFormat for ZO_FRAME_FORMAT_YUV444_PACKED_IYU2");
  EXPECT_EQ("", readFile(directory.file("a.jpg")));
}

TEST(ImageWrite, PassesOnTheStatusOfACompressionThatFails) {
  const TempDir directory;
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(70000, 1), DeviceContext(), 0);
  fillFrame(frame, 7);
  expectWriteFailure(directory.file("a.jpg"), frame, 90, ZO_STATUS_CODEC_ERROR, 0,
                     "Failed to encode frame. Error code -1");
}

// Unlike a decoder, an encoder is only found to be useless when it is to encode: the file is open then.
TEST(ImageWrite, ReportsAnEncoderWithoutItsCoderAfterTheFileWasOpened) {
  const TempDir directory;
  const Frame good = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8), 1);
  TurboJpegAnswers answers;
  answers.refuseInstances();
  expectWriteFailure("/nonexistent/a.jpg", good, 90, ZO_STATUS_OPEN_ERROR, 519,
                     "Failure in imageWrite(...): cannot open file '/nonexistent/a.jpg' for writing");
  expectWriteFailure(directory.file("a.jpg"), good, 90, ZO_STATUS_NULL_POINTER, 0,
                     "Error in encode(...) function");
  EXPECT_EQ("", readFile(directory.file("a.jpg")));
}

TEST(ImageWrite, ReportsAFolderAndAnEmptyName) {
  const TempDir directory;
  const Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8), 1);
  for (const std::string& path : {directory.path(), std::string()}) {
    expectWriteFailure(path, frame, 90, ZO_STATUS_OPEN_ERROR, 519,
                       "Failure in imageWrite(...): cannot open file '" + path + "' for writing");
  }
}

TEST(ImageWrite, ReportsAFolderThatMayNotBeWritten) {
  constexpr uid_t NOBODY = 65534;
  const TempDir directory;
  const uid_t user = geteuid();
  ASSERT_EQ(0, chmod(directory.path().c_str(), 0555));
  if (user == 0 && seteuid(NOBODY) != 0) {
    GTEST_SKIP() << "nothing is forbidden to the superuser";
  }
  expectWriteFailure(
      directory.file("a.jpg"), makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8), 1), 90,
      ZO_STATUS_OPEN_ERROR, 519,
      "Failure in imageWrite(...): cannot open file '" + directory.file("a.jpg") + "' for writing");
  EXPECT_EQ(0, seteuid(user));
  chmod(directory.path().c_str(), 0700);
}

TEST(ImageWrite, ReportsAReadOnlyFileSystem) {
  const std::string path = "/proc/zo_image.jpg";
  expectWriteFailure(path, makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8), 1), 90, ZO_STATUS_OPEN_ERROR,
                     519, "Failure in imageWrite(...): cannot open file '" + path + "' for writing");
}

// Small images would fit into a stream's buffer and large ones would not.
class ImageWriteFullDisk : public testing::TestWithParam<Size> {};

TEST_P(ImageWriteFullDisk, IsAWriteError) {
  if (access("/dev/full", W_OK) != 0) {
    GTEST_SKIP() << "no /dev/full here";
  }
  expectWriteFailure("/dev/full", makeNoiseFrame(ZO_FRAME_FORMAT_BGR24, GetParam(), 1), 95,
                     ZO_STATUS_WRITE_ERROR, 536, "Failure in imageWrite(...): cannot write file '/dev/full'");
}

TEST_P(ImageWriteFullDisk, IsAWriteErrorWhenItFillsUpOnTheWay) {
  const TempDir directory;
  const std::string path = directory.file("a.jpg");
  rlimit saved;
  getrlimit(RLIMIT_FSIZE, &saved);
  signal(SIGXFSZ, SIG_IGN);
  rlimit limit = saved;
  limit.rlim_cur = 100;
  setrlimit(RLIMIT_FSIZE, &limit);
  const Exception e =
      caughtZoException([&] { imageWrite(path, makeNoiseFrame(ZO_FRAME_FORMAT_BGR24, GetParam(), 1), 95); });
  setrlimit(RLIMIT_FSIZE, &saved);
  signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(ZO_STATUS_WRITE_ERROR, e.status());
  ASSERT_NE(nullptr, e.previous());
  EXPECT_EQ(536, e.previous()->line());
}

INSTANTIATE_TEST_SUITE_P(Sizes, ImageWriteFullDisk, testing::Values(Size(8, 8), Size(300, 200)),
                         [](const auto& i) { return i.param.width < 100 ? "Small" : "Large"; });

TEST(ImageWrite, ReportsThatThereIsNotEnoughMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers need the address space themselves";
#endif
  if (!AddressSpaceLimit::works()) {
    GTEST_SKIP() << "the address space cannot be limited here";
  }
  const TempDir directory;
  const std::string path = directory.file("a.jpg");
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_BGR24, Size(20000, 10000), DeviceContext(), 0);  // the worst case is twice that
  fillFrame(frame, 9);
  const AddressSpaceLimit limit(rlim_t{1} << 30);
  const Exception e = caughtZoException([&] { imageWrite(path, frame, 90); });
  EXPECT_EQ(ZO_STATUS_OUT_OF_MEMORY, e.status());
  EXPECT_STREQ("imageWrite", e.function());
  EXPECT_STREQ(FILE_NAME, e.file());
  EXPECT_EQ(562, e.line());
  EXPECT_EQ(nullptr, e.previous());
  EXPECT_EQ("Failure in imageWrite(...): failed to write image file '" + path +
                "', not enough memory to read the image",
            std::string(e.what()));
  EXPECT_EQ("", readFile(path));
}

// --- Both
// ---------------------------------------------------------------------------------------------------

TEST(ImageFiles, AreClosedOnEveryPath) {
  const TempDir directory;
  const Frame good = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(8, 8), 1);
  const Frame unsupported = makeNumberedFrame(ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, Size(8, 8), 1);
  writeFile(directory.file("text.jpg"), "no picture");
  const int before = openDescriptors();
  Frame frame;
  for (int round = 0; round < 3; ++round) {
    imageWrite(directory.file("a.jpg"), good, 90);
    imageRead(directory.file("a.jpg"), frame);
    EXPECT_THROW(imageRead(directory.file("text.jpg"), frame), Exception);
    EXPECT_THROW(imageRead(directory.path(), frame), Exception);
    EXPECT_THROW(imageRead(directory.file("missing.jpg"), frame), Exception);
    EXPECT_THROW(imageWrite(directory.file("b.jpg"), unsupported, 90), Exception);
    EXPECT_THROW(imageWrite("/dev/full", good, 90), Exception);
  }
  EXPECT_EQ(before, openDescriptors());
}

TEST(ImageFiles, KeepThePictureFromWritingToReading) {
  const TempDir directory;
  for (FrameFormat format : {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                             ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV444_PLANAR}) {
    for (Size size : {Size(1, 1), Size(3, 3), Size(17, 5), Size(64, 48)}) {
      Frame frame;
      frame.reuse(format, size, DeviceContext(), 0);
      fillFrame(frame, 0);
      for (unsigned p = 0; p < frame.planeCount(); ++p) {
        for (unsigned y = 0; y < frame.planeRows(p); ++y) {
          unsigned char* p_row = frame.planeData(p) + static_cast<std::size_t>(y) * frame.planeStride(p);
          std::fill_n(p_row, frame.planeRowBytes(p), static_cast<unsigned char>(60 + 50 * p));
        }
      }
      imageWrite(directory.file("a.jpg"), frame, 95);
      Frame back;
      imageRead(directory.file("a.jpg"), back);
      EXPECT_EQ(format, back.format());
      EXPECT_EQ(size, back.size());
      EXPECT_GT(psnr(frame, back), 40);
    }
  }
}

}  // namespace
}  // namespace test
}  // namespace zo
