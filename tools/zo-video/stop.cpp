#include "stop.h"

#include <signal.h>
#include <unistd.h>

#include <climits>
#include <cstring>

#include "progress.h"

namespace zo_tool {

namespace {

volatile sig_atomic_t stop_signal = 0;
volatile sig_atomic_t file_is_doomed = 0;
char doomed_file[PATH_MAX];

extern "C" void onStopSignal(int number) {
  if (stop_signal != 0) {
    if (file_is_doomed) {
      unlink(doomed_file);
    }
    _exit(128 + number);
  }
  stop_signal = number;
}

void watch(int number) {
  struct sigaction now;
  if (sigaction(number, nullptr, &now) == 0 && now.sa_handler == SIG_IGN) {
    return;
  }
  std::memset(&now, 0, sizeof now);
  now.sa_handler = onStopSignal;
  sigemptyset(&now.sa_mask);
  sigaction(number, &now, nullptr);
}

}  // namespace

void watchSignals() {
  watch(SIGINT);
  watch(SIGTERM);
  watch(SIGHUP);
  signal(SIGXFSZ, SIG_IGN);
}

int stopSignal() {
  return stop_signal;
}

void checkStop() {
  if (stop_signal != 0) {
    throw Stopped();
  }
}

int StopRequest::isInterrupted() {
  if (_p_progress != nullptr) {
    _p_progress->updateTime();
  }
  return stop_signal != 0;
}

void setDoomedFile(const char* p_path) {
  file_is_doomed = 0;
  if (p_path == nullptr || std::strlen(p_path) >= sizeof doomed_file) {
    return;
  }
  std::strcpy(doomed_file, p_path);
  file_is_doomed = 1;
}

}  // namespace zo_tool
