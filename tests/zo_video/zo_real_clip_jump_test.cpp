// Jumps in clips that nobody here made.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include "zo_navigation_test.h"

namespace zo {
namespace test {
namespace {

std::vector<std::string> realClips() {
  std::vector<std::string> names;
  if (!realMediaDir().empty()) {
    for (const auto& entry : std::filesystem::directory_iterator(realMediaDir())) {
      const std::string extension = entry.path().extension().string();
      if (extension != ".jsonl" && extension != ".md" && extension != ".wav") {
        names.push_back(entry.path().filename().string());
      }
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

class RealClips : public testing::TestWithParam<std::string> {};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealClips);

TEST_P(RealClips, GiveTheFramesOfTheSequenceInEveryOrder) {
  const std::string path = realMediaDir() + "/" + GetParam();
  Reader reader;
  try {
    openIndexed(reader, path, true);
  } catch (const Exception& exception) {
    GTEST_SKIP() << "cannot be opened with navigation: " << exception.what();
  }
  if (reader.frameCount() == 0) {
    GTEST_SKIP() << "reports no duration";
  }
  ASSERT_EQ(static_cast<long long>(decodeReference(path, false).packets.size()), reader.frameCount());
  const std::vector<SeenFrame> sequence = readAll(reader, Pixels::DIGEST);
  // Jumps in long groups of large pictures cost.
  const bool is_long = sequence.size() * static_cast<std::size_t>(reader.size().width) > 20000;
  const std::size_t most_jumps = is_long ? repetitions(12, 3) : 1000;
  for (const JumpOrder& order : jumpOrders()) {
    expectJumpsGiveTheSequence(reader, sequence, order, Pixels::DIGEST, most_jumps);
  }
}

INSTANTIATE_TEST_SUITE_P(Media, RealClips, testing::ValuesIn(realClips()), [](const auto& test) {
  std::string name = test.param;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
  return name;
});

}  // namespace
}  // namespace test
}  // namespace zo
