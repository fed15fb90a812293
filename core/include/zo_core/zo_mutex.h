#ifndef ZO_CORE_ZO_MUTEX_H
#define ZO_CORE_ZO_MUTEX_H

#include <pthread.h>

#include "zo_core/zo_export.h"

namespace zo {

/// A non-recursive mutex.
class ZO_CORE_API FastMutex {
 public:
  FastMutex() noexcept;
  ~FastMutex();
  FastMutex(const FastMutex&) = delete;
  FastMutex& operator=(const FastMutex&) = delete;

  /// Waits until no other thread holds the mutex, and takes it.
  void lock() noexcept;
  /// Only by the thread that locked it.
  void unlock() noexcept;

 private:
  pthread_mutex_t _mutex;
};

/// Holds a mutex locked for its own lifetime.
template <class Mutex>
class LockGuard {
 public:
  /// Locks `mutex`, which has to outlive this object.
  explicit LockGuard(Mutex& mutex) : _mutex(mutex) { _mutex.lock(); }
  ~LockGuard() { _mutex.unlock(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

 private:
  Mutex& _mutex;
};

}  // namespace zo

#endif
