// The procedures by which clients empty caches of their own.
#ifndef ZEB_CACHE_CLIENT_PURGES_H
#define ZEB_CACHE_CLIENT_PURGES_H

#include <atomic>
#include <cstdint>

#include "base/object_bases.h"
#include "platform/spin_lock.h"
#include "util/intrusive_list.h"
#include "zeb/cache.h"

namespace zeb::cache {

struct StaticCache : double_linked_list_element<StaticCache, ZEBBasePMT> {
  explicit StaticCache(ZEBCacheClientPurge purgeProc) noexcept : purge(purgeProc) {}
  const ZEBCacheClientPurge purge;
  uint64_t serial = 0;  // rises toward the head
};

// Thread safety: any thread may add, remove and run. No lock is held while a procedure runs, so it
// may add and remove, itself included.
class ClientPurges {
 public:
  constexpr ClientPurges() noexcept = default;
  ClientPurges(const ClientPurges&) = delete;
  ClientPurges& operator=(const ClientPurges&) = delete;

  // Raises "Out of Memory"; nothing has changed then.
  void add(ZEBCacheClientPurge purge, int32_t flag) ZEB_EXCLUDES(lock_);
  // The latest one added that is equal, if any.
  void remove(ZEBCacheClientPurge purge, int32_t flag) noexcept ZEB_EXCLUDES(lock_);
  void removeAll() noexcept ZEB_EXCLUDES(lock_);

  // Calls those that are there now, the latest added first, each with the answer of the one before.
  void run(void* value) noexcept ZEB_EXCLUDES(lock_);

  // Whether clients want evictions on the threads that cause them.
  [[nodiscard]] bool wantCallersThread() const noexcept {
    return blocking_.load(std::memory_order_relaxed) > 0;
  }

 private:
  // Of those added before the one with this serial number, the latest one; null when there is none.
  ZEBCacheClientPurge takeTurn(uint64_t& serial) noexcept ZEB_EXCLUDES(lock_);
  StaticCache* unlinkLocked(ZEBCacheClientPurge purge) noexcept ZEB_REQUIRES(lock_);

  SpinLock lock_{20};
  double_linked_list<StaticCache> list_ ZEB_GUARDED_BY(lock_);
  uint64_t lastSerial_ ZEB_GUARDED_BY(lock_) = 0;
  std::atomic<int32_t> blocking_{0};
};

// The ones of the process.
extern constinit ClientPurges clientPurges;

// Runs the client purges and empties the library's own caches.
void purgeAllStaticCaches(void* value) noexcept;

}  // namespace zeb::cache

#endif
