// A lock for critical sections of a few dozen instructions.
//
// Taking it costs one atomic exchange, giving it back a plain store. A thread that finds it taken
// spins `spinCount` times, then yields, then sleeps in growing steps, so that a preempted holder
// gets the processor back. It keeps no queue, calls nothing of the system in the good case, needs
// no construction at run time and no destruction. It does not nest. Never call out while holding
// it, except where the holder says why that is safe.
#ifndef ZEB_PLATFORM_SPIN_LOCK_H
#define ZEB_PLATFORM_SPIN_LOCK_H

#include <atomic>

#include "util/thread_annotations.h"

namespace zeb {

class ZEB_CAPABILITY("mutex") SpinLock {
 public:
  explicit constexpr SpinLock(unsigned spinCount) noexcept : spinCount_(spinCount) {}
  SpinLock(const SpinLock&) = delete;
  SpinLock& operator=(const SpinLock&) = delete;

  void lock() noexcept ZEB_ACQUIRE() {
    if (taken_.exchange(true, std::memory_order_acquire)) [[unlikely]]
      lockContended();
  }
  void unlock() noexcept ZEB_RELEASE() { taken_.store(false, std::memory_order_release); }

 private:
  void lockContended() noexcept;

  std::atomic<bool> taken_{false};
  const unsigned spinCount_;
};

class ZEB_SCOPED_CAPABILITY SpinGuard {
 public:
  explicit SpinGuard(SpinLock& lock) noexcept ZEB_ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
  ~SpinGuard() ZEB_RELEASE() { lock_.unlock(); }
  SpinGuard(const SpinGuard&) = delete;
  SpinGuard& operator=(const SpinGuard&) = delete;

 private:
  SpinLock& lock_;
};

}  // namespace zeb

#endif
