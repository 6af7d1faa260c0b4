// What one cache does where the procs cannot look: fractions of costs, the long walks of a purge,
// and what others do while such a walk rests.
#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <thread>
#include <vector>

#include "cache/cache.h"

namespace zeb::cache {
namespace {

std::vector<void*> evicted;
void record(void* data, int32_t survives) {
  if (survives != 0) evicted.push_back(data);
}

class CacheWalkTest : public ::testing::Test {
 protected:
  CacheWalkTest() { evicted.clear(); }
  ~CacheWalkTest() override {
    for (ZEBCacheID* id : ids_) cache_.release(*id);
    EXPECT_EQ(cache_.total(), 0);
  }

  ZEBCacheID* add() {
    ZEBCacheID* id = cache_.makeID();
    ids_.push_back(id);
    return id;
  }
  ZEBCacheID* addAttached() {
    ZEBCacheID* id = add();
    (void)cache_.attach(id, nullptr, {.data = id, .size = 1, .deleteProc = record, .cost = 0});
    return id;
  }

  Cache cache_;
  std::vector<ZEBCacheID*> ids_;
};

TEST_F(CacheWalkTest, KeepsTheFractionOfACost) {
  ZEBCacheID* id = addAttached();
  cache_.grow(*id, 0, 2.9F);
  EXPECT_FLOAT_EQ(cache_.costsOf(*id).cost, 2.9F);
}

TEST_F(CacheWalkTest, PassesMoreThanItMayAtOnce) {
  const unsigned lengths[] = {Cache::kLongestWalk - 1, Cache::kLongestWalk, Cache::kLongestWalk + 1,
                              5 * Cache::kLongestWalk};
  for (const unsigned length : lengths) {
    SCOPED_TRACE(length);
    Cache cache;
    std::vector<ZEBCacheID*> empty;
    for (unsigned i = 0; i < length; ++i) empty.push_back(cache.makeID());
    ZEBCacheID* last = cache.makeID();
    (void)cache.attach(last, nullptr, {.data = last, .size = 1, .deleteProc = record, .cost = -1});
    evicted.clear();
    ZEBCachePurge purge;
    ASSERT_TRUE(cache.begin(purge, Wait::no));
    EXPECT_TRUE(cache.step(purge, Cache::kPurgeAll));
    EXPECT_EQ(evicted, std::vector<void*>{last});
    EXPECT_FALSE(cache.step(purge, Cache::kPurgeAll));
    EXPECT_EQ(purge.restingWalks, 0u);
    cache.end(purge);
    cache.release(*last);
    for (ZEBCacheID* id : empty) cache.release(*id);
  }
}

// The sort would put the empty ones at the newest end: only more than the limit are walked past.
TEST_F(CacheWalkTest, FindsWhatStandsBehindManyPinnedOnes) {
  for (int i = 0; i < ZEB_CACHE_SORT_LIMIT + 1; ++i) (void)cache_.pin(*addAttached(), false);
  ZEBCacheID* last = addAttached();
  ZEBCachePurge purge;
  ASSERT_TRUE(cache_.begin(purge, Wait::no));
  EXPECT_TRUE(cache_.step(purge, Cache::kPurgeAll));
  EXPECT_EQ(evicted, std::vector<void*>{last});
  EXPECT_FALSE(cache_.step(purge, Cache::kPurgeAll));
  cache_.end(purge);
  for (ZEBCacheID* id : ids_) {
    if (id != last) cache_.unpin(*id);
  }
}

TEST_F(CacheWalkTest, IsNotCarriedAwayByATouchWhileItRests) {
  ZEBCacheID* under = addAttached();
  ZEBCacheID* next = addAttached();
  ZEBCachePurge purge;
  ASSERT_TRUE(cache_.begin(purge, Wait::no));
  ASSERT_EQ(purge.cursor, under);
  ++purge.restingWalks;  // as a step does before it gives the lock away
  (void)cache_.pin(*under, true);
  --purge.restingWalks;
  EXPECT_EQ(purge.cursor, next);
  cache_.unpin(*under);
  cache_.end(purge);
}

// Between steps it is: the cursor stays on its identifier wherever that goes.
TEST_F(CacheWalkTest, StaysOnItsIdentifierBetweenSteps) {
  ZEBCacheID* under = addAttached();
  addAttached();
  ZEBCachePurge purge;
  ASSERT_TRUE(cache_.begin(purge, Wait::no));
  (void)cache_.pin(*under, true);
  cache_.unpin(*under);
  EXPECT_EQ(purge.cursor, under);
  EXPECT_TRUE(cache_.step(purge, Cache::kPurgeAll));
  EXPECT_FALSE(cache_.step(purge, Cache::kPurgeAll));
  EXPECT_EQ(evicted, std::vector<void*>{under});
  cache_.end(purge);
}

TEST_F(CacheWalkTest, WalksWhileOthersMakeTouchAndRelease) {
  std::deque<std::vector<ZEBCacheID*>> own(2);
  for (int i = 0; i < 4 * static_cast<int>(Cache::kLongestWalk); ++i) {
    for (auto& ids : own) ids.push_back(cache_.makeID());
  }
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (auto& ids : own) {
    threads.emplace_back([&] {
      for (size_t i = 0; !stop; i = (i + 1) % ids.size()) {
        (void)cache_.pin(*ids[i], true);
        cache_.unpin(*ids[i]);
        if (i % 3 != 0) continue;
        cache_.release(*ids[i]);
        ids[i] = cache_.makeID();
      }
    });
  }
  for (int round = 0; round < 50; ++round) {
    ZEBCachePurge purge;
    if (!cache_.begin(purge, Wait::yes)) continue;
    while (cache_.step(purge, Cache::kPurgeAll)) {
    }
    cache_.end(purge);
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  for (auto& ids : own) {
    for (ZEBCacheID* id : ids) cache_.release(*id);
  }
  EXPECT_TRUE(evicted.empty());
}

}  // namespace
}  // namespace zeb::cache
