// A lock for sections in which a thread may be kept waiting by the system.
//
// Waiters sleep until they are woken; where a section is a few dozen instructions, SpinLock is the
// better choice. It needs no construction at run time. It does not nest.
#ifndef ZEB_PLATFORM_MUTEX_H
#define ZEB_PLATFORM_MUTEX_H

#include <pthread.h>

#include "util/thread_annotations.h"

// The system's initialisers spell null as 0.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wzero-as-null-pointer-constant"
#endif

namespace zeb {

class ZEB_CAPABILITY("mutex") Mutex {
 public:
  constexpr Mutex() noexcept = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void lock() noexcept ZEB_ACQUIRE() { pthread_mutex_lock(&mutex_); }
  void unlock() noexcept ZEB_RELEASE() { pthread_mutex_unlock(&mutex_); }

 private:
  friend class Condition;
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

class ZEB_SCOPED_CAPABILITY MutexGuard {
 public:
  explicit MutexGuard(Mutex& mutex) noexcept ZEB_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexGuard() ZEB_RELEASE() { mutex_.unlock(); }
  MutexGuard(const MutexGuard&) = delete;
  MutexGuard& operator=(const MutexGuard&) = delete;

 private:
  Mutex& mutex_;
};

// Threads that wait for something to change under a mutex.
class Condition {
 public:
  constexpr Condition() noexcept = default;
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  // Gives the mutex away while it waits. May return for no reason.
  void wait(Mutex& mutex) noexcept ZEB_REQUIRES(mutex) {
    pthread_cond_wait(&condition_, &mutex.mutex_);
  }
  void wakeAll() noexcept { pthread_cond_broadcast(&condition_); }

 private:
  pthread_cond_t condition_ = PTHREAD_COND_INITIALIZER;
};

}  // namespace zeb

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#endif
