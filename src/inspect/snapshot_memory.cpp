#include "inspect/snapshot_memory.h"

#include <new>

#include "base/checked_size.h"
#include "memory/object_memory.h"

namespace zeb::inspect {

SnapshotMemory::Block* SnapshotMemory::makeBlock(uint64_t size, Block* next) {
  return new (allocObject(sumOfSizes(sizeof(Block), size))) Block{next};
}

void SnapshotMemory::freeFrom(Block* block) noexcept {
  while (block != nullptr) freeObject(std::exchange(block, block->next));
}

}  // namespace zeb::inspect
