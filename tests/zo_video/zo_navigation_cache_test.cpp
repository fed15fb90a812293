// The file that keeps an index, byte by byte and both ways.
#include "zo_video/zo_navigation_cache.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <locale>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "zo_test_effort.h"
#include "zo_test_files.h"
#include "zo_test_names.h"

namespace zo {
namespace test {
namespace {

using Words = std::vector<unsigned>;

// A file that lives in memory, so that a hundred thousand small ones take no time.
class MemoryFile {
 public:
  MemoryFile() : _descriptor(::memfd_create("text", MFD_CLOEXEC)) {
    if (_descriptor < 0) {
      throw std::runtime_error("cannot make a file in memory");
    }
  }
  ~MemoryFile() { ::close(_descriptor); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(_descriptor); }
  void replace(const std::string& bytes) const {
    if (::ftruncate(_descriptor, 0) != 0 ||
        ::pwrite(_descriptor, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
      throw std::runtime_error("cannot write a file in memory");
    }
  }

 private:
  int _descriptor;
};

class NavigationCacheFile : public testing::Test {
 protected:
  std::string path() const { return _directory.file("clip.mp4.zo"); }

  Words loaded(const std::string& text) const {
    _memory_file.replace(text);
    Words words;
    EXPECT_EQ(CacheLoad::LOADED, loadNavigationCache(_memory_file.path(), words));
    return words;
  }

  std::string saved(const Words& words) const {
    saveNavigationCache(path(), words);
    return readFile(path());
  }

  TempDir _directory;
  MemoryFile _memory_file;
};

// What formatted extraction in the classic locale makes of the text.
Words extracted(const std::string& text) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  Words words;
  unsigned word;
  while (stream >> word) {
    words.push_back(word);
  }
  return words;
}

// --- Saving ----------------------------------------------------------------------------------------------

TEST_F(NavigationCacheFile, HoldsOneDecimalNumberAndALineFeedPerWord) {
  EXPECT_EQ("2147483648\n1\n40\n2147483728\n4294967295\n0\n",
            saved({0x80000000U, 1, 40, 0x80000050U, 0xFFFFFFFFU, 0}));
}

TEST_F(NavigationCacheFile, IsEmptyForAnEmptyIndex) {
  EXPECT_EQ("", saved({}));
}

TEST_F(NavigationCacheFile, IsReplacedNotOverwritten) {
  writeFile(path(), std::string(100000, '7'));
  EXPECT_EQ("12\n", saved({12}));
}

TEST_F(NavigationCacheFile, HoldsNumbersOfEveryLength) {
  Words words;
  std::string text;
  for (unsigned power = 1; power != 1410065408U; power *= 10) {  // ten to the tenth, cut to 32 bits
    for (const unsigned word : {power - 1, power, power + 1}) {
      words.push_back(word);
      text += std::to_string(word) + "\n";
    }
  }
  EXPECT_EQ(text, saved(words));
  EXPECT_EQ(words, loaded(text));
}

class NavigationCacheSizes : public NavigationCacheFile, public testing::WithParamInterface<std::size_t> {};

TEST_P(NavigationCacheSizes, ComeBackAsTheyWere) {
  std::mt19937 random(static_cast<unsigned>(GetParam()));
  Words words;
  std::string text;
  for (std::size_t i = 0; i < GetParam(); ++i) {
    words.push_back(static_cast<unsigned>(random()) >> random() % 32);
    text += std::to_string(words.back()) + "\n";
  }
  EXPECT_EQ(text, saved(words));
  Words again;
  EXPECT_EQ(CacheLoad::LOADED, loadNavigationCache(path(), again));
  EXPECT_EQ(words, again);
}

// Around the size of a block, and far beyond it.
INSTANTIATE_TEST_SUITE_P(NavigationCacheFile, NavigationCacheSizes,
                         testing::Values(1, 2, 1488, 1489, 1490, 1491, 5000, 216000, 1000000));

TEST_F(NavigationCacheFile, SavesSilentlyIntoNothing) {
  saveNavigationCache(_directory.file("missing/clip.mp4.zo"), {1, 2, 3});
  EXPECT_NE(0, ::access(_directory.file("missing").c_str(), F_OK));
  saveNavigationCache("/proc/clip.mp4.zo", {1, 2, 3});
  saveNavigationCache(_directory.path(), {1, 2, 3});  // a folder is in the way
  saveNavigationCache("", {1, 2, 3});
}

TEST_F(NavigationCacheFile, SavesSilentlyOntoAFullDisk) {
  ASSERT_EQ(0, ::symlink("/dev/full", path().c_str()));
  saveNavigationCache(path(), {1, 2, 3});
  saveNavigationCache(path(), Words(100000, 0x80000000U));
  EXPECT_EQ(0, ::access(path().c_str(), F_OK));
}

// --- Loading ---------------------------------------------------------------------------------------------

TEST_F(NavigationCacheFile, AppendsWhatIsInIt) {
  writeFile(path(), "12\n2147483660\n");
  Words words = {7};
  EXPECT_EQ(CacheLoad::LOADED, loadNavigationCache(path(), words));
  EXPECT_EQ((Words{7, 12, 2147483660U}), words);
}

TEST_F(NavigationCacheFile, NeedNotExist) {
  Words words = {7};
  EXPECT_EQ(CacheLoad::NOT_OPENED, loadNavigationCache(path(), words));
  EXPECT_EQ(CacheLoad::NOT_OPENED, loadNavigationCache(_directory.file("missing/a.zo"), words));
  EXPECT_EQ(CacheLoad::NOT_OPENED, loadNavigationCache("", words));
  EXPECT_EQ(Words{7}, words);
}

TEST_F(NavigationCacheFile, FailsWhereReadingFails) {
  Words words;
  EXPECT_EQ(CacheLoad::FAILED, loadNavigationCache(_directory.path(), words));
  EXPECT_TRUE(words.empty());
}

struct TextCase {
  const char* name;
  std::string text;
  Words words;
};

class NavigationCacheText : public NavigationCacheFile, public testing::WithParamInterface<TextCase> {};

TEST_P(NavigationCacheText, GivesTheNumbersBeforeTheFirstThingThatIsNone) {
  ASSERT_EQ(GetParam().words, extracted(GetParam().text)) << "the expectation is not the rule";
  EXPECT_EQ(GetParam().words, loaded(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    NavigationCacheFile, NavigationCacheText,
    testing::Values(
        TextCase{"Empty", "", {}}, TextCase{"OnlySpace", " \t\n\v\f\r", {}},
        TextCase{"AWordAmongNumbers", "12\n34\nabc\n56\n", {12, 34}}, TextCase{"AWordFirst", "abc\n12\n", {}},
        TextCase{"AWordBehindDigits", "12ab\n34\n", {12}},
        TextCase{"EveryKindOfSpace", "1 2\t3\n4\v5\f6\r7\r\n8", {1, 2, 3, 4, 5, 6, 7, 8}},
        TextCase{"NoLineFeedAtTheEnd", "1\n2", {1, 2}}, TextCase{"SpaceInFront", "\n\n  7\n", {7}},
        TextCase{"LeadingZeros", "007 0000000000000000000000000000012 0", {7, 12, 0}},
        TextCase{"LargestNumber", "4294967295 1", {4294967295U, 1}},
        TextCase{"OneTooLarge", "5 4294967296 1", {5}},
        TextCase{"FarTooLarge", "5 99999999999999999999999999999999999 1", {5}},
        TextCase{"TooLargeAtTheEnd", "5 4294967296", {5}}, TextCase{"Plus", "+5 6", {5, 6}},
        TextCase{"MinusWrapsAround", "-1 -0 -4294967295", {4294967295U, 0, 1}},
        TextCase{"MinusTooLarge", "1 -4294967296 2", {1}},
        TextCase{"SignsSeparate", "1+2-3", {1, 2, 4294967293U}}, TextCase{"SignAlone", "1 + 2", {1}},
        TextCase{"SignAtTheEnd", "1 -", {1}}, TextCase{"TwoSigns", "1 +-2", {1}},
        TextCase{"Fraction", "1.5 2", {1}}, TextCase{"GroupedDigits", "1,234", {1}},
        TextCase{"Hexadecimal", "0x10 2", {0}}, TextCase{"Exponent", "1e3", {1}},
        TextCase{"ZeroByte", std::string("1 2\0 3", 6), {1, 2}}, TextCase{"HighBytes", "1 \xC2\xA0 2", {1}},
        TextCase{"ByteOrderMark",
                 "\xEF\xBB\xBF"
                 "1",
                 {}}),
    CaseName());

// Every text of up to four characters from an alphabet with one of each kind.
TEST_F(NavigationCacheFile, AcceptsExactlyWhatFormattedExtractionAccepts) {
  const std::string alphabet("09+- \n.x", 8);
  const std::string prefixes[] = {"", "429496729", "-429496729", "7 "};
  for (const std::string& prefix : prefixes) {
    for (std::size_t number = 0; number < 8 * 8 * 8 * 8; ++number) {
      std::string text = prefix;
      for (std::size_t rest = number; rest != 0; rest /= 8) {
        text += alphabet[rest % 8];
      }
      ASSERT_EQ(extracted(text), loaded(text)) << '"' << text << '"';
    }
  }
}

TEST_F(NavigationCacheFile, AcceptsExactlyWhatFormattedExtractionAcceptsOfRandomTexts) {
  const std::string numbers = "0123456789012345678901234567894294967296\n\n\n  \t\r";
  const std::string alphabet = numbers + std::string("+-+-a.,\0\x80", 9);
  std::mt19937 random(20260101);
  for (std::size_t i = repetitions(100000, 4000); i != 0; --i) {
    std::string text;
    for (std::size_t left = random() % 40; left != 0; --left) {
      // Mostly numbers, so that lists get long.
      text += alphabet[random() % (random() % 8 == 0 ? alphabet : numbers).size()];
    }
    ASSERT_EQ(extracted(text), loaded(text)) << '"' << text << '"';
  }
}

// Numbers, signs and ends that straddle the border of a block.
TEST_F(NavigationCacheFile, ReadsAcrossTheBordersOfBlocks) {
  for (const char* p_middle : {"4294967295", "-1", "+7 8", "4294967296 5", "12x 5", "-", " \n "}) {
    for (std::size_t before = 16384 - 12; before <= 16384 + 2; ++before) {
      std::string text = "3";
      text.append(before - 2, ' ');
      text += '\n';
      text += p_middle;
      ASSERT_EQ(extracted(text), loaded(text)) << p_middle << " from byte " << before;
      text += " 17 18\n";
      ASSERT_EQ(extracted(text), loaded(text)) << p_middle << " from byte " << before;
    }
  }
}

TEST_F(NavigationCacheFile, TakesAnyTextForWhatItIs) {
  std::mt19937 random(5);
  std::string bytes;
  for (int i = 0; i < 100000; ++i) {
    bytes += static_cast<char>(random());
  }
  EXPECT_EQ(extracted(bytes), loaded(bytes));
  EXPECT_TRUE(loaded(std::string(3000000, ' ')).empty());
  EXPECT_EQ(Words{0}, loaded(std::string(3000000, '0')));
}

}  // namespace
}  // namespace test
}  // namespace zo
