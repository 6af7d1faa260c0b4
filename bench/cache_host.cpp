#include "cache_host.h"

#include <atomic>
#include <cstring>
#include <random>

#include "check.h"
#include "sequences.h"

namespace zeb::bench {

namespace {

std::atomic<uint64_t> deleted{0};

// The library purges on the thread that attaches, not on one of its own: every row measures the
// work and not the moment at which a thread happens to run.
void* purgeNothing(void* value) { return value; }

}  // namespace

int32_t ordersBefore(void* a, void* b) {
  return std::memcmp(static_cast<CacheData*>(a)->key.data(), static_cast<CacheData*>(b)->key.data(),
                     sizeof(CacheData::key)) < 0;
}

std::vector<CacheData> makeCacheData(size_t count, uint64_t seed) {
  Random random(seed);
  std::vector<CacheData> made(count);
  for (size_t i = 0; i < count; ++i) {
    const uint64_t first = random();
    const uint64_t second = (random() & ~uint64_t{0xffffffff}) | i;
    std::memcpy(made[i].key.data(), &first, sizeof(first));
    std::memcpy(made[i].key.data() + sizeof(first), &second, sizeof(second));
  }
  return made;
}

void countDeleted(void*, int32_t) { deleted.fetch_add(1, std::memory_order_relaxed); }

uint64_t deletedTimes() { return deleted.load(std::memory_order_relaxed); }

CacheHost::CacheHost() {
  check(ZEBFetchCacheProcs(session_.getProcAddress(), &procs_), "cache procs are missing");
  procs_.AddClientPurge(purgeNothing, ZEB_CACHE_PURGE_ON_CALLER);
  set_ = procs_.NewCacheSet(ordersBefore);
  check(set_, "a cache set cannot be made");
  procs_.AddRefCacheSet(set_);
}

CacheHost::~CacheHost() {
  procs_.DeleteCacheSet(set_);
  procs_.RemoveClientPurge(purgeNothing, ZEB_CACHE_PURGE_ON_CALLER);
}

ZEBCacheID* CacheHost::attach(CacheData& data, uint64_t size) const {
  ZEBCacheID* id = procs_.NewCacheID();
  procs_.Attach(&id, &data, nullptr, size, countDeleted, nullptr);
  return id;
}

void CacheHost::file(CacheData& data, uint64_t size, int64_t cost) const {
  ZEBCacheID* id = procs_.SearchForID(set_, &data, ZEB_CACHE_FIND_EQUAL);
  procs_.Attach(&id, &data, set_, size, countDeleted, nullptr);
  if (cost) procs_.UpdateCost(id, 0, &cost);
  procs_.Release(id);
}

}  // namespace zeb::bench
