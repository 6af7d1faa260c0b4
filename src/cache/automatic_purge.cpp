#include "cache/automatic_purge.h"

#include "base/host_state.h"
#include "cache/cache.h"
#include "cache/client_purges.h"
#include "platform/background_thread.h"

namespace zeb::cache {

namespace {

void purgeToLowWaterMark() noexcept {
  ZEBCachePurge purge;
  try {
    if (!processCache.begin(purge, Wait::no)) return;
  } catch (...) {  // no memory to sort with
    return;
  }
  while (processCache.step(purge, ZEB_CACHE_LOW_WATER_MARK)) {
  }
  processCache.end(purge);
}

constinit BackgroundThread purgeThread{purgeToLowWaterMark};

bool mayPurgeElsewhere() noexcept {
  return hostState.multiThreaded && !clientPurges.wantCallersThread();
}

void askHost(ZEBPurgeRequest purgeRequest, int64_t newTotal) noexcept {
  try {
    purgeRequest(newTotal);
  } catch (...) {  // a request that fails has purged nothing
  }
}

}  // namespace

void sizeChanged(int64_t newTotal) noexcept {
  if (hostState.purgeRequest != nullptr) {
    askHost(hostState.purgeRequest, newTotal);
    return;
  }
  if (newTotal <= ZEB_CACHE_HIGH_WATER_MARK) return;
  if (mayPurgeElsewhere() && purgeThread.request()) return;
  purgeToLowWaterMark();
}

void allowPurgeThread() noexcept { purgeThread.open(); }
void endPurgeThread() noexcept { purgeThread.close(); }

}  // namespace zeb::cache
