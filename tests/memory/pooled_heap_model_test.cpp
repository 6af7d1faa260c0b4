// A pooled allocator under random use: every step is predicted and every page is walked.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <vector>

#include "memory/allocator.h"
#include "memory/filled_blocks.h"
#include "memory/page_walk.h"
#include "support/counting_memory.h"
#include "support/random.h"
#include "support/restored.h"
#include "support/threads.h"

namespace {

using zeb_test::Byte;
using zeb_test::PageWalk;
using zeb_test::Random;

constexpr uint64_t kLargestSmall = 65024;
constexpr uint64_t kPageBytes = 65072;
constexpr uint64_t kLargeHeader = 32;

bool isLarge(uint64_t size) { return size > kLargestSmall; }

uint64_t rounded(uint64_t size) { return std::max<uint64_t>(48, (size + 15) / 16 * 16); }

// Small ones for the most part, some around the borders, some large.
uint64_t randomSize(Random& random) {
  const uint64_t choice = random.below(100);
  if (choice < 45) return random.below(256);
  if (choice < 75) return random.below(4096);
  if (choice < 85) return random.below(20000);
  if (choice < 90) return random.between(kLargestSmall - 200, kLargestSmall + 10);
  if (choice < 93) return random.between(131072 - 50, 131072 + 50);
  if (choice < 97) return random.between(kLargestSmall, 200000);
  return random.below(kLargestSmall);
}

// A large block with the size of a page would be walked as one.
uint64_t walkableSize(Random& random) {
  const uint64_t size = randomSize(random);
  return size == kPageBytes - kLargeHeader ? size + 1 : size;
}

class HeapModel {
 public:
  void alloc(uint64_t size) {
    expectRightBlock(blocks_.alloc(size), size);
    check();
  }

  void realloc(size_t index, uint64_t size) {
    blocks_.realloc(blocks_.at(index), size);
    check();
  }

  void free(size_t index) {
    blocks_.free(blocks_.at(index));
    check();
  }

  void finish() {
    blocks_.freeAll();
    check();
    allocator_.releasePages();
    EXPECT_EQ(pages_.live(), 0u);
    EXPECT_EQ(held(), 0u);
  }

  [[nodiscard]] size_t count() const { return blocks_.count(); }

 private:
  // The smallest free block that is large enough, whole if less than 64 bytes would be left.
  void expectRightBlock(const Byte* data, uint64_t size) const {
    if (isLarge(size)) {
      EXPECT_GE(allocator_.blockSize(data), size);
      return;
    }
    const uint64_t bestFit = walk_.bestFit(rounded(size));
    const uint64_t source = bestFit != 0 ? bestFit : kLargestSmall;
    if (bestFit != 0) {
      const PageWalk::Block* taken = walk_.at(data);
      ASSERT_NE(taken, nullptr) << "not a block that was there";
      ASSERT_TRUE(taken->free);
      ASSERT_EQ(taken->size, bestFit) << "not the smallest that fits";
    }
    const uint64_t expected = source < rounded(size) + 64 ? source : rounded(size);
    ASSERT_EQ(allocator_.blockSize(data), expected);
  }

  void check() {
    walk_ = PageWalk(pages_.blocks());
    ASSERT_EQ(walk_.faults, "");
    checkSmallBlocks();
    checkLargeBlocks();
  }

  // Whatever is not free is in use by us, but for one whole page that is kept.
  void checkSmallBlocks() const {
    uint64_t ours = 0;
    uint64_t kept = 0;
    for (const PageWalk::Block& block : walk_.blocks) {
      if (block.free) continue;
      const auto it = blocks_.all().find(block.data);
      if (it == blocks_.all().end()) {
        ASSERT_EQ(block.size, kLargestSmall) << "a block that nobody uses is not free";
        ++kept;
        continue;
      }
      ASSERT_EQ(allocator_.blockSize(block.data), block.size);
      ++ours;
    }
    ASSERT_EQ(ours + largeBlocks(), blocks_.count());
    ASSERT_LE(kept, 1u);
  }

  void checkLargeBlocks() const {
    uint64_t bytes = walk_.pages * kPageBytes;
    uint64_t kept = 0;
    for (const auto& [memory, size] : pages_.blocks()) {
      if (size == kPageBytes) continue;
      bytes += size - kLargeHeader;
      const auto it = blocks_.all().find(memory + kLargeHeader);
      if (it == blocks_.all().end()) {
        ASSERT_LT(size - kLargeHeader, 131072u);
        ++kept;
        continue;
      }
      ASSERT_EQ(allocator_.blockSize(it->first), size - kLargeHeader);
    }
    ASSERT_LE(kept, 1u);
    ASSERT_EQ(held(), bytes);
  }

  [[nodiscard]] uint64_t largeBlocks() const {
    return static_cast<uint64_t>(
        std::count_if(blocks_.all().begin(), blocks_.all().end(),
                      [](const auto& block) { return isLarge(block.second.size); }));
  }
  [[nodiscard]] uint64_t held() const {
    return static_cast<uint32_t>(zeb::PooledHeap::heldBytes() - heldBefore_);
  }

  const uint32_t heldBefore_ = zeb::PooledHeap::heldBytes();
  zeb_test::CountingPages pages_;
  ZEBAllocator allocator_{ZEBAllocator::Mode::pooled, zeb_test::CountingPages::source};
  zeb_test::FilledBlocks blocks_{allocator_};
  PageWalk walk_{{}};  // as the last step left the pages
};

TEST(PooledHeapModel, AgreesWithTheHeapThroughRandomUse) {
  constexpr size_t kMostBlocks = 150;
  zeb_test::forEachSeed([](Random& random) {
    HeapModel model;
    // Growing and shrinking by turns opens and empties pages.
    for (int step = 0; step < 10000 && !testing::Test::HasFailure(); ++step) {
      const bool growing = step / 500 % 2 == 0;
      const uint64_t choice = random.below(100);
      if (model.count() == 0 || (model.count() < kMostBlocks && choice < (growing ? 60u : 25u))) {
        model.alloc(walkableSize(random));
      } else if (choice < 85) {
        model.free(random.below(model.count()));
      } else {
        model.realloc(random.below(model.count()), walkableSize(random));
      }
    }
    model.finish();
  });
}

// --- Realloc ---

class PooledAllocator : public testing::Test {
 protected:
  void TearDown() override {
    allocator.releasePages();
    EXPECT_EQ(pages.live(), 0u);
  }

  zeb_test::CountingPages pages;
  ZEBAllocator allocator{ZEBAllocator::Mode::pooled, zeb_test::CountingPages::source};
};

TEST_F(PooledAllocator, AlwaysMovesABlockThatIsReallocated) {
  zeb_test::FilledBlocks blocks(allocator);
  for (const uint64_t size : {100u, 100u, 50u, 0u, 65024u, 65025u, 150000u, 70000u, 48u}) {
    blocks.count() == 0 ? blocks.alloc(size) : blocks.realloc(blocks.at(0), size);
  }
}

TEST_F(PooledAllocator, CopiesNoMoreThanTheSmallerBlockHolds) {
  auto* block = static_cast<Byte*>(allocator.alloc(49));  // 64 bytes in fact
  std::memset(block, 'a', 64);
  auto* larger = static_cast<Byte*>(allocator.realloc(block, 200));
  EXPECT_TRUE(std::all_of(larger, larger + 64, [](Byte byte) { return byte == 'a'; }));
  auto* smaller = static_cast<Byte*>(allocator.realloc(larger, 10));
  EXPECT_TRUE(std::all_of(smaller, smaller + 10, [](Byte byte) { return byte == 'a'; }));
  allocator.free(smaller);
}

TEST_F(PooledAllocator, TakesNullAsOtherAllocatorsDo) {
  EXPECT_EQ(allocator.blockSize(nullptr), 0u);
  allocator.free(nullptr);
  void* block = allocator.realloc(nullptr, 100);
  EXPECT_EQ(allocator.blockSize(block), 112u);
  allocator.free(block);
}

TEST_F(PooledAllocator, TakesThePagesOfTheHostUnlessItIsGivenOthers) {
  const zeb_test::Restored<zeb::PageSource> host(zeb::hostState.pages,
                                                 zeb_test::CountingPages::source);
  ZEBAllocator overTheHost(ZEBAllocator::Mode::pooled);
  void* block = overTheHost.alloc(100);
  EXPECT_EQ(pages.requests(), std::vector<uint64_t>{kPageBytes});
  overTheHost.free(block);
  overTheHost.releasePages();
}

// --- Many threads ---

// Each thread has blocks of its own and now and then swaps one with whoever comes by, so that
// blocks are freed by threads that did not allocate them.
TEST_F(PooledAllocator, MayBeUsedByManyThreads) {
  struct Exchanged {
    Byte* block = nullptr;
    zeb_test::FilledBlocks::Contents contents{};
  };
  std::mutex mutex;
  Exchanged exchanged;

  zeb_test::runTogether(4, [&](unsigned index) {
    Random random(index);
    zeb_test::FilledBlocks blocks(allocator);
    for (int step = 0; step < 2000; ++step) {
      const uint64_t choice = random.below(100);
      if (blocks.count() < 10 || (blocks.count() < 60 && choice < 40)) {
        blocks.alloc(randomSize(random));
      } else if (choice < 80) {
        blocks.free(blocks.at(random.below(blocks.count())));
      } else if (choice < 90) {
        blocks.realloc(blocks.at(random.below(blocks.count())), randomSize(random));
      } else {
        Byte* const block = blocks.at(random.below(blocks.count()));
        const std::lock_guard guard(mutex);
        const Exchanged mine{block, blocks.handOver(block)};
        const Exchanged theirs = std::exchange(exchanged, mine);
        if (theirs.block != nullptr) blocks.adopt(theirs.block, theirs.contents);
      }
    }
  });
  allocator.free(exchanged.block);

  const PageWalk walk(pages.blocks());
  EXPECT_EQ(walk.faults, "");
  EXPECT_LE(walk.pages, 1u);    // the spare page
  EXPECT_LE(pages.live(), 2u);  // and the spare large block
}

}  // namespace
