#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "command.h"
#include "stop.h"
#include "text.h"
#include "zo_core/zo_core.h"

namespace zo_tool {

namespace {

constexpr int EXIT_DONE = 0;
constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_SIGNAL = 128;

void printHelp(const std::vector<std::unique_ptr<Command>>& commands, std::FILE* p_to) {
  std::fputs(
      "Exact video frames and still images.\n"
      "\n"
      "Usage: zo-video COMMAND [ARGUMENTS]\n"
      "\n"
      "Commands:\n",
      p_to);
  for (const auto& p_command : commands) {
    std::fprintf(p_to, "  %-9s %s\n", p_command->name(), p_command->summary());
  }
  std::fputs(
      "\n"
      "'zo-video COMMAND --help' explains each, with examples.\n"
      "'zo-video --version' shows the version.\n"
      "\n"
      "Results go to standard output, errors and progress to standard error. Exit\n"
      "status: 0 done, 1 the work failed, 2 wrong usage, 128 plus the signal's number\n"
      "when a signal ended it (130 for Ctrl-C).\n"
      "\n"
      "Examples:\n"
      "  zo-video info clip.mp4\n"
      "  zo-video frames clip.mp4 --out pictures --max-fps 1\n"
      "  zo-video frame clip.mp4 --index 250 --out frame250.png\n"
      "  zo-video sheet clip.mp4 --out sheet.jpg\n",
      p_to);
}

int usageError(const std::string& message, const std::string& where) {
  std::fprintf(stderr, "zo-video: %s\nTry '%s --help'.\n", oneLine(message).c_str(), where.c_str());
  return EXIT_USAGE;
}

int failure(zo::Status status, const char* p_message) {
  std::fprintf(stderr, "zo-video: %s (%d): %s\n", statusName(status).c_str(), static_cast<int>(status),
               oneLine(p_message).c_str());
  return EXIT_FAILED;
}

/// The first word that looks like an option but is none, or an empty text.
std::string unknownOption(const CLI::App& app) {
  for (const std::string& word : app.remaining()) {
    if (word.size() > 1 && word[0] == '-' && word != "--") {
      return word;
    }
  }
  return std::string();
}

std::vector<std::string> optionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* p_option : app.get_options()) {
    for (const std::string& name : p_option->get_lnames()) {
      names.push_back("--" + name);
    }
  }
  return names;
}

/// "; did you mean 'x'?", or nothing when no known word is close.
std::string suggestion(const std::string& word, const std::vector<std::string>& known) {
  const std::string closest = closestWord(word, known);
  return closest.empty() ? std::string() : "; did you mean '" + closest + "'?";
}

std::string parseMessage(const CLI::App& app, const CLI::ParseError& error) {
  const std::string unknown = unknownOption(app);
  if (!unknown.empty()) {
    const std::string word = unknown.substr(0, unknown.find('='));
    return "unknown option '" + word + "'" + suggestion(word, optionNames(app));
  }
  const std::vector<std::string> extra = app.remaining();
  const bool too_many = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
  if (too_many && !extra.empty()) {
    return "unexpected argument '" + extra.front() + "'";
  }
  return error.what();
}

/// The first option that is followed by no value but by nothing, an empty text or the next option, or an
/// empty text. The parser would take the next option for the value.
std::string optionWithoutValue(const CLI::App& app, const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
    const std::size_t equals = words[i].find('=');
    std::string name = words[i].substr(0, equals);
    const CLI::Option* p_option = name.compare(0, 2, "--") == 0 ? app.get_option_no_throw(name) : nullptr;
    if (p_option == nullptr || p_option->get_items_expected_min() == 0) {
      continue;
    }
    if (equals != std::string::npos) {
      if (equals + 1 == words[i].size()) {
        return name;
      }
      continue;
    }
    ++i;
    if (i == words.size() || words[i].empty() || words[i] == "-h" || words[i].compare(0, 2, "--") == 0) {
      return name;
    }
  }
  return std::string();
}

/// Reads the words after the command. Returns -1 when there is work to do, else the exit status.
int parse(CLI::App& app, const std::vector<std::string>& words) {
  const std::string without_value = optionWithoutValue(app, words);
  if (!without_value.empty()) {
    return usageError(without_value + " needs a value", app.get_name());
  }
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    return -1;
  } catch (const CLI::CallForHelp&) {
    std::fputs(app.help().c_str(), stdout);
    return EXIT_DONE;
  } catch (const CLI::ParseError& e) {
    return usageError(parseMessage(app, e), app.get_name());
  }
}

/// Full disks and closed pipes show when the last of the output is written.
int flushOutput(int status) {
  errno = 0;
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
    return status;
  }
  const std::string reason = errno != 0 ? std::strerror(errno) : "write failed";
  return failure(zo::ZO_STATUS_WRITE_ERROR, ("cannot write to standard output: " + reason).c_str());
}

int runCommand(Command& command, const std::vector<std::string>& words) {
  const std::string full_name = std::string("zo-video ") + command.name();
  CLI::App app(command.summary(), full_name);
  app.get_formatter()->column_width(24);
  app.get_formatter()->label("Positionals", "Arguments");
  command.declare(app);
  const int parsed = parse(app, words);
  if (parsed >= 0) {
    return flushOutput(parsed);
  }
  try {
    return flushOutput(command.run());
  } catch (const Stopped&) {
    std::fputs("zo-video: interrupted\n", stderr);
    return EXIT_SIGNAL + stopSignal();
  } catch (const UsageError& e) {
    return usageError(e.what(), full_name);
  } catch (const zo::Exception& e) {
    if (stopSignal() != 0) {
      return EXIT_SIGNAL + stopSignal();
    }
    std::fflush(stdout);
    return failure(e.status(), e.what());
  } catch (const std::bad_alloc&) {
    return failure(zo::ZO_STATUS_OUT_OF_MEMORY, "not enough memory");
  } catch (const std::exception& e) {
    return failure(zo::ZO_STATUS_STD_EXCEPTION, e.what());
  }
}

int runTool(const std::vector<std::string>& words) {
  const std::vector<std::unique_ptr<Command>> commands = makeCommands();
  if (words.empty()) {
    printHelp(commands, stderr);
    return EXIT_USAGE;
  }
  if (words[0] == "--help" || words[0] == "-h" || (words[0] == "help" && words.size() == 1)) {
    printHelp(commands, stdout);
    return flushOutput(EXIT_DONE);
  }
  const std::size_t understood = words[0] == "--version" ? 1 : words[0] == "help" ? 2 : words.size();
  if (words.size() > understood) {
    return usageError("unexpected argument '" + words[understood] + "'", "zo-video");
  }
  if (words[0] == "--version") {
    std::puts("zo-video " ZO_TOOL_VERSION);
    return flushOutput(EXIT_DONE);
  }
  const bool wants_help = words[0] == "help";
  const std::string& name = words[wants_help ? 1 : 0];
  std::vector<std::string> names;
  for (const auto& p_command : commands) {
    if (name == p_command->name()) {
      return runCommand(*p_command, wants_help ? std::vector<std::string>{"--help"}
                                               : std::vector<std::string>(words.begin() + 1, words.end()));
    }
    names.emplace_back(p_command->name());
  }
  if (name[0] == '-') {
    return usageError("unknown option '" + name + "'" + suggestion(name, {"--help", "--version"}),
                      "zo-video");
  }
  return usageError("unknown command '" + name + "'" + suggestion(name, names), "zo-video");
}

}  // namespace

std::vector<std::unique_ptr<Command>> makeCommands() {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(makeInfoCommand());
  commands.push_back(makeFramesCommand());
  commands.push_back(makeFrameCommand());
  commands.push_back(makeSheetCommand());
  commands.push_back(makeIndexCommand());
  commands.push_back(makeVerifyCommand());
  commands.push_back(makeConvertCommand());
  commands.push_back(makeBenchCommand());
  return commands;
}

}  // namespace zo_tool

int main(int argc, char** argv) {
  zo_tool::watchSignals();
  try {
    return zo_tool::runTool(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
  } catch (const std::bad_alloc&) {
    return zo_tool::failure(zo::ZO_STATUS_OUT_OF_MEMORY, "not enough memory");
  } catch (const std::exception& e) {
    return zo_tool::failure(zo::ZO_STATUS_STD_EXCEPTION, e.what());
  }
}
