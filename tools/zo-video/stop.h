#ifndef ZO_TOOL_STOP_H
#define ZO_TOOL_STOP_H

#include <string>

#include "zo_core/zo_core.h"

namespace zo_tool {

/// Thrown where work ends because of Ctrl-C or another request to end.
struct Stopped {};

/// From now on SIGINT, SIGTERM and SIGHUP ask the work to end; a second one ends the program at once. A
/// signal that the program was started with ignored stays ignored. Too large a file becomes a failed write.
void watchSignals();

/// The signal that asked to end, 0 when none did.
int stopSignal();

/// Throws Stopped when a signal asked to end.
void checkStop();

class Progress;

/// Hands the wish to end to a reader that is blocked in the demuxer.
class StopRequest : public zo::IInterruptable {
 public:
  /// @param p_progress  Shows how long the reader has been asking, null for nothing. It is not owned.
  explicit StopRequest(Progress* p_progress = nullptr) : _p_progress(p_progress) {}
  int isInterrupted() override;

 private:
  Progress* _p_progress;
};

/// Names the half-written file to be deleted should a second signal end the program at once; null for none.
void setDoomedFile(const char* p_path);

}  // namespace zo_tool

#endif
