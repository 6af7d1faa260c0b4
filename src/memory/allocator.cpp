#include "memory/allocator.h"

#include <algorithm>
#include <cstdlib>

#include "base/failure.h"
#include "util/checked_copy.h"
#include "util/checked_math.h"

namespace zeb {
constinit ZEBAllocator processAllocator{ZEBAllocator::Mode::direct};
}

namespace {

// The header before a direct block's data.
struct DirectHeader {
  uint64_t requested;
  uint64_t reserved;
};
static_assert(sizeof(DirectHeader) == ZEBAllocator::kDirectHeaderBytes);

// Every request of this many bytes or more has the most slack, every one below the other bound the
// least: only sizes in between need the arithmetic.
constexpr uint64_t kMostSlackFrom = 4000;
constexpr uint64_t kLeastSlackBelow = 320;

}  // namespace

uint64_t ZEBAllocator::slackFor(uint64_t size) noexcept {
  if (size < kLeastSlackBelow) return kLeastSlack;
  if (size >= kMostSlackFrom) return kMostSlack;
  const auto slack = static_cast<uint64_t>(kSlackFraction * static_cast<float>(size));
  return std::clamp(slack, kLeastSlack, kMostSlack);
}

void ZEBAllocator::exhausted() const {
  // A bare integer on purpose: it needs no error object, and every boundary catches it.
  if (throwsInteger_) throw 0;
  zeb::raiseStandardKst(zeb::kst::kOutOfMemory);
}

void* ZEBAllocator::allocDirect(uint64_t size) noexcept {
  const auto bytes = zeb::checkedAdd(size, kDirectHeaderBytes + slackFor(size));
  if (!bytes) return nullptr;
  auto* header = static_cast<DirectHeader*>(std::malloc(*bytes));
  if (header == nullptr) return nullptr;
  header->requested = size;
  return header + 1;
}

uint64_t ZEBAllocator::directSize(const void* block) noexcept {
  return (static_cast<const DirectHeader*>(block) - 1)->requested;
}

void* ZEBAllocator::alloc(uint64_t size) {
  void* block = mode_ == Mode::direct ? allocDirect(size) : heap_.alloc(size);
  if (block == nullptr) [[unlikely]]
    exhausted();
  return block;
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

void ZEBAllocator::free(void* block) noexcept {
  if (block == nullptr) return;
  if (mode_ == Mode::direct) {
    std::free(static_cast<DirectHeader*>(block) - 1);
    return;
  }
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
  } catch (...) {  // as in free
  }
}
