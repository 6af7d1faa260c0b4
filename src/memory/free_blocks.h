// The free small blocks of a pooled heap, found by size.
//
// A free block keeps its links in its own data: a tree of the distinct sizes, and for each size a
// chain of further blocks of that size behind the one that is in the tree. The tree thus stays as
// small as the number of distinct free sizes.
#ifndef ZEB_MEMORY_FREE_BLOCKS_H
#define ZEB_MEMORY_FREE_BLOCKS_H

#include <cstdint>

#include "util/redblack_tree.h"

namespace zeb {

// The 16 bytes before a small block's data.
struct SmallHeader {
  uint16_t
      previousSize;  // of the block before it in the page, 0 for the first; bit 0: this is free
  uint16_t size;     // of the data, a multiple of 16; 0 ends the page
  uint8_t reserved[12];
};
static_assert(sizeof(SmallHeader) == 16);

// The data of a free block.
struct FreeBlock : redblack_node<FreeBlock> {
  FreeBlock* previousOfSize;
  FreeBlock* nextOfSize;

  [[nodiscard]] SmallHeader& header() noexcept {
    return *(reinterpret_cast<SmallHeader*>(this) - 1);
  }
  [[nodiscard]] const SmallHeader& header() const noexcept {
    return *(reinterpret_cast<const SmallHeader*>(this) - 1);
  }
};
static_assert(sizeof(FreeBlock) == 48);

class FreeBlocks {
 public:
  constexpr FreeBlocks() noexcept = default;

  // Takes the smallest free block of at least `size` bytes, or returns null.
  FreeBlock* takeBestFit(uint16_t size) noexcept;

  // The block's header already holds its size.
  void add(FreeBlock* block) noexcept;
  void remove(FreeBlock* block) noexcept;
  void clear() noexcept { bySize_.clear(); }

 private:
  struct BySize {
    static uint16_t key(const FreeBlock& block) noexcept { return block.header().size; }
  };

  redblack_tree<FreeBlock, BySize> bySize_;
};

}  // namespace zeb

#endif
