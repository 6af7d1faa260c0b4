// Purges by hand, and client purges.
#include "zeb/sdk/cache_purge.hpp"

#include <gtest/gtest.h>

#include <optional>

#include "sdk/started.h"
#include "zeb/sdk/cache.hpp"

namespace {

namespace sdk = zeb::sdk;

class Purges : public Started {
 protected:
  void fill(int number) {
    for (int i = 0; i < number; ++i) {
      (void)results.get(i, [&] { return sdk::CachedResult<int>{i, 10}; });
    }
  }

  sdk::CacheSet<int, int> results;
};

TEST_F(Purges, StepsEvictUntilTheBudgetIsMet) {
  fill(10);
  ASSERT_EQ(sdk::cacheSize(), 100);
  sdk::CachePurge purge = sdk::CachePurge::begin();
  ASSERT_TRUE(purge);
  while (sdk::cacheSize() > 45 && purge.step()) {
  }
  EXPECT_EQ(sdk::cacheSize(), 40);
}

TEST_F(Purges, OnePurgeGoesOnAtATime) {
  fill(1);
  std::optional<sdk::CachePurge> first = sdk::CachePurge::begin();
  sdk::CachePurge second = sdk::CachePurge::begin();
  EXPECT_FALSE(second);
  EXPECT_FALSE(second.step());
  EXPECT_EQ(sdk::cacheSize(), 10);
  first.reset();
  second = sdk::CachePurge::begin();
  EXPECT_TRUE(second.step());
  EXPECT_EQ(sdk::cacheSize(), 0);
  second.reset();
  EXPECT_FALSE(second);
}

TEST_F(Purges, SharedSetIsOneSet) {
  fill(1);
  sdk::CacheSet<int, int> same = results.share();
  EXPECT_EQ(same.get(), results.get());
  sdk::CacheSet<int, int> moved = std::move(same);
  EXPECT_TRUE(moved.contains(0));
}

int emptied = 0;
void emptyGlyphs() noexcept { ++emptied; }

TEST_F(Purges, ClientPurgeIsCalledWhileItsObjectLives) {
  emptied = 0;
  {
    const sdk::ClientPurge<&emptyGlyphs> purge;
    sdk::procs<sdk::Cache>().PurgeAllStaticCaches(nullptr);
    EXPECT_EQ(emptied, 1);
    const sdk::ClientPurge<&emptyGlyphs> again(sdk::PurgeThread::caller);
    sdk::procs<sdk::Cache>().PurgeAllStaticCaches(nullptr);
    EXPECT_EQ(emptied, 3);
  }
  sdk::procs<sdk::Cache>().PurgeAllStaticCaches(nullptr);
  EXPECT_EQ(emptied, 3);
}

}  // namespace
