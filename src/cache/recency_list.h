// The list of all identifiers of a cache, the latest used at its head. Nothing here locks.
#ifndef ZEB_CACHE_RECENCY_LIST_H
#define ZEB_CACHE_RECENCY_LIST_H

#include <cstdint>

#include "cache/cache_id.h"

namespace zeb::cache {

class RecencyList {
 public:
  constexpr RecencyList() noexcept = default;
  RecencyList(const RecencyList&) = delete;
  RecencyList& operator=(const RecencyList&) = delete;

  [[nodiscard]] ZEBCacheID* newest() const noexcept { return newest_; }
  [[nodiscard]] ZEBCacheID* oldest() const noexcept { return oldest_; }
  [[nodiscard]] uint64_t count() const noexcept { return count_; }

  void add(ZEBCacheID& id) noexcept {
    linkNewest(id);
    ++count_;
  }
  void remove(ZEBCacheID& id) noexcept {
    unlink(id);
    --count_;
  }
  void makeNewest(ZEBCacheID& id) noexcept {
    if (newest_ == &id) return;
    unlink(id);
    linkNewest(id);
  }

 private:
  void linkNewest(ZEBCacheID& id) noexcept {
    id.newer = nullptr;
    id.older = newest_;
    (newest_ != nullptr ? newest_->newer : oldest_) = &id;
    newest_ = &id;
  }
  void unlink(ZEBCacheID& id) noexcept {
    (id.newer != nullptr ? id.newer->older : newest_) = id.older;
    (id.older != nullptr ? id.older->newer : oldest_) = id.newer;
  }

  ZEBCacheID* newest_ = nullptr;
  ZEBCacheID* oldest_ = nullptr;
  uint64_t count_ = 0;
};

}  // namespace zeb::cache

#endif
