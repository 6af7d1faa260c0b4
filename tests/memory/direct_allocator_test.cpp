// ZEBAllocator in direct mode, and how it fails in either mode.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "atoms/atom.h"
#include "base/library_counters.h"
#include "errors/internal_error.h"
#include "errors/standard_errors.h"
#include "memory/allocator.h"
#include "memory/filled_blocks.h"
#include "support/counted_events.h"
#include "support/counting_memory.h"
#include "support/random.h"
#include "support/restored.h"
#include "support/threads.h"

#if defined(__has_feature)
#define ZEB_HAS_FEATURE(x) __has_feature(x)
#else
#define ZEB_HAS_FEATURE(x) 0
#endif

// The sanitizers end the program when malloc is asked for more than there can be; here it is to
// return null, as malloc does.
#if defined(__SANITIZE_ADDRESS__) || ZEB_HAS_FEATURE(address_sanitizer)
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#define ZEB_SANITIZED 1
#elif defined(__SANITIZE_THREAD__) || ZEB_HAS_FEATURE(thread_sanitizer)
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }
#define ZEB_SANITIZED 1
#else
#define ZEB_SANITIZED 0
#endif

namespace {

using Mode = ZEBAllocator::Mode;

constexpr uint64_t kMost = UINT64_MAX;

// A twentieth, at least 16 and at most 200: in whole numbers, where the allocator uses a float.
uint64_t slackOf(uint64_t size) { return std::clamp<uint64_t>(size / 20, 16, 200); }

unsigned char* bytes(void* block) { return static_cast<unsigned char*>(block); }

class DirectAllocator : public testing::Test {
 protected:
  ZEBAllocator allocator{Mode::direct};
};

TEST_F(DirectAllocator, GivesEachSizeTheSlackOfItsSize) {
  for (uint64_t size = 0; size <= 10000; ++size) {
    ASSERT_EQ(ZEBAllocator::slackFor(size), slackOf(size)) << size;
  }
  for (const uint64_t size : {uint64_t{100000}, uint64_t{1} << 32, kMost}) {
    EXPECT_EQ(ZEBAllocator::slackFor(size), 200u);
  }
}

TEST_F(DirectAllocator, ChangesItsSlackAtTheKnownBorders) {
  EXPECT_EQ(ZEBAllocator::slackFor(0), 16u);
  EXPECT_EQ(ZEBAllocator::slackFor(1), 16u);
  EXPECT_EQ(ZEBAllocator::slackFor(319), 16u);
  EXPECT_EQ(ZEBAllocator::slackFor(320), 16u);
  EXPECT_EQ(ZEBAllocator::slackFor(339), 16u);
  EXPECT_EQ(ZEBAllocator::slackFor(340), 17u);
  EXPECT_EQ(ZEBAllocator::slackFor(3999), 199u);
  EXPECT_EQ(ZEBAllocator::slackFor(4000), 200u);
}

// The sanitizers' malloc_usable_size is exactly what was asked of malloc; the C library's may be
// some bytes more.
TEST_F(DirectAllocator, TakesHeaderDataAndSlackFromMalloc) {
  for (const uint64_t size : {0u, 1u, 319u, 320u, 340u, 1000u, 3999u, 4000u, 50000u}) {
    void* block = allocator.alloc(size);
    const uint64_t wanted = 16 + size + slackOf(size);
    const uint64_t usable = malloc_usable_size(bytes(block) - 16);
    if (ZEB_SANITIZED) {
      EXPECT_EQ(usable, wanted) << size;
    } else {
      EXPECT_GE(usable, wanted) << size;
    }
    std::memset(block, 0x5A, size + slackOf(size));
    allocator.free(block);
  }
}

TEST_F(DirectAllocator, RecordsTheRequestedSizeBeforeTheData) {
  for (const uint64_t size : {0u, 1u, 47u, 48u, 65024u, 65025u, 200000u}) {
    void* block = allocator.alloc(size);
    uint64_t recorded = kMost;
    std::memcpy(&recorded, bytes(block) - 16, sizeof recorded);
    EXPECT_EQ(recorded, size);
    EXPECT_EQ(allocator.blockSize(block), size);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u);
    allocator.free(block);
  }
}

TEST_F(DirectAllocator, TakesNullForABlockOfNoSize) {
  EXPECT_EQ(allocator.blockSize(nullptr), 0u);
  allocator.free(nullptr);  // would crash if it looked for a header
}

TEST_F(DirectAllocator, AllocatesWhenNullIsReallocated) {
  void* block = allocator.realloc(nullptr, 77);
  EXPECT_EQ(allocator.blockSize(block), 77u);
  allocator.free(block);
}

TEST_F(DirectAllocator, AlwaysMovesABlockThatIsReallocated) {
  const std::string text(100, 'x');
  for (const uint64_t size : {0u, 1u, 50u, 100u, 101u, 5000u}) {
    void* block = allocator.alloc(text.size());
    std::memcpy(block, text.data(), text.size());
    const auto old = reinterpret_cast<uintptr_t>(block);
    void* moved = allocator.realloc(block, size);
    EXPECT_NE(reinterpret_cast<uintptr_t>(moved), old) << size;
    EXPECT_EQ(allocator.blockSize(moved), size);
    const uint64_t kept = std::min<uint64_t>(size, text.size());
    EXPECT_EQ(std::memcmp(moved, text.data(), kept), 0) << size;
    allocator.free(moved);
  }
}

TEST_F(DirectAllocator, UsesMallocWhateverPagesTheHostGave) {
  const zeb_test::CountingPages pages;
  const zeb_test::Restored<zeb::PageSource> host(zeb::hostState.pages, pages.source);
  void* block = allocator.realloc(allocator.alloc(100), 100000);
  allocator.free(block);
  allocator.releasePages();
  EXPECT_EQ(pages.asked(), 0u);
  EXPECT_EQ(pages.takenBack(), 0u);
}

TEST_F(DirectAllocator, CountsNoEvents) {
  namespace counters = zeb::counters;
  const zeb_test::CountedEvents events{&counters::memoryAllocation,
                                       &counters::largeMemoryAllocation,
                                       &counters::memoryPageAllocation};
  allocator.free(allocator.alloc(100));
  allocator.free(allocator.alloc(100000));
  EXPECT_EQ(events.of(counters::memoryAllocation), 0u);
  EXPECT_EQ(events.of(counters::largeMemoryAllocation), 0u);
  EXPECT_EQ(events.of(counters::memoryPageAllocation), 0u);
}

TEST_F(DirectAllocator, IsTheModeOfTheProcessAllocator) {
  const zeb_test::CountingPages pages;
  const zeb_test::Restored<zeb::PageSource> host(zeb::hostState.pages, pages.source);
  void* block = zeb::processAllocator.alloc(10);
  EXPECT_EQ(zeb::processAllocator.blockSize(block), 10u);
  zeb::processAllocator.free(block);
  EXPECT_EQ(pages.asked(), 0u);
}

TEST_F(DirectAllocator, KeepsTheContentsOfItsBlocksThroughRandomUse) {
  zeb_test::forEachSeed([&](zeb_test::Random& random) {
    zeb_test::FilledBlocks blocks(allocator);
    for (int step = 0; step < 3000 && !HasFailure(); ++step) {
      const uint64_t size = random.below(random.oneIn(8) ? 100000 : 5000);
      const uint64_t choice = random.below(100);
      if (blocks.count() == 0 || choice < 40) {
        EXPECT_EQ(allocator.blockSize(blocks.alloc(size)), size);
      } else if (choice < 70) {
        blocks.realloc(blocks.at(random.below(blocks.count())), size);
      } else {
        blocks.free(blocks.at(random.below(blocks.count())));
      }
    }
  });
}

// --- Exhaustion ---

std::string nameOfMode(const testing::TestParamInfo<Mode>& mode) {
  return mode.param == Mode::direct ? "Direct" : "Pooled";
}

class AllocatorOfMode : public testing::TestWithParam<Mode> {
 protected:
  AllocatorOfMode() { pages_.grant(0); }

  ZEBAllocator allocator{GetParam(), zeb_test::CountingPages::source};

  // A size that no allocation can serve, as the mode has it.
  [[nodiscard]] static std::vector<uint64_t> impossibleSizes() {
    return {kMost, kMost - 15, kMost - 31, kMost - 215, kMost - 216, kMost / 2};
  }

 private:
  zeb_test::CountingPages pages_;  // refuse everything
};
INSTANTIATE_TEST_SUITE_P(Modes, AllocatorOfMode, testing::Values(Mode::direct, Mode::pooled),
                         nameOfMode);

// Where blocks are put that nobody uses: compilers may leave out an allocation that nobody sees.
void* volatile kept = nullptr;

TEST_P(AllocatorOfMode, ThrowsABareZeroOutsideAnInitialisedLibrary) {
  for (const uint64_t size : impossibleSizes()) {
    try {
      kept = allocator.alloc(size);
      ADD_FAILURE() << size << " was allocated";
    } catch (int thrown) {
      EXPECT_EQ(thrown, 0);
    }
  }
  EXPECT_THROW((void)allocator.realloc(nullptr, kMost), int);
  EXPECT_THROW(allocator.exhausted(), int);
}

class InitialisedAllocator : public AllocatorOfMode {
 protected:
  void SetUp() override {
    zeb::errors::makeStandardErrors();
    ASSERT_NE(zeb::errors::standardKst(1), nullptr);
    allocator.setThrowsInteger(false);
  }
  void TearDown() override {
    zeb::errors::releaseStandardErrors();
    zeb::atoms::dropTableUser();
  }
};
INSTANTIATE_TEST_SUITE_P(Modes, InitialisedAllocator, testing::Values(Mode::direct, Mode::pooled),
                         nameOfMode);

TEST_P(InitialisedAllocator, RaisesTheStandardOutOfMemory) {
  for (const uint64_t size : impossibleSizes()) {
    try {
      kept = allocator.alloc(size);
      ADD_FAILURE() << size << " was allocated";
    } catch (const InternalError& raised) {
      EXPECT_EQ(raised.error(), zeb::errors::standardKst(1));
      EXPECT_STREQ(raised.error()->message.get()->text(), "Out of Memory");
      EXPECT_STREQ(raised.error()->component.get()->text(), "KST");
      EXPECT_EQ(raised.error()->id, 1);
    }
  }
  EXPECT_THROW((void)allocator.realloc(nullptr, kMost), InternalError);
}

TEST_P(InitialisedAllocator, ThrowsABareZeroAgainWhenItIsTold) {
  EXPECT_THROW((void)allocator.alloc(kMost), InternalError);
  allocator.setThrowsInteger(true);
  EXPECT_THROW((void)allocator.alloc(kMost), int);
}

TEST_F(DirectAllocator, LeavesTheOldBlockAloneWhenReallocationFails) {
  const std::string text = "still here";
  void* block = allocator.alloc(text.size());
  std::memcpy(block, text.data(), text.size());
  EXPECT_THROW((void)allocator.realloc(block, kMost - 100), int);
  EXPECT_EQ(std::memcmp(block, text.data(), text.size()), 0);
  EXPECT_EQ(allocator.blockSize(block), text.size());
  allocator.free(block);
}

TEST_F(DirectAllocator, MayBeUsedByManyThreads) {
  zeb_test::runTogether(4, [&](unsigned index) {
    zeb_test::Random random(index);
    for (int i = 0; i < 500; ++i) {
      const uint64_t size = 1 + random.below(2000);
      void* block = allocator.alloc(size);
      std::memset(block, static_cast<int>(index), size);
      block = allocator.realloc(block, size / 2 + 1);
      ASSERT_EQ(*bytes(block), index);
      allocator.free(block);
    }
  });
}

}  // namespace
