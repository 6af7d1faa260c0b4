#include "base/tally.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <latch>

#include "platform/sleep.h"
#include "support/threads.h"

namespace {

TEST(Tally, IsZeroAtFirst) { EXPECT_EQ(zeb::Tally().total(), 0u); }

TEST(Tally, AddsUpWhatOneThreadAdds) {
  zeb::Tally tally;
  for (int i = 0; i < 3; ++i) tally.add(1);
  tally.add(5);
  tally.add(0);
  EXPECT_EQ(tally.total(), 8u);
}

TEST(Tally, WrapsAroundAsUnsignedNumbersDo) {
  zeb::Tally tally;
  tally.add(UINT64_MAX);
  zeb_test::OtherThread other;
  other.run([&] { tally.add(3); });
  EXPECT_EQ(tally.total(), 2u);
}

TEST(Tally, IsExactWithMoreThreadsThanSlots) {
  constexpr unsigned kThreads = 40;
  constexpr uint64_t kTimes = 5000;
  zeb::Tally tally;
  std::latch allHaveSlots(kThreads);
  std::atomic<unsigned> sharing{0};
  zeb_test::runTogether(kThreads, [&](unsigned index) {
    if (zeb::threadSlot() == zeb::kSharedThreadSlot) ++sharing;
    allHaveSlots.arrive_and_wait();
    for (uint64_t i = 0; i < kTimes; ++i) tally.add(index);
  });
  EXPECT_GE(sharing, kThreads - zeb::kExclusiveThreadSlots);
  EXPECT_EQ(tally.total(), kTimes * (kThreads * (kThreads - 1) / 2));
}

// Two threads that share a cell wait for each other before each round, and never give the processor
// away while they wait: when the second arrives, both are running.
TEST(Tally, LosesNothingInTheCellThatThreadsShare) {
  constexpr unsigned kRounds = 8;
  constexpr uint64_t kTimes = 20000;
  std::deque<zeb_test::OtherThread> owners(zeb::kExclusiveThreadSlots);
  for (auto& owner : owners) owner.run([] { zeb::threadSlot(); });
  zeb::Tally tally;
  std::atomic<unsigned> arrived{0};
  zeb_test::runTogether(2, [&](unsigned) {
    EXPECT_EQ(zeb::threadSlot(), zeb::kSharedThreadSlot);
    for (unsigned round = 1; round <= kRounds; ++round) {
      ++arrived;
      while (arrived < 2 * round) zeb::pauseProcessor();
      for (uint64_t i = 0; i < kTimes; ++i) tally.add(1);
    }
  });
  EXPECT_EQ(tally.total(), 2 * kRounds * kTimes);
}

TEST(Tally, IsExactWhenSlotsPassFromThreadToThread) {
  constexpr unsigned kAtOnce = 5;
  constexpr uint64_t kTimes = 500;
  constexpr uint64_t kGenerations = 30;
  zeb::Tally tally;
  for (uint64_t generation = 0; generation < kGenerations; ++generation) {
    zeb_test::runTogether(kAtOnce, [&](unsigned) {
      for (uint64_t i = 0; i < kTimes; ++i) tally.add(1);
    });
    ASSERT_EQ(tally.total(), (generation + 1) * kAtOnce * kTimes);
  }
}

TEST(Tally, KeepsWhatAnEndedThreadAdded) {
  zeb::Tally tally;
  {
    zeb_test::OtherThread other;
    other.run([&] { tally.add(7); });
  }
  EXPECT_EQ(tally.total(), 7u);
}

TEST(Tally, CanBeReadWhileItIsAddedTo) {
  constexpr uint64_t kTimes = 20000;
  zeb::Tally tally;
  zeb_test::runTogether(3, [&](unsigned index) {
    if (index != 0) {
      for (uint64_t i = 0; i < kTimes; ++i) tally.add(1);
      return;
    }
    for (uint64_t last = 0, now = 0; now < 2 * kTimes; last = now) {
      now = tally.total();
      ASSERT_GE(now, last);
      ASSERT_LE(now, 2 * kTimes);
    }
  });
}

}  // namespace
