// A host whose memory runs out under the cache: every allocation of every operation fails once, by
// a null answer or by a throw.

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>

#include "contract/cache_library.h"
#include "contract/failure.h"

namespace contract {
namespace {

class FailingCache : public CacheTest, public ::testing::WithParamInterface<Failure> {
 protected:
  // `operation(failing)` runs with ever later allocations failing until none does; `check(failed)`
  // follows each run.
  template <class Operation, class Check>
  void Sweep(Operation operation, Check check) {
    std::uint64_t nth = 0;
    for (bool failed = true; failed;) {
      SCOPED_TRACE(++nth);
      FailAt(GetParam(), nth);
      EXPECT_NO_THROW(operation());
      failed = Host::StopFailing();
      check(failed);
    }
    EXPECT_GT(nth, 1u) << "the operation allocates nothing";
  }
};

INSTANTIATE_TEST_SUITE_P(Allocations, FailingCache, kEveryFailure, NameOfFailure);

TEST_P(FailingCache, MakesNoIdentifier) {
  ZEBCacheID* id = nullptr;
  Sweep([&] { id = cache_.NewCacheID(); },
        [&](bool failed) {
          EXPECT_EQ(id == nullptr, failed);
          cache_.Release(id);
        });
}

TEST_P(FailingCache, MakesNoSet) {
  ZEBCacheSet* set = nullptr;
  Sweep([&] { set = zeb_.NewSet(); },
        [&](bool failed) {
          EXPECT_EQ(set == nullptr, failed);
          cache_.DeleteCacheSet(set);
        });
}

TEST_P(FailingCache, AnswersASearchInVainWithNull) {
  ZEBCacheSet* set = zeb_.NewSet();
  Result key(1);
  ZEBCacheID* id = nullptr;
  Sweep([&] { id = cache_.SearchForID(set, &key, ZEB_CACHE_FIND_EQUAL); },
        [&](bool failed) {
          EXPECT_EQ(id == nullptr, failed);
          cache_.Release(id);
        });
  cache_.DeleteCacheSet(set);
}

TEST_P(FailingCache, BeginsNoPurgeAndLosesNothing) {
  std::deque<Result> results(20);
  std::deque<ZEBCacheID*> ids;
  for (Result& result : results) ids.push_back(zeb_.Attached(result, 1, 100));
  ZEBCachePurge* purge = nullptr;
  Sweep([&] { purge = cache_.NewCachePurge(); },
        [&](bool failed) {
          EXPECT_EQ(purge == nullptr, failed);
          cache_.DeleteCachePurge(purge);
          EXPECT_EQ(zeb_.Total(), 20);
          ZEBCachePurge* next = cache_.NewCachePurge();  // none was left active
          EXPECT_NE(next, nullptr);
          cache_.DeleteCachePurge(next);
        });
  for (ZEBCacheID* id : ids) cache_.Release(id);
  for (const Result& result : results) EXPECT_EQ(result.gone, 1);
}

TEST_P(FailingCache, PurgesAllOrNothing) {
  std::deque<Result> results(20);
  std::deque<ZEBCacheID*> ids;
  for (Result& result : results) ids.push_back(zeb_.Attached(result));
  Sweep([&] { cache_.PurgeAll(); },
        [&](bool failed) {
          for (const Result& result : results) EXPECT_EQ(result.evicted, failed ? 0 : 1);
          EXPECT_EQ(zeb_.Total(), failed ? 20 : 0);
        });
  for (ZEBCacheID* id : ids) cache_.Release(id);
}

int purgesCalled = 0;

TEST_P(FailingCache, LosesAClientPurgeWhole) {
  const auto purge = [](void* value) {
    ++purgesCalled;
    return value;
  };
  Sweep([&] { cache_.AddClientPurge(purge, 0); },
        [&](bool failed) {
          purgesCalled = 0;
          cache_.PurgeAllStaticCaches(nullptr);
          EXPECT_EQ(purgesCalled, failed ? 0 : 1);
        });
  cache_.RemoveClientPurge(purge, 0);
}

TEST_P(FailingCache, NeedsNoMemoryForAnythingElse) {
  ZEBCacheSet* set = zeb_.NewSet();
  Result result(1);
  Result other(2);
  ZEBCacheID* id = cache_.NewCacheID();
  ZEBCacheID* unfiled = zeb_.Attached(other);
  FailAt(GetParam(), 1);
  EXPECT_EQ(cache_.Attach(&id, &result, set, 1, Result::Delete, nullptr), &result);
  cache_.Add(id, 1, nullptr);
  cache_.MarkNoPurge(id, nullptr, 1);
  cache_.MarkPurge(id);
  EXPECT_EQ(cache_.SearchForID(set, &result, ZEB_CACHE_FIND_AT_LEAST), id);
  cache_.Release(id);
  cache_.Release(id);
  cache_.RemoveID(set, &result, ZEB_CACHE_FIND_EQUAL);
  EXPECT_EQ(result.gone, 1);
  cache_.Release(unfiled);
  cache_.PurgeAllStaticCaches(nullptr);
  cache_.DeleteCacheSet(set);
  EXPECT_FALSE(Host::StopFailing());
}

}  // namespace
}  // namespace contract
