#include "zo_core/zo_mutex.h"

namespace zo {

FastMutex::FastMutex() noexcept {
  pthread_mutex_init(&_mutex, nullptr);
}

FastMutex::~FastMutex() {
  pthread_mutex_destroy(&_mutex);
}

void FastMutex::lock() noexcept {
  pthread_mutex_lock(&_mutex);
}

void FastMutex::unlock() noexcept {
  pthread_mutex_unlock(&_mutex);
}

}  // namespace zo
