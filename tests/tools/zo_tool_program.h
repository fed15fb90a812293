#ifndef ZO_TESTS_TOOLS_ZO_TOOL_PROGRAM_H
#define ZO_TESTS_TOOLS_ZO_TOOL_PROGRAM_H

#include <gtest/gtest.h>

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "zo_test_support.h"
#include "zo_video/zo_video.h"

namespace zo {
namespace test {

/// How a run of the command line tool ended.
struct ToolRun {
  int status = -1;  ///< exit status; 128 plus the signal's number when a signal killed it
  std::string out;
  std::string err;
};

/// What a test may change about a run.
struct RunOptions {
  std::string directory;          ///< to run in
  std::string out_path;           ///< where standard output goes, instead of being collected
  long long file_size_limit = 0;  ///< no file may grow larger; 0: no limit
};

/// Runs zo-video with these arguments and waits for its end.
ToolRun runTool(const std::vector<std::string>& arguments, const RunOptions& options = RunOptions());

/// A run of zo-video that goes on while the test does something.
class RunningTool {
 public:
  /// @param terminal  Standard error is a terminal, whose output err() collects.
  RunningTool(const std::vector<std::string>& arguments, const RunOptions& options, bool terminal);
  ~RunningTool();
  RunningTool(const RunningTool&) = delete;
  RunningTool& operator=(const RunningTool&) = delete;

  pid_t pid() const { return _pid; }
  void sendSignal(int number);
  /// Waits until `condition` holds; false when the program ended before, or after a minute.
  bool waitUntil(const std::function<bool()>& condition);
  ToolRun wait();
  /// What the program wrote to its terminal so far.
  const std::string& terminalText() const { return _terminal_text; }

 private:
  void readTerminal();
  bool hasEnded();

  TempDir _directory;
  pid_t _pid = -1;
  int _terminal = -1;
  int _wait_status = 0;
  bool _ended = false;
  std::string _terminal_text;
};

/// A named pipe that a test writes into while the program reads it.
class Pipe {
 public:
  explicit Pipe(const std::string& path);
  ~Pipe();
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  const std::string& path() const { return _path; }
  /// Waits until the program reads; false when it ends without.
  bool open(RunningTool& tool);
  /// Returns the number of bytes that the program took, less than asked for when it ended.
  std::size_t write(const std::string& bytes);
  void close();

 private:
  std::string _path;
  int _fd = -1;
};

/// Names of the files in a folder, hidden ones too, sorted.
std::vector<std::string> filesIn(const std::string& folder);

/// The number painted into a picture that was saved as a file.
int numberInFile(const std::string& path);

/// True for exit status 1 with nothing but one line on standard error: "zo-video: <name> (<number>): ...".
testing::AssertionResult failedWith(const ToolRun& run, const std::string& status_name, int status_number,
                                    const std::string& part_of_message);

/// A clip of numbered pictures in a container that keeps its times.
std::string makeToolClip(const TempDir& directory, const std::string& name, ClipOptions options);
ClipOptions toolClipOptions(int frames);
/// The same in a container that says nothing about its duration. Returns the path.
std::string makeEndlessClip(const TempDir& directory, ClipOptions options);

}  // namespace test
}  // namespace zo

#endif
