#include "progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

#include "text.h"
#include "zo_core/zo_core.h"

namespace zo_tool {

namespace {

constexpr long long FIRST_SHOWN_MS = 500;
constexpr long long INTERVAL_MS = 100;
constexpr long long NOT_COUNTED = -1;

std::size_t terminalWidth() {
  winsize size;
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    return size.ws_col;
  }
  return 80;
}

}  // namespace

Progress::Progress(std::string what, long long total)
    : _what(std::move(what)),
      _total(total),
      _start_ms(zo::getMonotonicTimeMs()),
      _next_ms(_start_ms + FIRST_SHOWN_MS),
      _enabled(isatty(STDERR_FILENO) == 1),
      _shown(false) {}

Progress::~Progress() {
  finish();
}

void Progress::update(long long done) {
  if (!_enabled) {
    return;
  }
  const long long now_ms = zo::getMonotonicTimeMs();
  if (now_ms < _next_ms) {
    return;
  }
  _next_ms = now_ms + INTERVAL_MS;
  show(done, now_ms);
}

void Progress::updateTime() {
  update(NOT_COUNTED);
}

void Progress::show(long long done, long long now_ms) {
  const double seconds = static_cast<double>(now_ms - _start_ms) / 1000.0;
  const double rate = static_cast<double>(done) / seconds;
  char text[160];
  int length;
  if (done == NOT_COUNTED) {
    length =
        std::snprintf(text, sizeof text, "%s  %s so far", _what.c_str(), formatDuration(seconds).c_str());
  } else if (_total > 0) {
    const double left = rate > 0 ? static_cast<double>(_total - done) / rate : 0;
    length =
        std::snprintf(text, sizeof text, "%lld/%lld %s  %d%%  %.0f/s  %s left", done, _total, _what.c_str(),
                      static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(_total)), rate,
                      formatDuration(left).c_str());
  } else {
    length = std::snprintf(text, sizeof text, "%lld %s  %.0f/s  %s so far", done, _what.c_str(), rate,
                           formatDuration(seconds).c_str());
  }
  if (length < 0) {
    return;
  }
  std::string line(text);
  const std::size_t width = terminalWidth();
  if (line.size() >= width) {
    line.resize(width - 1);
  }
  std::fprintf(stderr, "\r\x1b[K%s", line.c_str());
  std::fflush(stderr);
  _shown = true;
}

void Progress::finish() {
  if (!_shown) {
    return;
  }
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  _shown = false;
}

}  // namespace zo_tool
