// Client procedures that call back into the cache: no lock is held while they run.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <thread>
#include <vector>

#include "contract/cache_library.h"

namespace contract {
namespace {

const CacheLibrary* running = nullptr;
ZEBCacheSet* sharedSet = nullptr;
std::atomic<int> callsBack{0};

// Uses what takes the lock: makes, files, finds, pins, grows, removes, purges.
void UseTheCache() {
  const ZEBCacheProcs& cache = running->cache;
  static Result result(1 << 20);
  ZEBCacheID* id = cache.NewCacheID();
  cache.Attach(
      &id, &result, nullptr, 3, [](void*, std::int32_t) {}, nullptr);
  cache.MarkNoPurge(id, nullptr, 1);
  cache.Add(id, 3, nullptr);
  cache.UpdateCost(id, 3, nullptr);
  running->CostOf(id);
  cache.MarkPurge(id);
  Result wanted(1 << 20);
  cache.Release(cache.SearchForID(sharedSet, &wanted, ZEB_CACHE_FIND_EQUAL));
  cache.RemoveID(sharedSet, &wanted, ZEB_CACHE_FIND_EQUAL);
  ZEBCachePurge* purge = cache.NewCachePurge();
  cache.DeleteCachePurge(purge);
  cache.Release(id);
  (void)cache.CurrentCacheSize();
  ++callsBack;
}

void DeleteCallingBack(void* data, std::int32_t survives) {
  UseTheCache();
  Result::Delete(data, survives);
}

void RequestCallingBack(std::int64_t /*newTotal*/) {
  static thread_local bool inside = false;
  if (inside) return;
  inside = true;
  UseTheCache();
  inside = false;
}

class CacheReentry : public CacheTest {
 protected:
  explicit CacheReentry(const StartOptions& options = Host::WithObjectProcs(Reports::Told()))
      : CacheTest(options) {
    running = &zeb_;
    sharedSet = zeb_.NewSet();
    callsBack = 0;
  }
  void TearDown() override {
    cache_.DeleteCacheSet(sharedSet);
    CacheTest::TearDown();
  }

  ZEBCacheID* Attached(Result& result, ZEBCacheSet* set = nullptr) {
    ZEBCacheID* id = cache_.NewCacheID();
    EXPECT_EQ(cache_.Attach(&id, &result, set, 10, DeleteCallingBack, nullptr), &result);
    return id;
  }
  void File(Result& result) { cache_.Release(Attached(result, sharedSet)); }

  Result result_{1};
};

TEST_F(CacheReentry, IsSafeFromTheLastRelease) {
  cache_.Release(Attached(result_));
  EXPECT_EQ(callsBack, 1);
}

TEST_F(CacheReentry, IsSafeFromTheLastMarkPurge) {
  ZEBCacheID* id = Attached(result_);
  cache_.MarkNoPurge(id, nullptr, 0);
  cache_.Release(id);
  cache_.MarkPurge(id);
  EXPECT_EQ(callsBack, 1);
}

TEST_F(CacheReentry, IsSafeFromAnEviction) {
  ZEBCacheID* id = Attached(result_);
  cache_.PurgeAll();
  EXPECT_EQ(callsBack, 1);
  cache_.Release(id);
}

TEST_F(CacheReentry, IsSafeFromTheEvictionOfAFiledOne) {
  File(result_);
  cache_.PurgeAll();
  EXPECT_EQ(callsBack, 1);
}

TEST_F(CacheReentry, IsSafeFromRemovals) {
  Result other(2);
  File(result_);
  File(other);
  cache_.RemoveID(sharedSet, &result_, ZEB_CACHE_FIND_EQUAL);
  cache_.RemoveIDs(sharedSet, nullptr, [](void*, void*) { return 1; });
  EXPECT_EQ(callsBack, 2);
}

TEST_F(CacheReentry, IsSafeFromTheEndOfASet) {
  ZEBCacheSet* set = zeb_.NewSet();
  cache_.Release(Attached(result_, set));
  cache_.DeleteCacheSet(set);
  EXPECT_EQ(callsBack, 1);
}

TEST_F(CacheReentry, IsSafeFromAnAttachThatFindsAnother) {
  Result offered(1);
  Result held(9);
  File(result_);
  ZEBCacheID* id = Attached(held);
  EXPECT_EQ(cache_.Attach(&id, &offered, sharedSet, 1, DeleteCallingBack, nullptr), &result_);
  EXPECT_EQ(callsBack, 1);
  EXPECT_EQ(held.gone, 1);
  cache_.Release(id);
}

TEST_F(CacheReentry, IsSafeFromAClientPurge) {
  const auto purge = [](void* value) {
    UseTheCache();
    return value;
  };
  cache_.AddClientPurge(purge, 0);
  cache_.PurgeAllStaticCaches(nullptr);
  EXPECT_EQ(callsBack, 1);
  cache_.RemoveClientPurge(purge, 0);
}

class CacheReentryFromHost : public CacheReentry {
 protected:
  CacheReentryFromHost() : CacheReentry(Options()) {}
  static StartOptions Options() {
    StartOptions options = Host::WithObjectProcs(Reports::Told());
    options.flags = ZEB_FLAG_MULTI_THREADED;
    options.purgeRequest = RequestCallingBack;
    return options;
  }
};

TEST_F(CacheReentryFromHost, IsSafeFromThePurgeRequest) {
  ZEBCacheID* id = Attached(result_);
  EXPECT_EQ(callsBack, 1);
  cache_.Add(id, 1, nullptr);
  EXPECT_EQ(callsBack, 2);
  cache_.UpdateCost(id, 1, nullptr);
  EXPECT_EQ(callsBack, 3);
  cache_.Release(id);
}

TEST_F(CacheReentryFromHost, IsSafeOnSeveralThreadsAtOnce) {
  std::deque<Result> results(400);
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::size_t i = 0; i < 100; ++i) {
        Result& result = results[thread * 100 + i];
        result.key = static_cast<int>(i);  // the threads meet at the same keys
        ZEBCacheID* id = cache_.NewCacheID();
        ZEBCacheSet* const set = i % 2 == 0 ? sharedSet : nullptr;
        if (cache_.Attach(&id, &result, set, 10, DeleteCallingBack, nullptr) != &result) {
          Result::Delete(&result, 0);  // not adopted
        }
        if (i % 10 == 0) cache_.PurgeAll();
        if (i % 7 == 0) cache_.RemoveID(sharedSet, &result, ZEB_CACHE_FIND_AT_MOST);
        cache_.Release(id);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  cache_.PurgeAll();
  for (const Result& result : results) EXPECT_EQ(result.deleted(), 1);
  EXPECT_GT(callsBack, 400);
}

}  // namespace
}  // namespace contract
