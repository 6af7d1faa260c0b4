#include "frame/lifecycle.h"

#include <cstdlib>

#include "atoms/atom.h"
#include "base/lazy_list.h"
#include "buffers/buffer_client.h"
#include "cache/cache_service.h"
#include "container/container.h"
#include "errors/client_error.h"
#include "errors/standard_errors.h"
#include "events/event_binding.h"
#include "frame/services.h"
#include "frame/stream_names.h"
#include "memory/allocator.h"
#include "registry/memory_binding.h"
#include "registry/proc_registry.h"

namespace zeb::frame {

namespace {

void* defaultPageAlloc(uint64_t size) { return std::malloc(size); }
void defaultPageFree(void* block) { std::free(block); }

void installHostChoices(const StartOptions& options) noexcept {
  const bool hostIsMultiThreaded = (options.flags & ZEB_FLAG_MULTI_THREADED) != 0;
  hostState.hostValue = options.hostValue;
  hostState.unregisterCount = options.unregisterCountStart;
  if (options.pages.alloc == nullptr || options.pages.free == nullptr) {
    hostState.pages = {defaultPageAlloc, defaultPageFree};
    hostState.multiThreaded = true;
  } else {
    hostState.pages = options.pages;
    hostState.hostAllocatorsInstalled = true;
    hostState.multiThreaded = hostIsMultiThreaded;
  }
  hostState.objects = {};
  if (options.objects.complete()) {
    hostState.objects = options.objects;
    hostState.hostAllocatorsInstalled = true;
    hostState.multiThreaded = hostIsMultiThreaded;
  }
  hostState.errorReport = options.errorReport;
  hostState.purgeRequest = options.purgeRequest;
}

bool bringUp() {
  if (!registerServices()) return false;
  if (!initialiseLazyList(lazyList)) return false;
  if (!registerFrameProcs()) return false;
  makeStreamNames();
  return true;
}

// In this order: what is torn down later may still be used by what is torn down earlier.
void tearDown() {
  buffers::forgetClientProcs();
  releaseClientErrors();
  terminateLazyList(lazyList);
  events::disconnectCounters();
  registry::unbindMemory();
  cache::tearDown();
  releaseStreamNames();
  errors::releaseStandardErrors();
  container::excuseRecycledNames();
  atoms::dropTableUser();
  processAllocator.releasePages();
  processAllocator.setThrowsInteger(true);
}

}  // namespace

ZEBGetProcAddress start(const StartOptions& options) noexcept {
  // Only the default configuration may be started more than once: a second host's allocators could
  // not take effect, and the first one's are not the second one's to rely on.
  if (hostState.hostAllocatorsInstalled) return nullptr;
  if (hostState.initCount == 0) {
    installHostChoices(options);
    try {
      if (!bringUp()) return nullptr;
    } catch (...) {
      return nullptr;
    }
    processAllocator.setThrowsInteger(false);
  }
  ++hostState.initCount;
  return &registry::find;
}

uint32_t stop() noexcept {
  // While the library still counts as started: clients' procedures may be running.
  if (hostState.initCount == 1) cache::finishPurges();
  if (--hostState.initCount != 0) return unregisterCount();
  hostState.hostAllocatorsInstalled = false;
  try {
    tearDown();
  } catch (...) {  // whatever is left stays; the host still learns the counter
  }
  return unregisterCount();
}

ZEBGetProcAddress lookUpFunction() noexcept {
  return hostState.initCount > 0 ? &registry::find : nullptr;
}

}  // namespace zeb::frame
