// The chain of blocks behind memory streams: its index, with and without memory for it.
#include "streams/memory_chain.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "support/counting_memory.h"

namespace zeb::streams {
namespace {

using zeb_test::CountingHost;

constexpr uint64_t kMost = MemorySharedStreamData::kMostBlockBytes;

class MemoryChainTest : public testing::Test {
 protected:
  void SetUp() override { chain_ = makeObject<MemorySharedStreamData>(); }
  void TearDown() override {
    destroyObject(chain_);
    EXPECT_EQ(host_.live(), 0u);
  }

  // Appends a block of the largest size.
  MemoryBlock* append() { return last_ = chain_->blockAfter(last_, kMost); }

  void expectEveryBoundaryFound(uint64_t blocks) {
    std::vector<MemoryBlock*> chain;
    for (MemoryBlock* block = chain_->blockAfter(nullptr, 0); block != nullptr;
         block = block->next) {
      chain.push_back(block);
    }
    ASSERT_EQ(chain.size(), blocks);
    for (uint64_t i = 0; i < blocks; ++i) {
      const auto end = chain_->placeToWriteAt((i + 1) * kMost);
      EXPECT_EQ(end.block, chain[i]);
      EXPECT_EQ(end.offset, kMost);
      const auto begin = chain_->placeToWriteAt(i * kMost + 1);
      EXPECT_EQ(begin.block, chain[i]);
      EXPECT_EQ(begin.offset, 1u);
    }
    const auto first = chain_->placeToWriteAt(0);
    EXPECT_EQ(first.block, chain[0]);
    EXPECT_EQ(first.offset, 0u);
  }

  CountingHost host_;
  MemorySharedStreamData* chain_ = nullptr;
  MemoryBlock* last_ = nullptr;
};

TEST_F(MemoryChainTest, AllocatesNothingButBlocksWhileItIsShort) {
  const uint64_t before = host_.given();
  for (int i = 0; i < 7; ++i) append();
  EXPECT_EQ(host_.given() - before, 7u);
}

TEST_F(MemoryChainTest, FindsEveryBlockThroughItsIndex) {
  for (int i = 0; i < 200; ++i) append();
  expectEveryBoundaryFound(200);
}

TEST_F(MemoryChainTest, FindsEveryBlockWithoutMemoryForAnIndex) {
  for (int i = 0; i < 20; ++i) {
    host_.grant(1);  // the block
    append();
  }
  host_.grantAll();
  EXPECT_EQ(host_.live(), 21u) << "the chain's record and its blocks";
  expectEveryBoundaryFound(20);
  append();
  EXPECT_EQ(host_.live(), 23u) << "the index has caught up";
  expectEveryBoundaryFound(21);
}

TEST_F(MemoryChainTest, FindsEveryBlockWhenTheIndexStopsGrowing) {
  for (int i = 0; i < 64; ++i) append();
  for (int i = 0; i < 40; ++i) {
    host_.grant(1);
    append();
  }
  expectEveryBoundaryFound(104);
  host_.grantAll();
  append();
  expectEveryBoundaryFound(105);
}

TEST_F(MemoryChainTest, LeavesAnEmptyChainEmptyWhenNothingIsWritten) {
  const auto place = chain_->placeOf(1000);
  EXPECT_EQ(place.block, nullptr);
  EXPECT_EQ(place.offset, 0u);
  EXPECT_EQ(chain_->End(), 0u);
}

TEST_F(MemoryChainTest, AsksOnceForAPositionThatIsFarAway) {
  append();
  const uint64_t asked = host_.asked();
  host_.grant(0);
  EXPECT_ANY_THROW((void)chain_->placeOf(uint64_t{1} << 40));
  host_.grantAll();
  EXPECT_EQ(host_.asked() - asked, 1u);
  EXPECT_EQ(chain_->End(), 0u);
}

TEST_F(MemoryChainTest, ClearsWhatItIsLengthenedBy) {
  append();
  std::memset(last_->data(), 'x', kMost);
  chain_->coverTo(10);
  const auto place = chain_->placeOf(100);
  EXPECT_EQ(place.offset, 100u);
  EXPECT_EQ(chain_->End(), 100u);
  EXPECT_EQ(last_->data()[9], 'x');
  EXPECT_EQ(last_->data()[10], 0);
  EXPECT_EQ(last_->data()[99], 0);
  EXPECT_EQ(last_->data()[100], 'x');
}

}  // namespace
}  // namespace zeb::streams
