#include "platform/spin_lock.h"

#include "platform/backoff.h"

namespace zeb {

void SpinLock::lockContended() noexcept {
  Backoff backoff(spinCount_);
  do {
    // Waiting on a load keeps the line shared; only a free lock is worth an exchange.
    while (taken_.load(std::memory_order_relaxed)) backoff.wait();
  } while (taken_.exchange(true, std::memory_order_acquire));
}

}  // namespace zeb
