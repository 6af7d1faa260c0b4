// The part of the cache that evicts.
#include <algorithm>

#include "base/library_counters.h"
#include "cache/cache.h"
#include "platform/sleep.h"

namespace zeb::cache {

// A purge that goes on but has not got its place yet; ends it unless it gets there.
class Cache::Claim {
 public:
  Claim(Cache& cache, ZEBCachePurge& purge) noexcept : cache_(cache), purge_(&purge) {}
  ~Claim() {
    if (purge_ != nullptr) cache_.end(*purge_);
  }
  Claim(const Claim&) = delete;
  Claim& operator=(const Claim&) = delete;
  void keep() noexcept { purge_ = nullptr; }

 private:
  Cache& cache_;
  ZEBCachePurge* purge_;
};

bool Cache::begin(ZEBCachePurge& purge, Wait wait) {
  if (!claim(purge, wait)) return false;
  Claim claimed(*this, purge);
  counters::cachePurgeCreation.signal();
  placeSorted(purge);
  claimed.keep();
  return true;
}

// Makes the purge the current one.
bool Cache::claim(ZEBCachePurge& purge, Wait wait) noexcept {
  for (;; finished_.wait()) {
    const SpinGuard guard(lock_);
    if (current_ == nullptr) {
      current_ = &purge;
      return true;
    }
    if (wait == Wait::no) return false;
    finished_.reset();
  }
}

// Room for a few more identifiers than there are, since the lock is given away meanwhile.
void Cache::placeSorted(ZEBCachePurge& purge) {
  SortRoom room;
  for (;;) {
    uint64_t wanted = 0;
    {
      const SpinGuard guard(lock_);
      const uint64_t count = list_.count();
      if (!isSorted(count) || room.suffices(count)) {
        if (isSorted(count)) room.sort(list_, clock_);
        standOnLocked(purge, list_.oldest());
        return;
      }
      wanted = std::min<uint64_t>(count + count / 8 + 8, ZEB_CACHE_SORT_LIMIT);
    }
    room = SortRoom(wanted);
  }
}

// What a step passes may be the whole cache. The lock is held for a part of it at a time: whatever
// others do in between, they could have done before the step.
bool Cache::step(ZEBCachePurge& purge, int64_t enough) noexcept {
  for (bool resting = false;; sleepMilliseconds(0)) {
    Deletions deletions;
    {
      const SpinGuard guard(lock_);
      if (resting) --purge.restingWalks;
      if (total_ <= enough) return false;
      const Walk walk = walkLocked(purge);
      if (walk == Walk::end) return false;
      resting = walk == Walk::unfinished;
      if (resting) {
        ++purge.restingWalks;
        continue;
      }
      evictLocked(purge, deletions);
    }
    counters::cacheEviction.signal();
    return true;
  }
}

void Cache::end(ZEBCachePurge& purge) noexcept {
  const SpinGuard guard(lock_);
  purge.cursor = nullptr;
  if (current_ == &purge) finishLocked();
}

void Cache::settle() noexcept {
  const SpinGuard guard(lock_);
  if (current_ != nullptr) {
    current_->cursor = nullptr;
    finishLocked();
  }
  if (list_.count() == 0) clock_ = 0;
}

Cache::Walk Cache::walkLocked(ZEBCachePurge& purge) noexcept {
  ZEBCacheID* id = purge.cursor;
  unsigned passed = 0;
  while (id != nullptr && (id->pins != 0 || id->data == nullptr) && passed < kLongestWalk) {
    id = id->newer;
    ++passed;
  }
  standOnLocked(purge, id);
  if (id == nullptr) return Walk::end;
  return passed < kLongestWalk ? Walk::candidate : Walk::unfinished;
}

// The shell of an unfiled identifier harms none of its holders; a filed one is destroyed, and so is
// left alone while it is referenced.
void Cache::evictLocked(ZEBCachePurge& purge, Deletions& deletions) noexcept {
  ZEBCacheID& id = *purge.cursor;
  if (id.set == nullptr) {
    deletions.addEvicted(id.data, id.deleteProc);
    chargeLocked(id, -id.charged);
    id.data = nullptr;
    id.size = 0;
    return;
  }
  standOnLocked(purge, id.newer);
  if (id.references == 0) removeLocked(id, deletions);
}

void Cache::standOnLocked(ZEBCachePurge& purge, ZEBCacheID* id) noexcept {
  purge.cursor = id;
  if (id == nullptr && current_ == &purge) finishLocked();
}

void Cache::finishLocked() noexcept {
  current_ = nullptr;
  finished_.signal();
}

}  // namespace zeb::cache
