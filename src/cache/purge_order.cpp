#include "cache/purge_order.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "base/checked_size.h"
#include "util/radix_sort.h"

namespace zeb::cache {

namespace {

// Orders unsigned numbers as the floats are ordered, the highest first.
uint32_t sortKey(float priority) noexcept {
  constexpr uint32_t kSign = uint32_t{1} << 31;
  const auto bits = std::bit_cast<uint32_t>(priority + 0.0F);  // -0 is equal to 0
  const uint32_t ascending = (bits & kSign) != 0 ? ~bits : bits | kSign;
  return ~ascending;
}

}  // namespace

float purgePriority(const ZEBCacheID& id, uint64_t clock) noexcept {
  if (id.size == 0) return std::numeric_limits<float>::max();
  const float worth = id.cost / static_cast<float>(id.size);
  const auto age = std::max(1.0F, static_cast<float>(clock - id.cacheTime));
  return worth / (static_cast<float>(std::log(static_cast<double>(age))) + 1.0F);
}

SortRoom::SortRoom(uint64_t count)
    : capacity_(count), memory_(sizeOfMany(count, 2 * sizeof(Entry))) {}

void SortRoom::sort(RecencyList& list, uint64_t clock) noexcept {
  auto* entries = static_cast<Entry*>(memory_.get());
  const uint64_t count = list.count();
  Entry* end = entries;
  for (ZEBCacheID* id = list.newest(); id != nullptr; id = id->older) {
    new (end++) Entry{.key = sortKey(purgePriority(*id, clock)), .id = id};
  }
  radixSort(entries, entries + capacity_, count);
  for (uint64_t i = count; i-- > 0;) list.makeNewest(*entries[i].id);
}

}  // namespace zeb::cache
