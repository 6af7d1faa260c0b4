#include "memory/free_blocks.h"

namespace zeb {

FreeBlock* FreeBlocks::takeBestFit(uint16_t size) noexcept {
  FreeBlock* best = bySize_.findAtLeast(size);
  if (best == nullptr) return nullptr;
  // A block from the chain leaves the tree as it is.
  FreeBlock* taken = best->nextOfSize != nullptr ? best->nextOfSize : best;
  remove(taken);
  return taken;
}

void FreeBlocks::add(FreeBlock* block) noexcept {
  block->previousOfSize = block->nextOfSize = nullptr;
  FreeBlock* sameSize = bySize_.insert(block);
  if (sameSize == nullptr) return;
  block->previousOfSize = sameSize;
  block->nextOfSize = sameSize->nextOfSize;
  if (block->nextOfSize != nullptr) block->nextOfSize->previousOfSize = block;
  sameSize->nextOfSize = block;
}

void FreeBlocks::remove(FreeBlock* block) noexcept {
  FreeBlock* next = block->nextOfSize;
  if (block->previousOfSize != nullptr) {
    block->previousOfSize->nextOfSize = next;
    if (next != nullptr) next->previousOfSize = block->previousOfSize;
    return;
  }
  if (next == nullptr) {
    bySize_.remove(block);
    return;
  }
  bySize_.replace(block, next);
  next->previousOfSize = nullptr;
}

}  // namespace zeb
