// The order in which a purge walks the cache: what is worth least stands at the oldest end.
#ifndef ZEB_CACHE_PURGE_ORDER_H
#define ZEB_CACHE_PURGE_ORDER_H

#include <cstdint>

#include "cache/recency_list.h"
#include "memory/object_memory.h"

namespace zeb::cache {

// What the data is worth: cost per size, less the longer it has not been used. Without a size, the
// largest number there is.
[[nodiscard]] float purgePriority(const ZEBCacheID& id, uint64_t clock) noexcept;

// Fewer than two need no sorting; more than the limit are not sorted, so that what a purge costs
// while it holds the lock is bounded.
[[nodiscard]] constexpr bool isSorted(uint64_t count) noexcept {
  return count >= 2 && count <= ZEB_CACHE_SORT_LIMIT;
}

// The memory that sorting needs, which is taken before the lock.
class SortRoom {
 public:
  SortRoom() noexcept = default;
  // Raises "Out of Memory".
  explicit SortRoom(uint64_t count);

  [[nodiscard]] bool suffices(uint64_t count) const noexcept { return count <= capacity_; }

  // Highest priority first; equal ones stay in the order in which they stand. Needs the lock of
  // the list's cache and room for the list's count.
  void sort(RecencyList& list, uint64_t clock) noexcept;

 private:
  struct Entry {
    uint32_t key;  // the smaller, the higher the priority
    ZEBCacheID* id;
  };

  uint64_t capacity_ = 0;
  ObjectMemory memory_;  // twice the capacity
};

}  // namespace zeb::cache

#endif
