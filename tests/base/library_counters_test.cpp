#include "base/library_counters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace {

namespace counters = zeb::counters;

struct Expected {
  const ZEB_T_MT::CZEBEventCounter& counter;
  const char* name;
  int32_t criticality;
};

// Hosts select counters by these texts and sort them by these numbers: none may ever change.
const Expected kExpected[] = {
    {counters::memoryAllocation, "ZEB memory allocation", 50},
    {counters::largeMemoryAllocation,
     "ZEB large memory allocation (allocation request larger than 64k)", 100},
    {counters::memoryPageAllocation,
     "ZEB memory page allocation (no adequate free block available)", 100},
    {counters::containerPageMiss, "ZEB container allocation page miss", 60},
    {counters::instancePageMiss, "ZEB instance allocation page miss", 60},
    {counters::interfaceMethodPageMiss, "ZEB interface method allocation page miss", 60},
    {counters::fullContainerCacheHit, "ZEB calls to NewFullContainer that hit the cache", 5},
    {counters::fullContainerCacheMiss, "ZEB calls to NewFullContainer that missed the cache", 20},
    {counters::emptyContainer, "ZEB calls to NewContainer instead of NewFullContainer", 20},
    {counters::uncachedContainerDelete,
     "ZEB calls to DeleteContainer that won't be cached because they have multiple instances or "
     "interfaces",
     20},
    {counters::containerAddRef, "ZEB calls to Container::AddRef", -1},
    {counters::instanceLookup,
     "ZEB calls to Container::GetInstance that missed the client-side cache", 5},
    {counters::sharedBuffer, "ZEB calls to new ZEBSharedBuffer", 20},
    {counters::sharedBufferPageMiss, "ZEB ZEBSharedBuffer allocation page miss", 60},
    {counters::atomFound, "ZEB new string atom from char* found duplicate and called AddRef", 10},
    {counters::atomAllocated, "ZEB new string atom from char* did not find duplicate so allocated",
     60},
    {counters::atomAddRef, "ZEB calls to ZEBString::AddRef", -1},
    {counters::cacheEviction, "ZEB evicting a cache item", 50},
    {counters::markNoPurgeOnPurged,
     "ZEB call to TZEBCacheID::MarkNoPurge on previously purged item", 100},
    {counters::cachePurgeCreation, "ZEB creation of CZEBCachePurge (sorts the cache)", 1000},
};

TEST(LibraryCounters, HaveTheNamesAndCriticalitiesThatHostsKnow) {
  for (const Expected& expected : kExpected) {
    EXPECT_STREQ(expected.counter.name(), expected.name);
    EXPECT_EQ(expected.counter.criticality(), expected.criticality) << expected.name;
    EXPECT_EQ(expected.counter.level(), 1) << expected.name;
  }
}

TEST(LibraryCounters, AreTwentyDifferentOnes) {
  std::set<std::string> names;
  for (const Expected& expected : kExpected) names.insert(expected.counter.name());
  EXPECT_EQ(names.size(), 20u);
}

TEST(LibraryCounters, AreAllTheCountersThatTheLoadedLibraryLists) {
  std::set<const ZEB_T_MT::LazyTerminate*> listed;
  for (const auto* at = zeb::lazyList.head(); at != nullptr; at = at->older()) {
    if (dynamic_cast<const ZEB_T_MT::CZEBEventCounter*>(at) != nullptr) listed.insert(at);
  }
  std::set<const ZEB_T_MT::LazyTerminate*> expected;
  for (const Expected& it : kExpected) expected.insert(&it.counter);
  EXPECT_EQ(listed, expected);
}

TEST(LibraryCounters, AreNotRegisteredWhenTheLibraryIsLoaded) {
  for (const Expected& expected : kExpected) EXPECT_FALSE(expected.counter.registered());
}

}  // namespace
