// A running library with what the tests of the cache need: the procs of all versions, results that
// count how often they were deleted, and a host that keeps books.
#ifndef ZEB_TESTS_CONTRACT_CACHE_LIBRARY_H
#define ZEB_TESTS_CONTRACT_CACHE_LIBRARY_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <stdexcept>

#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {

struct OlderCacheProcs {
  ZEB_CACHE_OLDER_PROCS(ZEB_PROC_MEMBER)
};
ZEB_DEFINE_FETCH(FetchOlderCacheProcs, OlderCacheProcs, ZEB_CACHE_INTERFACE, ZEB_CACHE_OLDER_PROCS)

inline constexpr const char* kEviction = "ZEB evicting a cache item";
inline constexpr const char* kPurgeCreation = "ZEB creation of CZEBCachePurge (sorts the cache)";
inline constexpr const char* kPinOfEmpty =
    "ZEB call to TZEBCacheID::MarkNoPurge on previously purged item";

// Data for an identifier. In sets it is its own key.
struct Result {
  int key = 0;
  std::atomic<int> evicted{0};  // deleted, the identifier survived
  std::atomic<int> gone{0};     // deleted together with the identifier

  Result() = default;
  explicit Result(int k) : key(k) {}

  [[nodiscard]] int deleted() const { return evicted + gone; }

  static void Delete(void* data, std::int32_t survives) {
    auto& result = *static_cast<Result*>(data);
    EXPECT_TRUE(survives == 0 || survives == 1) << survives;
    ++(survives != 0 ? result.evicted : result.gone);
  }
  static std::int32_t Compare(void* a, void* b) {
    return static_cast<Result*>(a)->key < static_cast<Result*>(b)->key ? 1 : 0;
  }
};

struct ReturnedCost {
  std::uint32_t size = 0;
  std::int64_t cost = 0;
  std::uint32_t cacheTime = 0;
};

class CacheLibrary : public RunningLibrary {
 public:
  explicit CacheLibrary(const StartOptions& options = {}) : RunningLibrary(options) {
    if (ZEBFetchCacheProcs(getProcAddress, &cache) == 0 ||
        FetchOlderCacheProcs(getProcAddress, &olderCache) == 0) {
      throw std::runtime_error("a started library lacks a proc of the cache");
    }
  }

  // An identifier with the result attached, of which the caller has a reference.
  ZEBCacheID* Attached(Result& result, std::uint64_t size = 1, std::int64_t cost = 0) const {
    ZEBCacheID* id = cache.NewCacheID();
    EXPECT_EQ(cache.Attach(&id, &result, nullptr, size, Result::Delete, nullptr), &result);
    if (cost != 0) cache.UpdateCost(id, 0, &cost);
    return id;
  }

  // The same filed in the set, the caller's reference given back.
  void File(ZEBCacheSet* set, Result& result, std::uint64_t size = 1) const {
    cache.Release(FiledAndHeld(set, result, size));
  }
  ZEBCacheID* FiledAndHeld(ZEBCacheSet* set, Result& result, std::uint64_t size = 1) const {
    ZEBCacheID* id = cache.NewCacheID();
    EXPECT_EQ(cache.Attach(&id, &result, set, size, Result::Delete, nullptr), &result);
    return id;
  }

  // A set with one reference.
  ZEBCacheSet* NewSet(ZEBCacheCompare compare = Result::Compare) const {
    ZEBCacheSet* set = cache.NewCacheSet(compare);
    cache.AddRefCacheSet(set);
    return set;
  }

  // What the identifier holds, without leaving a trace in references or times.
  void* DataOf(ZEBCacheID* id) const {
    void* data = cache.MarkNoPurge(id, nullptr, 0);
    cache.MarkPurge(id);
    return data;
  }

  // What the set has for the key; null when the search made a new identifier.
  void* Find(ZEBCacheSet* set, int key, std::int32_t mode = ZEB_CACHE_FIND_EQUAL) const {
    Result wanted(key);
    ZEBCacheID* id = cache.SearchForID(set, &wanted, mode);
    EXPECT_NE(id, nullptr);
    void* data = DataOf(id);
    cache.Release(id);
    return data;
  }

  ReturnedCost CostOf(ZEBCacheID* id) const {
    ReturnedCost cost;
    cache.ReturnCost(id, &cost.size, &cost.cost, &cost.cacheTime);
    return cost;
  }

  std::int64_t Total() const { return cache.CurrentCacheSize(); }

  ZEBCacheProcs cache;
  OlderCacheProcs olderCache;
};

// A test over a host that keeps books. Every block that the test took must have come back by its
// end, the total must be 0, and nothing may have been reported.
class CacheTest : public ::testing::Test {
 protected:
  using Host = HostMemory<0>;
  using Reports = ErrorReports<0>;

  CacheTest() : CacheTest(Host::WithObjectProcs(Reports::Told())) {}
  explicit CacheTest(const StartOptions& options) : zeb_(options) { Reports::Take(); }

  void TearDown() override {
    EXPECT_EQ(zeb_.Total(), 0);
    zeb_.Stop();
    EXPECT_THAT(Reports::Take(), ::testing::IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  }

  CacheLibrary zeb_;
  const ZEBCacheProcs& cache_ = zeb_.cache;
};

}  // namespace contract

#endif
