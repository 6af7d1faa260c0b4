// The cache over stops and starts: identifiers and sets are the process's, and each remembers the
// host that its memory came from.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "contract/cache_library.h"

namespace contract {
namespace {

using FirstHost = HostMemory<1>;
using SecondHost = HostMemory<2>;
using ::testing::IsEmpty;
using Reports = ErrorReports<0>;

class CacheRestart : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(FirstHost::LiveBlocks(), 0u);
    EXPECT_EQ(SecondHost::LiveBlocks(), 0u);
    EXPECT_EQ(FirstHost::ForeignFrees(), 0u);
    EXPECT_EQ(SecondHost::ForeignFrees(), 0u);
  }
};

TEST_F(CacheRestart, LetsIdentifiersAndTheTotalLiveOn) {
  Result first;
  Result second;
  ZEBCacheID* old = nullptr;
  {
    CacheLibrary zeb(FirstHost::WithObjectProcs());
    old = zeb.Attached(first, 40, 12);
  }
  EXPECT_EQ(first.deleted(), 0);
  CacheLibrary zeb(SecondHost::WithObjectProcs());
  EXPECT_EQ(zeb.Total(), 40);
  EXPECT_EQ(zeb.DataOf(old), &first);
  EXPECT_EQ(zeb.CostOf(old).cost, 12);
  ZEBCacheID* young = zeb.Attached(second, 2);
  EXPECT_GT(zeb.CostOf(young).cacheTime, zeb.CostOf(old).cacheTime);
  zeb.cache.PurgeAll();
  EXPECT_EQ(first.evicted + second.evicted, 2);
  zeb.cache.Release(old);
  zeb.cache.Release(young);
}

TEST_F(CacheRestart, LetsSetsLiveOn) {
  Result first(1);
  Result second(2);
  ZEBCacheSet* set = nullptr;
  {
    CacheLibrary zeb(FirstHost::WithObjectProcs());
    set = zeb.NewSet();
    zeb.File(set, first);
  }
  {
    CacheLibrary zeb(SecondHost::WithObjectProcs());
    zeb.File(set, second);
    EXPECT_EQ(zeb.Find(set, 1), &first);
    EXPECT_EQ(zeb.Find(set, 2), &second);
  }
  CacheLibrary zeb;
  zeb.cache.DeleteCacheSet(set);
  EXPECT_EQ(first.gone + second.gone, 2);
}

TEST_F(CacheRestart, TakesIdentifiersBackWhileStopped) {
  Result result;
  CacheLibrary zeb(FirstHost::WithObjectProcs());
  ZEBCacheID* id = zeb.Attached(result, 40);
  zeb.Stop();
  zeb.cache.Release(id);
  EXPECT_EQ(result.gone, 1);
  EXPECT_EQ(FirstHost::LiveBlocks(), 0u);
}

TEST_F(CacheRestart, EndsAPurgeThatItsClientForgot) {
  Result result;
  ZEBCachePurge* forgotten = nullptr;
  ZEBCacheID* id = nullptr;
  {
    CacheLibrary zeb(FirstHost::WithObjectProcs());
    id = zeb.Attached(result);
    forgotten = zeb.cache.NewCachePurge();
    ASSERT_NE(forgotten, nullptr);
  }
  CacheLibrary zeb(SecondHost::WithObjectProcs());
  zeb.cache.PurgeAll();  // waits for nobody
  EXPECT_EQ(result.evicted, 1);
  EXPECT_EQ(zeb.cache.PurgeNextBlock(forgotten), 0);
  zeb.cache.DeleteCachePurge(forgotten);
  zeb.cache.Release(id);
}

TEST_F(CacheRestart, BeginsTheClockAnewWhenNothingIsLeft) {
  for (int run = 0; run < 3; ++run) {
    CacheLibrary zeb(FirstHost::WithObjectProcs());
    Result result;
    ZEBCacheID* id = zeb.Attached(result);
    EXPECT_EQ(zeb.CostOf(id).cacheTime, 1u);
    EXPECT_EQ(zeb.Total(), 1);
    zeb.cache.Release(id);
  }
}

TEST_F(CacheRestart, BeginsTheClockAnewWhenTheRestCameBackMeanwhile) {
  Result result;
  CacheLibrary first(FirstHost::WithObjectProcs());
  ZEBCacheID* id = first.Attached(result);
  first.Stop();
  first.cache.Release(id);
  CacheLibrary second(SecondHost::WithObjectProcs());
  id = second.Attached(result);
  EXPECT_EQ(second.CostOf(id).cacheTime, 1u);
  second.cache.Release(id);
}

TEST_F(CacheRestart, ReportsNothing) {
  Result result;
  Result filed(1);
  CacheLibrary zeb(FirstHost::WithObjectProcs(Reports::Told()));
  ZEBCacheID* id = zeb.Attached(result);
  ZEBCacheSet* set = zeb.NewSet();
  zeb.File(set, filed);
  Reports::Take();
  zeb.Stop();
  EXPECT_THAT(Reports::Take(), IsEmpty());
  zeb.cache.Release(id);
  zeb.cache.DeleteCacheSet(set);
}

}  // namespace
}  // namespace contract
