// The library started, with the procs of caches and what the rows about caches share: the keys, and
// entries that are found by them.
#ifndef ZEB_BENCH_CACHE_HOST_H
#define ZEB_BENCH_CACHE_HOST_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "library.h"

namespace zeb::bench {

constexpr size_t kCacheEntries = 10'000;

// What a client caches. Its key comes first, so that a key alone can be compared with it.
struct CacheData {
  std::array<unsigned char, 16> key;
};

// As a client of the library compares keys, and everybody else here.
int32_t ordersBefore(void* a, void* b);

// Data with keys that look like random numbers; all differ. Other seeds make other keys.
std::vector<CacheData> makeCacheData(size_t count, uint64_t seed);

// How often a delete procedure has been called since the process began; it is every row's.
void countDeleted(void* data, int32_t survives);
uint64_t deletedTimes();

class CacheHost {
 public:
  CacheHost();
  ~CacheHost();
  CacheHost(const CacheHost&) = delete;
  CacheHost& operator=(const CacheHost&) = delete;

  const ZEBCacheProcs& procs() const { return procs_; }
  ZEBCacheSet* set() const { return set_; }

  // Attaches data; its cost is nothing unless it is told. The identifier has one reference.
  ZEBCacheID* attach(CacheData& data, uint64_t size) const;

  // The same in the set. No reference is left: the set keeps it.
  void file(CacheData& data, uint64_t size, int64_t cost = 0) const;

  void remove(CacheData& data) const { procs_.RemoveID(set_, &data, ZEB_CACHE_FIND_EQUAL); }

 private:
  Session session_;
  ZEBCacheProcs procs_;
  ZEBCacheSet* set_;
};

}  // namespace zeb::bench

#endif
