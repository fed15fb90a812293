#ifndef ZO_TOOL_COMMAND_H
#define ZO_TOOL_COMMAND_H

#include <memory>
#include <stdexcept>
#include <vector>

namespace CLI {
class App;
}

namespace zo_tool {

/// One word of the command line with its options and its work.
class Command {
 public:
  virtual ~Command() = default;

  virtual const char* name() const = 0;
  /// What it does, in one line.
  virtual const char* summary() const = 0;
  /// Adds options, and examples as the footer of the help.
  virtual void declare(CLI::App& app) = 0;
  /// Does the work once the options are read. Failures are thrown.
  /// @return 0, or 1 when the work is done and its answer is "no".
  virtual int run() = 0;
};

/// Wrong usage that only shows once the options are read together.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::unique_ptr<Command> makeInfoCommand();
std::unique_ptr<Command> makeFramesCommand();
std::unique_ptr<Command> makeFrameCommand();
std::unique_ptr<Command> makeSheetCommand();
std::unique_ptr<Command> makeIndexCommand();
std::unique_ptr<Command> makeVerifyCommand();
std::unique_ptr<Command> makeConvertCommand();
std::unique_ptr<Command> makeBenchCommand();

/// Every command, in the order in which the help lists them.
std::vector<std::unique_ptr<Command>> makeCommands();

}  // namespace zo_tool

#endif
