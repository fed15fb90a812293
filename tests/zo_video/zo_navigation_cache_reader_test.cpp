// The file that keeps the index, as the reader uses it: loaded instead of scanning, written after a scan.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "zo_navigation_test.h"
#include "zo_video/zo_packet_index.h"

namespace zo {
namespace test {
namespace {

class NavigationCache : public testing::Test {
 protected:
  void SetUp() override {
    ClipOptions options;
    options.frames = 25;
    options.gop = 10;
    _path = makeClip(_directory.file("clip.mp4"), options).path;
    ffmpegCalls().reset();
  }
  void TearDown() override { ffmpegCalls().reset(); }

  std::string sidecar() const { return _path + ".zo"; }
  bool sidecarExists() const { return ::access(sidecar().c_str(), F_OK) == 0; }
  int open(bool use_cache = true, bool navigation = true) {
    ffmpegCalls().resetCounts();
    return _reader.open(_path.c_str(), -1, nullptr, navigation, false, use_cache);
  }
  bool scanned() const { return ffmpegCalls().packets_read >= 25; }

  // What has to be in the file: a word for each packet, by the demuxer alone.
  std::string expectedText() const {
    const ReferenceStream reference = decodeReference(_path, false);
    std::string text;
    for (const ReferencePacket& packet : reference.packets) {
      const unsigned time = static_cast<unsigned>(packet.pts - reference.start_time);
      text += std::to_string(packet.key ? time | 0x80000000U : time) + "\n";
    }
    return text;
  }

  void expectWholeIndex() {
    EXPECT_EQ(25, _reader.frameCount());
    EXPECT_EQ(countingUp(25), numbersOf(readAll(_reader)));
  }

  TempDir _directory;
  std::string _path;
  Reader _reader;
};

TEST(NavigationFileExtension, IsZo) {
  EXPECT_STREQ(".zo", VideoReader::NAVIGATION_FILE_EXTENSION);
}

TEST_F(NavigationCache, IsWrittenBesideTheVideoAfterTheScan) {
  ASSERT_EQ(0, open());
  EXPECT_TRUE(scanned());
  EXPECT_EQ(expectedText(), readFile(sidecar()));
  expectWholeIndex();
}

TEST_F(NavigationCache, IsLoadedInsteadOfScanning) {
  ASSERT_EQ(0, open());
  const std::string written = readFile(sidecar());
  ASSERT_EQ(0, open());
  EXPECT_FALSE(scanned());
  EXPECT_LE(ffmpegCalls().seeks.size(), 1U) << "no second seek to the start";
  EXPECT_EQ(written, readFile(sidecar()));
  expectWholeIndex();
}

TEST_F(NavigationCache, GivesTheSameFramesAsAScan) {
  ASSERT_EQ(0, open(false));
  const std::vector<SeenFrame> sequence = readAll(_reader);
  ASSERT_EQ(0, open());
  ASSERT_EQ(0, open());
  for (const JumpOrder& order : jumpOrders()) {
    expectJumpsGiveTheSequence(_reader, sequence, order);
  }
}

TEST_F(NavigationCache, IsNeitherReadNorWrittenWithoutTheFlag) {
  ASSERT_EQ(0, open(false));
  EXPECT_FALSE(sidecarExists());
  writeFile(sidecar(), "1\n2\n3\n");
  ASSERT_EQ(0, open(false));
  EXPECT_EQ(25, _reader.frameCount());
  EXPECT_EQ("1\n2\n3\n", readFile(sidecar()));
}

TEST_F(NavigationCache, IsNeitherReadNorWrittenWithoutNavigation) {
  ASSERT_EQ(0, open(true, false));
  EXPECT_FALSE(sidecarExists());
  ASSERT_EQ(0, ::mkdir(sidecar().c_str(), 0777));  // would be an error if it were read
  EXPECT_EQ(0, open(true, false));
  EXPECT_EQ(0, _reader.frameCount());
}

TEST_F(NavigationCache, ThatIsEmptyIsScannedForAndRewritten) {
  writeFile(sidecar(), "");
  ASSERT_EQ(0, open());
  EXPECT_TRUE(scanned());
  EXPECT_EQ(expectedText(), readFile(sidecar()));
}

TEST_F(NavigationCache, ThatBeginsWithNoNumberIsScannedForAndRewritten) {
  writeFile(sidecar(), "abc\n12\n");
  ASSERT_EQ(0, open());
  EXPECT_TRUE(scanned());
  EXPECT_EQ(expectedText(), readFile(sidecar()));
}

TEST_F(NavigationCache, EndsAtTheFirstThingThatIsNoNumber) {
  const std::string text = "12\n34\nabc\n56\n";
  writeFile(sidecar(), text);
  ASSERT_EQ(0, open());
  EXPECT_FALSE(scanned());
  EXPECT_EQ(2, _reader.frameCount());
  EXPECT_EQ(text, readFile(sidecar()));
  EXPECT_EQ(ZO_STATUS_OUT_OF_RANGE, caughtZoException([&] { _reader.moveByIndex(2); }).status());
}

TEST_F(NavigationCache, IsTrustedEvenWhenItIsStale) {
  const std::string text = expectedText() + "999999\n";
  writeFile(sidecar(), text);
  ASSERT_EQ(0, open());
  EXPECT_EQ(26, _reader.frameCount());
  EXPECT_EQ(text, readFile(sidecar()));
  std::vector<int> expected = countingUp(25);
  expected.push_back(-1);
  const std::vector<SeenFrame> frames = readAll(_reader);
  EXPECT_EQ(expected, numbersOf(frames)) << "a frame that the file does not have is empty";
  const ReferenceStream reference = decodeReference(_path, false);
  EXPECT_EQ(timestampToMs(reference.start_time + 999999, reference.time_base), frames.back().timestamp);
}

TEST_F(NavigationCache, OfAShorterFileCutsThisOne) {
  const std::string text = expectedText();
  writeFile(sidecar(), text.substr(0, text.find('\n', 40) + 1));
  ASSERT_EQ(0, open());
  const long long count = _reader.frameCount();
  ASSERT_LT(count, 25);
  EXPECT_EQ(countingUp(static_cast<int>(count)), numbersOf(readAll(_reader)));
}

// Foreign numbers of every kind: whatever they say, calls return and the reader stays usable.
TEST_F(NavigationCache, WithForeignNumbersNeverHangsOrBreaks) {
  const char* const texts[] = {
      "0\n0\n0\n0\n0\n0\n0\n0\n",
      "9\n8\n7\n6\n5\n4\n3\n2\n1\n",
      "4294967295\n4294967295\n4294967295\n",
      "2147483648\n2147483647\n0\n-1\n+5\n",
      "2147483647\n2147483647\n2147483647\n2147483647\n",
  };
  for (const char* p_text : texts) {
    SCOPED_TRACE(p_text);
    writeFile(sidecar(), p_text);
    ASSERT_EQ(0, open());
    ASSERT_GT(_reader.frameCount(), 0);
    for (int round = 0; round < 2; ++round) {
      for (long long i = _reader.frameCount() - 1; i >= 0; --i) {
        try {
          _reader.moveByIndex(i);
        } catch (const Exception& exception) {
          EXPECT_EQ(ZO_STATUS_SEEK_ERROR, exception.status()) << exception.what();
        }
        EXPECT_EQ(i, nextFrame(_reader).index);
      }
      readAll(_reader);
    }
    ASSERT_EQ(0, open(false));
    expectWholeIndex();
  }
}

TEST_F(NavigationCache, ThatCannotBeReadMakesOpeningFailAndClose) {
  ASSERT_EQ(0, open(false));
  ASSERT_EQ(0, ::mkdir(sidecar().c_str(), 0777));
  EXPECT_ZO_EXCEPTION_FROM("src/zo_video/zo_video_reader_impl", open(), ZO_STATUS_READ_ERROR,
                           "_loadNavigationCache: error while reading navigation cache",
                           "_loadNavigationCache");
  EXPECT_STREQ("", _reader.url());
  EXPECT_EQ(0, _reader.frameCount());
  EXPECT_EQ(ZO_STATUS_NOT_OPENED, caughtZoException([&] { _reader.moveByIndex(0); }).status());
  ASSERT_EQ(0, ::rmdir(sidecar().c_str()));
  ASSERT_EQ(0, open());
  expectWholeIndex();
}

TEST_F(NavigationCache, ThatCannotBeWrittenIsDoneWithout) {
  // Nothing can be made where the link points, not even by the superuser.
  for (const char* p_target : {"/proc/nothing", "/nonexistent/folder/clip.zo", "clip.mp4.zo"}) {
    ASSERT_EQ(0, ::symlink(p_target, sidecar().c_str()));
    ASSERT_EQ(0, open()) << p_target;
    EXPECT_TRUE(scanned());
    expectWholeIndex();
    ASSERT_EQ(0, ::unlink(sidecar().c_str()));
  }
}

TEST_F(NavigationCache, OnAFullDiskIsDoneWithout) {
  ASSERT_EQ(0, ::symlink("/dev/full", sidecar().c_str()));
  // Reading from there gives zero bytes for ever, which are no numbers.
  ASSERT_EQ(0, open());
  expectWholeIndex();
}

TEST_F(NavigationCache, InAReadOnlyFolderIsDoneWithout) {
  // A file reached through its descriptor has a path beside which nothing can be made.
  const std::string video = _path;
  std::FILE* p_file = std::fopen(video.c_str(), "rb");
  ASSERT_NE(nullptr, p_file);
  _path = "/proc/self/fd/" + std::to_string(::fileno(p_file));
  EXPECT_EQ(0, open());
  expectWholeIndex();
  EXPECT_FALSE(sidecarExists());
  std::fclose(p_file);
}

// Whatever was given to open(), with ".zo" behind it, is the path, also where it is a URL.
TEST_F(NavigationCache, OfAUrlIsTheFileWhosePathIsTheWholeUrlAndTheExtension) {
  const WorkingDir working_folder(_directory.path());
  const std::string expected = expectedText();
  _path = "file:clip.mp4";
  ASSERT_EQ(0, open());
  EXPECT_TRUE(scanned());
  expectWholeIndex();
  EXPECT_EQ(expected, readFile(_directory.file("file:clip.mp4.zo")));
  EXPECT_FALSE(std::filesystem::exists(_directory.file("clip.mp4.zo")));
  ASSERT_EQ(0, open());
  EXPECT_FALSE(scanned()) << "it is loaded from there as well";
  expectWholeIndex();
}

TEST_F(NavigationCache, OfAUrlThatNamesNoFolderOfTheSystemIsDoneWithout) {
  const WorkingDir working_folder(_directory.path());
  const std::string beside_the_video = sidecar();
  const std::string expected = expectedText();
  _path = "file:" + _path;  // lies in a folder "file:", which is not there
  ASSERT_EQ(0, open());
  expectWholeIndex();
  EXPECT_FALSE(std::filesystem::exists(beside_the_video));
  EXPECT_FALSE(std::filesystem::exists("file:"));
  std::filesystem::create_directories("file:" + _directory.path());
  ASSERT_EQ(0, open());
  expectWholeIndex();
  EXPECT_FALSE(std::filesystem::exists(beside_the_video));
  EXPECT_EQ(expected, readFile(sidecar())) << "once the folder is there, it is made";
}

TEST_F(NavigationCache, IsNotWrittenWhenTheScanFails) {
  int reads_left = 12;
  ffmpegCalls().on_read = [&](int& result) {
    result = AVERROR(EIO);
    return reads_left-- <= 0;
  };
  EXPECT_THROW(open(), Exception);
  EXPECT_FALSE(sidecarExists());
}

TEST_F(NavigationCache, HoldsKeyFramesAndBFramesInPresentationOrder) {
  if (!haveEncoder("libx264")) {
    GTEST_SKIP() << "this FFmpeg cannot encode libx264";
  }
  ClipOptions options;
  options.codec = "libx264";
  options.b_frames = 3;
  options.gop = 8;
  options.frames = 25;
  _path = makeClip(_directory.file("b.mkv"), options).path;
  ASSERT_EQ(0, open());
  std::vector<unsigned> words;
  std::string text = readFile(sidecar());
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    words.push_back(static_cast<unsigned>(std::stoul(text.substr(at))));
  }
  ASSERT_EQ(25U, words.size());
  for (std::size_t i = 0; i < words.size(); ++i) {
    EXPECT_EQ(40 * i, words[i] & 0x7FFFFFFFU);
    EXPECT_EQ(i % 8 == 0, (words[i] & 0x80000000U) != 0) << i;
  }
}

// A million frames that a short file pretends to have.
TEST_F(NavigationCache, WithAMillionEntriesStaysExact) {
  std::string text = expectedText();
  const ReferenceStream reference = decodeReference(_path, false);
  unsigned time = static_cast<unsigned>(reference.packets.back().pts - reference.start_time);
  for (int i = 25; i < 1000000; ++i) {
    text += std::to_string(time += 512) + "\n";
  }
  writeFile(sidecar(), text);
  ASSERT_EQ(0, open());
  ASSERT_EQ(1000000, _reader.frameCount());
  for (const int index : {24, 0, 13, 12, 20, 1}) {
    _reader.moveByIndex(index);
    EXPECT_EQ(index, nextFrame(_reader).number);
  }
  for (const long long index : {999999LL, 25LL, 500000LL}) {
    _reader.moveByIndex(index);
    const SeenFrame frame = nextFrame(_reader);
    EXPECT_TRUE(frame.empty);
    EXPECT_EQ(index, frame.index);
  }
  _reader.moveByIndex(7);
  EXPECT_EQ(7, nextFrame(_reader).number);
}

}  // namespace
}  // namespace test
}  // namespace zo
