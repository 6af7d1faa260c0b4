// The events that the library counts of itself. Hosts know them by these texts.
#ifndef ZEB_BASE_LIBRARY_COUNTERS_H
#define ZEB_BASE_LIBRARY_COUNTERS_H

#include "base/event_counter.h"

namespace zeb::counters {

using ZEB_T_MT::CZEBEventCounter;

extern CZEBEventCounter memoryAllocation;
extern CZEBEventCounter largeMemoryAllocation;
extern CZEBEventCounter memoryPageAllocation;
extern CZEBEventCounter containerPageMiss;
extern CZEBEventCounter instancePageMiss;
extern CZEBEventCounter interfaceMethodPageMiss;
extern CZEBEventCounter fullContainerCacheHit;
extern CZEBEventCounter fullContainerCacheMiss;
extern CZEBEventCounter emptyContainer;
extern CZEBEventCounter uncachedContainerDelete;
extern CZEBEventCounter containerAddRef;
extern CZEBEventCounter instanceLookup;
extern CZEBEventCounter sharedBuffer;
extern CZEBEventCounter sharedBufferPageMiss;
extern CZEBEventCounter atomFound;
extern CZEBEventCounter atomAllocated;
extern CZEBEventCounter atomAddRef;
extern CZEBEventCounter cacheEviction;
extern CZEBEventCounter markNoPurgeOnPurged;
extern CZEBEventCounter cachePurgeCreation;

}  // namespace zeb::counters

#endif
