#include "platform/spin_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>

#include "platform/sleep.h"
#include "support/threads.h"

namespace {

// What the lock guards: a plain number that loses counts as soon as two threads are inside.
struct Guarded {
  explicit Guarded(unsigned spinCount) : lock(spinCount) {}

  void enter() {
    const zeb::SpinGuard guard(lock);
    if (inside.fetch_add(1) != 0) ++collisions;
    const uint64_t before = count;
    zeb::pauseProcessor();
    count = before + 1;
    inside.fetch_sub(1);
  }

  void expectEntered(uint64_t times) {
    const zeb::SpinGuard guard(lock);
    EXPECT_EQ(count, times);
    EXPECT_EQ(collisions, 0u);
  }

  zeb::SpinLock lock;
  uint64_t count ZEB_GUARDED_BY(lock) = 0;
  std::atomic<unsigned> inside{0};
  std::atomic<unsigned> collisions{0};
};

// With no spinning at all a waiter yields and sleeps; with plenty it hardly ever does.
class SpinLockOfCount : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(SpinCounts, SpinLockOfCount, testing::Values(0u, 50u, 500u, 100000u));

TEST_P(SpinLockOfCount, LetsOneThreadInAtATime) {
  constexpr unsigned kThreads = 4;
  constexpr uint64_t kRounds = 10000;
  Guarded guarded(GetParam());
  zeb_test::runTogether(kThreads, [&](unsigned) {
    for (uint64_t round = 0; round < kRounds; ++round) guarded.enter();
  });
  guarded.expectEntered(kThreads * kRounds);
}

TEST_P(SpinLockOfCount, LosesNoCountWithFarMoreThreadsThanProcessors) {
  constexpr unsigned kThreads = 64;
  constexpr uint64_t kRounds = 250;
  Guarded guarded(GetParam());
  zeb_test::runTogether(kThreads, [&](unsigned) {
    for (uint64_t round = 0; round < kRounds; ++round) guarded.enter();
  });
  guarded.expectEntered(kThreads * kRounds);
}

// The holder sleeps inside, so that the waiters go through all their ways of waiting.
TEST_P(SpinLockOfCount, KeepsWaitersOutForAsLongAsItIsHeld) {
  constexpr unsigned kWaiters = 6;
  zeb::SpinLock lock(GetParam());
  std::atomic<bool> held{true};
  std::atomic<unsigned> entered{0};
  lock.lock();
  std::thread waiters([&] {
    zeb_test::runTogether(kWaiters, [&](unsigned) {
      const zeb::SpinGuard guard(lock);
      EXPECT_FALSE(held);
      ++entered;
    });
  });
  zeb::sleepMilliseconds(20);
  EXPECT_EQ(entered, 0u);
  held = false;
  lock.unlock();
  waiters.join();
  EXPECT_EQ(entered, kWaiters);
}

TEST(SpinLock, IsFreeAgainAfterItsGuard) {
  zeb::SpinLock lock(0);
  { const zeb::SpinGuard guard(lock); }
  { const zeb::SpinGuard guard(lock); }
  zeb_test::OtherThread other;
  bool entered = false;
  other.run([&] {
    const zeb::SpinGuard guard(lock);
    entered = true;
  });
  EXPECT_TRUE(entered);
}

TEST(SpinLock, IsLeftByAnException) {
  zeb::SpinLock lock(0);
  EXPECT_THROW(
      {
        const zeb::SpinGuard guard(lock);
        throw 1;
      },
      int);
  const zeb::SpinGuard guard(lock);  // would wait for ever
}

// Static locks work before anything is initialised.
constinit zeb::SpinLock staticLock{500};

TEST(SpinLock, NeedsNoConstructionAtRunTime) { const zeb::SpinGuard guard(staticLock); }

}  // namespace
