// The cache's table under another name.
#include "cache/cache_service.h"

#include <gtest/gtest.h>

#include "registry/proc_registry.h"
#include "support/started_library.h"
#include "zeb/cache.h"

namespace zeb::cache {
namespace {

class CacheServiceTest : public ::testing::Test {
 protected:
  test::StartedLibrary library_;
};

TEST_F(CacheServiceTest, IsServedUnderAnotherNameWithoutTheOlderProcs) {
  ASSERT_TRUE(registerCacheAs("AnotherCacheInterface"));
  const ServiceTable service = cacheService();
  EXPECT_EQ(service.entries.size(), 25u);
  EXPECT_EQ(service.olderEntries.size(), 3u);
  for (const ZEBProcTableEntry& entry : service.entries) {
    EXPECT_EQ(registry::find("AnotherCacheInterface", entry.methodName, entry.procName), entry.proc)
        << entry.procName;
  }
  for (const ZEBProcTableEntry& entry : service.olderEntries) {
    EXPECT_EQ(registry::find("AnotherCacheInterface", entry.methodName, entry.procName), nullptr)
        << entry.procName;
  }
}

TEST_F(CacheServiceTest, IsServedUnderEachNameOnce) {
  EXPECT_FALSE(registerCacheAs(ZEB_CACHE_INTERFACE));
  EXPECT_TRUE(registerCacheAs("AnotherCacheInterface"));
  EXPECT_FALSE(registerCacheAs("AnotherCacheInterface"));
}

}  // namespace
}  // namespace zeb::cache
