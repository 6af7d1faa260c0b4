#include "base/tally.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <latch>

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

// All forty are alive together, so most of them share the one cell that is added to atomically.
TEST(Tally, IsExactWithMoreThreadsThanSlots) {
  constexpr unsigned kThreads = 40;
  constexpr uint64_t kTimes = 2000;
  zeb::Tally tally;
  std::latch allCounted(kThreads);
  std::atomic<unsigned> sharing{0};
  zeb_test::runTogether(kThreads, [&](unsigned index) {
    for (uint64_t i = 0; i < kTimes; ++i) tally.add(index);
    if (zeb::threadSlot() == zeb::kSharedThreadSlot) ++sharing;
    allCounted.arrive_and_wait();
  });
  EXPECT_GE(sharing, kThreads - zeb::kExclusiveThreadSlots);
  EXPECT_EQ(tally.total(), kTimes * (kThreads * (kThreads - 1) / 2));
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
