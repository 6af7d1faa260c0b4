#include "cache/client_purges.h"

#include <limits>

#include "atoms/atom.h"
#include "container/container.h"
#include "memory/object_memory.h"

namespace zeb::cache {

constinit ClientPurges clientPurges;

void ClientPurges::add(ZEBCacheClientPurge purge, int32_t flag) {
  auto* added = makeObject<StaticCache>(purge);
  if (flag == ZEB_CACHE_PURGE_ON_CALLER) blocking_.fetch_add(1, std::memory_order_relaxed);
  const SpinGuard guard(lock_);
  added->serial = ++lastSerial_;
  list_.pushHead(added);
}

void ClientPurges::remove(ZEBCacheClientPurge purge, int32_t flag) noexcept {
  StaticCache* removed = nullptr;
  {
    const SpinGuard guard(lock_);
    removed = unlinkLocked(purge);
  }
  if (removed == nullptr) return;
  destroyObject(removed);
  if (flag == ZEB_CACHE_PURGE_ON_CALLER) blocking_.fetch_sub(1, std::memory_order_relaxed);
}

void ClientPurges::removeAll() noexcept {
  for (uint64_t any = std::numeric_limits<uint64_t>::max();;) {
    const ZEBCacheClientPurge latest = takeTurn(any);
    if (latest == nullptr) break;
    remove(latest, ZEB_CACHE_PURGE_ON_ANY_THREAD);
  }
  blocking_.store(0, std::memory_order_relaxed);
}

void ClientPurges::run(void* value) noexcept {
  uint64_t serial = std::numeric_limits<uint64_t>::max();
  while (const ZEBCacheClientPurge purge = takeTurn(serial)) {
    try {
      value = purge(value);
    } catch (...) {  // the value passes it by
    }
  }
}

ZEBCacheClientPurge ClientPurges::takeTurn(uint64_t& serial) noexcept {
  const SpinGuard guard(lock_);
  const StaticCache* it = list_.head();
  while (it != nullptr && it->serial >= serial) it = it->older();
  if (it == nullptr) return nullptr;
  serial = it->serial;
  return it->purge;
}

StaticCache* ClientPurges::unlinkLocked(ZEBCacheClientPurge purge) noexcept {
  StaticCache* it = list_.head();
  while (it != nullptr && it->purge != purge) it = it->older();
  if (it != nullptr) list_.remove(it);
  return it;
}

void purgeAllStaticCaches(void* value) noexcept {
  clientPurges.run(value);
  container::emptyRecycled();
  atoms::forgetRecent();
}

}  // namespace zeb::cache
