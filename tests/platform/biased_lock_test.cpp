#include "platform/biased_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <latch>
#include <thread>

#include "platform/sleep.h"
#include "support/threads.h"

namespace {

using zeb::BiasedGuard;
using zeb::BiasedLock;

// What the lock guards: a plain number that loses counts as soon as two threads are inside.
struct Guarded {
  explicit Guarded(unsigned spinCount = 500) : lock(spinCount) {}

  void enter() {
    const BiasedGuard guard(lock);
    if (inside.fetch_add(1, std::memory_order_relaxed) != 0) ++collisions;
    const uint64_t before = count;
    zeb::pauseProcessor();
    count = before + 1;
    inside.fetch_sub(1, std::memory_order_relaxed);
  }
  void enter(uint64_t times) {
    for (uint64_t i = 0; i < times; ++i) enter();
  }

  void expectEntered(uint64_t times) {
    const BiasedGuard guard(lock);
    EXPECT_EQ(count, times);
    EXPECT_EQ(collisions, 0U);
  }

  BiasedLock lock;
  uint64_t count ZEB_GUARDED_BY(lock) = 0;
  std::atomic<unsigned> inside{0};
  std::atomic<unsigned> collisions{0};
};

// Enough to own a lock whose bias was never revoked: the streak begins with the second time.
constexpr uint64_t kEarned = BiasedLock::kFirstStreak + 1;

TEST(BiasedLock, IsOwnedByTheThreadThatTakesItManyTimesInARow) {
  Guarded guarded;
  guarded.enter(kEarned - 1);
  EXPECT_FALSE(guarded.lock.isOwned());
  guarded.enter();
  EXPECT_TRUE(guarded.lock.isOwned());
  guarded.enter(1000);
  EXPECT_TRUE(guarded.lock.isOwned());
  guarded.expectEntered(kEarned + 1000);
}

TEST(BiasedLock, IsOwnedByNobodyOnceAnotherThreadCame) {
  Guarded guarded;
  guarded.enter(kEarned);
  zeb_test::OtherThread other;
  other.run([&] {
    EXPECT_FALSE(guarded.lock.isOwned());
    guarded.enter();
  });
  EXPECT_FALSE(guarded.lock.isOwned());
  guarded.enter();
  guarded.expectEntered(kEarned + 2);
}

TEST(BiasedLock, BiasCanBeEarnedAgainAndTakesLongerEachTime) {
  Guarded guarded;
  zeb_test::OtherThread other;
  uint64_t streak = BiasedLock::kFirstStreak;
  uint64_t entered = 0;
  for (int round = 0; round < 4; ++round) {
    guarded.enter(streak);
    EXPECT_FALSE(guarded.lock.isOwned());
    guarded.enter();
    EXPECT_TRUE(guarded.lock.isOwned());
    other.run([&] { guarded.enter(); });
    entered += streak + 2;
    streak *= 2;
  }
  guarded.expectEntered(entered);
}

TEST(BiasedLock, AnyThreadCanEarnTheBias) {
  Guarded guarded;
  guarded.enter(kEarned);
  zeb_test::OtherThread other;
  other.run([&] {
    guarded.enter(2 * BiasedLock::kFirstStreak + 1);
    EXPECT_TRUE(guarded.lock.isOwned());
  });
  EXPECT_FALSE(guarded.lock.isOwned());
}

TEST(BiasedLock, ThreadsWithoutASlotOfTheirOwnEarnNothing) {
  Guarded guarded;
  std::deque<zeb_test::OtherThread> threads(zeb::kExclusiveThreadSlots + 1);
  uint64_t withoutSlot = 0;
  for (auto& thread : threads) {
    thread.run([&] {
      if (zeb::threadSlot() != zeb::kSharedThreadSlot) return;
      ++withoutSlot;
      guarded.enter(10 * kEarned);
      EXPECT_FALSE(guarded.lock.isOwned());
    });
  }
  ASSERT_GT(withoutSlot, 0U);
  guarded.expectEntered(withoutSlot * 10 * kEarned);
}

// The number of a thread that has ended is the next one's, and the bias goes with it.
TEST(BiasedLock, WhatAnOwnerDidIsSeenByTheNextThreadOfItsSlot) {
  Guarded guarded;
  unsigned slot = 0;
  std::thread([&] {
    slot = zeb::threadSlot();
    guarded.enter(kEarned);
  }).join();
  std::thread([&] {
    ASSERT_EQ(zeb::threadSlot(), slot);
    EXPECT_TRUE(guarded.lock.isOwned());
    guarded.enter();
  }).join();
  guarded.expectEntered(kEarned + 1);
}

class BiasedLockOfCount : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(SpinCounts, BiasedLockOfCount, testing::Values(0U, 50U, 500U, 100000U));

TEST_P(BiasedLockOfCount, LetsOneThreadInAtATime) {
  constexpr unsigned kThreads = 4;
  constexpr uint64_t kRounds = 10000;
  Guarded guarded(GetParam());
  zeb_test::runTogether(kThreads, [&](unsigned) { guarded.enter(kRounds); });
  guarded.expectEntered(kThreads * kRounds);
}

TEST_P(BiasedLockOfCount, LosesNoCountWithFarMoreThreadsThanProcessors) {
  constexpr unsigned kThreads = 64;
  constexpr uint64_t kRounds = 250;
  Guarded guarded(GetParam());
  zeb_test::runTogether(kThreads, [&](unsigned) { guarded.enter(kRounds); });
  guarded.expectEntered(kThreads * kRounds);
}

// Each round a new lock, whose owner goes in and out while the other thread takes the bias away at
// some moment of its own.
TEST(BiasedLock, RevocationWhileTheOwnerGoesInAndOutLosesNoCount) {
  constexpr unsigned kRounds = 2000;
  constexpr uint64_t kOwnerEnters = 3 * kEarned;
  std::deque<Guarded> locks(kRounds);
  std::deque<std::latch> owned;
  for (unsigned i = 0; i < kRounds; ++i) owned.emplace_back(1);
  zeb_test::runTogether(2, [&](unsigned index) {
    for (unsigned round = 0; round < kRounds; ++round) {
      if (index == 0) {
        locks[round].enter(kEarned);
        owned[round].count_down();
        locks[round].enter(kOwnerEnters);
      } else {
        owned[round].wait();
        for (unsigned pause = 0; pause < round % 64; ++pause) zeb::pauseProcessor();
        locks[round].enter(3);
      }
    }
  });
  for (Guarded& guarded : locks) guarded.expectEntered(kEarned + kOwnerEnters + 3);
}

// Two threads that pass the bias to and fro as often as they can.
TEST(BiasedLock, PassingTheBiasToAndFroLosesNoCount) {
  constexpr unsigned kRounds = 300;
  Guarded guarded;
  zeb_test::runTogether(2, [&](unsigned index) {
    for (unsigned round = 0; round < kRounds; ++round) {
      guarded.enter(kEarned);
      if (round % 2 == index) zeb::sleepMilliseconds(0);
    }
  });
  guarded.expectEntered(2 * kRounds * kEarned);
}

// The owner sleeps inside; whoever revokes must wait for it.
TEST(BiasedLock, RevocationWaitsForTheOwnerInside) {
  Guarded guarded;
  guarded.enter(kEarned);
  std::atomic<bool> held{true};
  std::atomic<bool> entered{false};
  std::thread other;
  {
    const BiasedGuard guard(guarded.lock);
    other = std::thread([&] {
      const BiasedGuard waited(guarded.lock);
      EXPECT_FALSE(held);
      entered = true;
    });
    zeb::sleepMilliseconds(20);
    EXPECT_FALSE(entered);
    held = false;
  }
  other.join();
  EXPECT_TRUE(entered);
}

TEST(BiasedLock, IsLeftByAnException) {
  BiasedLock lock(0);
  for (uint64_t i = 0; i < 2 * kEarned; ++i) {
    EXPECT_THROW(
        {
          const BiasedGuard guard(lock);
          throw 1;
        },
        int);
  }
  EXPECT_TRUE(lock.isOwned());
  const BiasedGuard guard(lock);  // would wait for ever
}

// Static locks work before anything is initialised.
constinit BiasedLock staticLock{500};

TEST(BiasedLock, NeedsNoConstructionAtRunTime) { const BiasedGuard guard(staticLock); }

}  // namespace
