// Shared buffers as the library's client-side code makes them: through "ZEBSharedBuffInterface".
#ifndef ZEB_BUFFERS_BUFFER_CLIENT_H
#define ZEB_BUFFERS_BUFFER_CLIENT_H

#include "zeb/shared_buffer.h"

namespace zeb::buffers {

// The six procs, fetched again when the change counter has moved. Throws CZEBError "Missing
// Interface" when they cannot be fetched. [any-thread]
ZEBSharedBufferProcs clientProcs();

// A new buffer. Throws CZEBError "Out of Memory" when there is none, after ending the client's data
// by its delete procedure. [any-thread]
[[nodiscard]] ZEBSharedBuffer* newClientBuffer(uint64_t size, void* data,
                                               ZEBSharedBuffDelete deleteProc,
                                               ZEBSharedBuffReleaseHook hook, void* deleteContext);

// Only while one thread uses the library.
void forgetClientProcs() noexcept;

}  // namespace zeb::buffers

#endif
