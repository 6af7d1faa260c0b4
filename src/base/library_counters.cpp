#include "base/library_counters.h"

namespace zeb::counters {

CZEBEventCounter memoryAllocation("ZEB memory allocation", 50);
CZEBEventCounter largeMemoryAllocation(
    "ZEB large memory allocation (allocation request larger than 64k)", 100);
CZEBEventCounter memoryPageAllocation(
    "ZEB memory page allocation (no adequate free block available)", 100);
CZEBEventCounter containerPageMiss("ZEB container allocation page miss", 60);
CZEBEventCounter instancePageMiss("ZEB instance allocation page miss", 60);
CZEBEventCounter interfaceMethodPageMiss("ZEB interface method allocation page miss", 60);
CZEBEventCounter fullContainerCacheHit("ZEB calls to NewFullContainer that hit the cache", 5);
CZEBEventCounter fullContainerCacheMiss("ZEB calls to NewFullContainer that missed the cache", 20);
CZEBEventCounter emptyContainer("ZEB calls to NewContainer instead of NewFullContainer", 20);
CZEBEventCounter uncachedContainerDelete(
    "ZEB calls to DeleteContainer that won't be cached because they have multiple instances or "
    "interfaces",
    20);
CZEBEventCounter containerAddRef("ZEB calls to Container::AddRef", -1);
CZEBEventCounter instanceLookup(
    "ZEB calls to Container::GetInstance that missed the client-side cache", 5);
CZEBEventCounter sharedBuffer("ZEB calls to new ZEBSharedBuffer", 20);
CZEBEventCounter sharedBufferPageMiss("ZEB ZEBSharedBuffer allocation page miss", 60);
CZEBEventCounter atomFound("ZEB new string atom from char* found duplicate and called AddRef", 10);
CZEBEventCounter atomAllocated("ZEB new string atom from char* did not find duplicate so allocated",
                               60);
CZEBEventCounter atomAddRef("ZEB calls to ZEBString::AddRef", -1);
CZEBEventCounter cacheEviction("ZEB evicting a cache item", 50);
CZEBEventCounter markNoPurgeOnPurged(
    "ZEB call to TZEBCacheID::MarkNoPurge on previously purged item", 100);
CZEBEventCounter cachePurgeCreation("ZEB creation of CZEBCachePurge (sorts the cache)", 1000);

}  // namespace zeb::counters
