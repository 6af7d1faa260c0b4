// The host's allocators: malloc and free, with every block counted.
//
// A block carries its size in front of it, so that freeing it can take the same number off again.
// All functions may be called by any thread.
#ifndef EXAMPLES_COMMON_HOST_COUNTING_ALLOCATOR_H
#define EXAMPLES_COMMON_HOST_COUNTING_ALLOCATOR_H

#include <cstdint>

namespace examples {

// The four memory procs, through which the library's objects and the modules' blocks come.
void* countingAlloc(uint64_t size);
void* countingRealloc(void* block, uint64_t size);
void countingFree(void* block);
uint64_t countingSize(void* block);

// The pair from which the library takes pages and large blocks. Counted apart.
void* countingPageAlloc(uint64_t size);
void countingPageFree(void* block);

struct AllocationCounts {
  uint64_t allocations = 0;  // blocks ever handed out
  uint64_t liveBlocks = 0;   // blocks not given back yet
  uint64_t liveBytes = 0;    // their sizes, as asked for
  uint64_t peakBytes = 0;    // the most that liveBytes has ever been
};

AllocationCounts countsOfMemoryProcs();
AllocationCounts countsOfPagePair();

}  // namespace examples

#endif
