// A pooled heap over a host that keeps account.
#ifndef ZEB_TESTS_MEMORY_HEAP_TEST_H
#define ZEB_TESTS_MEMORY_HEAP_TEST_H

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "memory/page_walk.h"
#include "memory/pooled_heap.h"
#include "support/counting_memory.h"

namespace zeb_test {

class HeapTest : public testing::Test {
 protected:
  void TearDown() override {
    if (expectsNothingLost) expectNothingLost();
  }

  Byte* alloc(uint64_t size) {
    auto* data = static_cast<Byte*>(heap.alloc(size));
    if (data != nullptr) used_.insert(data);
    return data;
  }
  void free(Byte* data) {
    used_.erase(data);
    heap.free(data);
  }

  // Free blocks of these sizes on a page of their own, with used ones in between so that none
  // merges. They are freed in this order.
  std::vector<Byte*> freeBlocks(const std::vector<uint64_t>& sizes) {
    std::vector<Byte*> blocks;
    for (const uint64_t size : sizes) {
      blocks.push_back(alloc(size));
      alloc(48);
    }
    for (Byte* block : blocks) free(block);
    return blocks;
  }

  // Uses up whatever is free now, so that only what a test frees later can be found.
  void useUpTheRest() {
    pages.grant(0);
    for (uint64_t size = 65024; size >= 48; size = size > 4096 ? size - 4096 : size - 16) {
      while (alloc(size) != nullptr) {
      }
    }
    pages.grantAll();
  }

  [[nodiscard]] uint64_t held() const {
    return static_cast<uint32_t>(zeb::PooledHeap::heldBytes() - heldBefore_);
  }
  [[nodiscard]] uint64_t heldSnapshot() const {
    return static_cast<uint32_t>(zeb::PooledHeap::heldBytesSnapshot() - heldBefore_);
  }

  void expectSoundPages() const { EXPECT_EQ(PageWalk(pages.blocks()).faults, ""); }

  // When all blocks are freed and the spares given back, the host has everything again.
  void expectNothingLost() {
    expectSoundPages();
    while (!used_.empty()) free(*used_.begin());
    heap.releasePages();
    EXPECT_EQ(pages.live(), 0u);
    EXPECT_EQ(held(), 0u);
  }

  CountingPages pages;
  zeb::PooledHeap heap{CountingPages::source};
  bool expectsNothingLost = true;

 private:
  std::set<Byte*> used_;
  const uint32_t heldBefore_ = zeb::PooledHeap::heldBytes();
};

}  // namespace zeb_test

#endif
