#include "memory/pooled_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "memory/heap_test.h"

namespace {

using Heap = zeb::PooledHeap;
using zeb_test::Byte;
using zeb_test::isFree;
using zeb_test::previousSizeOf;
using zeb_test::sizeOf;
using zeb_test::wordAt;

uint64_t rounded(uint64_t size) { return std::max<uint64_t>(48, (size + 15) / 16 * 16); }

class PooledHeap : public zeb_test::HeapTest {};

// --- Layout ---

TEST_F(PooledHeap, LaysAPageOutByteForByte) {
  Byte* const data = alloc(100);
  ASSERT_EQ(pages.requests(), std::vector<uint64_t>{65072});
  Byte* const page = pages.lastGiven();
  EXPECT_EQ(data, page + 32);

  EXPECT_EQ(wordAt<uint16_t>(page + 16), 0);    // first in its page, in use
  EXPECT_EQ(wordAt<uint16_t>(page + 18), 112);  // 100 rounded up

  constexpr uint16_t kRest = 65024 - 112 - 16;
  Byte* const next = page + 32 + 112;
  EXPECT_EQ(wordAt<uint16_t>(next), 112 | 1);  // free
  EXPECT_EQ(wordAt<uint16_t>(next + 2), kRest);

  EXPECT_EQ(next + 16 + kRest, page + 65056);
  EXPECT_EQ(wordAt<uint16_t>(page + 65056), kRest);
  EXPECT_EQ(wordAt<uint16_t>(page + 65058), 0);  // the page's end
}

TEST_F(PooledHeap, MarksAFreedFirstBlockWithTheFreeBitAlone) {
  Byte* const first = alloc(48);
  alloc(48);
  free(first);
  EXPECT_EQ(wordAt<uint16_t>(first - 16), 1);
  EXPECT_EQ(wordAt<uint16_t>(first - 14), 48);
}

TEST_F(PooledHeap, KeepsTheLinksOfAFreeBlockInItsData) {
  const auto blocks = freeBlocks({96, 96, 96});
  useUpTheRest();
  for (Byte* block : blocks) free(block);  // the only free ones now; the first leads their list
  EXPECT_EQ(wordAt<Byte*>(blocks[0]), nullptr);        // previous of its size
  EXPECT_EQ(wordAt<Byte*>(blocks[0] + 8), blocks[2]);  // next of its size: the one freed last
  EXPECT_EQ(wordAt<Byte*>(blocks[2]), blocks[0]);
  EXPECT_EQ(wordAt<Byte*>(blocks[2] + 8), blocks[1]);
  EXPECT_EQ(wordAt<Byte*>(blocks[1]), blocks[2]);
  EXPECT_EQ(wordAt<Byte*>(blocks[1] + 8), nullptr);
}

TEST_F(PooledHeap, LaysALargeBlockOutByteForByte) {
  Byte* const data = alloc(70000);
  ASSERT_EQ(pages.requests(), std::vector<uint64_t>{70032});
  Byte* const block = pages.lastGiven();
  EXPECT_EQ(data, block + 32);
  EXPECT_EQ(wordAt<uint64_t>(block + 8), 70000u);
  EXPECT_EQ(wordAt<uint16_t>(block + 18), 0xFE01);  // where a small block has its size
}

// --- Sizes ---

TEST_F(PooledHeap, RoundsSmallRequestsUpToSixteensAndAtLeastFortyEight) {
  for (uint64_t size = 0; size <= 64960; size += size < 1024 ? 1 : 7) {
    Byte* const data = alloc(size);
    ASSERT_EQ(Heap::blockSize(data), rounded(size)) << size;
    ASSERT_EQ(sizeOf(data), rounded(size));
    ASSERT_EQ(reinterpret_cast<uintptr_t>(data) % 16, 0u);
    free(data);
  }
}

TEST_F(PooledHeap, GivesFortyEightBytesForNoneOrOne) {
  EXPECT_EQ(Heap::blockSize(alloc(0)), 48u);
  EXPECT_EQ(Heap::blockSize(alloc(1)), 48u);
  EXPECT_EQ(Heap::blockSize(alloc(48)), 48u);
  EXPECT_EQ(Heap::blockSize(alloc(49)), 64u);
}

TEST_F(PooledHeap, CallsARequestSmallUpToAWholePage) {
  Byte* const small = alloc(65024);
  EXPECT_EQ(pages.requests().back(), 65072u);
  EXPECT_EQ(Heap::blockSize(small), 65024u);
  EXPECT_EQ(sizeOf(small + 65024 + 16), 0);  // the end header follows

  Byte* const large = alloc(65025);
  EXPECT_EQ(pages.requests().back(), 65057u);
  EXPECT_EQ(Heap::blockSize(large), 65025u);
}

TEST_F(PooledHeap, LeavesTheSmallestRemainderOfAPage) {
  Byte* const split = alloc(64960);
  EXPECT_EQ(Heap::blockSize(split), 64960u);
  EXPECT_EQ(sizeOf(split + 64960 + 16), 48);
  EXPECT_EQ(alloc(48), split + 64960 + 16);
  Byte* const whole = alloc(64961);
  EXPECT_EQ(Heap::blockSize(whole), 65024u);
}

// --- Which free block is taken ---

TEST_F(PooledHeap, TakesTheSmallestBlockThatIsLargeEnough) {
  const auto blocks = freeBlocks({256, 96, 160});
  EXPECT_EQ(alloc(150), blocks[2]);
  EXPECT_EQ(alloc(150), blocks[0]);
  EXPECT_EQ(alloc(96), blocks[1]);
}

TEST_F(PooledHeap, TakesABlockOfExactlyTheSizeBeforeALargerOne) {
  const auto blocks = freeBlocks({112, 96, 128});
  EXPECT_EQ(alloc(96), blocks[1]);
  EXPECT_EQ(alloc(96), blocks[0]);
  EXPECT_EQ(alloc(96), blocks[2]);
}

TEST_F(PooledHeap, TakesTheChainOfASizeBeforeTheBlockInTheTree) {
  const auto blocks = freeBlocks({96, 96, 96, 96});
  EXPECT_EQ(alloc(96), blocks[3]);
  EXPECT_EQ(alloc(96), blocks[2]);
  EXPECT_EQ(alloc(96), blocks[1]);
  EXPECT_EQ(alloc(96), blocks[0]);
}

TEST_F(PooledHeap, LetsTheChainTakeThePlaceOfABlockThatMerges) {
  Byte* const node = alloc(96);
  Byte* const neighbour = alloc(96);
  alloc(48);
  Byte* const second = alloc(96);
  alloc(48);
  Byte* const third = alloc(96);
  alloc(48);
  for (Byte* block : {node, second, third}) free(block);
  free(neighbour);  // merges with the node, which leaves the size 96 to third and second
  EXPECT_EQ(sizeOf(node), 96 + 16 + 96);
  expectSoundPages();
  EXPECT_EQ(alloc(96), second);
  EXPECT_EQ(alloc(96), third);
  EXPECT_EQ(alloc(208), node);
}

TEST_F(PooledHeap, FindsFreeBlocksOnEveryPage) {
  std::vector<Byte*> blocks;
  for (int page = 0; page < 4; ++page) {
    blocks.push_back(alloc(1008));
    alloc(64000);
  }
  EXPECT_EQ(pages.given(), 4u);
  for (Byte* block : blocks) free(block);
  for (int page = 0; page < 4; ++page) {
    Byte* const block = alloc(1000);
    EXPECT_NE(std::find(blocks.begin(), blocks.end(), block), blocks.end());
  }
  EXPECT_EQ(pages.given(), 4u);
}

// --- Splitting ---

TEST_F(PooledHeap, HandsOutTheWholeBlockWhenLessThanSixtyFourWouldBeLeft) {
  const auto blocks = freeBlocks({96});
  Byte* const data = alloc(48);
  EXPECT_EQ(data, blocks[0]);
  EXPECT_EQ(Heap::blockSize(data), 96u);
}

TEST_F(PooledHeap, SplitsWhenExactlySixtyFourAreLeft) {
  const auto blocks = freeBlocks({112});
  Byte* const data = alloc(48);
  EXPECT_EQ(data, blocks[0]);
  EXPECT_EQ(Heap::blockSize(data), 48u);
  Byte* const remainder = data + 48 + 16;
  EXPECT_TRUE(isFree(remainder));
  EXPECT_EQ(previousSizeOf(remainder), 48);
  EXPECT_EQ(sizeOf(remainder), 48);
  EXPECT_EQ(previousSizeOf(remainder + 48 + 16), 48);
  EXPECT_EQ(alloc(48), remainder);
}

TEST_F(PooledHeap, SplitsEverySizeByTheSameRule) {
  for (uint64_t there = 48; there <= 320; there += 16) {
    for (uint64_t wanted = 48; wanted <= there; wanted += 16) {
      Byte* const data = freeBlocks({there})[0];
      ASSERT_EQ(alloc(wanted), data);
      const uint64_t expected = there < wanted + 64 ? there : wanted;
      ASSERT_EQ(Heap::blockSize(data), expected) << wanted << " of " << there;
      expectSoundPages();
      useUpTheRest();
    }
  }
}

// --- Merging ---

class PooledHeapNeighbours : public zeb_test::HeapTest {
 protected:
  void SetUp() override {
    for (Byte*& block : blocks) block = alloc(96);
    guard = alloc(48);
    pagesAtFirst = pages.given();
  }

  void expectMergedBlock(Byte* data, uint16_t size) {
    EXPECT_TRUE(isFree(data));
    EXPECT_EQ(sizeOf(data), size);
    EXPECT_EQ(previousSizeOf(data + size + 16), size);
    expectSoundPages();
    EXPECT_EQ(alloc(size), data);
  }

  Byte* blocks[4] = {};
  Byte* guard = nullptr;
  uint64_t pagesAtFirst = 0;
};

TEST_F(PooledHeapNeighbours, StayApartWhenTheyDoNotTouch) {
  free(blocks[0]);
  free(blocks[2]);
  EXPECT_EQ(sizeOf(blocks[0]), 96);
  EXPECT_EQ(sizeOf(blocks[2]), 96);
  EXPECT_FALSE(isFree(blocks[1]));
  expectSoundPages();
}

TEST_F(PooledHeapNeighbours, MergeWithTheFreeBlockBehind) {
  free(blocks[2]);
  free(blocks[1]);
  expectMergedBlock(blocks[1], 208);
}

TEST_F(PooledHeapNeighbours, MergeWithTheFreeBlockBefore) {
  free(blocks[1]);
  free(blocks[2]);
  expectMergedBlock(blocks[1], 208);
}

TEST_F(PooledHeapNeighbours, MergeWithTheFreeBlocksOnBothSides) {
  free(blocks[0]);
  free(blocks[2]);
  free(blocks[1]);
  expectMergedBlock(blocks[0], 320);
}

TEST_F(PooledHeapNeighbours, MergeWithTheRestOfThePage) {
  const uint16_t rest = sizeOf(guard + 48 + 16);
  free(guard);
  EXPECT_EQ(sizeOf(guard), 48 + 16 + rest);
  EXPECT_EQ(sizeOf(guard + sizeOf(guard) + 16), 0);
  expectMergedBlock(guard, static_cast<uint16_t>(48 + 16 + rest));
}

TEST_F(PooledHeapNeighbours, BecomeAPageAgainInEveryOrder) {
  std::vector<int> order{0, 1, 2, 3, 4};
  do {
    Byte* const all[] = {blocks[0], blocks[1], blocks[2], blocks[3], guard};
    for (const int index : order) {
      free(all[index]);
      expectSoundPages();
    }
    EXPECT_EQ(sizeOf(blocks[0]), 65024);
    for (Byte*& block : blocks) block = alloc(96);
    guard = alloc(48);
    ASSERT_EQ(pages.given(), pagesAtFirst);  // the spare page, every time
  } while (std::next_permutation(order.begin(), order.end()));
}

// --- The spare page ---

TEST_F(PooledHeap, KeepsAnEmptiedPageForTheNextRequest) {
  Byte* const first = alloc(1000);
  free(first);
  EXPECT_EQ(pages.takenBack(), 0u);
  EXPECT_EQ(held(), 65072u);
  EXPECT_EQ(alloc(50000), first);
  EXPECT_EQ(pages.given(), 1u);
  EXPECT_EQ(held(), 65072u);
}

TEST_F(PooledHeap, GivesASecondEmptiedPageBack) {
  Byte* const first = alloc(65024);
  Byte* const second = alloc(65024);
  EXPECT_EQ(held(), 2 * 65072u);
  free(second);
  EXPECT_EQ(pages.takenBack(), 0u);
  free(first);
  EXPECT_EQ(pages.takenBack(), 1u);
  EXPECT_EQ(held(), 65072u);
  EXPECT_EQ(pages.blocks().begin()->first, second - 32);  // the first to be emptied stays
}

TEST_F(PooledHeap, PrefersFreeBlocksToTheSparePage) {
  Byte* const first = alloc(65024);
  const auto blocks = freeBlocks({96});
  free(first);
  EXPECT_EQ(alloc(96), blocks[0]);
  EXPECT_EQ(alloc(65024), first);
}

// --- Large blocks ---

TEST_F(PooledHeap, KeepsALargeBlockForTheNextRequest) {
  Byte* const first = alloc(100000);
  free(first);
  EXPECT_EQ(pages.takenBack(), 0u);
  EXPECT_EQ(held(), 100000u);
  EXPECT_EQ(alloc(70000), first);
  EXPECT_EQ(Heap::blockSize(first), 100000u);
  EXPECT_EQ(pages.given(), 1u);
  EXPECT_EQ(held(), 100000u);
  free(first);
  EXPECT_EQ(alloc(100000), first);
}

TEST_F(PooledHeap, GivesTheSpareLargeBlockBackWhenItIsTooSmall) {
  free(alloc(70000));
  Byte* const larger = alloc(70001);
  EXPECT_EQ(pages.takenBack(), 1u);
  EXPECT_EQ(pages.requests(), (std::vector<uint64_t>{70032, 70033}));
  EXPECT_EQ(Heap::blockSize(larger), 70001u);
  EXPECT_EQ(held(), 70001u);
}

TEST_F(PooledHeap, KeepsOneLargeBlockOnly) {
  Byte* const first = alloc(70000);
  Byte* const second = alloc(80000);
  free(first);
  free(second);
  EXPECT_EQ(pages.takenBack(), 1u);
  EXPECT_EQ(held(), 70000u);
  EXPECT_EQ(alloc(66000), first);
}

TEST_F(PooledHeap, NeverKeepsALargeBlockOf128Kibibytes) {
  free(alloc(131072));
  EXPECT_EQ(pages.takenBack(), 1u);
  EXPECT_EQ(held(), 0u);
  free(alloc(131071));
  EXPECT_EQ(pages.takenBack(), 1u);
  EXPECT_EQ(held(), 131071u);
  free(alloc(200000));
  EXPECT_EQ(pages.takenBack(), 3u);  // the spare was too small for it
  EXPECT_EQ(held(), 0u);
}

TEST_F(PooledHeap, AccountsForAReusedLargeBlockByItsRecordedSize) {
  Byte* const spare = alloc(131071);
  free(spare);
  ASSERT_EQ(alloc(65025), spare);
  free(alloc(65025));  // another, which takes the place of the spare
  EXPECT_EQ(held(), 131071u + 65025u);
  free(spare);
  EXPECT_EQ(pages.takenBack(), 1u);
  EXPECT_EQ(held(), 65025u);
}

TEST_F(PooledHeap, TellsLargeBlocksFromSmallOnes) {
  Byte* const small = alloc(65024);
  Byte* const large = alloc(65025);
  free(small);
  free(large);
  EXPECT_EQ(alloc(65025), large);
  EXPECT_EQ(alloc(65024), small);
  EXPECT_EQ(pages.given(), 2u);
}

// --- Held bytes ---

TEST_F(PooledHeap, NotesTheHeldBytesThatEachAllocationFinds) {
  Byte* const small = alloc(100);
  EXPECT_EQ(heldSnapshot(), 0u);
  EXPECT_EQ(held(), 65072u);
  Byte* const large = alloc(70000);
  EXPECT_EQ(heldSnapshot(), 65072u);
  EXPECT_EQ(held(), 65072u + 70000u);
  alloc(100);
  EXPECT_EQ(heldSnapshot(), 65072u + 70000u);
  free(large);
  free(small);
  EXPECT_EQ(heldSnapshot(), 65072u + 70000u);  // freeing notes nothing
}

// --- Giving the pages back ---

TEST_F(PooledHeap, GivesBothSparesBackWhenItIsToldTo) {
  free(alloc(100));
  free(alloc(70000));
  EXPECT_EQ(pages.live(), 2u);
  heap.releasePages();
  EXPECT_EQ(pages.live(), 0u);
  EXPECT_EQ(held(), 0u);
  heap.releasePages();
  EXPECT_EQ(pages.takenBack(), 2u);
}

TEST_F(PooledHeap, WorksAfterItsPagesWereGivenBack) {
  free(alloc(100));
  free(alloc(70000));
  heap.releasePages();
  Byte* const small = alloc(100);
  Byte* const large = alloc(66000);
  EXPECT_EQ(Heap::blockSize(small), 112u);
  EXPECT_EQ(Heap::blockSize(large), 66000u);
  EXPECT_EQ(held(), 65072u + 66000u);
}

TEST_F(PooledHeap, ForgetsTheFreeBlocksOfPagesThatAreStillUsed) {
  expectsNothingLost = false;  // the used page stays with the host
  Byte* const used = alloc(100);
  heap.releasePages();
  EXPECT_EQ(pages.live(), 1u);
  Byte* const next = alloc(100);
  EXPECT_EQ(pages.live(), 2u);
  EXPECT_TRUE(next < used || next >= used + 65024);
}

}  // namespace
