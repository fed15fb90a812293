// The frame index as a list of words: building one and looking things up in it.
#include "zo_video/zo_packet_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "zo_test_names.h"

namespace zo {
namespace test {
namespace {

using Words = std::vector<unsigned>;

constexpr unsigned KEY = 0x80000000U;

// --- One insertion step ----------------------------------------------------------------------------------

TEST(InsertionStep, LeavesShortListsAlone) {
  Words none;
  EXPECT_EQ(0U, sortLastTimestamp(none));
  EXPECT_TRUE(none.empty());
  Words one = {KEY | 7};
  EXPECT_EQ(0U, sortLastTimestamp(one));
  EXPECT_EQ(Words{KEY | 7}, one);
}

TEST(InsertionStep, MovesTheLastWordPastEveryLaterOne) {
  Words words = {10, 20, 30, 40, 15};
  EXPECT_EQ(3U, sortLastTimestamp(words));
  EXPECT_EQ((Words{10, 15, 20, 30, 40}), words);
}

TEST(InsertionStep, MovesUpToTheFront) {
  Words words = {10, 20, 30, 5};
  EXPECT_EQ(3U, sortLastTimestamp(words));
  EXPECT_EQ((Words{5, 10, 20, 30}), words);
}

TEST(InsertionStep, StopsBehindAnEqualTime) {
  Words words = {10, KEY | 20, 30, 20};
  EXPECT_EQ(1U, sortLastTimestamp(words));
  EXPECT_EQ((Words{10, KEY | 20, 20, 30}), words);
}

TEST(InsertionStep, ComparesTimesWithoutTheKeyFlagAndTakesTheFlagAlong) {
  Words words = {KEY | 10, 20, KEY | 15};
  EXPECT_EQ(1U, sortLastTimestamp(words));
  EXPECT_EQ((Words{KEY | 10, KEY | 15, 20}), words);
}

TEST(InsertionStep, StopsAtAnEarlierTimeEvenIfLaterOnesStandBeforeIt) {
  Words words = {50, 5, 30, 10};
  EXPECT_EQ(1U, sortLastTimestamp(words));
  EXPECT_EQ((Words{50, 5, 10, 30}), words);
}

// --- Building --------------------------------------------------------------------------------------------

struct Packet {
  int64_t time;
  bool key;
};

using Packets = std::vector<Packet>;

Words built(const Packets& packets, uint64_t step_limit = PacketIndexBuilder::STEP_LIMIT) {
  Words words;
  PacketIndexBuilder builder(words, step_limit);
  for (const Packet& packet : packets) {
    builder.add(packet.time, packet.key);
  }
  builder.finish();
  return words;
}

// The rule, step by step: append, and swap towards the front when the word before has a later time.
Words insertedOneByOne(const Packets& packets) {
  Words words;
  for (const Packet& packet : packets) {
    const int64_t previous = words.empty() ? packet.time : static_cast<int64_t>(words.back() & 0x7FFFFFFFU);
    words.push_back(static_cast<unsigned>(packet.time & 0xFFFFFFFF) | (packet.key ? KEY : 0));
    if (previous > packet.time) {
      for (std::size_t i = words.size() - 1; i > 0 && (words[i] & 0x7FFFFFFFU) < (words[i - 1] & 0x7FFFFFFFU);
           --i) {
        std::swap(words[i], words[i - 1]);
      }
    }
  }
  return words;
}

TEST(PacketIndexBuilder, GivesNothingForNothing) {
  EXPECT_TRUE(built({}).empty());
}

TEST(PacketIndexBuilder, PutsPacketsInDecodingOrderIntoPresentationOrder) {
  EXPECT_EQ((Words{KEY | 0, 1, 2, 3, 4, 5, KEY | 6}),
            built({{0, true}, {3, false}, {1, false}, {2, false}, {6, true}, {4, false}, {5, false}}));
}

TEST(PacketIndexBuilder, KeepsTheFileOrderOfEqualTimes) {
  EXPECT_EQ((Words{KEY | 5, 5, KEY | 5, 9}), built({{5, true}, {9, false}, {5, false}, {5, true}}));
}

TEST(PacketIndexBuilder, LetsTimesBeyondThirtyOneBitsRunIntoTheKeyFlag) {
  const int64_t beyond = int64_t{1} << 31;
  EXPECT_EQ((Words{0, 0x7FFFFFFFU, KEY | 0, KEY | 1}),
            built({{0, false}, {beyond - 1, false}, {beyond, false}, {beyond + 1, true}}));
}

TEST(PacketIndexBuilder, CutsTimesBeyondThirtyTwoBits) {
  const int64_t beyond = int64_t{1} << 32;
  EXPECT_EQ((Words{5, 7, KEY | 9}), built({{5, false}, {beyond + 7, false}, {beyond + 9, true}}));
  EXPECT_EQ((Words{5, 0xFFFFFFFFU}), built({{5, false}, {std::numeric_limits<int64_t>::max(), false}}));
}

struct TimesCase {
  const char* name;
  std::size_t count;
  int64_t (*time)(std::size_t i, std::mt19937_64& random);
};

// Small, so that plain insertion can be compared with in no time.
constexpr uint64_t STEP_LIMIT = uint64_t{1} << 19;

class PacketTimes : public testing::TestWithParam<TimesCase> {};

TEST_P(PacketTimes, GiveTheSameWordsAsPlainInsertion) {
  for (const std::size_t count : {GetParam().count / 10, GetParam().count}) {
    std::mt19937_64 random(4711);
    Packets packets;
    for (std::size_t i = 0; i < count; ++i) {
      packets.push_back({GetParam().time(i, random), random() % 7 == 0});
    }
    ASSERT_EQ(insertedOneByOne(packets), built(packets, STEP_LIMIT)) << count << " packets";
  }
}

int64_t at(std::size_t i) {
  return static_cast<int64_t>(i);
}

// The larger counts make the builder give insertion up and sort.
INSTANTIATE_TEST_SUITE_P(
    Builder, PacketTimes,
    testing::Values(
        TimesCase{"Ascending", 2000, [](std::size_t i, std::mt19937_64&) { return at(i) * 40; }},
        TimesCase{"Equal", 2000, [](std::size_t, std::mt19937_64&) { return int64_t{3}; }},
        TimesCase{"Reordered", 2000,
                  [](std::size_t i, std::mt19937_64&) {
                    return at(i) + (i % 3 == 1 ? 2 : i % 3 == 2 ? -1 : 0);
                  }},
        TimesCase{"Descending", 2000, [](std::size_t i, std::mt19937_64&) { return 1000000 - at(i); }},
        TimesCase{"DescendingInPairs", 2000,
                  [](std::size_t i, std::mt19937_64&) { return 1000000 - at(i / 2); }},
        TimesCase{
            "Random", 2500,
            [](std::size_t, std::mt19937_64& random) { return static_cast<int64_t>(random() % 1000000); }},
        TimesCase{"RandomWithManyEqual", 2500,
                  [](std::size_t, std::mt19937_64& random) { return static_cast<int64_t>(random() % 10); }},
        TimesCase{"BeyondThirtyOneBits", 2500,
                  [](std::size_t, std::mt19937_64& random) {
                    return static_cast<int64_t>(random() & 0x3FFFFFFFFULL);
                  }},
        TimesCase{"RarelyBeyondThirtyOneBits", 2500,
                  [](std::size_t, std::mt19937_64& random) {
                    const int64_t time = static_cast<int64_t>(random() % 1000000);
                    return random() % 500 == 0 ? time + (int64_t{1} << 31) : time;
                  }},
        TimesCase{"OnceBeyondThirtyOneBitsAmongDescendingOnes", 3000,
                  [](std::size_t i, std::mt19937_64&) {
                    return i == 2000 ? (int64_t{1} << 31) + 500000 : 1000000 - at(i);
                  }},
        TimesCase{"BeyondThirtyOneBitsAndThenDescendingOnes", 2000,
                  [](std::size_t i, std::mt19937_64&) {
                    return i == 1 ? (int64_t{1} << 31) + 5 : 1000000 - at(i);
                  }},
        TimesCase{"BeyondThirtyOneBitsNowAndThenAmongDescendingPairs", 2500,
                  [](std::size_t i, std::mt19937_64&) {
                    const int64_t time = 1000000 - at(i / 2);
                    return i % 100 == 1 ? (int64_t{1} << 31) + time / 2 : time;
                  }},
        TimesCase{"BeyondThirtyOneBitsAndThenRandomOnes", 2500,
                  [](std::size_t i, std::mt19937_64& random) {
                    const int64_t time = static_cast<int64_t>(random() % 1000);
                    return i == 1 || random() % 300 == 0 ? (int64_t{1} << 31) + time : time;
                  }}),
    CaseName());

constexpr std::size_t MILLION = 1000000;

bool ascending(const Words& words) {
  return std::is_sorted(words.begin(), words.end(),
                        [](unsigned a, unsigned b) { return (a & 0x7FFFFFFFU) < (b & 0x7FFFFFFFU); });
}

TEST(PacketIndexBuilder, TakesAMillionReorderedPackets) {
  Words words;
  PacketIndexBuilder builder(words);
  for (std::size_t i = 0; i < MILLION; ++i) {
    const int64_t order[] = {0, 4, 2, 1, 3};
    builder.add(at(i / 5 * 5) + order[i % 5], i % 5 == 0);
  }
  builder.finish();
  ASSERT_EQ(MILLION, words.size());
  EXPECT_TRUE(ascending(words));
  EXPECT_EQ(KEY | 999995U, words[999995]);
  EXPECT_EQ(999999U, words[999999]);
}

// Insertion alone would take 500,000,000,000 moves. This is with the limit as it is in use.
TEST(PacketIndexBuilder, TakesAMillionPacketsThatRunBackwards) {
  Words words;
  PacketIndexBuilder builder(words);
  for (std::size_t i = 0; i < MILLION; ++i) {
    builder.add(at(MILLION - i), false);
  }
  builder.finish();
  ASSERT_EQ(MILLION, words.size());
  EXPECT_TRUE(ascending(words));
  EXPECT_EQ(1U, words.front());
  EXPECT_EQ(MILLION, words.back());
}

// The first time beyond 31 bits leaves the words unordered, so that sorting them would not do.
TEST(PacketIndexBuilder, TakesAMillionPacketsThatRunBackwardsBehindATimeBeyondThirtyOneBits) {
  Words words;
  PacketIndexBuilder builder(words);
  builder.add(2 * at(MILLION), true);
  builder.add((int64_t{1} << 31) + 1, false);
  for (std::size_t i = 0; i < MILLION; ++i) {
    builder.add(at(MILLION) + 1 - at(i), false);
  }
  builder.finish();
  ASSERT_EQ(MILLION + 2, words.size());
  EXPECT_EQ(KEY | 2 * MILLION, words[0]);
  EXPECT_EQ(KEY | 1, words[1]);
  EXPECT_EQ(2U, words[2]);
  EXPECT_EQ(MILLION + 1, words.back());
  EXPECT_TRUE(ascending(Words(words.begin() + 1, words.end())));
}

// Each of them stays where it came; between them the words run backwards.
TEST(PacketIndexBuilder, TakesAMillionPacketsOfWhichEveryOtherIsBeyondThirtyOneBits) {
  Words words;
  PacketIndexBuilder builder(words);
  for (std::size_t i = 0; i < MILLION / 2; ++i) {
    builder.add((int64_t{1} << 31) + at(MILLION), true);
    builder.add(at(MILLION - i), false);
  }
  builder.finish();
  ASSERT_EQ(MILLION, words.size());
  EXPECT_EQ(MILLION / 2 + 1, words[0]);
  EXPECT_EQ(MILLION - 1, words[MILLION / 2 - 2]);
  EXPECT_EQ(KEY | MILLION, words[MILLION / 2 - 1]);
  EXPECT_EQ(MILLION, words[MILLION / 2]);
  EXPECT_EQ(KEY | MILLION, words[MILLION / 2 + 1]);
  EXPECT_EQ(KEY | MILLION, words.back());
}

// --- Looking up ------------------------------------------------------------------------------------------

TEST(IndexOrder, TellsWhatTheWordsAllow) {
  EXPECT_EQ(IndexOrder::STRICT_ASCENDING, indexOrder({}));
  EXPECT_EQ(IndexOrder::STRICT_ASCENDING, indexOrder({9}));
  EXPECT_EQ(IndexOrder::STRICT_ASCENDING, indexOrder({KEY | 1, 2, KEY | 3}));
  EXPECT_EQ(IndexOrder::ASCENDING, indexOrder({1, KEY | 2, 2, 3}));
  EXPECT_EQ(IndexOrder::UNORDERED, indexOrder({1, 3, KEY | 2}));
  EXPECT_EQ(IndexOrder::UNORDERED, indexOrder({2, 2, 1}));
}

TEST(FindPacketTime, FindsEveryTimeAndNothingElse) {
  const Words words = {KEY | 0, 10, KEY | 20, 35, 0x7FFFFFFFU};
  for (std::size_t i = 0; i < words.size(); ++i) {
    EXPECT_EQ(static_cast<long long>(i), findPacketTime(words, packetTime(words[i]), 0));
  }
  for (const int64_t time : {int64_t{-1}, int64_t{1}, int64_t{9}, int64_t{11}, int64_t{34}, int64_t{36},
                             int64_t{0x80000000}, int64_t{0x8000000A}, int64_t{0x10000000A},
                             std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min()}) {
    EXPECT_EQ(-1, findPacketTime(words, time, 0)) << time;
  }
  EXPECT_EQ(-1, findPacketTime({}, 0, 0));
}

TEST(FindPacketTime, PrefersTheExpectedAmongEqualTimes) {
  const Words words = {0, 10, KEY | 10, 10, 20};
  EXPECT_EQ(1, findPacketTime(words, 10, 0)) << "the first when none of them is expected";
  EXPECT_EQ(1, findPacketTime(words, 10, 4));
  EXPECT_EQ(1, findPacketTime(words, 10, 1));
  EXPECT_EQ(2, findPacketTime(words, 10, 2));
  EXPECT_EQ(3, findPacketTime(words, 10, 3));
}

TEST(KeyIndex, IsTheLastKeyAtOrBefore) {
  const Words words = {KEY | 0, 1, 2, KEY | 3, 4, KEY | 5};
  const long long expected[] = {0, 0, 0, 3, 3, 5};
  for (long long i = 0; i < 6; ++i) {
    EXPECT_EQ(expected[i], keyIndexAtOrBefore(words, i)) << i;
  }
}

TEST(KeyIndex, IsTheStartWhereThereIsNone) {
  EXPECT_EQ(0, keyIndexAtOrBefore({0, 1, 2}, 2));
  EXPECT_EQ(0, keyIndexAtOrBefore({0, 1, KEY | 2}, 1));
}

TEST(EvenlySpaced, SeesALostPacketAndPassesOverRounding) {
  const Words even = {KEY | 0, 40, 80, 120, 160, KEY | 200, 240};
  EXPECT_TRUE(evenlySpaced(even, 0, 3));
  const Words rounded = {KEY | 0, 33, 67, 100, 133, 167};
  EXPECT_TRUE(evenlySpaced(rounded, 0, 5));
  const Words hole = {KEY | 0, 40, 120, 160, 200};
  EXPECT_FALSE(evenlySpaced(hole, 0, 4));
  EXPECT_FALSE(evenlySpaced(hole, 0, 1)) << "a hole shortly behind the frame counts as well";
}

TEST(EvenlySpaced, LooksNoFurtherThanTheGroupAndTheReordering) {
  const Words behind_the_group = {KEY | 0, 40, 80, KEY | 200, 240};
  EXPECT_TRUE(evenlySpaced(behind_the_group, 0, 2));
  Words far_behind = {KEY | 0};
  for (unsigned i = 1; i < 40; ++i) {
    far_behind.push_back(i * 40 + (i >= 30 ? 40 : 0));
  }
  EXPECT_TRUE(evenlySpaced(far_behind, 0, 10));
  EXPECT_FALSE(evenlySpaced(far_behind, 0, 25));
}

TEST(EvenlySpaced, StopsAtTheEndOfTheList) {
  EXPECT_TRUE(evenlySpaced({KEY | 0, 40}, 0, 1));
  EXPECT_NO_THROW(static_cast<void>(evenlySpaced({KEY | 0}, 0, 0)));
}

Words wordsWithSteps(const std::vector<unsigned>& steps, int times) {
  Words words = {KEY | 0};
  for (int i = 0; i < times; ++i) {
    for (const unsigned step : steps) {
      words.push_back(packetTime(words.back()) + step);
    }
  }
  return words;
}

TEST(PaceChangesOften, SeesAVariableRateButNotAFewHolesOrRounding) {
  EXPECT_TRUE(paceChangesOften(wordsWithSteps({40, 40, 40, 80}, 20)));
  EXPECT_TRUE(paceChangesOften(wordsWithSteps({10, 50, 90, 20, 70}, 20)));
  EXPECT_FALSE(paceChangesOften(wordsWithSteps({40}, 100)));
  EXPECT_FALSE(paceChangesOften(wordsWithSteps({33, 34, 33}, 30)));
  Words two_lost = wordsWithSteps({40}, 60);
  two_lost.erase(two_lost.begin() + 40);
  two_lost.erase(two_lost.begin() + 20);
  EXPECT_FALSE(paceChangesOften(two_lost));
}

TEST(PaceChangesOften, SaysNoOfListsWithoutTwoSteps) {
  EXPECT_FALSE(paceChangesOften({}));
  EXPECT_FALSE(paceChangesOften({KEY | 0}));
  EXPECT_FALSE(paceChangesOften({KEY | 0, 40}));
}

}  // namespace
}  // namespace test
}  // namespace zo
