#include "platform/biased_lock.h"

#include <algorithm>

#include "platform/backoff.h"
#include "platform/sleep.h"

namespace zeb {

namespace {

// Long enough for every processor to have made its earlier stores seen, where the system refuses to
// say so. It has registered the process for the fence and has no reason to refuse.
constexpr unsigned kStoresSettledMilliseconds = 10;

constexpr unsigned kSpins = 1000;

}  // namespace

void BiasedLock::lockAsAny() noexcept ZEB_NO_THREAD_SAFETY_ANALYSIS {
  const unsigned taker = threadSlot();  // before the lock: the first one of a thread may take time
  shared_.lock();
  const unsigned owner = owner_.load(std::memory_order_relaxed);
  if (owner != kNobody) revoke(owner);
  note(taker);
}

// The caller holds the shared lock, so nobody becomes the owner meanwhile; only the present owner
// can still be inside.
void BiasedLock::revoke(unsigned owner) noexcept {
  owner_.store(kNobody, std::memory_order_seq_cst);
  if (!heavyFence()) sleepMilliseconds(kStoresSettledMilliseconds);
  Backoff backoff(kSpins);
  while (inside_[owner].load(std::memory_order_seq_cst) != 0) backoff.wait();
  neededStreak_ = std::min(neededStreak_ * 2, kLongestStreak);
}

// The caller holds the shared lock and gives it back as any thread does, also when it has become
// the owner by then.
void BiasedLock::note(unsigned taker) noexcept {
  if (taker != lastTaker_) {
    lastTaker_ = taker;
    streak_ = 0;
  } else if (taker != kSharedThreadSlot && ++streak_ >= neededStreak_) {
    streak_ = 0;
    owner_.store(taker, std::memory_order_seq_cst);
  }
}

}  // namespace zeb
