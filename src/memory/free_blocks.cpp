#include "memory/free_blocks.h"

#include <bit>

namespace zeb {

namespace {

constexpr uint64_t bit(unsigned index) noexcept { return uint64_t{1} << (index % 64); }

// The bits from this one on.
constexpr uint64_t bitsFrom(unsigned index) noexcept { return ~uint64_t{0} << (index % 64); }

}  // namespace

FreeBlock* FreeBlocks::bestFit(unsigned index) const noexcept {
  unsigned word = index / kBitsPerWord;
  uint64_t sizes = usedSizes_[word] & bitsFrom(index);
  if (sizes == 0) {
    const uint64_t larger = usedWords_ & bitsFrom(word) & ~bit(word);
    if (larger == 0) return nullptr;
    word = static_cast<unsigned>(std::countr_zero(larger));
    sizes = usedSizes_[word];
  }
  return firsts_[word * kBitsPerWord + static_cast<unsigned>(std::countr_zero(sizes))];
}

FreeBlock* FreeBlocks::takeBestFit(uint16_t size) noexcept {
  const unsigned index = (size + kSizeStep - 1U) / kSizeStep;
  if (index >= kSizes) return nullptr;
  FreeBlock* first = bestFit(index);
  if (first == nullptr) return nullptr;
  FreeBlock* taken = first->nextOfSize != nullptr ? first->nextOfSize : first;
  remove(taken);
  return taken;
}

void FreeBlocks::add(FreeBlock* block) noexcept {
  const unsigned index = indexOf(block);
  FreeBlock* first = firsts_[index];
  if (first == nullptr) {
    block->previousOfSize = block->nextOfSize = nullptr;
    firsts_[index] = block;
    usedSizes_[index / kBitsPerWord] |= bit(index);
    usedWords_ |= bit(index / kBitsPerWord);
    return;
  }
  block->previousOfSize = first;
  block->nextOfSize = first->nextOfSize;
  if (block->nextOfSize != nullptr) block->nextOfSize->previousOfSize = block;
  first->nextOfSize = block;
}

void FreeBlocks::remove(FreeBlock* block) noexcept {
  FreeBlock* next = block->nextOfSize;
  if (next != nullptr) next->previousOfSize = block->previousOfSize;
  if (block->previousOfSize != nullptr) {
    block->previousOfSize->nextOfSize = next;
    return;
  }
  const unsigned index = indexOf(block);
  if (firsts_[index] != block) return;  // it was forgotten before
  firsts_[index] = next;
  if (next == nullptr) markEmpty(index);
}

void FreeBlocks::markEmpty(unsigned index) noexcept {
  uint64_t& sizes = usedSizes_[index / kBitsPerWord];
  sizes &= ~bit(index);
  if (sizes == 0) usedWords_ &= ~bit(index / kBitsPerWord);
}

void FreeBlocks::clear() noexcept {
  usedWords_ = 0;
  usedSizes_.fill(0);
  firsts_.fill(nullptr);
}

}  // namespace zeb
