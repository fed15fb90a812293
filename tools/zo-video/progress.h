#ifndef ZO_TOOL_PROGRESS_H
#define ZO_TOOL_PROGRESS_H

#include <string>

namespace zo_tool {

/// One line about running work on standard error: frames done, rate, time left. Shown only on a terminal,
/// from half a second on, and erased when the work ends.
class Progress {
 public:
  /// @param what   What is counted, for example "frames".
  /// @param total  How many there are, 0 when that is not known.
  Progress(std::string what, long long total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void update(long long done);
  /// For work that cannot be counted: shows how long it takes so far.
  void updateTime();
  /// Erases the line.
  void finish();

 private:
  void show(long long done, long long now_ms);

  std::string _what;
  long long _total;
  long long _start_ms;
  long long _next_ms;
  bool _enabled;
  bool _shown;
};

}  // namespace zo_tool

#endif
