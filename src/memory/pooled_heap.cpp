#include "memory/pooled_heap.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/library_counters.h"
#include "util/checked_math.h"

namespace zeb {

constinit std::atomic<uint32_t> PooledHeap::held_{0};
constinit std::atomic<uint32_t> PooledHeap::heldSnapshot_{0};

struct PooledHeap::LargeHeader {
  uint64_t reserved;
  uint64_t size;
  uint16_t reserved2;
  uint16_t marker;  // where a small block keeps its size
  uint8_t reserved3[12];

  [[nodiscard]] void* data() noexcept { return this + 1; }
};

namespace {

constexpr uint16_t kFreeBit = 1;
constexpr uint64_t kFirstDataOffset = 32;

using Byte = unsigned char;

FreeBlock* blockAt(void* data) noexcept { return static_cast<FreeBlock*>(data); }

SmallHeader& headerAfter(FreeBlock* block) noexcept {
  return *reinterpret_cast<SmallHeader*>(reinterpret_cast<Byte*>(block) + block->header().size);
}

FreeBlock* blockOf(SmallHeader& header) noexcept {
  return reinterpret_cast<FreeBlock*>(&header + 1);
}

FreeBlock* blockBefore(FreeBlock* block, uint16_t previousSize) noexcept {
  return reinterpret_cast<FreeBlock*>(reinterpret_cast<Byte*>(&block->header()) - previousSize);
}

bool isFree(const SmallHeader& header) noexcept { return (header.previousSize & kFreeBit) != 0; }

void setFree(SmallHeader& header, bool free) noexcept {
  const auto size = static_cast<uint16_t>(header.previousSize & ~kFreeBit);
  header.previousSize = static_cast<uint16_t>(size | (free ? kFreeBit : 0));
}

uint16_t previousSizeOf(const SmallHeader& header) noexcept {
  return static_cast<uint16_t>(header.previousSize & ~kFreeBit);
}

// Sets a block's size and what the header behind it says about it.
void resize(FreeBlock* block, uint16_t size) noexcept {
  block->header().size = size;
  SmallHeader& next = headerAfter(block);
  next.previousSize = static_cast<uint16_t>(size | (isFree(next) ? kFreeBit : 0));
}

uint16_t roundedUp(uint64_t size) noexcept {
  const uint64_t atLeast = std::max<uint64_t>(size, PooledHeap::kSmallestBlock);
  return static_cast<uint16_t>((atLeast + 15) & ~uint64_t{15});
}

}  // namespace

void PooledHeap::hold(uint64_t bytes) noexcept {
  held_.fetch_add(static_cast<uint32_t>(bytes), std::memory_order_relaxed);
}

void PooledHeap::unhold(uint64_t bytes) noexcept {
  held_.fetch_sub(static_cast<uint32_t>(bytes), std::memory_order_relaxed);
}

void* PooledHeap::alloc(uint64_t size) {
  static_assert(sizeof(LargeHeader) == kLargeHeaderBytes && offsetof(LargeHeader, size) == 8 &&
                offsetof(LargeHeader, marker) == 18);
  counters::memoryAllocation.signal();
  const bool large = size > kLargestSmall;
  bool openedPage = false;
  void* data = nullptr;
  {
    BiasedGuard guard(lock_);
    heldSnapshot_.store(heldBytes(), std::memory_order_relaxed);
    data = large ? allocLarge(size) : allocSmall(roundedUp(size), openedPage);
  }
  if (large) counters::largeMemoryAllocation.signal();
  if (openedPage) counters::memoryPageAllocation.signal();
  return data;
}

void* PooledHeap::allocSmall(uint16_t rounded, bool& openedPage) {
  FreeBlock* block = freeBlocks_.takeBestFit(rounded);
  if (block == nullptr) block = openPage(openedPage);
  if (block == nullptr) return nullptr;
  setFree(block->header(), false);
  if (block->header().size >= rounded + kLeastRemainder) splitOff(block, rounded);
  return block;
}

FreeBlock* PooledHeap::openPage(bool& openedPage) {
  void* page = sparePage_;
  sparePage_ = nullptr;
  if (page == nullptr) {
    openedPage = true;
    page = source_.alloc(kPageBytes);
    if (page == nullptr) return nullptr;
    hold(kPageBytes);
  }
  FreeBlock* first = blockAt(static_cast<Byte*>(page) + kFirstDataOffset);
  first->header() = {.previousSize = kFreeBit, .size = kLargestSmall, .reserved = {}};
  headerAfter(first) = {.previousSize = kLargestSmall, .size = 0, .reserved = {}};
  return first;
}

void PooledHeap::splitOff(FreeBlock* block, uint16_t keep) {
  const auto left = static_cast<uint16_t>(block->header().size - keep - kHeaderBytes);
  block->header().size = keep;
  SmallHeader& header = headerAfter(block);
  header.previousSize = keep;
  FreeBlock* remainder = blockOf(header);
  resize(remainder, left);
  // Both neighbours are in use or the page's end, so there is nothing to merge with.
  setFree(header, true);
  freeBlocks_.add(remainder);
}

void* PooledHeap::allocLarge(uint64_t size) {
  LargeHeader* block = spareLarge_;
  spareLarge_ = nullptr;
  if (block != nullptr && block->size < size) {
    giveBackLarge(block);
    block = nullptr;
  }
  if (block == nullptr) {
    const auto bytes = checkedAdd(size, kLargeHeaderBytes);
    if (!bytes) return nullptr;
    block = static_cast<LargeHeader*>(source_.alloc(*bytes));
    if (block == nullptr) return nullptr;
    hold(size);
    block->size = size;
  }
  block->marker = kLargeMarker;
  return block->data();
}

void PooledHeap::free(void* data) {
  FreeBlock* block = blockAt(data);
  BiasedGuard guard(lock_);
  if (block->header().size == kLargeMarker) {
    freeLarge(static_cast<LargeHeader*>(data) - 1);
  } else {
    freeSmall(block);
  }
}

void PooledHeap::freeLarge(LargeHeader* block) {
  if (block->size >= kNeverSpare || spareLarge_ != nullptr) {
    giveBackLarge(block);
  } else {
    spareLarge_ = block;
  }
}

void PooledHeap::giveBackLarge(LargeHeader* block) const {
  unhold(block->size);
  source_.free(block);
}

void PooledHeap::freeSmall(FreeBlock* block) {
  SmallHeader& next = headerAfter(block);
  if (isFree(next)) {
    freeBlocks_.remove(blockOf(next));
    resize(block, static_cast<uint16_t>(block->header().size + next.size + kHeaderBytes));
  }
  const uint16_t previousSize = previousSizeOf(block->header());
  if (previousSize != 0) {
    FreeBlock* previous = blockBefore(block, previousSize);
    if (isFree(previous->header())) {
      freeBlocks_.remove(previous);
      setFree(previous->header(), false);
      resize(previous, static_cast<uint16_t>(previousSize + block->header().size + kHeaderBytes));
      block = previous;
    }
  }
  const bool pageIsEmpty = previousSizeOf(block->header()) == 0 && headerAfter(block).size == 0;
  if (pageIsEmpty) {
    freePage(reinterpret_cast<Byte*>(block) - kFirstDataOffset);
    return;
  }
  setFree(block->header(), true);
  freeBlocks_.add(block);
}

void PooledHeap::freePage(void* page) {
  if (sparePage_ == nullptr) {
    sparePage_ = page;
  } else {
    giveBackPage(page);
  }
}

void PooledHeap::giveBackPage(void* page) const {
  unhold(kPageBytes);
  source_.free(page);
}

uint64_t PooledHeap::blockSize(const void* data) noexcept {
  const auto* block = static_cast<const FreeBlock*>(data);
  if (block->header().size != kLargeMarker) return block->header().size;
  return (static_cast<const LargeHeader*>(data) - 1)->size;
}

// Each spare is forgotten before it is given back, so that one whose giving back throws is not
// given back again.
void PooledHeap::releasePages() {
  BiasedGuard guard(lock_);
  freeBlocks_.clear();
  if (LargeHeader* large = std::exchange(spareLarge_, nullptr)) giveBackLarge(large);
  if (void* page = std::exchange(sparePage_, nullptr)) giveBackPage(page);
}

}  // namespace zeb
