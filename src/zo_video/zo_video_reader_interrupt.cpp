// How blocking calls into the demuxer are ended: by the caller's query or by the time budget. FFmpeg polls
// the callback while it waits; nothing may be thrown through it, so it leaves a note that is read afterwards.
#include <exception>

#include "zo_core/zo_clock.h"
#include "zo_video_reader_impl.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_video_reader_impl";

}  // namespace

// Without a budget nobody asks when it began, and asking the clock for every packet would show in a scan.
void VideoReader::Impl::_restartBudget() {
  if (_timeout_ms >= 0) {
    _callback_start_ms = getMonotonicTimeMs();
  }
}

int VideoReader::Impl::_av_interrupt_cb(void* opaque) {
  return opaque == nullptr ? 1 : static_cast<Impl*>(opaque)->_pollInterrupt();
}

int VideoReader::Impl::_pollInterrupt() noexcept {
  try {
    // The query comes first, so an interruption wins over a time-out in the same poll.
    if (_p_interruptable != nullptr && _p_interruptable->isInterrupted() != 0) {
      _callback_status = CALLBACK_INTERRUPTED;
      return 1;
    }
    if (_timeout_ms < 0 || getMonotonicTimeMs() - _callback_start_ms < _timeout_ms) {
      return 0;
    }
    _callback_status = CALLBACK_TIMEOUT;
  } catch (const Exception& exception) {
    _callback_exception = exception;
    _callback_status = CALLBACK_ZO_EXCEPTION;
  } catch (const std::exception&) {
    _callback_status = CALLBACK_STD_EXCEPTION;
  } catch (...) {
    _callback_status = CALLBACK_UNKNOWN_EXCEPTION;
  }
  return 1;
}

int VideoReader::Impl::_checkCallBackStatus() const {
  static const char FUNCTION[] = "_checkCallBackStatus";
  switch (_callback_status) {
    case CALLBACK_OK:
      return 0;
    case CALLBACK_TIMEOUT:
      throw Exception(nullptr, ZO_STATUS_TIMEOUT, FUNCTION, SOURCE_FILE, __LINE__,
                      "Video stream read/open timeout.");
    case CALLBACK_ZO_EXCEPTION:
      throw Exception(&_callback_exception, _callback_exception.status(), FUNCTION, SOURCE_FILE, __LINE__,
                      "%s", _callback_exception.what());
    case CALLBACK_STD_EXCEPTION:
      throw Exception(nullptr, ZO_STATUS_STD_EXCEPTION, FUNCTION, SOURCE_FILE, __LINE__,
                      "std::exception(...) occurred in callback function");
    case CALLBACK_UNKNOWN_EXCEPTION:
      throw Exception(nullptr, ZO_STATUS_UNKNOWN_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                      "Unknown exception occurred in callback function");
    default:
      return 1;
  }
}

}  // namespace zo
