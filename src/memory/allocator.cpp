#include "memory/allocator.h"

#include <algorithm>

#include "base/failure.h"
#include "util/checked_copy.h"

namespace zeb {
constinit ZEBAllocator processAllocator{ZEBAllocator::Mode::direct};
}

void ZEBAllocator::exhausted() const {
  // A bare integer on purpose: it needs no error object, and every boundary catches it.
  if (throwsInteger_) throw 0;
  zeb::raiseStandardKst(zeb::kst::kOutOfMemory);
}

void* ZEBAllocator::realloc(void* block, uint64_t size) {
  void* moved = alloc(size);
  if (block == nullptr) return moved;
  if (!zeb::checkedCopy(moved, size, block, std::min(blockSize(block), size))) {
    free(moved);
    zeb::raiseNewKst(zeb::kst::kUnknown, zeb::kMemoryCopyMessage);
  }
  free(block);
  return moved;
}

void ZEBAllocator::freePooled(void* block) noexcept {
  try {
    heap_.free(block);
  } catch (...) {  // the host's page procedure threw; the page is the host's loss
  }
}

uint64_t ZEBAllocator::blockSize(const void* block) const noexcept {
  if (block == nullptr) return 0;
  return mode_ == Mode::direct ? directSize(block) : zeb::PooledHeap::blockSize(block);
}

void ZEBAllocator::releasePages() noexcept {
  try {
    heap_.releasePages();
  } catch (...) {  // as in freePooled
  }
}
