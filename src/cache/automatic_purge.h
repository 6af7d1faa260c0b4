// What happens when the cache has grown: the host is asked to purge, or the library purges by
// itself, on a thread of its own where host and clients allow it.
#ifndef ZEB_CACHE_AUTOMATIC_PURGE_H
#define ZEB_CACHE_AUTOMATIC_PURGE_H

#include <cstdint>

namespace zeb::cache {

// To be called after every change of the total, with no lock held. The purge stops when there is no
// memory for it; the next change tries again.
void sizeChanged(int64_t newTotal) noexcept;

// Between these two calls the library may have a purge thread. The second one waits for it; a purge
// that becomes necessary later runs in its caller.
void allowPurgeThread() noexcept;
void endPurgeThread() noexcept;

}  // namespace zeb::cache

#endif
