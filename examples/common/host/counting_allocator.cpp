#include "common/host/counting_allocator.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace examples {
namespace {

// The numbers are tallies that guard no other data, so relaxed order is enough; they are read when
// the threads that allocate have come to rest.
class Tally {
 public:
  void add(uint64_t size) {
    allocations_.fetch_add(1, std::memory_order_relaxed);
    liveBlocks_.fetch_add(1, std::memory_order_relaxed);
    raisePeak(liveBytes_.fetch_add(size, std::memory_order_relaxed) + size);
  }

  void remove(uint64_t size) {
    liveBlocks_.fetch_sub(1, std::memory_order_relaxed);
    liveBytes_.fetch_sub(size, std::memory_order_relaxed);
  }

  [[nodiscard]] AllocationCounts read() const {
    return {allocations_.load(std::memory_order_relaxed),
            liveBlocks_.load(std::memory_order_relaxed), liveBytes_.load(std::memory_order_relaxed),
            peakBytes_.load(std::memory_order_relaxed)};
  }

 private:
  void raisePeak(uint64_t bytes) {
    uint64_t peak = peakBytes_.load(std::memory_order_relaxed);
    while (peak < bytes &&
           !peakBytes_.compare_exchange_weak(peak, bytes, std::memory_order_relaxed)) {
    }
  }

  std::atomic<uint64_t> allocations_{0};
  std::atomic<uint64_t> liveBlocks_{0};
  std::atomic<uint64_t> liveBytes_{0};
  std::atomic<uint64_t> peakBytes_{0};
};

// The procs are given no context, so the tallies are the process's.
constinit Tally memoryProcs;
constinit Tally pagePair;

// As large as the strictest alignment, so that what follows it is aligned for any type.
struct alignas(std::max_align_t) Header {
  uint64_t size;
};

Header* headerOf(void* block) { return static_cast<Header*>(block) - 1; }

void* allocateBlock(Tally& tally, uint64_t size) {
  if (size > std::numeric_limits<uint64_t>::max() - sizeof(Header)) return nullptr;
  auto* const header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
  if (header == nullptr) return nullptr;
  header->size = size;
  tally.add(size);
  return header + 1;
}

void freeBlock(Tally& tally, void* block) {
  if (block == nullptr) return;
  Header* const header = headerOf(block);
  tally.remove(header->size);
  std::free(header);
}

}  // namespace

void* countingAlloc(uint64_t size) { return allocateBlock(memoryProcs, size); }

void countingFree(void* block) { freeBlock(memoryProcs, block); }

uint64_t countingSize(void* block) { return block != nullptr ? headerOf(block)->size : 0; }

void* countingRealloc(void* block, uint64_t size) {
  void* const moved = countingAlloc(size);
  if (block == nullptr || moved == nullptr) return moved;
  const uint64_t kept = countingSize(block) < size ? countingSize(block) : size;
  std::memcpy(moved, block, kept);
  countingFree(block);
  return moved;
}

void* countingPageAlloc(uint64_t size) { return allocateBlock(pagePair, size); }

void countingPageFree(void* block) { freeBlock(pagePair, block); }

AllocationCounts countsOfMemoryProcs() { return memoryProcs.read(); }

AllocationCounts countsOfPagePair() { return pagePair.read(); }

}  // namespace examples
