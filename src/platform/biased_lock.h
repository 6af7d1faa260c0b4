// A lock that one thread takes far more often than all others.
//
// A thread that has taken it many times in a row becomes its owner: the lock is biased towards it,
// and the owner takes it with plain loads and stores, a third of the price of an atomic exchange.
// Any other thread that comes revokes the bias, which costs it a call of the system, and the lock
// is an ordinary SpinLock until some thread has earned the bias again. Each revocation makes that
// harder, so that a lock which threads really share is not passed to and fro.
//
// It does not nest: a thread that takes it again waits for ever, or, as the owner, lets others in
// when it first gives it back. It calls nothing of the system in the good case, and needs no
// construction at run time and no destruction. Never call out while holding it, except where the
// holder says why that is safe.
#ifndef ZEB_PLATFORM_BIASED_LOCK_H
#define ZEB_PLATFORM_BIASED_LOCK_H

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/asymmetric_fence.h"
#include "platform/spin_lock.h"
#include "platform/thread_slot.h"

namespace zeb {

class ZEB_CAPABILITY("mutex") BiasedLock {
 public:
  explicit constexpr BiasedLock(unsigned spinCount) noexcept : shared_(spinCount) {}
  BiasedLock(const BiasedLock&) = delete;
  BiasedLock& operator=(const BiasedLock&) = delete;

  // How the lock was taken, which unlock has to know.
  enum class Way : bool { asAny, asOwner };

  [[nodiscard]] Way lock() noexcept ZEB_ACQUIRE() ZEB_NO_THREAD_SAFETY_ANALYSIS {
    const unsigned self = thread_slot::current;
    if (owner_.load(std::memory_order_relaxed) == self) [[likely]] {
      // The flag is up before the owner looks again, and whoever revokes does both the other way
      // round: one of the two sees the other.
      storeThenLightFence(inside_[self], 1);
      if (owner_.load(std::memory_order_seq_cst) == self) [[likely]]
        return Way::asOwner;
      inside_[self].store(0, std::memory_order_release);
    }
    lockAsAny();
    return Way::asAny;
  }
  void unlock(Way way) noexcept ZEB_RELEASE() ZEB_NO_THREAD_SAFETY_ANALYSIS {
    if (way == Way::asOwner) [[likely]] {
      inside_[thread_slot::current].store(0, std::memory_order_release);
    } else {
      shared_.unlock();
    }
  }

  // Whether the calling thread would take the lock as its owner.
  [[nodiscard]] bool isOwned() const noexcept {
    return owner_.load(std::memory_order_relaxed) == thread_slot::current;
  }

  // So many times in a row a thread must take the lock to own it; doubled by each revocation.
  static constexpr uint32_t kFirstStreak = 64;
  static constexpr uint32_t kLongestStreak = 65536;

 private:
  // No thread's slot, assigned or not.
  static constexpr unsigned kNobody = kThreadSlots;

  void lockAsAny() noexcept;
  void revoke(unsigned owner) noexcept;
  void note(unsigned taker) noexcept;

  // Read by every thread that comes, written with each change of bias only: two cache lines away
  // from what contending threads write.
  std::atomic<unsigned> owner_{kNobody};

  // Up while the owner of that slot is inside, or is about to find that it owns the lock no more.
  // One for each slot: a thread that was the owner long ago must not lower the flag of the present
  // one.
  std::array<std::atomic<uint64_t>, kExclusiveThreadSlots> inside_{};

  // Guarded by shared_, and beside what the lock guards.
  unsigned lastTaker_ = kNobody;
  uint32_t streak_ = 0;
  uint32_t neededStreak_ = kFirstStreak;

  SpinLock shared_;
};

class ZEB_SCOPED_CAPABILITY BiasedGuard {
 public:
  explicit BiasedGuard(BiasedLock& lock) noexcept ZEB_ACQUIRE(lock)
      : lock_(lock), way_(lock.lock()) {}
  ~BiasedGuard() ZEB_RELEASE() { lock_.unlock(way_); }
  BiasedGuard(const BiasedGuard&) = delete;
  BiasedGuard& operator=(const BiasedGuard&) = delete;

 private:
  BiasedLock& lock_;
  const BiasedLock::Way way_;
};

}  // namespace zeb

#endif
