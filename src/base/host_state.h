// What the host chose when it started the library, and how far the start has come.
//
// Written by the frame alone, while one thread starts or stops the library; read by everybody. The
// one exception is the change counter, which every unregistration moves.
#ifndef ZEB_BASE_HOST_STATE_H
#define ZEB_BASE_HOST_STATE_H

#include <atomic>
#include <cstdint>

#include "zeb/exports.h"

namespace zeb {

// The library's pages and large blocks come from here.
struct PageSource {
  ZEBPageAlloc alloc;
  ZEBPageFree free;
};

// All set or all null.
struct ObjectAllocatorSet {
  ZEBObjAlloc alloc;
  ZEBObjRealloc realloc;
  ZEBObjFree free;
  ZEBObjSize size;

  [[nodiscard]] bool complete() const noexcept {
    return alloc != nullptr && realloc != nullptr && free != nullptr && size != nullptr;
  }
};

// Atoms that the stream interfaces are named by, made at start so that streams need not intern
// them.
struct StreamInterfaceNames {
  ZEBString* simpleStreamImplementation;
  ZEBString* simpleStream;
  ZEBString* rewindableStream;
  ZEBString* positionableStream;
  ZEBString* stream;
};

struct HostState {
  int32_t initCount = 0;  // successful starts not yet matched by a stop
  bool hostAllocatorsInstalled = false;
  bool multiThreaded = false;
  uint32_t unregisterCount = 0;  // the change counter; its address is public
  uint64_t hostValue = 0;        // the host's own; never looked at
  PageSource pages{};
  ObjectAllocatorSet objects{};
  ZEBErrorReport errorReport = nullptr;
  ZEBPurgeRequest purgeRequest = nullptr;  // null: the cache purges itself
  StreamInterfaceNames* streamInterfaceNames = nullptr;
};

extern constinit HostState hostState;

// The change counter. Clients read the word itself, so it stays a plain one.
inline uint32_t unregisterCount() noexcept {
  return std::atomic_ref(hostState.unregisterCount).load(std::memory_order_acquire);
}
// Returns the value that it has moved to.
inline uint32_t moveUnregisterCount() noexcept {
  return std::atomic_ref(hostState.unregisterCount).fetch_add(1, std::memory_order_acq_rel) + 1;
}

// Tells the host's error-report procedure, if there is one. What it throws is swallowed.
void reportToHost(const char* message) noexcept;

}  // namespace zeb

#endif
