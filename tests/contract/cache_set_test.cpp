// Cache sets: filing, searching in all modes, removing, ownership.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <vector>

#include "contract/cache_library.h"

namespace contract {
namespace {

class CacheSet : public CacheTest {
 protected:
  void TearDown() override {
    cache_.DeleteCacheSet(set_);
    CacheTest::TearDown();
  }

  // A result that lives as long as the test's set.
  Result& New(int key) { return results_.emplace_back(key); }

  ZEBCacheSet* set_ = zeb_.NewSet();
  std::deque<Result> results_;
};

TEST_F(CacheSet, AnswersASearchInVainWithANewIdentifier) {
  for (const std::int32_t mode : {0, 1, 2}) {
    Result& wanted = New(5);
    ZEBCacheID* id = cache_.SearchForID(set_, &wanted, mode);
    ASSERT_NE(id, nullptr);
    EXPECT_EQ(zeb_.DataOf(id), nullptr);
    Result& result = New(5);
    // Its one reference is the caller's: releasing it deletes the data.
    cache_.Attach(&id, &result, nullptr, 1, Result::Delete, nullptr);
    cache_.Release(id);
    EXPECT_EQ(result.gone, 1);
  }
}

TEST_F(CacheSet, FindsWhatIsFiled) {
  Result& result = New(5);
  ZEBCacheID* filed = zeb_.FiledAndHeld(set_, result);
  Result& wanted = New(5);
  ZEBCacheID* found = cache_.SearchForID(set_, &wanted, ZEB_CACHE_FIND_EQUAL);
  EXPECT_EQ(found, filed);
  EXPECT_EQ(zeb_.DataOf(found), &result);
  cache_.Release(found);
  cache_.Release(filed);
  EXPECT_EQ(result.deleted(), 0);
}

TEST_F(CacheSet, FindsTheNearestKeys) {
  for (const int key : {50, 10, 30, 20, 40}) zeb_.File(set_, New(key));
  const auto keyOf = [&](int wanted, std::int32_t mode) {
    const auto* found = static_cast<Result*>(zeb_.Find(set_, wanted, mode));
    return found != nullptr ? found->key : -1;
  };
  for (int wanted = 5; wanted <= 55; ++wanted) {
    SCOPED_TRACE(wanted);
    const bool there = wanted % 10 == 0 && wanted >= 10 && wanted <= 50;
    const int after = wanted > 50 ? -1 : std::max(10, (wanted + 9) / 10 * 10);
    const int before = wanted < 10 ? -1 : std::min(50, wanted / 10 * 10);
    EXPECT_EQ(keyOf(wanted, ZEB_CACHE_FIND_EQUAL), there ? wanted : -1);
    EXPECT_EQ(keyOf(wanted, ZEB_CACHE_FIND_AT_LEAST), after);
    EXPECT_EQ(keyOf(wanted, ZEB_CACHE_FIND_AT_MOST), before);
  }
}

TEST_F(CacheSet, RefusesAnUnknownMode) {
  Result& result = New(1);
  zeb_.File(set_, result);
  for (const std::int32_t mode : {-1, 3, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(cache_.SearchForID(set_, &result, mode), nullptr);
    cache_.RemoveID(set_, &result, mode);
  }
  EXPECT_EQ(result.deleted(), 0);
  EXPECT_EQ(zeb_.Find(set_, 1), &result);  // the lock was given back
}

TEST_F(CacheSet, RefusesAnUnknownModeWhenItIsEmpty) {
  Result& wanted = New(1);
  EXPECT_EQ(cache_.SearchForID(set_, &wanted, 3), nullptr);
}

TEST_F(CacheSet, HandsTheFirstResultToTheSecondClient) {
  Result& first = New(7);
  Result& second = New(7);
  zeb_.File(set_, first, 10);
  ZEBCacheID* id = cache_.NewCacheID();
  ZEBCacheID* const own = id;
  EXPECT_EQ(cache_.Attach(&id, &second, set_, 20, Result::Delete, nullptr), &first);
  EXPECT_NE(id, own);
  EXPECT_EQ(zeb_.DataOf(id), &first);
  EXPECT_EQ(second.deleted(), 0);
  EXPECT_EQ(zeb_.Total(), 10);
  // The reference to what was found is the caller's.
  cache_.RemoveID(set_, &second, ZEB_CACHE_FIND_EQUAL);
  EXPECT_EQ(first.deleted(), 0);
  cache_.Release(id);
  EXPECT_EQ(first.gone, 1);
}

TEST_F(CacheSet, ReleasesTheSecondClientsIdentifierWithItsData) {
  Result& filed = New(7);
  Result& held = New(8);
  Result& offered = New(7);
  zeb_.File(set_, filed);
  ZEBCacheID* id = zeb_.Attached(held);
  EXPECT_EQ(cache_.Attach(&id, &offered, set_, 1, Result::Delete, nullptr), &filed);
  EXPECT_EQ(held.gone, 1);
  cache_.Release(id);
}

TEST_F(CacheSet, FindsTheSecondClientsOwnIdentifier) {
  Result& result = New(7);
  ZEBCacheID* id = zeb_.FiledAndHeld(set_, result);
  ZEBCacheID* const own = id;
  EXPECT_EQ(cache_.Attach(&id, &result, set_, 1, Result::Delete, nullptr), &result);
  EXPECT_EQ(id, own);
  EXPECT_EQ(zeb_.Total(), 1);
  // Still exactly one reference.
  cache_.RemoveID(set_, &result, ZEB_CACHE_FIND_EQUAL);
  cache_.Release(id);
  EXPECT_EQ(result.gone, 1);
}

TEST_F(CacheSet, DoesNotFileWhatHasDataAlready) {
  Result& first = New(1);
  Result& second = New(2);
  ZEBCacheID* id = zeb_.Attached(first);
  EXPECT_EQ(cache_.Attach(&id, &second, set_, 1, Result::Delete, nullptr), &first);
  EXPECT_EQ(zeb_.Find(set_, 1), nullptr);
  EXPECT_EQ(zeb_.Find(set_, 2), nullptr);
  cache_.Release(id);
}

TEST_F(CacheSet, RefusesANullDeleteProcedureBeforeItSearches) {
  Result& filed = New(3);
  Result& offered = New(3);
  zeb_.File(set_, filed);
  ZEBCacheID* id = cache_.NewCacheID();
  ZEBCacheID* const own = id;
  EXPECT_EQ(cache_.Attach(&id, &offered, set_, 1, nullptr, nullptr), nullptr);
  EXPECT_EQ(id, own);
  cache_.Release(id);
}

TEST_F(CacheSet, KeepsWhatNobodyReferences) {
  Result& result = New(3);
  zeb_.File(set_, result);
  EXPECT_EQ(result.deleted(), 0);
  EXPECT_EQ(zeb_.Find(set_, 3), &result);
  EXPECT_EQ(result.deleted(), 0);
}

TEST_F(CacheSet, KeepsWhatWasPinnedAndReleased) {
  Result& result = New(3);
  ZEBCacheID* id = zeb_.FiledAndHeld(set_, result);
  cache_.MarkNoPurge(id, nullptr, 1);
  cache_.Release(id);
  cache_.MarkPurge(id);
  EXPECT_EQ(result.deleted(), 0);
  EXPECT_EQ(zeb_.Find(set_, 3), &result);
}

TEST_F(CacheSet, DeletesWhatIsRemovedWithoutReferences) {
  Result& result = New(3);
  zeb_.File(set_, result, 50);
  cache_.RemoveID(set_, &result, ZEB_CACHE_FIND_EQUAL);
  EXPECT_EQ(result.gone, 1);
  EXPECT_EQ(result.evicted, 0);
  EXPECT_EQ(zeb_.Total(), 0);
  EXPECT_EQ(zeb_.Find(set_, 3), nullptr);
}

TEST_F(CacheSet, RemovesTheNearestKey) {
  Result& low = New(10);
  Result& high = New(20);
  zeb_.File(set_, low);
  zeb_.File(set_, high);
  Result& wanted = New(15);
  cache_.RemoveID(set_, &wanted, ZEB_CACHE_FIND_EQUAL);
  EXPECT_EQ(low.deleted() + high.deleted(), 0);
  cache_.RemoveID(set_, &wanted, ZEB_CACHE_FIND_AT_LEAST);
  EXPECT_EQ(high.gone, 1);
  cache_.RemoveID(set_, &wanted, ZEB_CACHE_FIND_AT_LEAST);
  cache_.RemoveID(set_, &wanted, ZEB_CACHE_FIND_AT_MOST);
  EXPECT_EQ(low.gone, 1);
}

TEST_F(CacheSet, LetsWhatIsReferencedLiveOnUnfiled) {
  Result& result = New(3);
  ZEBCacheID* id = zeb_.FiledAndHeld(set_, result);
  cache_.RemoveID(set_, &result, ZEB_CACHE_FIND_EQUAL);
  EXPECT_EQ(zeb_.Find(set_, 3), nullptr);
  EXPECT_EQ(zeb_.DataOf(id), &result);
  cache_.Release(id);
  EXPECT_EQ(result.gone, 1);
}

TEST_F(CacheSet, TakesAKeyAgainThatWasRemoved) {
  Result& first = New(3);
  Result& second = New(3);
  ZEBCacheID* held = zeb_.FiledAndHeld(set_, first);
  cache_.RemoveID(set_, &first, ZEB_CACHE_FIND_EQUAL);
  zeb_.File(set_, second);
  EXPECT_EQ(zeb_.Find(set_, 3), &second);
  cache_.Release(held);
  EXPECT_EQ(second.deleted(), 0);
}

struct Selection {
  std::vector<int> asked;
  int remainder = 0;
  static std::int32_t OfRemainder(void* value, void* key) {
    auto& self = *static_cast<Selection*>(value);
    self.asked.push_back(static_cast<Result*>(key)->key);
    return self.asked.back() % 2 == self.remainder ? -7 : 0;
  }
};

TEST_F(CacheSet, RemovesWhatIsSelectedInTheOrderOfTheKeys) {
  for (const int key : {4, 1, 3, 5, 2}) zeb_.File(set_, New(key));
  Selection even;
  cache_.RemoveIDs(set_, &even, Selection::OfRemainder);
  EXPECT_THAT(even.asked, ::testing::ElementsAre(1, 2, 3, 4, 5));
  for (const Result& result : results_) EXPECT_EQ(result.gone, result.key % 2 == 0 ? 1 : 0);
  EXPECT_EQ(zeb_.Total(), 3);
  EXPECT_EQ(zeb_.Find(set_, 2), nullptr);
  EXPECT_NE(zeb_.Find(set_, 3), nullptr);
}

TEST_F(CacheSet, SelectsAmongManyAndStaysInOrder) {
  for (int i = 0; i < 1000; ++i) zeb_.File(set_, New(i * 7919 % 1000));
  Selection odd{.asked = {}, .remainder = 1};
  cache_.RemoveIDs(set_, &odd, Selection::OfRemainder);
  EXPECT_EQ(odd.asked.size(), 1000u);
  for (int key = 0; key < 1000; ++key) {
    EXPECT_EQ(zeb_.Find(set_, key) != nullptr, key % 2 == 0) << key;
  }
}

TEST_F(CacheSet, SelectsNothingWithoutAProcedure) {
  Result& result = New(1);
  zeb_.File(set_, result);
  cache_.RemoveIDs(set_, nullptr, nullptr);
  EXPECT_EQ(result.deleted(), 0);
  EXPECT_EQ(zeb_.Find(set_, 1), &result);
}

TEST_F(CacheSet, LetsSelectedOnesLiveOnWhileReferencedOrPinned) {
  Result& referenced = New(1);
  Result& pinned = New(2);
  Result& neither = New(3);
  ZEBCacheID* a = zeb_.FiledAndHeld(set_, referenced);
  ZEBCacheID* b = zeb_.FiledAndHeld(set_, pinned);
  zeb_.File(set_, neither);
  cache_.MarkNoPurge(b, nullptr, 0);
  cache_.Release(b);
  cache_.RemoveIDs(set_, nullptr, [](void*, void*) { return 1; });
  EXPECT_EQ(referenced.deleted(), 0);
  EXPECT_EQ(pinned.deleted(), 0);
  EXPECT_EQ(neither.gone, 1);
  EXPECT_EQ(zeb_.Find(set_, 1), nullptr);
  EXPECT_EQ(zeb_.DataOf(a), &referenced);
  cache_.Release(a);
  cache_.MarkPurge(b);
  EXPECT_EQ(referenced.gone, 1);
  EXPECT_EQ(pinned.gone, 1);
}

TEST_F(CacheSet, GoesWithItsLastReferenceAndAllItsIdentifiers) {
  ZEBCacheSet* set = zeb_.NewSet();
  Result& unreferenced = New(1);
  Result& referenced = New(2);
  zeb_.File(set, unreferenced, 5);
  ZEBCacheID* id = zeb_.FiledAndHeld(set, referenced, 6);
  cache_.AddRefCacheSet(set);
  cache_.DeleteCacheSet(set);
  EXPECT_EQ(unreferenced.deleted(), 0);
  cache_.DeleteCacheSet(set);
  EXPECT_EQ(unreferenced.gone, 1);
  EXPECT_EQ(referenced.deleted(), 0);
  EXPECT_EQ(zeb_.Total(), 6);
  EXPECT_EQ(zeb_.DataOf(id), &referenced);
  cache_.Release(id);
  EXPECT_EQ(referenced.gone, 1);
}

TEST_F(CacheSet, StaysWhenNobodyEverReferencedIt) {
  ZEBCacheSet* set = cache_.NewCacheSet(Result::Compare);
  Result& result = New(1);
  zeb_.File(set, result);
  cache_.DeleteCacheSet(set);  // below zero
  EXPECT_EQ(result.deleted(), 0);
  EXPECT_EQ(zeb_.Find(set, 1), &result);
  cache_.AddRefCacheSet(set);  // none
  cache_.AddRefCacheSet(set);
  cache_.DeleteCacheSet(set);
  EXPECT_EQ(result.gone, 1);
}

TEST_F(CacheSet, IgnoresNull) {
  Result& key = New(1);
  EXPECT_EQ(cache_.NewCacheSet(nullptr), nullptr);
  cache_.AddRefCacheSet(nullptr);
  cache_.DeleteCacheSet(nullptr);
  EXPECT_EQ(cache_.SearchForID(nullptr, &key, 0), nullptr);
  cache_.RemoveID(nullptr, &key, 0);
  cache_.RemoveIDs(nullptr, nullptr, [](void*, void*) { return 1; });
}

// ---- Procedures that throw.

int comparisonsUntilThrow = -1;
std::int32_t ThrowingCompare(void* a, void* b) {
  if (comparisonsUntilThrow > 0 && --comparisonsUntilThrow == 0) throw HostException();
  return Result::Compare(a, b);
}

TEST_F(CacheSet, SurvivesAThrowAtEveryComparison) {
  ZEBCacheSet* set = zeb_.NewSet(ThrowingCompare);
  for (int key = 0; key < 100; ++key) zeb_.File(set, New(key * 2));
  Result between(99);
  int failures = 0;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    ZEBCacheID* id = cache_.NewCacheID();
    ZEBCacheID* const own = id;
    comparisonsUntilThrow = nth;
    void* attached = cache_.Attach(&id, &between, set, 1, Result::Delete, nullptr);
    const bool failed = comparisonsUntilThrow == 0;
    comparisonsUntilThrow = -1;
    EXPECT_EQ(id, own);
    EXPECT_EQ(attached, failed ? nullptr : &between);
    EXPECT_EQ(zeb_.Total(), failed ? 100 : 101);
    cache_.Release(id);
    if (!failed) break;
    ++failures;
    EXPECT_EQ(between.deleted(), 0);
    comparisonsUntilThrow = nth;
    EXPECT_EQ(cache_.SearchForID(set, &between, nth % 3), nullptr);
    comparisonsUntilThrow = nth;
    cache_.RemoveID(set, &between, nth % 3);
    comparisonsUntilThrow = -1;
    for (Result& result : results_) ASSERT_EQ(zeb_.Find(set, result.key), &result);
  }
  EXPECT_GT(failures, 4);
  EXPECT_EQ(zeb_.Find(set, 99), &between);
  cache_.DeleteCacheSet(set);
  EXPECT_EQ(between.gone, 1);
  for (const Result& result : results_) EXPECT_EQ(result.gone, 1);
}

TEST_F(CacheSet, RemovesWhatWasSelectedBeforeAThrow) {
  for (int key = 0; key < 10; ++key) zeb_.File(set_, New(key));
  cache_.RemoveIDs(set_, nullptr, [](void*, void* key) -> std::int32_t {
    if (static_cast<Result*>(key)->key == 5) throw HostException();
    return 1;
  });
  for (Result& result : results_) {
    EXPECT_EQ(result.gone, result.key < 5 ? 1 : 0);
    EXPECT_EQ(zeb_.Find(set_, result.key), result.key < 5 ? nullptr : &result);
  }
}

}  // namespace
}  // namespace contract
