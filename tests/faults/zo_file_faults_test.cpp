// Files that are cut, damaged, or taken away while they are read, and disks that fill up at every byte of
// what is written.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <ctime>
#include <filesystem>
#include <new>
#include <numeric>
#include <string>
#include <vector>

#include "zo_fault_trials.h"
#include "zo_test_support.h"
#include "zo_video/zo_image_io.h"
#include "zo_video/zo_video_reader.h"

namespace zo {
namespace test {
namespace {

constexpr int FRAMES = 6;

// Files larger than this cannot be written while it lives; the call that tries fails as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(std::size_t bytes) : _handler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &_saved);
    rlimit limit = _saved;
    limit.rlim_cur = static_cast<rlim_t>(bytes);
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &_saved);
    std::signal(SIGXFSZ, _handler);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit _saved;
  void (*_handler)(int);
};

// Counts one fault after the other into a row of the table. `run` is to report or to do without, as it does,
// and to leave nothing behind.
class FaultCounter {
 public:
  explicit FaultCounter(const std::string& subject) {
    _row.subject = subject;
    tzset();  // the C library keeps what it reads about time zones when a file has a date for the first time
  }
  ~FaultCounter() { addToTable(_row); }
  FaultCounter(const FaultCounter&) = delete;
  FaultCounter& operator=(const FaultCounter&) = delete;

  template <class Run>
  Ending count(Run&& run) {
    Ending ending;
    const long long descriptors = openDescriptors();
    const HeldMemory before = heldMemory();
    try {
      run();
    } catch (const Exception& exception) {
      ending.set(exception);
      EXPECT_NE(ZO_STATUS_INTERNAL_ERROR, exception.status()) << exception.what();
    } catch (const std::bad_alloc&) {
      ending.status = Ending::BAD_ALLOC;  // more was claimed than there can be
    }
    const HeldMemory after = heldMemory();
    const long long descriptors_leaked = openDescriptors() - descriptors;
    ++_row.tried;
    ++(ending.status == ZO_STATUS_OK ? _row.done_without : _row.reported);
    _row.bytes_leaked += after.bytes - before.bytes;
    _row.descriptors_leaked += descriptors_leaked;
    EXPECT_EQ(before.bytes, after.bytes) << _row.subject << " " << ending.message.data();
    EXPECT_EQ(0, descriptors_leaked) << _row.subject << " " << ending.message.data();
    return ending;
  }

  /// The same with a reader; `use_again` gets it after the fault, reported or not, and must not throw.
  template <class Run, class UseAgain>
  Ending countReading(Run&& run, UseAgain&& use_again) {
    return count([&] {
      VideoReader reader;
      try {
        run(reader);
      } catch (...) {
        use_again(reader);
        throw;
      }
      use_again(reader);
    });
  }

 private:
  FaultRow _row;
};

// --- Disks -----------------------------------------------------------------------------------------------

struct Writer {
  const char* name;
  const char* file;
  void (*write)(const std::string& path, const Frame& frame);
  Status status;
};

class FillingDisk : public testing::TestWithParam<Writer> {};

TEST_P(FillingDisk, IsReportedAtEveryByte) {
  const TempDir directory;
  const Frame picture = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(9, 7), 5);
  const std::string path = directory.file(GetParam().file);
  GetParam().write(path, picture);
  const std::string whole = readFile(path);
  FaultCounter counter(std::string("full disk: ") + GetParam().name);
  for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
    std::filesystem::remove(path);
    const Ending ending = counter.count([&] {
      const FileSizeLimit limit(bytes);
      GetParam().write(path, picture);
    });
    EXPECT_EQ(GetParam().status, ending.status) << bytes << " of " << whole.size() << " bytes";
  }
  GetParam().write(path, picture);
  EXPECT_EQ(whole, readFile(path));
}

void save(const std::string& path, const Frame& frame) {
  imageSave(path, frame, 90);
}

INSTANTIATE_TEST_SUITE_P(Writers, FillingDisk,
                         testing::Values(Writer{"imageWrite", "a.jpg",
                                                [](const std::string& path, const Frame& frame) {
                                                  imageWrite(path, frame, 90);
                                                },
                                                ZO_STATUS_WRITE_ERROR},
                                         Writer{"imageSave", "b.jpg", save, ZO_STATUS_CODEC_ERROR},
                                         Writer{"imageSave", "b.png", save, ZO_STATUS_CODEC_ERROR},
                                         Writer{"imageSave", "b.pgm", save, ZO_STATUS_CODEC_ERROR},
                                         Writer{"imageSave", "b.ppm", save, ZO_STATUS_CODEC_ERROR}),
                         [](const auto& test) {
                           const std::string file = test.param.file;
                           return std::string(test.param.name) + "_" + file.substr(file.size() - 3);
                         });

// --- Videos ----------------------------------------------------------------------------------------------

struct Container {
  const char* file;
  const char* codec;
};

// What a file gave: the numbers of its frames, -1 for an empty one.
using Numbers = std::vector<int>;

void readOn(VideoReader& reader, Numbers& numbers) {
  Frame frame;
  for (bool got_frame = true;;) {
    reader.read(frame, got_frame, nullptr);
    if (!got_frame) {
      return;
    }
    ASSERT_LT(numbers.size(), 10000U) << "no end";
    numbers.push_back(frame.initialized() ? paintedNumber(frame) : -1);
  }
}

class VideoFile : public testing::TestWithParam<Container> {
 protected:
  void SetUp() override {
    ClipOptions options;
    options.codec = GetParam().codec;
    options.width = 32;
    options.height = 32;
    options.frames = FRAMES;
    options.gop = 3;
    makeClip(_path, options);
    _whole = readFile(_path);
    for (int i = 0; i < FRAMES; ++i) {
      _expected.push_back(i);
    }
    VideoReader reader;
    expectWhole(reader, false);
    expectWhole(reader, true);
    readWithEverything(reader, true);
  }

  // With the file as it was made, every frame comes, and with an index jumps are exact.
  static void expectFrames(VideoReader& reader, const std::string& path, bool indexed,
                           const Numbers& expected) {
    Numbers numbers;
    ASSERT_NO_THROW(ASSERT_EQ(0, reader.open(path.c_str(), -1, nullptr, indexed, false, false)));
    ASSERT_NO_THROW(readOn(reader, numbers));
    EXPECT_EQ(expected, numbers);
    if (indexed) {
      Frame frame;
      bool got_frame = false;
      ASSERT_NO_THROW(reader.moveByIndex(1));
      ASSERT_NO_THROW(reader.read(frame, got_frame, nullptr));
      EXPECT_EQ(1, paintedNumber(frame));
    }
  }
  void expectWhole(VideoReader& reader, bool indexed) const {
    writeFile(_path, _whole);
    expectFrames(reader, _path, indexed, _expected);
  }

  // Opening, reading, jumping, and the navigation file: errors come out.
  void readWithEverything(VideoReader& reader, bool skip_errors) const {
    const std::string sidecar = _path + VideoReader::NAVIGATION_FILE_EXTENSION;
    unlink(sidecar.c_str());
    Numbers numbers;
    reader.open(_path.c_str(), -1, nullptr, true, skip_errors, true);
    readOn(reader, numbers);
    for (const long long index : {reader.frameCount() - 1, 0LL}) {
      if (index >= 0 && index < reader.frameCount()) {
        reader.moveByIndex(index);
        readOn(reader, numbers);
      }
    }
  }

  const TempDir _directory;
  const std::string _path = _directory.file(GetParam().file);
  std::string _whole;
  Numbers _expected;
};

// From one byte of a file to the next that is tried. What checks every access takes its time, as an emulator
// does.
std::size_t byteStep(const std::string& file) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return file.size() / 60 + 1;
#else
  return file.size() / repetitions(400, 20) + 1;
#endif
}

TEST_P(VideoFile, MayBeCutAnywhere) {
  FaultCounter counter("file cut");
  const std::size_t step = byteStep(_whole);
  for (std::size_t bytes = 0; bytes < _whole.size(); bytes += step) {
    writeFile(_path, _whole.substr(0, bytes));
    SCOPED_TRACE(std::to_string(bytes) + " bytes");
    counter.countReading([&](VideoReader& reader) { readWithEverything(reader, bytes % 2 == 0); },
                         [&](VideoReader& reader) { expectWhole(reader, bytes / step % 2 == 0); });
  }
}

TEST_P(VideoFile, MayBeDamagedAnywhere) {
  FaultCounter counter("byte damaged");
  const std::size_t step = byteStep(_whole);
  for (std::size_t at = 0; at < _whole.size(); at += step) {
    std::string damaged = _whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0xFF);
    writeFile(_path, damaged);
    SCOPED_TRACE("byte " + std::to_string(at));
    counter.countReading([&](VideoReader& reader) { readWithEverything(reader, at % 2 == 0); },
                         [&](VideoReader& reader) { expectWhole(reader, at / step % 2 == 0); });
  }
}

// Too large to have been read ahead as a whole.
TEST_P(VideoFile, MayShrinkWhileItIsRead) {
  constexpr int MANY = 24;
  ClipOptions options;
  options.codec = GetParam().codec;
  options.width = 320;
  options.height = 240;
  options.frames = MANY;
  options.gop = 3;
  const std::string path = _directory.file(std::string("large-") + GetParam().file);
  makeClip(path, options);
  const std::string whole = readFile(path);
  Numbers expected(MANY);
  std::iota(expected.begin(), expected.end(), 0);
  FaultCounter counter("file shrinks while it is read");
  for (const bool indexed : {false, true}) {
    for (const int frames_read : {0, 1, 4, MANY - 1}) {
      for (std::size_t twentieth = 0; twentieth < 20; ++twentieth) {
        writeFile(path, whole);
        const auto read = [&](VideoReader& reader) {
          Numbers numbers;
          Frame frame;
          bool got_frame = false;
          reader.open(path.c_str(), -1, nullptr, indexed, false, false);
          for (int i = 0; i < frames_read; ++i) {
            reader.read(frame, got_frame, nullptr);
            EXPECT_EQ(i, paintedNumber(frame));
          }
          ASSERT_EQ(0, truncate(path.c_str(), static_cast<off_t>(whole.size() * twentieth / 20)));
          readOn(reader, numbers);
          if (indexed) {
            reader.moveByIndex(1);
            readOn(reader, numbers);
          }
        };
        counter.countReading(read, [&](VideoReader& reader) {
          writeFile(path, whole);
          expectFrames(reader, path, indexed, expected);
        });
      }
    }
  }
}

TEST_P(VideoFile, MayVanishWhileItIsRead) {
  FaultCounter counter("file vanishes while it is read");
  for (const bool indexed : {false, true}) {
    for (int frames_read = 0; frames_read < FRAMES; ++frames_read) {
      writeFile(_path, _whole);
      const auto read = [&](VideoReader& reader) {
        Numbers numbers;
        Frame frame;
        bool got_frame = false;
        reader.open(_path.c_str(), -1, nullptr, indexed, false, false);
        for (int i = 0; i < frames_read; ++i) {
          reader.read(frame, got_frame, nullptr);
        }
        ASSERT_EQ(0, unlink(_path.c_str()));
        readOn(reader, numbers);
        EXPECT_EQ(static_cast<std::size_t>(FRAMES - frames_read), numbers.size());
        if (indexed) {
          reader.moveByIndex(1);
          reader.read(frame, got_frame, nullptr);
          EXPECT_EQ(1, paintedNumber(frame));
        }
      };
      const Ending ending =
          counter.countReading(read, [&](VideoReader& reader) { expectWhole(reader, indexed); });
      EXPECT_EQ(ZO_STATUS_OK, ending.status) << ending.message.data();
    }
  }
}

// The index stays in memory, and what is left beside the video is nothing or all of it.
TEST_P(VideoFile, MayHaveNoRoomForItsNavigationFile) {
  const std::string sidecar = _path + VideoReader::NAVIGATION_FILE_EXTENSION;
  const std::string words = readFile(sidecar);
  FaultCounter counter("full disk: navigation file");
  for (std::size_t bytes = 0; bytes < words.size(); ++bytes) {
    unlink(sidecar.c_str());
    const auto read = [&](VideoReader& reader) {
      {
        const FileSizeLimit limit(bytes);
        reader.open(_path.c_str(), -1, nullptr, true, false, true);
      }
      Numbers numbers;
      readOn(reader, numbers);
      EXPECT_EQ(_expected, numbers);
      EXPECT_EQ("", readFile(sidecar)) << "cut short at " << bytes;
    };
    const Ending ending = counter.countReading(read, [&](VideoReader& reader) {
      EXPECT_EQ(0, reader.open(_path.c_str(), -1, nullptr, true, false, true));
      EXPECT_EQ(words, readFile(sidecar)) << "the next opening makes it anew";
    });
    EXPECT_EQ(ZO_STATUS_OK, ending.status) << ending.message.data();
  }
}

INSTANTIATE_TEST_SUITE_P(Containers, VideoFile,
                         testing::Values(Container{"a.mp4", "mpeg4"}, Container{"a.mkv", "mpeg4"},
                                         Container{"a.avi", "mjpeg"}, Container{"a.ts", "mpeg2video"}),
                         [](const auto& test) {
                           const std::string file = test.param.file;
                           return file.substr(2);
                         });

}  // namespace
}  // namespace test
}  // namespace zo
