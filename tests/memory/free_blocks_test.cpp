#include "memory/free_blocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <map>
#include <vector>

#include "support/random.h"

namespace {

using zeb::FreeBlock;

// A header and the smallest data; the size in the header may be any, nobody looks further.
struct alignas(16) Block {
  explicit Block(uint16_t size) { header.size = size; }

  [[nodiscard]] FreeBlock* links() { return reinterpret_cast<FreeBlock*>(data); }

  zeb::SmallHeader header{};
  unsigned char data[sizeof(FreeBlock)]{};
};
static_assert(offsetof(Block, data) == sizeof(zeb::SmallHeader));

class FreeBlocks : public testing::Test {
 protected:
  FreeBlock* newBlock(uint16_t size) { return blocks_.emplace_back(size).links(); }

  // Adds blocks of one size, in the order of the result.
  std::vector<FreeBlock*> add(uint16_t size, int count) {
    std::vector<FreeBlock*> added;
    for (int i = 0; i < count; ++i) {
      added.push_back(newBlock(size));
      free.add(added.back());
    }
    return added;
  }

  zeb::FreeBlocks free;

 private:
  std::deque<Block> blocks_;
};

TEST_F(FreeBlocks, HaveNothingToTakeAtFirst) { EXPECT_EQ(free.takeBestFit(0), nullptr); }

TEST_F(FreeBlocks, GiveTheSmallestThatIsLargeEnough) {
  FreeBlock* const large = add(256, 1)[0];
  FreeBlock* const small = add(96, 1)[0];
  FreeBlock* const middle = add(160, 1)[0];
  EXPECT_EQ(free.takeBestFit(112), middle);
  EXPECT_EQ(free.takeBestFit(112), large);
  EXPECT_EQ(free.takeBestFit(112), nullptr);
  EXPECT_EQ(free.takeBestFit(96), small);
  EXPECT_EQ(free.takeBestFit(0), nullptr);
}

TEST_F(FreeBlocks, GiveTheLatestOfASizeFirst) {
  const auto added = add(96, 4);
  EXPECT_EQ(free.takeBestFit(96), added[3]);
  EXPECT_EQ(free.takeBestFit(96), added[2]);
  EXPECT_EQ(free.takeBestFit(96), added[1]);
  EXPECT_EQ(free.takeBestFit(96), added[0]);
  EXPECT_EQ(free.takeBestFit(96), nullptr);
}

TEST_F(FreeBlocks, PutTheNextOfASizeInThePlaceOfTheFirst) {
  const auto added = add(96, 4);
  add(48, 1);
  add(160, 1);
  free.remove(added[0]);  // 3 takes its place; behind it stay 2 and 1
  EXPECT_EQ(free.takeBestFit(96), added[2]);
  EXPECT_EQ(free.takeBestFit(96), added[1]);
  EXPECT_EQ(free.takeBestFit(96), added[3]);
  EXPECT_EQ(free.takeBestFit(96)->header().size, 160);
}

TEST_F(FreeBlocks, LoseAnyOneOfASize) {
  for (size_t victim = 0; victim < 4; ++victim) {
    auto left = add(96, 4);
    free.remove(left[victim]);
    left.erase(left.begin() + static_cast<std::ptrdiff_t>(victim));
    while (FreeBlock* taken = free.takeBestFit(96)) {
      const auto it = std::find(left.begin(), left.end(), taken);
      ASSERT_NE(it, left.end()) << "victim " << victim;
      left.erase(it);
    }
    EXPECT_TRUE(left.empty()) << "victim " << victim;
  }
}

TEST_F(FreeBlocks, DoNotMindWhatABlockHeldBefore) {
  FreeBlock* const first = newBlock(96);
  FreeBlock* const second = newBlock(96);
  for (FreeBlock* block : {first, second}) {
    block->previousOfSize = block->nextOfSize = block;
    free.add(block);
  }
  EXPECT_EQ(free.takeBestFit(96), second);
  EXPECT_EQ(free.takeBestFit(96), first);
  EXPECT_EQ(free.takeBestFit(96), nullptr);
}

TEST_F(FreeBlocks, GiveWhatFitsHoweverFarItsSizeIs) {
  FreeBlock* const largest = add(65520, 1)[0];
  EXPECT_EQ(free.takeBestFit(48), largest);
  FreeBlock* const beyond = add(1024, 1)[0];
  add(1008, 1);
  EXPECT_EQ(free.takeBestFit(1010), beyond);
  EXPECT_EQ(free.takeBestFit(1024), nullptr);
  EXPECT_EQ(free.takeBestFit(65535), nullptr);
}

TEST_F(FreeBlocks, AreForgottenWhenCleared) {
  add(96, 3);
  add(160, 1);
  free.clear();
  EXPECT_EQ(free.takeBestFit(0), nullptr);
}

// The neighbours of a block that is freed after a clearing are forgotten ones, and merged with it.
TEST_F(FreeBlocks, LoseNothingWhenForgottenBlocksAreRemoved) {
  for (int victim = 0; victim < 3; ++victim) {
    const auto forgotten = add(64, 3);
    free.clear();
    FreeBlock* const listed = add(64, 1)[0];
    free.remove(forgotten[static_cast<size_t>(victim)]);
    FreeBlock* const later = add(64, 1)[0];
    EXPECT_EQ(free.takeBestFit(64), later) << "victim " << victim;
    EXPECT_EQ(free.takeBestFit(64), listed) << "victim " << victim;
    EXPECT_EQ(free.takeBestFit(64), nullptr) << "victim " << victim;
  }
}

TEST_F(FreeBlocks, AgreeWithAModelThroughRandomUse) {
  zeb_test::forEachSeed([&](zeb_test::Random& random) {
    free.clear();
    // The blocks of each size: first the one that leads, last the one to be taken next.
    std::map<uint16_t, std::vector<FreeBlock*>> model;
    std::vector<FreeBlock*> spare;
    for (int i = 0; i < 200; ++i) spare.push_back(newBlock(0));
    std::vector<FreeBlock*> listed;

    const auto forget = [&](FreeBlock* block) {
      auto& chain = model.at(block->header().size);
      const bool wasLeading = chain.front() == block;
      chain.erase(std::find(chain.begin(), chain.end(), block));
      // The one to be taken next leads, which makes it the last to be taken.
      if (wasLeading && !chain.empty()) std::rotate(chain.begin(), chain.end() - 1, chain.end());
      if (chain.empty()) model.erase(block->header().size);
      listed.erase(std::find(listed.begin(), listed.end(), block));
      spare.push_back(block);
    };

    for (int step = 0; step < 5000; ++step) {
      const uint64_t sizes = random.below(2) == 0 ? 20 : 4062;
      const auto size = static_cast<uint16_t>(48 + 16 * random.below(sizes));
      const uint64_t choice = random.below(10);
      if (choice < 5 && !spare.empty()) {
        FreeBlock* block = spare.back();
        spare.pop_back();
        block->header().size = size;
        free.add(block);
        model[size].push_back(block);
        listed.push_back(block);
      } else if (choice < 7 && !listed.empty()) {
        FreeBlock* block = listed[random.below(listed.size())];
        free.remove(block);
        forget(block);
      } else {
        const auto fit = model.lower_bound(size);
        FreeBlock* const expected = fit != model.end() ? fit->second.back() : nullptr;
        ASSERT_EQ(free.takeBestFit(size), expected) << "step " << step;
        if (expected != nullptr) forget(expected);
      }
    }
  });
}

}  // namespace
