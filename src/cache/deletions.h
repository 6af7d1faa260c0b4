// What a change of the cache leaves to be deleted once the lock is free: client data by the
// client's procedure, and the identifiers that are gone.
#ifndef ZEB_CACHE_DELETIONS_H
#define ZEB_CACHE_DELETIONS_H

#include "cache/cache_id.h"

namespace zeb::cache {

// Declare it before the guard, so that it ends after it.
class Deletions {
 public:
  Deletions() noexcept = default;
  Deletions(const Deletions&) = delete;
  Deletions& operator=(const Deletions&) = delete;
  ~Deletions() {
    if (evicted_ != nullptr || first_ != nullptr) deleteAll();
  }

  // The identifier is on no list and in no set any more. Its data is deleted with it.
  void add(ZEBCacheID& id) noexcept {
    id.newer = nullptr;
    (last_ != nullptr ? last_->newer : first_) = &id;
    last_ = &id;
  }

  // Data whose identifier survives; one at the most.
  void addEvicted(void* data, ZEBCacheDelete deleteProc) noexcept {
    evicted_ = data;
    deleteEvicted_ = deleteProc;
  }

 private:
  void deleteAll() noexcept;

  ZEBCacheID* first_ = nullptr;  // in the order in which they went, linked by `newer`
  ZEBCacheID* last_ = nullptr;
  void* evicted_ = nullptr;
  ZEBCacheDelete deleteEvicted_ = nullptr;
};

}  // namespace zeb::cache

#endif
