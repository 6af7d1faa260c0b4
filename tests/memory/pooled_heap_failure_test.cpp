// A pooled heap whose host has no memory, or throws.
#include <gtest/gtest.h>

#include "base/library_counters.h"
#include "memory/allocator.h"
#include "memory/heap_test.h"
#include "support/counted_events.h"
#include "support/restored.h"
#include "support/threads.h"

namespace {

using zeb::PooledHeap;
using zeb_test::Byte;
using zeb_test::HostThrew;

class PooledHeapFailure : public zeb_test::HeapTest {
 protected:
  // From another thread: it would wait for ever for a lock that was left taken.
  void expectUsable() {
    pages.grantAll();
    pages.throwOnGive(false);
    pages.throwOnTakeBack(false);
    zeb_test::OtherThread other;
    other.run([&] {
      Byte* const small = alloc(60000);
      Byte* const large = alloc(120000);
      ASSERT_NE(small, nullptr);
      ASSERT_NE(large, nullptr);
      free(small);
      free(large);
    });
  }
};

TEST_F(PooledHeapFailure, IsNullWhenTheHostHasNoPage) {
  pages.grant(0);
  EXPECT_EQ(alloc(0), nullptr);
  EXPECT_EQ(alloc(65024), nullptr);
  EXPECT_EQ(pages.live(), 0u);
  EXPECT_EQ(held(), 0u);
  expectUsable();
}

TEST_F(PooledHeapFailure, IsNullWhenTheHostHasNoLargeBlock) {
  pages.grant(0);
  EXPECT_EQ(alloc(65025), nullptr);
  EXPECT_EQ(pages.live(), 0u);
  EXPECT_EQ(held(), 0u);
  expectUsable();
}

TEST_F(PooledHeapFailure, DoesNotAskTheHostForWhatCannotBeRepresented) {
  EXPECT_EQ(alloc(UINT64_MAX), nullptr);
  EXPECT_EQ(alloc(UINT64_MAX - 31), nullptr);
  EXPECT_EQ(pages.asked(), 0u);
  pages.grant(0);
  EXPECT_EQ(alloc(UINT64_MAX - 32), nullptr);
  EXPECT_EQ(pages.asked(), 1u);
  expectUsable();
}

TEST_F(PooledHeapFailure, LeavesWhatIsFreeToBeUsed) {
  const auto blocks = freeBlocks({96});
  pages.grant(0);
  EXPECT_EQ(alloc(65024), nullptr);
  EXPECT_EQ(alloc(70000), nullptr);
  EXPECT_EQ(alloc(96), blocks[0]);
  EXPECT_EQ(held(), 65072u);
  expectUsable();
}

TEST_F(PooledHeapFailure, DoesNotStopTheSparesFromBeingUsed) {
  Byte* const small = alloc(65024);
  Byte* const large = alloc(70000);
  free(small);
  free(large);
  pages.grant(0);
  EXPECT_EQ(alloc(65024), small);
  EXPECT_EQ(alloc(70000), large);
}

TEST_F(PooledHeapFailure, LosesTheSpareThatIsTooSmallAndNothingElse) {
  free(alloc(70000));
  pages.grant(0);
  EXPECT_EQ(alloc(80000), nullptr);
  EXPECT_EQ(pages.live(), 0u);
  EXPECT_EQ(held(), 0u);
  expectUsable();
}

// Every allocation of a series is refused once; what was allocated before must stay intact.
TEST_F(PooledHeapFailure, LosesNothingWhicheverRequestIsRefused) {
  const uint64_t sizes[] = {100, 65000, 70000, 64000, 140000, 48, 90000};
  bool refused = true;
  for (uint64_t granted = 0; refused; ++granted) {
    heap.releasePages();
    ASSERT_EQ(pages.live(), 0u);
    pages.grant(granted);
    std::vector<Byte*> blocks;
    refused = false;
    for (const uint64_t size : sizes) {
      Byte* const block = alloc(size);
      if (block != nullptr) blocks.push_back(block);
      if (block == nullptr) refused = true;
    }
    expectSoundPages();
    pages.grantAll();
    for (Byte* block : blocks) free(block);
  }
  expectUsable();
}

// --- A host that throws ---

TEST_F(PooledHeapFailure, PassesOnWhatThePageProcedureThrows) {
  pages.throwOnGive(true);
  EXPECT_THROW(alloc(100), HostThrew);
  EXPECT_THROW(alloc(70000), HostThrew);
  EXPECT_EQ(held(), 0u);
  expectUsable();
}

TEST_F(PooledHeapFailure, CountsAPageThatTheHostThrewAwayAsGivenBack) {
  Byte* const first = alloc(65024);
  Byte* const second = alloc(65024);
  free(first);
  pages.throwOnTakeBack(true);
  EXPECT_THROW(free(second), HostThrew);
  EXPECT_EQ(held(), 65072u);
  expectUsable();
}

TEST_F(PooledHeapFailure, CountsALargeBlockThatTheHostThrewAwayAsGivenBack) {
  Byte* const block = alloc(131072);
  pages.throwOnTakeBack(true);
  EXPECT_THROW(free(block), HostThrew);
  EXPECT_EQ(held(), 0u);
  expectUsable();
}

TEST_F(PooledHeapFailure, DoesNotKeepASpareThatTheHostThrewAway) {
  free(alloc(70000));
  pages.throwOnTakeBack(true);
  EXPECT_THROW(alloc(80000), HostThrew);
  EXPECT_EQ(held(), 0u);
  expectUsable();
}

// The account fails the test when a block comes back twice.
TEST_F(PooledHeapFailure, OffersNoSpareTwiceWhenGivingBackThrows) {
  free(alloc(100));
  free(alloc(70000));
  pages.throwOnTakeBack(true);
  for (int i = 0; i < 3; ++i) {
    try {
      heap.releasePages();
    } catch (const HostThrew&) {
    }
  }
  EXPECT_EQ(pages.takenBack(), 2u);
  EXPECT_EQ(held(), 0u);
  expectUsable();
}

// --- The allocator over it ---

class PooledAllocatorFailure : public testing::Test {
 protected:
  zeb_test::CountingPages pages;
  ZEBAllocator allocator{ZEBAllocator::Mode::pooled, zeb_test::CountingPages::source};
};

TEST_F(PooledAllocatorFailure, SwallowsWhatTheHostThrowsWhenAPageIsFreed) {
  void* first = allocator.alloc(65024);
  void* second = allocator.alloc(65024);
  void* large = allocator.alloc(131072);
  pages.throwOnTakeBack(true);
  allocator.free(first);
  EXPECT_NO_THROW(allocator.free(second));
  EXPECT_NO_THROW(allocator.free(large));
  EXPECT_NO_THROW(allocator.releasePages());
  EXPECT_EQ(pages.live(), 0u);
}

TEST_F(PooledAllocatorFailure, PassesOnWhatTheHostThrowsWhenAPageIsTaken) {
  pages.throwOnGive(true);
  EXPECT_THROW((void)allocator.alloc(100), HostThrew);
  pages.throwOnGive(false);
  allocator.free(allocator.alloc(100));
  allocator.releasePages();
  EXPECT_EQ(pages.live(), 0u);
}

TEST_F(PooledAllocatorFailure, LeavesTheOldBlockAloneWhenReallocationFails) {
  auto* block = static_cast<Byte*>(allocator.alloc(100));
  std::memset(block, 'x', 100);
  pages.grant(0);
  EXPECT_THROW((void)allocator.realloc(block, 70000), int);
  EXPECT_EQ(allocator.blockSize(block), 112u);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(block[i], 'x');
  allocator.free(block);
  allocator.releasePages();
  EXPECT_EQ(pages.live(), 0u);
}

// --- Events ---

class PooledHeapEvents : public zeb_test::HeapTest {
 protected:
  void expect(uint64_t allocations, uint64_t large, uint64_t pagesOpened) {
    EXPECT_EQ(events.of(zeb::counters::memoryAllocation), allocations);
    EXPECT_EQ(events.of(zeb::counters::largeMemoryAllocation), large);
    EXPECT_EQ(events.of(zeb::counters::memoryPageAllocation), pagesOpened);
  }

  zeb_test::CountedEvents events{&zeb::counters::memoryAllocation,
                                 &zeb::counters::largeMemoryAllocation,
                                 &zeb::counters::memoryPageAllocation};
};

TEST_F(PooledHeapEvents, CountEveryAllocation) {
  for (int i = 0; i < 5; ++i) alloc(100);
  expect(5, 0, 1);
}

TEST_F(PooledHeapEvents, CountPagesOnlyWhenTheHostIsAsked) {
  Byte* const whole = alloc(65024);
  expect(1, 0, 1);
  free(whole);
  alloc(65024);  // the spare page
  expect(2, 0, 1);
  alloc(48);
  expect(3, 0, 2);
}

TEST_F(PooledHeapEvents, CountLargeAllocationsEvenFromTheSpare) {
  free(alloc(70000));
  expect(1, 1, 0);
  alloc(70000);
  expect(2, 2, 0);
  alloc(65024);
  expect(3, 2, 1);
  alloc(65025);
  expect(4, 3, 1);
}

TEST_F(PooledHeapEvents, CountRequestsThatTheHostRefuses) {
  pages.grant(0);
  alloc(100);
  expect(1, 0, 1);
  alloc(70000);
  expect(2, 1, 1);
  alloc(UINT64_MAX);
  expect(3, 2, 1);
}

TEST_F(PooledHeapEvents, AreNotCountedWhenBlocksAreFreed) {
  Byte* const small = alloc(100);
  Byte* const large = alloc(70000);
  free(small);
  free(large);
  expect(2, 1, 1);
}

// A service that allocates from the very heap would wait for ever if it were called under its lock.
PooledHeap* heapOfTheService = nullptr;
bool insideTheService = false;
int outermostSignals = 0;

void signalAndAllocate(ZEBEventCounter* /*counter*/, uint64_t /*amount*/) {
  if (insideTheService) return;
  insideTheService = true;
  ++outermostSignals;
  heapOfTheService->free(heapOfTheService->alloc(100));
  insideTheService = false;
}

TEST(PooledHeapService, IsSignalledWithoutTheHeapsLock) {
  zeb_test::CountingPages pages;
  PooledHeap heap(zeb_test::CountingPages::source);
  heapOfTheService = &heap;
  outermostSignals = 0;
  const zeb_test::Restored<zeb::RegisterCounter> slot(zeb::registerCounter, [](const char*,
                                                                               int32_t) {
    return zeb::EventRegistration{.handle = reinterpret_cast<ZEBEventCounter*>(&outermostSignals),
                                  .signal = signalAndAllocate,
                                  .remove = [](ZEBEventCounter*) {},
                                  .tally = nullptr};
  });
  const auto counters = {&zeb::counters::memoryAllocation, &zeb::counters::largeMemoryAllocation,
                         &zeb::counters::memoryPageAllocation};
  for (auto* counter : counters) counter->initialise();
  heap.free(heap.alloc(70000));  // an allocation, a large one
  EXPECT_EQ(outermostSignals, 2);
  heap.free(heap.alloc(65024));  // an allocation, which opens no page: the service's own is spare
  EXPECT_EQ(outermostSignals, 3);
  heap.releasePages();
  heapOfTheService->free(heap.alloc(70000));
  for (auto* counter : counters) counter->terminate();
  heap.releasePages();
  EXPECT_EQ(pages.live(), 0u);
}

}  // namespace
