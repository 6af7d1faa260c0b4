// The free small blocks of a pooled heap, found by size.
//
// Sizes are multiples of 16 that fit 16 bits, so there is a list for each size and a bit for each
// list that is not empty: the smallest size that is large enough is found by counting zeros,
// without a search. A free block keeps its links in its own data.
#ifndef ZEB_MEMORY_FREE_BLOCKS_H
#define ZEB_MEMORY_FREE_BLOCKS_H

#include <array>
#include <cstdint>

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
struct FreeBlock {
  FreeBlock* previousOfSize;
  FreeBlock* nextOfSize;

  [[nodiscard]] SmallHeader& header() noexcept {
    return *(reinterpret_cast<SmallHeader*>(this) - 1);
  }
  [[nodiscard]] const SmallHeader& header() const noexcept {
    return *(reinterpret_cast<const SmallHeader*>(this) - 1);
  }
};

class FreeBlocks {
 public:
  static constexpr uint16_t kSizeStep = 16;

  constexpr FreeBlocks() noexcept = default;

  // Takes the smallest free block of at least `size` bytes, or returns null. Of several the one
  // added last goes first; the first of its size, which leads the list, goes last.
  FreeBlock* takeBestFit(uint16_t size) noexcept;

  // The block's header already holds its size, a multiple of kSizeStep.
  void add(FreeBlock* block) noexcept;
  // The next one of its size leads in its place. A block that was forgotten may be removed as well.
  void remove(FreeBlock* block) noexcept;
  // Forgets every block.
  void clear() noexcept;

 private:
  static constexpr unsigned kBitsPerWord = 64;
  static constexpr unsigned kWords = 64;
  static constexpr unsigned kSizes = kWords * kBitsPerWord;
  static_assert(kSizes * kSizeStep == 65536, "a list for every size that a header can hold");

  [[nodiscard]] static unsigned indexOf(const FreeBlock* block) noexcept {
    return block->header().size / kSizeStep;
  }
  [[nodiscard]] FreeBlock* bestFit(unsigned index) const noexcept;
  void markEmpty(unsigned index) noexcept;

  uint64_t usedWords_ = 0;                    // a bit for each word of usedSizes_ that is not 0
  std::array<uint64_t, kWords> usedSizes_{};  // a bit for each size of which there is a block
  std::array<FreeBlock*, kSizes> firsts_{};
};

}  // namespace zeb

#endif
