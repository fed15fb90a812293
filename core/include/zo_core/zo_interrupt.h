#ifndef ZO_CORE_ZO_INTERRUPT_H
#define ZO_CORE_ZO_INTERRUPT_H

#include "zo_core/zo_export.h"

namespace zo {

/// Lets a caller end a blocking call. Handed to a reader, it is polled on the thread that made the call.
class ZO_CORE_API IInterruptable {
 public:
  /// Non-zero asks the running call to stop. Called often: keep it short. State that another thread sets
  /// must be safe to share, for example a std::atomic.
  virtual int isInterrupted() = 0;
  virtual ~IInterruptable();

 protected:
  IInterruptable() = default;
  IInterruptable(const IInterruptable&) = default;
  IInterruptable& operator=(const IInterruptable&) = default;
};

/// Asks a plain function with an opaque pointer.
class ZO_CORE_API InterruptCallback : public IInterruptable {
 public:
  /// No callback: never interrupts.
  InterruptCallback() noexcept;
  ~InterruptCallback() override;

  /// @param p_callback  Called with p_opaque at each poll, non-zero means stop; null for no callback.
  void setCallback(int (*p_callback)(void*), void* p_opaque) noexcept;

  int isInterrupted() override;

 private:
  int (*_p_callback)(void*);
  void* _p_opaque;
};

}  // namespace zo

#endif
