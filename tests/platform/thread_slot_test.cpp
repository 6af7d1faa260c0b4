#include "platform/thread_slot.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <cstdint>
#include <deque>
#include <latch>
#include <optional>
#include <set>
#include <vector>

#include "support/threads.h"

namespace {

using zeb::kExclusiveThreadSlots;
using zeb::kSharedThreadSlot;
using zeb::kThreadSlots;
using zeb::threadSlot;

unsigned slotOf(zeb_test::OtherThread& thread) {
  unsigned slot = kThreadSlots;
  thread.run([&] { slot = threadSlot(); });
  return slot;
}

unsigned slotOfANewThread() {
  zeb_test::OtherThread thread;
  return slotOf(thread);
}

// As many living threads as wanted, each with its slot.
struct LivingThreads {
  explicit LivingThreads(unsigned count) : threads(count) {
    for (auto& thread : threads) slots.push_back(slotOf(thread));
  }

  std::deque<zeb_test::OtherThread> threads;
  std::vector<unsigned> slots;
};

TEST(ThreadSlot, StaysTheSameForTheLifeOfAThread) {
  LivingThreads living(kThreadSlots + 2);
  for (int round = 0; round < 3; ++round) {
    for (size_t i = 0; i < living.threads.size(); ++i) {
      EXPECT_EQ(slotOf(living.threads[i]), living.slots[i]);
    }
  }
}

TEST(ThreadSlot, BelongsToOneLivingThreadOnly) {
  const unsigned mine = threadSlot();
  ASSERT_LT(mine, kExclusiveThreadSlots);
  const LivingThreads living(kExclusiveThreadSlots - 1);
  std::set<unsigned> slots(living.slots.begin(), living.slots.end());
  slots.insert(mine);
  EXPECT_EQ(slots.size(), kExclusiveThreadSlots);
  EXPECT_EQ(*slots.rbegin(), kExclusiveThreadSlots - 1);
}

TEST(ThreadSlot, BelongsToOneThreadOnlyWhenAllAskAtOnce) {
  threadSlot();  // this thread's own
  for (int round = 0; round < 20; ++round) {
    constexpr unsigned kOthers = kExclusiveThreadSlots - 1;
    std::array<unsigned, kOthers> slots{};
    std::latch allHaveOne(kOthers);
    zeb_test::runTogether(kOthers, [&](unsigned index) {
      slots[index] = threadSlot();
      allHaveOne.arrive_and_wait();
    });
    std::set<unsigned> different(slots.begin(), slots.end());
    different.insert(threadSlot());
    ASSERT_EQ(different.size(), kExclusiveThreadSlots);
    ASSERT_FALSE(different.contains(kSharedThreadSlot));
  }
}

TEST(ThreadSlot, IsSharedByTheThreadsForWhomNoneIsLeft) {
  const unsigned mine = threadSlot();
  ASSERT_LT(mine, kExclusiveThreadSlots);
  const LivingThreads living(kExclusiveThreadSlots + 4);
  for (size_t i = 0; i < living.slots.size(); ++i) {
    const bool oneIsLeft = i < kExclusiveThreadSlots - 1;
    EXPECT_EQ(living.slots[i] == kSharedThreadSlot, !oneIsLeft) << "thread " << i;
  }
}

TEST(ThreadSlot, StaysSharedForAThreadThatStartedWithoutOne) {
  threadSlot();
  std::optional<LivingThreads> living(kExclusiveThreadSlots - 1);
  zeb_test::OtherThread late;
  ASSERT_EQ(slotOf(late), kSharedThreadSlot);
  living.reset();
  EXPECT_EQ(slotOf(late), kSharedThreadSlot);
}

TEST(ThreadSlot, IsUsedAgainWhenItsThreadHasEnded) {
  threadSlot();
  for (int i = 0; i < 100; ++i) ASSERT_LT(slotOfANewThread(), kExclusiveThreadSlots) << i;
}

TEST(ThreadSlot, OfAnEndedThreadGoesToTheNextThatAsks) {
  threadSlot();
  LivingThreads living(kExclusiveThreadSlots - 2);
  const unsigned left = slotOfANewThread();
  EXPECT_EQ(slotOfANewThread(), left);
  zeb_test::OtherThread holder;
  EXPECT_EQ(slotOf(holder), left);
  EXPECT_EQ(slotOfANewThread(), kSharedThreadSlot);
}

TEST(ThreadSlot, ReportsTheHighestSlotSoFar) {
  for (int i = 0; i < 5; ++i) {
    const unsigned slot = threadSlot();
    EXPECT_GT(zeb::exclusiveThreadSlotsUsed(), slot);
    EXPECT_LE(zeb::exclusiveThreadSlotsUsed(), kExclusiveThreadSlots);
  }
  { const LivingThreads living(kExclusiveThreadSlots + 1); }
  EXPECT_EQ(zeb::exclusiveThreadSlotsUsed(), kExclusiveThreadSlots);  // though they have ended
}

// Each owner of a slot adds to a plain cell. A count would be lost, and a thread sanitizer would
// see a race, if the next owner did not see what the last one wrote.
TEST(ThreadSlot, HandsItsCellFromThreadToThread) {
  constexpr unsigned kAtOnce = 8;
  constexpr uint64_t kTimes = 1000;
  constexpr int kGenerations = 25;
  std::array<uint64_t, kThreadSlots> cells{};
  for (int generation = 0; generation < kGenerations; ++generation) {
    zeb_test::runTogether(kAtOnce, [&](unsigned) {
      const unsigned slot = threadSlot();
      ASSERT_NE(slot, kSharedThreadSlot);
      for (uint64_t i = 0; i < kTimes; ++i) ++cells[slot];
    });
  }
  uint64_t total = 0;
  for (const uint64_t cell : cells) total += cell;
  EXPECT_EQ(total, kAtOnce * kTimes * kGenerations);
}

// The same between threads whose lives do not follow one another by a join.
TEST(ThreadSlot, HandsItsCellOnWithoutAJoinBetween) {
  constexpr unsigned kStarters = 4;
  constexpr int kGenerations = 60;
  std::array<uint64_t, kThreadSlots> cells{};
  zeb_test::runTogether(kStarters, [&](unsigned) {
    for (int i = 0; i < kGenerations; ++i) {
      std::thread([&] {
        const unsigned slot = threadSlot();
        ASSERT_NE(slot, kSharedThreadSlot);
        ++cells[slot];
      }).join();
    }
  });
  uint64_t total = 0;
  for (const uint64_t cell : cells) total += cell;
  EXPECT_EQ(total, kStarters * kGenerations);
}

// A client's thread-end destructor may run after the slot was given back and call in once more.
// What it gets then must be its own again, for others may start meanwhile.
unsigned slotSeenAtTheEnd = kThreadSlots;
unsigned slotOfTheOther = kThreadSlots;
bool lastCall = false;
pthread_key_t clientKey;

void useTheLibraryAtTheEnd(void* /*value*/) {
  slotSeenAtTheEnd = threadSlot();
  slotOfTheOther = slotOfANewThread();
  if (lastCall) return;
  lastCall = true;
  pthread_setspecific(clientKey, &clientKey);  // asks to be called once more
}

TEST(ThreadSlot, IsThereForDestructorsThatRunAfterItWasGivenBack) {
  threadSlot();
  ASSERT_EQ(pthread_key_create(&clientKey, useTheLibraryAtTheEnd), 0);
  lastCall = false;
  unsigned before = kThreadSlots;
  std::thread([&] {
    before = threadSlot();
    pthread_setspecific(clientKey, &clientKey);
  }).join();
  EXPECT_TRUE(lastCall);
  EXPECT_LT(before, kExclusiveThreadSlots);
  EXPECT_LT(slotSeenAtTheEnd, kExclusiveThreadSlots);
  EXPECT_LT(slotOfTheOther, kExclusiveThreadSlots);
  EXPECT_NE(slotSeenAtTheEnd, slotOfTheOther);
  ASSERT_EQ(pthread_key_delete(clientKey), 0);

  // And what it got then was given back as well: all slots but this thread's can still be had.
  const LivingThreads living(kExclusiveThreadSlots - 1);
  for (const unsigned slot : living.slots) EXPECT_NE(slot, kSharedThreadSlot);
}

}  // namespace
