// A cache set: identifiers in the order of their keys. Guarded by its cache's lock, except the
// references, which are atomic.
#ifndef ZEB_CACHE_CACHE_SET_H
#define ZEB_CACHE_CACHE_SET_H

#include <atomic>
#include <cstdint>

#include "base/live_objects.h"
#include "cache/cache_id.h"

namespace zeb::cache {
using SetTree = redblack_tree<ZEBCacheID>;
extern constinit LiveTally liveSetTally;
}  // namespace zeb::cache

struct ZEBCacheSet {
  ZEBCacheSet(ZEBCacheCompare compareBy, ZEBObjFree freeBy) noexcept
      : compare(compareBy), freeThrough(freeBy) {
    zeb::cache::liveSetTally.made();
  }
  ~ZEBCacheSet() { zeb::cache::liveSetTally.ended(); }
  ZEBCacheSet(const ZEBCacheSet&) = delete;
  ZEBCacheSet& operator=(const ZEBCacheSet&) = delete;

  zeb::cache::SetTree tree;
  const ZEBCacheCompare compare;
  std::atomic<int32_t> references{0};  // its maker adds the first; it may be below 0
  const ZEBObjFree freeThrough;        // as an identifier's
};

namespace zeb::cache {

[[nodiscard]] inline LiveObjects liveSets() noexcept { return {.live = liveSetTally.live()}; }

// Where a key belongs.
struct Place {
  ZEBCacheID* equal = nullptr;
  ZEBCacheID* atLeast = nullptr;  // the smallest that is not before the key
  ZEBCacheID* before = nullptr;   // the largest that is before it
  ZEBCacheID* parent = nullptr;   // of a new identifier with the key
  bool left = false;              // which child
};

// Throws what the set's compare procedure throws; nothing has changed then.
[[nodiscard]] Place findPlace(const ZEBCacheSet& set, void* key);

// Null when there is none; raises an error for an unknown mode. Throws as findPlace does.
[[nodiscard]] ZEBCacheID* find(const ZEBCacheSet& set, void* key, int32_t mode);

// Files an identifier whose data is the key that the place was found for.
void file(ZEBCacheSet& set, ZEBCacheID& id, const Place& place) noexcept;

// Takes an identifier out of its set.
void unfile(ZEBCacheID& id) noexcept;

}  // namespace zeb::cache

#endif
