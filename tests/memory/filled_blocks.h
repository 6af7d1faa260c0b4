// Blocks of an allocator, each filled with a byte of its own.
//
// Whenever a block is looked at, its contents must be what was put there, and no two blocks may
// overlap: an allocator that hands out the same byte twice is found out by either.
#ifndef ZEB_TESTS_MEMORY_FILLED_BLOCKS_H
#define ZEB_TESTS_MEMORY_FILLED_BLOCKS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>

#include "memory/allocator.h"

namespace zeb_test {

class FilledBlocks {
 public:
  using Byte = unsigned char;
  struct Contents {
    uint64_t size;  // as asked for
    Byte fill;
  };
  using Blocks = std::map<Byte*, Contents>;

  explicit FilledBlocks(ZEBAllocator& allocator) : allocator_(allocator) {}
  FilledBlocks(const FilledBlocks&) = delete;
  FilledBlocks& operator=(const FilledBlocks&) = delete;
  ~FilledBlocks() { freeAll(); }

  [[nodiscard]] const Blocks& all() const { return blocks_; }
  [[nodiscard]] size_t count() const { return blocks_.size(); }
  [[nodiscard]] Byte* at(size_t index) const {
    return std::next(blocks_.begin(), static_cast<std::ptrdiff_t>(index))->first;
  }

  Byte* alloc(uint64_t size) { return keep(allocator_.alloc(size), size); }

  Byte* realloc(Byte* block, uint64_t size) {
    const Contents old = blocks_.at(block);
    expectContents(block, old.size, old.fill);
    auto* moved = static_cast<Byte*>(allocator_.realloc(block, size));
    EXPECT_NE(reinterpret_cast<uintptr_t>(moved), reinterpret_cast<uintptr_t>(block));
    blocks_.erase(block);
    expectContents(moved, std::min(old.size, size), old.fill);
    return keep(moved, size);
  }

  void free(Byte* block) {
    const auto it = blocks_.find(block);
    expectContents(block, it->second.size, it->second.fill);
    blocks_.erase(it);
    allocator_.free(block);
  }

  void freeAll() {
    while (!blocks_.empty()) free(blocks_.begin()->first);
  }

  // Takes a block over that another holder gave up with handOver.
  void adopt(Byte* block, Contents contents) {
    expectContents(block, contents.size, contents.fill);
    blocks_[block] = contents;
  }
  Contents handOver(Byte* block) {
    const Contents contents = blocks_.at(block);
    blocks_.erase(block);
    return contents;
  }

 private:
  Byte* keep(void* memory, uint64_t size) {
    auto* block = static_cast<Byte*>(memory);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u);
    EXPECT_GE(allocator_.blockSize(block), size);
    expectApart(block);
    const Byte fill = ++lastFill_;
    std::memset(block, fill, size);
    blocks_[block] = {.size = size, .fill = fill};
    return block;
  }

  void expectApart(Byte* block) const {
    const auto next = blocks_.lower_bound(block);
    if (next != blocks_.end()) {
      EXPECT_LE(block + allocator_.blockSize(block), next->first);
    }
    if (next != blocks_.begin()) {
      Byte* const previous = std::prev(next)->first;
      EXPECT_LE(previous + allocator_.blockSize(previous), block);
    }
  }

  // All bytes equal the first if each equals the one before it.
  static void expectContents(const Byte* block, uint64_t size, Byte fill) {
    if (size == 0) return;
    EXPECT_EQ(block[0], fill);
    EXPECT_EQ(std::memcmp(block, block + 1, size - 1), 0) << "in a block of " << size;
  }

  ZEBAllocator& allocator_;
  Blocks blocks_;
  Byte lastFill_ = 0;
};

}  // namespace zeb_test

#endif
