// Caches that a trace is replayed through.
#ifndef ZEB_BENCH_CACHE_POLICY_POLICIES_H
#define ZEB_BENCH_CACHE_POLICY_POLICIES_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "zeb/cache.h"

namespace zeb::bench {

// An object as caches see it: its size is in units of which a budget holds kBudget.
struct Item {
  uint64_t size;
  int64_t cost;
};

// libzeb's cache begins to purge above its high-water mark, which is fixed, and stops at its
// low-water mark. Sizes are scaled so that a budget is as large as the first.
constexpr uint64_t kBudget = ZEB_CACHE_HIGH_WATER_MARK;
constexpr uint64_t kLowWaterMark = ZEB_CACHE_LOW_WATER_MARK;

class Cache {
 public:
  Cache() = default;
  virtual ~Cache() = default;
  Cache(const Cache&) = delete;
  Cache& operator=(const Cache&) = delete;

  // Asks for an object and, when it is not there, makes it and puts it in. Whether it was there.
  virtual bool request(uint32_t object) = 0;
};

struct Policy {
  std::string name;
  std::function<std::unique_ptr<Cache>(const std::vector<Item>&)> makeCache;
};

// libzeb first, then those written for comparison, which evict one object at a time to make room:
// LRU, LFU (requests since it came in; the longest unused first among equals) and GDSF. "LRU, same
// marks" evicts as libzeb does, from the high to the low mark at once.
std::vector<Policy> allPolicies();

// libzeb's own cache, through procs fetched by name. One at a time.
std::unique_ptr<Cache> makeLibraryCache(const std::vector<Item>& items);

// Ends the process when a policy does not evict what its rule says.
void checkPolicies();

}  // namespace zeb::bench

#endif
