// Identifiers: attaching, sizes, costs, pins, references.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "contract/cache_library.h"

namespace contract {
namespace {

constexpr std::uint64_t kTwoToThe32 = std::uint64_t{1} << 32;

using CacheId = CacheTest;

TEST_F(CacheId, IsEmptyWhenNew) {
  ZEBCacheID* id = cache_.NewCacheID();
  ASSERT_NE(id, nullptr);
  EXPECT_EQ(zeb_.DataOf(id), nullptr);
  const ReturnedCost cost = zeb_.CostOf(id);
  EXPECT_EQ(cost.size, 0u);
  EXPECT_EQ(cost.cost, 0);
  EXPECT_EQ(cost.cacheTime, 0u);
  EXPECT_EQ(zeb_.Total(), 0);
  cache_.Release(id);
}

TEST_F(CacheId, TakesItsDataAndDeletesItWithTheLastReference) {
  Result result;
  ZEBCacheID* id = cache_.NewCacheID();
  ZEBCacheID* const before = id;
  EXPECT_EQ(cache_.Attach(&id, &result, nullptr, 70, Result::Delete, nullptr), &result);
  EXPECT_EQ(id, before);
  EXPECT_EQ(zeb_.Total(), 70);
  EXPECT_EQ(zeb_.CostOf(id).size, 70u);
  cache_.AddRef(id);
  cache_.Release(id);
  EXPECT_EQ(result.deleted(), 0);
  EXPECT_EQ(zeb_.DataOf(id), &result);
  cache_.Release(id);
  EXPECT_EQ(result.gone, 1);
  EXPECT_EQ(result.evicted, 0);
  EXPECT_EQ(zeb_.Total(), 0);
}

TEST_F(CacheId, IsGoneWithoutADeletionWhenItWasEmpty) {
  ZEBCacheID* id = cache_.NewCacheID();
  cache_.Release(id);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
}

TEST_F(CacheId, TakesItsDataThroughTheFirstVersion) {
  Result result;
  ZEBCacheID* id = cache_.NewCacheID();
  EXPECT_EQ(zeb_.olderCache.AttachV1(id, &result, 12, Result::Delete, nullptr), &result);
  EXPECT_EQ(zeb_.Total(), 12);
  cache_.Release(id);
  EXPECT_EQ(result.gone, 1);
}

TEST_F(CacheId, CountsASizeOfZeroAsOne) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 0);
  EXPECT_EQ(zeb_.CostOf(id).size, 1u);
  EXPECT_EQ(zeb_.Total(), 1);
  cache_.Release(id);
}

TEST_F(CacheId, KeepsTheFirstDataAndItsCost) {
  Result first;
  Result second;
  ZEBCacheID* id = zeb_.Attached(first, 10, 77);
  const ReturnedCost before = zeb_.CostOf(id);
  const std::uint64_t stamp = 0;
  EXPECT_EQ(cache_.Attach(&id, &second, nullptr, 20, Result::Delete, &stamp), &first);
  EXPECT_EQ(zeb_.olderCache.AttachV1(id, &second, 20, Result::Delete, &stamp), &first);
  EXPECT_EQ(zeb_.Total(), 10);
  const ReturnedCost after = zeb_.CostOf(id);
  EXPECT_EQ(after.size, before.size);
  EXPECT_EQ(after.cost, 77);
  EXPECT_EQ(after.cacheTime, before.cacheTime);
  cache_.Release(id);
  EXPECT_EQ(first.gone, 1);
  EXPECT_EQ(second.deleted(), 0);  // still the caller's
}

TEST_F(CacheId, RefusesANullDeleteProcedure) {
  Result result;
  ZEBCacheID* id = cache_.NewCacheID();
  EXPECT_EQ(cache_.Attach(&id, &result, nullptr, 5, nullptr, nullptr), nullptr);
  EXPECT_EQ(zeb_.olderCache.AttachV1(id, &result, 5, nullptr, nullptr), nullptr);
  EXPECT_EQ(zeb_.DataOf(id), nullptr);
  EXPECT_EQ(zeb_.Total(), 0);
  EXPECT_EQ(zeb_.CostOf(id).cacheTime, 0u);
  cache_.Release(id);
}

TEST_F(CacheId, RefusesANullDeleteProcedureBeforeItLooksAtTheData) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 5);
  EXPECT_EQ(cache_.Attach(&id, &result, nullptr, 5, nullptr, nullptr), nullptr);
  EXPECT_EQ(zeb_.DataOf(id), &result);
  cache_.Release(id);
}

TEST_F(CacheId, RefusesNullData) {
  ZEBCacheID* id = cache_.NewCacheID();
  EXPECT_EQ(cache_.Attach(&id, nullptr, nullptr, 5, Result::Delete, nullptr), nullptr);
  EXPECT_EQ(zeb_.olderCache.AttachV1(id, nullptr, 5, Result::Delete, nullptr), nullptr);
  EXPECT_EQ(zeb_.Total(), 0);
  cache_.Release(id);
}

TEST_F(CacheId, ChargesNothingWithoutAStamp) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 5);
  EXPECT_EQ(zeb_.CostOf(id).cost, 0);
  cache_.Add(id, 5, nullptr);
  EXPECT_EQ(zeb_.CostOf(id).cost, 0);
  EXPECT_EQ(zeb_.CostOf(id).size, 10u);
  cache_.UpdateCost(id, 5, nullptr);
  EXPECT_EQ(zeb_.CostOf(id).cost, 0);
  EXPECT_EQ(zeb_.CostOf(id).size, 15u);
  cache_.Release(id);
}

TEST_F(CacheId, ChargesTheTimeSinceTheStamp) {
  Result result;
  std::uint64_t now = 0;
  cache_.GetCacheTime(&now);
  ASSERT_GT(now, 0u);
  const std::uint64_t longAgo = now - (std::uint64_t{1} << 40);
  ZEBCacheID* id = cache_.NewCacheID();
  cache_.Attach(&id, &result, nullptr, 1, Result::Delete, &longAgo);
  const std::int64_t attached = zeb_.CostOf(id).cost;
  EXPECT_GE(attached, std::int64_t{1} << 40);
  EXPECT_LT(attached, std::int64_t{1} << 41);
  cache_.Add(id, 1, &longAgo);
  const std::int64_t added = zeb_.CostOf(id).cost;
  EXPECT_GE(added, std::int64_t{1} << 41);
  EXPECT_LT(added, std::int64_t{1} << 42);
  cache_.Release(id);
}

TEST_F(CacheId, ChargesLessThanNothingForAStampOfTheFuture) {
  Result result;
  std::uint64_t now = 0;
  cache_.GetCacheTime(&now);
  const std::uint64_t inFuture = now + (std::uint64_t{1} << 50);
  ZEBCacheID* id = cache_.NewCacheID();
  cache_.Attach(&id, &result, nullptr, 1, Result::Delete, &inFuture);
  EXPECT_LT(zeb_.CostOf(id).cost, 0);
  cache_.Release(id);
}

TEST_F(CacheId, TellsTimesThatDoNotRunBack) {
  std::uint64_t first = 0;
  std::uint64_t second = 0;
  cache_.GetCacheTime(&first);
  cache_.GetCacheTime(&second);
  EXPECT_LE(first, second);
  cache_.GetCacheTime(nullptr);
}

TEST_F(CacheId, AddsToTheTotalTheLowHalfOfAnIncrement) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 10);
  cache_.Add(id, kTwoToThe32 + 5, nullptr);
  EXPECT_EQ(zeb_.Total(), 15);
  EXPECT_EQ(zeb_.CostOf(id).size, 15u);  // the low half of the size again
  cache_.Release(id);
  EXPECT_EQ(zeb_.Total(), 0);
}

TEST_F(CacheId, AddsToTheTotalTheSignedLowHalfOfASize) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 0xFFFFFFFF);
  EXPECT_EQ(zeb_.Total(), -1);
  EXPECT_EQ(zeb_.CostOf(id).size, 0xFFFFFFFFu);
  cache_.Add(id, 0x80000000, nullptr);
  EXPECT_EQ(zeb_.Total(), -1 - (std::int64_t{1} << 31));
  cache_.Release(id);
  EXPECT_EQ(zeb_.Total(), 0);
}

TEST_F(CacheId, KeepsASizeWhoseLowHalfIsZero) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, kTwoToThe32);
  EXPECT_EQ(zeb_.Total(), 0);
  EXPECT_EQ(zeb_.CostOf(id).size, 0u);
  EXPECT_EQ(zeb_.DataOf(id), &result);
  cache_.Release(id);
}

TEST_F(CacheId, ChangesSizeAndCostByAPlainNumber) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 100, 1000);
  std::int64_t cost = -250;
  cache_.UpdateCost(id, -60, &cost);
  EXPECT_EQ(zeb_.Total(), 40);
  EXPECT_EQ(zeb_.CostOf(id).size, 40u);
  EXPECT_EQ(zeb_.CostOf(id).cost, 750);
  cost = -1000;
  cache_.UpdateCost(id, 7, &cost);
  EXPECT_EQ(zeb_.CostOf(id).cost, -250);
  EXPECT_EQ(zeb_.Total(), 47);
  cache_.Release(id);
  EXPECT_EQ(zeb_.Total(), 0);
}

TEST_F(CacheId, AccumulatesItsCostAsAFloat) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 1, 16777216);  // 2^24: the next float is two away
  const std::int64_t one = 1;
  cache_.UpdateCost(id, 0, &one);
  EXPECT_EQ(zeb_.CostOf(id).cost, 16777216);
  cache_.Release(id);
}

TEST_F(CacheId, AnswersCostsBeyondTheTypeWithItsEnds) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 1);
  const std::int64_t most = INT64_MAX;
  cache_.UpdateCost(id, 0, &most);
  cache_.UpdateCost(id, 0, &most);
  EXPECT_EQ(zeb_.CostOf(id).cost, INT64_MAX);
  const std::int64_t least = INT64_MIN;
  for (int i = 0; i < 4; ++i) cache_.UpdateCost(id, 0, &least);
  EXPECT_EQ(zeb_.CostOf(id).cost, INT64_MIN);
  cache_.Release(id);
}

TEST_F(CacheId, GrowsOnlyWhileItHasData) {
  ZEBCacheID* id = cache_.NewCacheID();
  const std::int64_t cost = 5;
  cache_.Add(id, 10, nullptr);
  cache_.UpdateCost(id, 10, &cost);
  EXPECT_EQ(zeb_.Total(), 0);
  EXPECT_EQ(zeb_.CostOf(id).size, 0u);
  EXPECT_EQ(zeb_.CostOf(id).cost, 0);
  Result result;
  cache_.Attach(&id, &result, nullptr, 3, Result::Delete, nullptr);
  EXPECT_EQ(zeb_.Total(), 3);  // the lock was given back
  cache_.Release(id);
}

TEST_F(CacheId, StoresNothingForMissingOuts) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 10, 3);
  std::uint32_t size = 7;
  std::int64_t cost = 7;
  std::uint32_t time = 7;
  cache_.ReturnCost(nullptr, &size, &cost, &time);
  cache_.ReturnCost(id, nullptr, &cost, &time);
  cache_.ReturnCost(id, &size, nullptr, &time);
  cache_.ReturnCost(id, &size, &cost, nullptr);
  EXPECT_EQ(size, 7u);
  EXPECT_EQ(cost, 7);
  EXPECT_EQ(time, 7u);
  cache_.Release(id);
}

TEST_F(CacheId, CountsAttachmentsAndTouchesAsTime) {
  Result first;
  Result second;
  ZEBCacheID* a = zeb_.Attached(first);
  ZEBCacheID* b = zeb_.Attached(second);
  EXPECT_EQ(zeb_.CostOf(a).cacheTime, 1u);
  EXPECT_EQ(zeb_.CostOf(b).cacheTime, 2u);
  cache_.MarkNoPurge(a, nullptr, 0);
  EXPECT_EQ(zeb_.CostOf(a).cacheTime, 1u);
  cache_.MarkNoPurge(a, nullptr, 1);
  EXPECT_EQ(zeb_.CostOf(a).cacheTime, 3u);
  cache_.MarkNoPurge(a, nullptr, -1);
  EXPECT_EQ(zeb_.CostOf(a).cacheTime, 4u);
  cache_.MarkNoPurgeV1(b, nullptr);
  EXPECT_EQ(zeb_.CostOf(b).cacheTime, 5u);
  cache_.Add(a, 1, nullptr);  // no touch
  EXPECT_EQ(zeb_.CostOf(a).cacheTime, 4u);
  for (int i = 0; i < 3; ++i) cache_.MarkPurge(a);
  cache_.MarkPurge(b);
  cache_.Release(a);
  cache_.Release(b);
}

TEST_F(CacheId, IsPinnedWithAReference) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result);
  EXPECT_EQ(cache_.MarkNoPurge(id, nullptr, 1), &result);
  cache_.Release(id);
  EXPECT_EQ(result.deleted(), 0);
  cache_.MarkPurge(id);
  EXPECT_EQ(result.gone, 1);
}

TEST_F(CacheId, StoresNoStampWhileItHasData) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result);
  std::uint64_t stamp = 42;
  EXPECT_EQ(cache_.MarkNoPurge(id, &stamp, 1), &result);
  EXPECT_EQ(stamp, 42u);
  cache_.MarkPurge(id);
  cache_.Release(id);
}

TEST_F(CacheId, IsPinnedAlsoWhenItIsEmpty) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 9);
  cache_.PurgeAll();
  ASSERT_EQ(result.evicted, 1);
  const std::int64_t counted = Total(zeb_, kPinOfEmpty);
  std::uint64_t before = 0;
  std::uint64_t stamp = 0;
  std::uint64_t after = 0;
  cache_.GetCacheTime(&before);
  EXPECT_EQ(cache_.MarkNoPurge(id, &stamp, 1), nullptr);
  cache_.GetCacheTime(&after);
  EXPECT_LE(before, stamp);
  EXPECT_LE(stamp, after);
  EXPECT_EQ(Total(zeb_, kPinOfEmpty), counted + 1);
  EXPECT_EQ(cache_.MarkNoPurge(id, nullptr, 0), nullptr);
  EXPECT_EQ(Total(zeb_, kPinOfEmpty), counted + 2);

  // Pinned, what is attached now stays.
  Result again;
  EXPECT_EQ(cache_.Attach(&id, &again, nullptr, 9, Result::Delete, &stamp), &again);
  cache_.PurgeAll();
  EXPECT_EQ(again.deleted(), 0);
  cache_.MarkPurge(id);
  cache_.PurgeAll();
  EXPECT_EQ(again.deleted(), 0);
  cache_.MarkPurge(id);
  cache_.PurgeAll();
  EXPECT_EQ(again.evicted, 1);
  cache_.Release(id);
  EXPECT_EQ(again.gone, 0);
}

TEST_F(CacheId, CountsNoPinOfData) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result);
  const std::int64_t counted = Total(zeb_, kPinOfEmpty);
  zeb_.DataOf(id);
  EXPECT_EQ(Total(zeb_, kPinOfEmpty), counted);
  cache_.Release(id);
}

TEST_F(CacheId, ReplacesItsCostWhenItIsAttachedAnew) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, 4, 100);
  cache_.PurgeAll();
  EXPECT_EQ(zeb_.CostOf(id).size, 0u);
  EXPECT_EQ(zeb_.Total(), 0);
  Result again;
  cache_.Attach(&id, &again, nullptr, 6, Result::Delete, nullptr);
  EXPECT_EQ(zeb_.CostOf(id).cost, 0);
  EXPECT_EQ(zeb_.CostOf(id).size, 6u);
  EXPECT_EQ(zeb_.Total(), 6);
  cache_.Release(id);
}

TEST_F(CacheId, TakesBackFromTheTotalWhatItAdded) {
  Result result;
  ZEBCacheID* id = zeb_.Attached(result, kTwoToThe32 + 7);
  cache_.Add(id, 3 * kTwoToThe32 + 0xFFFFFFFE, nullptr);
  cache_.UpdateCost(id, INT32_MIN, nullptr);
  cache_.UpdateCost(id, INT32_MAX, nullptr);
  EXPECT_EQ(zeb_.Total(), 7 - 2 - 1);
  cache_.PurgeAll();
  EXPECT_EQ(zeb_.Total(), 0);
  EXPECT_EQ(result.evicted, 1);
  cache_.Release(id);
  EXPECT_EQ(zeb_.Total(), 0);
}

TEST_F(CacheId, IgnoresNull) {
  Result result;
  ZEBCacheID* none = nullptr;
  std::uint64_t stamp = 5;
  cache_.AddRef(nullptr);
  cache_.Release(nullptr);
  EXPECT_EQ(cache_.Attach(nullptr, &result, nullptr, 1, Result::Delete, nullptr), nullptr);
  EXPECT_EQ(cache_.Attach(&none, &result, nullptr, 1, Result::Delete, nullptr), nullptr);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(zeb_.olderCache.AttachV1(nullptr, &result, 1, Result::Delete, nullptr), nullptr);
  cache_.Add(nullptr, 1, &stamp);
  cache_.UpdateCost(nullptr, 1, nullptr);
  EXPECT_EQ(cache_.MarkNoPurge(nullptr, &stamp, 1), nullptr);
  EXPECT_EQ(cache_.MarkNoPurgeV1(nullptr, &stamp), nullptr);
  EXPECT_EQ(stamp, 5u);
  cache_.MarkPurge(nullptr);
  EXPECT_EQ(zeb_.Total(), 0);
  EXPECT_EQ(result.deleted(), 0);
}

TEST_F(CacheId, SurvivesADeleteProcedureThatThrows) {
  Result result;
  ZEBCacheID* id = cache_.NewCacheID();
  cache_.Attach(
      &id, &result, nullptr, 1,
      [](void* data, std::int32_t survives) {
        Result::Delete(data, survives);
        throw 1;
      },
      nullptr);
  EXPECT_NO_THROW(cache_.PurgeAll());
  EXPECT_EQ(result.evicted, 1);
  EXPECT_EQ(zeb_.DataOf(id), nullptr);
  cache_.Release(id);
}

}  // namespace
}  // namespace contract
