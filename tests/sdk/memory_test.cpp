// Blocks of memory, and containers of the standard library in them.
#include "zeb/sdk/memory.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <list>
#include <vector>

#include "sdk/started.h"

namespace {

namespace sdk = zeb::sdk;

class Blocks : public Started {};

TEST_F(Blocks, BlockIsItsOwnersUntilHandedOver) {
  sdk::Block block = sdk::Block::make(100);
  EXPECT_GE(block.bytes().size(), 100U);
  void* bytes = block.get();
  sdk::Block moved = std::move(block);
  EXPECT_FALSE(block);  // NOLINT(bugprone-use-after-move): that is the point
  EXPECT_EQ(moved.get(), bytes);
  void* handed = moved.handOver();
  EXPECT_FALSE(moved);
  sdk::procs<sdk::Memory>().Free(handed);
}

TEST_F(Blocks, ResizingKeepsWhatFits) {
  sdk::Block block = sdk::Block::make(5);
  std::memcpy(block.get(), "hello", 5);
  block.resize(100000);
  EXPECT_EQ(std::memcmp(block.get(), "hello", 5), 0);
  EXPECT_GE(block.bytes().size(), 100000U);
}

TEST_F(Blocks, ImpossibleSizeLeavesTheBlock) {
  constexpr uint64_t impossible = std::numeric_limits<uint64_t>::max();
  EXPECT_THROW((void)sdk::Block::make(impossible), std::bad_alloc);
  sdk::Block block = sdk::Block::make(5);
  void* before = block.get();
  EXPECT_THROW(block.resize(impossible), std::bad_alloc);
  EXPECT_EQ(block.get(), before);
}

TEST_F(Blocks, NoBlockHasNoBytes) {
  sdk::Block none;
  EXPECT_FALSE(none);
  EXPECT_TRUE(none.bytes().empty());
  none.reset();
  none = sdk::Block::make(0);
  EXPECT_TRUE(none);
}

TEST_F(Blocks, ContainersOfTheStandardLibraryLiveInTheLibrarysMemory) {
  std::vector<int, sdk::Allocator<int>> numbers;
  for (int i = 0; i < 1000; ++i) numbers.push_back(i);
  EXPECT_EQ(numbers.back(), 999);
  EXPECT_GE(sdk::procs<sdk::Memory>().GetBlockSize(numbers.data()), 1000 * sizeof(int));
  const std::list<int, sdk::Allocator<int>> nodes(numbers.begin(), numbers.end());
  EXPECT_EQ(nodes.size(), numbers.size());
}

TEST_F(Blocks, AllocatorRefusesWhatDoesNotFit) {
  sdk::Allocator<int> allocator;
  EXPECT_THROW((void)allocator.allocate(std::numeric_limits<size_t>::max()),
               std::bad_array_new_length);
  EXPECT_TRUE(allocator == sdk::Allocator<char>());
}

// What the host's memory procedures were asked for.
int allocated = 0;
void* hostAlloc(uint64_t size) {
  ++allocated;
  return std::malloc(size);
}
void* hostRealloc(void* block, uint64_t size) { return std::realloc(block, size); }
void hostFree(void* block) {
  if (block != nullptr) --allocated;
  std::free(block);
}
uint64_t hostSize(void* /*block*/) { return 0; }

// Exits with 0 if a block and a vector are one allocation of the host's each.
[[noreturn]] void useHostMemory() {
  int during = 0;
  {
    const sdk::StartOptions options{
        .objAlloc = hostAlloc, .objRealloc = hostRealloc, .objFree = hostFree, .objSize = hostSize};
    const auto library = sdk::Library::load(ZEB_LIBRARY_PATH, options);
    const int before = allocated;
    const sdk::Block block = sdk::Block::make(10);
    const std::vector<int, sdk::Allocator<int>> numbers(3);
    during = allocated - before;
  }
  std::_Exit(during == 2 ? 0 : 1);
}

// In a process of its own: a library that has run with these allocators takes no others.
TEST(HostMemoryDeathTest, BlocksAreTheHostsWhenItBringsItsOwn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(useHostMemory(), testing::ExitedWithCode(0), "");
}

}  // namespace
