// Purges: what is evicted and in which order, one purge at a time, purging all.

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

using ::testing::ElementsAre;

// The keys of deleted results, in order.
std::vector<int> deletedKeys;
void Record(void* data, std::int32_t survives) {
  deletedKeys.push_back(static_cast<Result*>(data)->key);
  Result::Delete(data, survives);
}

class CachePurge : public CacheTest {
 protected:
  CachePurge() { deletedKeys.clear(); }

  void TearDown() override {
    for (ZEBCacheID* id : ids_) cache_.Release(id);
    CacheTest::TearDown();
  }

  // An identifier of the fixture's with a new result of this key.
  ZEBCacheID* Add(int key, std::uint64_t size, std::int64_t cost) {
    ZEBCacheID* id = cache_.NewCacheID();
    cache_.Attach(&id, &results_.emplace_back(key), nullptr, size, Record, nullptr);
    cache_.UpdateCost(id, 0, &cost);
    ids_.push_back(id);
    return id;
  }

  std::vector<int> KeysOfPurge() {
    deletedKeys.clear();
    ZEBCachePurge* purge = cache_.NewCachePurge();
    while (cache_.PurgeNextBlock(purge) == 1) {
    }
    cache_.DeleteCachePurge(purge);
    return deletedKeys;
  }

  void Touch(ZEBCacheID* id) {
    cache_.MarkNoPurge(id, nullptr, 1);
    cache_.MarkPurge(id);
  }

  std::deque<Result> results_;
  std::vector<ZEBCacheID*> ids_;
};

TEST_F(CachePurge, EvictsTheCheapestForTheirSizeFirst) {
  Add(1, 100, 1000000);  // 10000 for each unit of size
  Add(2, 10, 1000);      // 100
  Add(3, 1000, 1000);    // 1
  Add(4, 1, 100000);     // 100000
  EXPECT_THAT(KeysOfPurge(), ElementsAre(3, 2, 1, 4));
}

TEST_F(CachePurge, EvictsTheLongerUnusedFirst) {
  ZEBCacheID* first = Add(1, 1, 1000);
  Add(2, 1, 1000);
  Add(3, 1, 1000);
  for (int i = 0; i < 10; ++i) Touch(first);
  EXPECT_THAT(KeysOfPurge(), ElementsAre(2, 3, 1));
}

TEST_F(CachePurge, LetsEqualOnesKeepTheirOrder) {
  for (int key = 1; key <= 6; ++key) Add(key, 5, 0);  // a priority of 0 at any age
  EXPECT_THAT(KeysOfPurge(), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(CachePurge, TakesAnAgeOfZeroAndOneForTheSame) {
  Add(1, 1, 1000);  // ages 1 and 0: equal priorities, the older stands nearer the oldest end
  Add(2, 1, 1000);
  EXPECT_THAT(KeysOfPurge(), ElementsAre(1, 2));
}

TEST_F(CachePurge, ReachesNegativeCostsBeforeAll) {
  Add(1, 1, 0);
  Add(2, 1, -1000);
  Add(3, 1, -5);
  EXPECT_THAT(KeysOfPurge(), ElementsAre(2, 3, 1));
}

TEST_F(CachePurge, LeavesAttachedDataWithoutASizeToTheEnd) {
  ZEBCacheID* shrunk = Add(1, 5, 1);
  cache_.UpdateCost(shrunk, -5, nullptr);
  Add(2, 1, INT64_MAX);
  EXPECT_THAT(KeysOfPurge(), ElementsAre(2, 1));
}

TEST_F(CachePurge, TakesOneAtAStep) {
  for (int key = 1; key <= 3; ++key) Add(key, 10, key);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  ASSERT_NE(purge, nullptr);
  EXPECT_EQ(deletedKeys.size(), 0u);
  for (std::size_t step = 1; step <= 3; ++step) {
    EXPECT_EQ(cache_.PurgeNextBlock(purge), 1);
    EXPECT_EQ(deletedKeys.size(), step);
    EXPECT_EQ(zeb_.Total(), 30 - static_cast<std::int64_t>(step) * 10);
  }
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 0);
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 0);
  cache_.DeleteCachePurge(purge);
  for (const Result& result : results_) EXPECT_EQ(result.evicted, 1);
}

TEST_F(CachePurge, EmptiesReferencedOnesThatAreInNoSet) {
  ZEBCacheID* id = Add(1, 1, 1);
  cache_.AddRef(id);
  EXPECT_THAT(KeysOfPurge(), ElementsAre(1));
  cache_.Release(id);
  EXPECT_EQ(zeb_.DataOf(id), nullptr);
}

TEST_F(CachePurge, PassesPinnedOnes) {
  Add(1, 1, 1);
  ZEBCacheID* pinned = Add(2, 1, 2);
  Add(3, 1, 3);
  cache_.MarkNoPurge(pinned, nullptr, 0);
  EXPECT_THAT(KeysOfPurge(), ElementsAre(1, 3));
  cache_.MarkPurge(pinned);
  EXPECT_THAT(KeysOfPurge(), ElementsAre(2));
}

TEST_F(CachePurge, EndsAtOnceWhenAllArePinned) {
  for (int key = 1; key <= 5; ++key) cache_.MarkNoPurge(Add(key, 1, 1), nullptr, 0);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  ASSERT_NE(purge, nullptr);
  EXPECT_EQ(cache_.NewCachePurge(), nullptr);
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 0);
  // It is over: the next one need not wait for its deletion.
  cache_.PurgeAll();
  ZEBCachePurge* next = cache_.NewCachePurge();
  EXPECT_NE(next, nullptr);
  cache_.DeleteCachePurge(next);
  cache_.DeleteCachePurge(purge);
  EXPECT_THAT(deletedKeys, ElementsAre());
  for (ZEBCacheID* id : ids_) cache_.MarkPurge(id);
}

TEST_F(CachePurge, DestroysFiledOnesThatNobodyReferences) {
  ZEBCacheSet* set = zeb_.NewSet();
  Result free(1);
  Result referenced(2);
  zeb_.File(set, free, 3);
  ZEBCacheID* held = zeb_.FiledAndHeld(set, referenced, 4);
  const std::int64_t evictions = Total(zeb_, kEviction);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 1);
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 1);  // left alone, and counted all the same
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 0);
  cache_.DeleteCachePurge(purge);
  EXPECT_EQ(Total(zeb_, kEviction), evictions + 2);
  EXPECT_EQ(free.gone, 1);
  EXPECT_EQ(free.evicted, 0);
  EXPECT_EQ(referenced.deleted(), 0);
  EXPECT_EQ(zeb_.Total(), 4);
  EXPECT_EQ(zeb_.Find(set, 1), nullptr);
  EXPECT_EQ(zeb_.Find(set, 2), &referenced);
  cache_.Release(held);
  cache_.DeleteCacheSet(set);
}

TEST_F(CachePurge, IsOverWhenAStepHasPassedTheLastFiledOne) {
  ZEBCacheSet* set = zeb_.NewSet();
  Result result(1);
  zeb_.File(set, result);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 1);
  ZEBCachePurge* next = cache_.NewCachePurge();
  EXPECT_NE(next, nullptr);
  cache_.DeleteCachePurge(next);
  cache_.DeleteCachePurge(purge);
  cache_.DeleteCacheSet(set);
}

TEST_F(CachePurge, GoesOnWhenTheOneUnderItsCursorIsReleased) {
  for (int key = 1; key <= 4; ++key) Add(key, 1, key);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  cache_.Release(ids_[0]);  // under the cursor
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 1);
  EXPECT_THAT(deletedKeys, ElementsAre(1, 2));
  cache_.Release(ids_[1]);  // the shell that the cursor stands on
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 1);
  EXPECT_THAT(deletedKeys, ElementsAre(1, 2, 3));
  ids_.erase(ids_.begin(), ids_.begin() + 2);
  cache_.DeleteCachePurge(purge);
}

TEST_F(CachePurge, IsOverWhenTheLastOneUnderItsCursorIsReleased) {
  Add(1, 1, 1);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  EXPECT_EQ(cache_.NewCachePurge(), nullptr);
  cache_.Release(ids_[0]);
  ids_.clear();
  ZEBCachePurge* next = cache_.NewCachePurge();
  EXPECT_NE(next, nullptr);
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 0);
  cache_.DeleteCachePurge(purge);
  cache_.DeleteCachePurge(next);
}

TEST_F(CachePurge, IsExhaustedFromTheStartWhenThereIsNothing) {
  ZEBCachePurge* purge = cache_.NewCachePurge();
  ASSERT_NE(purge, nullptr);
  ZEBCachePurge* other = cache_.NewCachePurge();  // the first one is not active
  EXPECT_NE(other, nullptr);
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 0);
  cache_.DeleteCachePurge(purge);
  cache_.DeleteCachePurge(other);
  cache_.PurgeAll();
}

TEST_F(CachePurge, DoesNotEndAnotherOneWhenItIsExhausted) {
  Add(1, 1, 1);
  ZEBCachePurge* exhausted = cache_.NewCachePurge();
  while (cache_.PurgeNextBlock(exhausted) == 1) {
  }
  Add(2, 1, 1);
  ZEBCachePurge* active = cache_.NewCachePurge();
  ASSERT_NE(active, nullptr);
  EXPECT_EQ(cache_.PurgeNextBlock(exhausted), 0);
  EXPECT_EQ(cache_.NewCachePurge(), nullptr);
  cache_.DeleteCachePurge(exhausted);
  EXPECT_EQ(cache_.NewCachePurge(), nullptr);
  cache_.DeleteCachePurge(active);
}

TEST_F(CachePurge, ExcludesAnother) {
  Add(1, 1, 1);
  const std::int64_t purges = Total(zeb_, kPurgeCreation);
  ZEBCachePurge* first = cache_.NewCachePurge();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(cache_.NewCachePurge(), nullptr);
  EXPECT_EQ(Total(zeb_, kPurgeCreation), purges + 1);
  cache_.DeleteCachePurge(first);
  ZEBCachePurge* second = cache_.NewCachePurge();
  EXPECT_NE(second, nullptr);
  cache_.DeleteCachePurge(second);
  EXPECT_EQ(Total(zeb_, kPurgeCreation), purges + 2);
  EXPECT_EQ(results_[0].deleted(), 0);
}

TEST_F(CachePurge, CountsTheStepsThatFindSomething) {
  for (int key = 1; key <= 4; ++key) Add(key, 1, 1);
  cache_.MarkNoPurge(ids_[3], nullptr, 0);
  const std::int64_t evictions = Total(zeb_, kEviction);
  KeysOfPurge();
  EXPECT_EQ(Total(zeb_, kEviction), evictions + 3);
  cache_.MarkPurge(ids_[3]);
}

TEST_F(CachePurge, IgnoresNull) {
  EXPECT_EQ(cache_.PurgeNextBlock(nullptr), 0);
  cache_.DeleteCachePurge(nullptr);
}

TEST_F(CachePurge, OfAllEvictsAllButThePinned) {
  ZEBCacheSet* set = zeb_.NewSet();
  Result filed(100);
  zeb_.File(set, filed, 5);
  for (int key = 1; key <= 5; ++key) Add(key, 7, key);
  cache_.MarkNoPurge(ids_[2], nullptr, 0);
  const std::int64_t purges = Total(zeb_, kPurgeCreation);
  cache_.PurgeAll();
  EXPECT_EQ(Total(zeb_, kPurgeCreation), purges + 1);
  EXPECT_EQ(zeb_.Total(), 7);
  EXPECT_EQ(filed.gone, 1);
  EXPECT_THAT(deletedKeys, ElementsAre(1, 2, 4, 5));
  cache_.MarkPurge(ids_[2]);
  cache_.DeleteCacheSet(set);
}

TEST_F(CachePurge, OfAllWaitsForTheOneThatGoesOn) {
  Add(1, 1, 1);
  Add(2, 1, 2);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  std::atomic<bool> done{false};
  std::thread other([&] {
    cache_.PurgeAll();
    done = true;
  });
  EXPECT_EQ(cache_.PurgeNextBlock(purge), 1);
  EXPECT_FALSE(done);  // it cannot be, as long as the purge goes on
  EXPECT_EQ(results_[1].deleted(), 0);
  cache_.DeleteCachePurge(purge);
  other.join();
  EXPECT_EQ(results_[1].evicted, 1);
}

TEST_F(CachePurge, OfAllGoesOnWhenTheOtherIsExhausted) {
  Add(1, 1, 1);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  std::thread other([&] { cache_.PurgeAll(); });
  while (cache_.PurgeNextBlock(purge) == 1) {
  }
  other.join();  // without DeleteCachePurge
  cache_.DeleteCachePurge(purge);
}

// ---- The limit of the sort. Costs rise with the keys, so the order of the list is the reverse.

class CacheSortLimit : public CachePurge, public ::testing::WithParamInterface<int> {};

TEST_P(CacheSortLimit, SeparatesSortedFromUnsorted) {
  const int count = GetParam();
  for (int key = 0; key < count; ++key) Add(key, 1, 1000000 - key * 10);
  const bool sorted = count <= 10000;
  ZEBCachePurge* purge = cache_.NewCachePurge();
  for (int i = 0; i < 5; ++i) EXPECT_EQ(cache_.PurgeNextBlock(purge), 1);
  cache_.DeleteCachePurge(purge);
  ASSERT_EQ(deletedKeys.size(), 5u);
  if (sorted) {
    // Cheap and young against costly and old: the list's order it is not.
    EXPECT_NE(deletedKeys, (std::vector<int>{0, 1, 2, 3, 4}));
  } else {
    EXPECT_THAT(deletedKeys, ElementsAre(0, 1, 2, 3, 4));
  }
}

INSTANTIATE_TEST_SUITE_P(Counts, CacheSortLimit, ::testing::Values(10000, 10001));

}  // namespace
}  // namespace contract
