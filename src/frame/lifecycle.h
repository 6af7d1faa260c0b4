// Starting and stopping the library.
#ifndef ZEB_FRAME_LIFECYCLE_H
#define ZEB_FRAME_LIFECYCLE_H

#include <cstdint>

#include "base/host_state.h"

namespace zeb::frame {

// What a host passes when it starts the library.
struct StartOptions {
  PageSource pages{};
  ObjectAllocatorSet objects{};
  ZEBErrorReport errorReport = nullptr;
  ZEBPurgeRequest purgeRequest = nullptr;
  uint32_t flags = 0;
  uint32_t unregisterCountStart = 1;
  uint64_t hostValue = 0;
};

// The look-up function, or null.
ZEBGetProcAddress start(const StartOptions& options) noexcept;

// The change counter.
uint32_t stop() noexcept;

// The look-up function while the library is started, else null.
ZEBGetProcAddress lookUpFunction() noexcept;

}  // namespace zeb::frame

#endif
