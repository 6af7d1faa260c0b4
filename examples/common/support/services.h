// What the host and the modules use of the library, fetched in one go.
//
// The library's own interfaces stay registered until it stops, so fetching them once is enough.
// Interfaces of modules come and go: see hosting/modules/words/digest_binding.h for how to follow
// those.
#ifndef EXAMPLES_COMMON_SUPPORT_SERVICES_H
#define EXAMPLES_COMMON_SUPPORT_SERVICES_H

#include <optional>

#include "zeb/atom.h"
#include "zeb/container.h"
#include "zeb/error.h"
#include "zeb/event.h"
#include "zeb/frame.h"
#include "zeb/progress.h"
#include "zeb/shared_buffer.h"

namespace examples {

struct Services {
  ZEBGetProcAddress getProcAddress;
  ZEBFrameProcs frame;
  ZEBStringProcs strings;
  ZEBErrorProcs errors;
  ZEBEventProcs events;
  ZEBContainerProcs containers;
  ZEBSharedBufferProcs buffers;
  ZEBProgressProcs progress;
};

// Nothing if one of the procs is missing.
inline std::optional<Services> fetchServices(ZEBGetProcAddress getProcAddress) {
  Services services{};
  services.getProcAddress = getProcAddress;
  const bool complete = ZEBFetchFrameProcs(getProcAddress, &services.frame) == 1 &&
                        ZEBFetchStringProcs(getProcAddress, &services.strings) == 1 &&
                        ZEBFetchErrorProcs(getProcAddress, &services.errors) == 1 &&
                        ZEBFetchEventProcs(getProcAddress, &services.events) == 1 &&
                        ZEBFetchContainerProcs(getProcAddress, &services.containers) == 1 &&
                        ZEBFetchSharedBufferProcs(getProcAddress, &services.buffers) == 1 &&
                        ZEBFetchProgressProcs(getProcAddress, &services.progress) == 1;
  if (!complete) return std::nullopt;
  return services;
}

}  // namespace examples

#endif
