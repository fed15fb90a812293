#ifndef ZO_TOOL_OPTIONS_H
#define ZO_TOOL_OPTIONS_H

#include <string>

#include "zo_core/zo_core.h"

namespace CLI {
class App;
class Validator;
}  // namespace CLI

namespace zo_tool {

/// The video to read and how, the same for every command that reads one.
struct SourceOptions {
  std::string url;
  double timeout_seconds = 0;
  bool skip_errors = false;

  void declare(CLI::App& app);
  /// The time budget as readers take it, negative for none.
  int timeoutMs() const;
};

/// A size that the user asked for: "640x360", "640x" or "x360". The side that is missing follows from the
/// picture.
struct WantedSize {
  std::string text;

  void declare(CLI::App& app, const char* p_help);
  bool given() const { return !text.empty(); }
  /// The size for a picture of that size, the picture's own when none was asked for.
  zo::Size resolve(const zo::Size& picture) const;
};

/// Accepts whole numbers from `low` to `high`, in decimal whatever zeros they begin with. For transform():
/// the parser would take leading zeros for octal.
CLI::Validator wholeNumber(long long low, long long high);
/// Accepts numbers from `low` to `high`.
CLI::Validator number(double low, double high);

/// Adds "--quality Q", 1 to 100.
void declareQuality(CLI::App& app, int& quality);

}  // namespace zo_tool

#endif
