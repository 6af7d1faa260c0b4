// What the cache room publishes, and its part in start and stop.
#ifndef ZEB_CACHE_CACHE_SERVICE_H
#define ZEB_CACHE_CACHE_SERVICE_H

#include "base/service_table.h"

namespace zeb {

ServiceTable cacheService();

namespace cache {

// Before the table is registered: chooses the clock and allows a purge thread.
void prepare();

// Waits for a purge thread that is still running. Before anything else is torn down, for clients'
// delete procedures run on it and may use all of the library.
void finishPurges() noexcept;

// Removes the client purges and ends a purge that its client never ended. Identifiers and sets
// stay, with the memory of the host that they came from, until their clients give them back.
void tearDown() noexcept;

// The twenty-five current procs under a name of the caller's, without the older ones. False when a
// row is refused.
bool registerCacheAs(const char* interfaceName) noexcept;

}  // namespace cache

}  // namespace zeb

#endif
