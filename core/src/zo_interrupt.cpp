#include "zo_core/zo_interrupt.h"

namespace zo {

IInterruptable::~IInterruptable() = default;

InterruptCallback::InterruptCallback() noexcept : _p_callback(nullptr), _p_opaque(nullptr) {}

InterruptCallback::~InterruptCallback() = default;

void InterruptCallback::setCallback(int (*p_callback)(void*), void* p_opaque) noexcept {
  _p_callback = p_callback;
  _p_opaque = p_opaque;
}

int InterruptCallback::isInterrupted() {
  return _p_callback == nullptr ? 0 : _p_callback(_p_opaque);
}

}  // namespace zo
