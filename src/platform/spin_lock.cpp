#include "platform/spin_lock.h"

#include <algorithm>

#include "platform/sleep.h"

namespace zeb {

namespace {
constexpr unsigned kLongestPause = 32;
constexpr unsigned kYields = 16;
constexpr unsigned kFirstNapMicroseconds = 20;
constexpr unsigned kLongestNapMicroseconds = 1000;
}  // namespace

void SpinLock::lockContended() noexcept {
  unsigned spins = 0;
  unsigned pause = 1;  // doubles, so that waiters trouble the holder less and less
  unsigned yields = 0;
  unsigned nap = kFirstNapMicroseconds;
  do {
    // Waiting on a load keeps the line shared; only a free lock is worth an exchange.
    while (taken_.load(std::memory_order_relaxed)) {
      if (spins < spinCount_) {
        spins += pause;
        for (unsigned i = 0; i < pause; ++i) pauseProcessor();
        pause = std::min(pause * 2, kLongestPause);
      } else if (yields < kYields) {
        ++yields;
        sleepMilliseconds(0);
      } else {
        sleepMicroseconds(nap);
        nap = std::min(nap * 2, kLongestNapMicroseconds);
      }
    }
  } while (taken_.exchange(true, std::memory_order_acquire));
}

}  // namespace zeb
