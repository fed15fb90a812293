#include <algorithm>
#include <set>

#include "zo_tool_program.h"

namespace {

/// Every word of a help text that is a long option.
std::set<std::string> optionsIn(const std::string& text) {
  const std::string letters = "abcdefghijklmnopqrstuvwxyz-";
  std::set<std::string> options;
  for (std::size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at)) {
    const std::size_t end = std::min(text.find_first_not_of(letters, at), text.size());
    if (end > at + 2) options.insert(text.substr(at, end - at));
    at = end;
  }
  return options;
}

std::string without(std::string text, char unwanted) {
  text.erase(std::remove(text.begin(), text.end(), unwanted), text.end());
  return text;
}

/// The options that the completion offers after a command.
std::set<std::string> completionsOf(const std::string& command) {
  const std::string script = zo::test::readFile(ZO_TOOL_SOURCES "/completion/zo-video.bash");
  const std::size_t line = script.find("\n    " + command + ") options=");
  EXPECT_NE(std::string::npos, line) << command;
  return line == std::string::npos ? std::set<std::string>()
                                   : optionsIn(script.substr(line, script.find('\n', line + 1) - line));
}

class ToolDocumentsTest : public testing::TestWithParam<const char*> {};

TEST_P(ToolDocumentsTest, ManualNamesTheCommandAndAllItsOptions) {
  const std::string manual = without(zo::test::readFile(ZO_TOOL_SOURCES "/zo-video.1"), '\\');
  EXPECT_NE(std::string::npos, manual.find(std::string("\n.B zo-video ") + GetParam()));
  const std::set<std::string> in_manual = optionsIn(manual);
  for (const std::string& option : optionsIn(zo::test::runTool({GetParam(), "--help"}).out))
    EXPECT_EQ(1U, in_manual.count(option)) << option;
}

TEST_P(ToolDocumentsTest, CompletionOffersExactlyTheOptions) {
  EXPECT_EQ(optionsIn(zo::test::runTool({GetParam(), "--help"}).out), completionsOf(GetParam()));
}

TEST(ToolManualTest, IsForThisVersion) {
  const std::string version = zo::test::runTool({"--version"}).out;  // "zo-video 1.2.3\n"
  const std::string head = "\"zo_video " + version.substr(9, version.size() - 10) + "\"";
  EXPECT_NE(std::string::npos, zo::test::readFile(ZO_TOOL_SOURCES "/zo-video.1").find(head)) << head;
}

INSTANTIATE_TEST_SUITE_P(Commands, ToolDocumentsTest,
                         testing::Values("info", "frames", "frame", "sheet", "index", "verify", "convert",
                                         "bench"),
                         [](const testing::TestParamInfo<const char*>& test_case) {
                           return std::string(test_case.param);
                         });

}  // namespace
