// What the host and the modules use of the library, fetched in one go.
//
// The library's own interfaces stay registered until it stops, so fetching them once is enough.
// Interfaces of modules come and go: see hosting/modules/words/digest_binding.h for how to follow
// those.
#ifndef EXAMPLES_COMMON_SUPPORT_SERVICES_H
#define EXAMPLES_COMMON_SUPPORT_SERVICES_H

#include <optional>

#include "zeb/atom.h"
#include "zeb/cache.h"
#include "zeb/container.h"
#include "zeb/error.h"
#include "zeb/event.h"
#include "zeb/filter.h"
#include "zeb/frame.h"
#include "zeb/positionable_stream.h"
#include "zeb/progress.h"
#include "zeb/rewindable_stream.h"
#include "zeb/shared_buffer.h"
#include "zeb/simple_stream.h"
#include "zeb/stream_factory.h"

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
  ZEBCacheProcs cache;
  ZEBFilterProcs filters;
  ZEBStreamFactoryProcs streamFactory;
  ZEBSimpleStreamProcs simpleStreams;
  ZEBRewindableStreamProcs rewindableStreams;
  ZEBPositionableStreamProcs positionableStreams;
};

// Nothing if one of the procs is missing.
inline std::optional<Services> fetchServices(ZEBGetProcAddress getProcAddress) {
  Services services{};
  services.getProcAddress = getProcAddress;
  const auto fetch = [&](auto fetchProcs, auto* procs) {
    return fetchProcs(getProcAddress, procs) == 1;
  };
  const bool complete =
      fetch(ZEBFetchFrameProcs, &services.frame) && fetch(ZEBFetchStringProcs, &services.strings) &&
      fetch(ZEBFetchErrorProcs, &services.errors) && fetch(ZEBFetchEventProcs, &services.events) &&
      fetch(ZEBFetchContainerProcs, &services.containers) &&
      fetch(ZEBFetchSharedBufferProcs, &services.buffers) &&
      fetch(ZEBFetchProgressProcs, &services.progress) &&
      fetch(ZEBFetchCacheProcs, &services.cache) && fetch(ZEBFetchFilterProcs, &services.filters) &&
      fetch(ZEBFetchStreamFactoryProcs, &services.streamFactory) &&
      fetch(ZEBFetchSimpleStreamProcs, &services.simpleStreams) &&
      fetch(ZEBFetchRewindableStreamProcs, &services.rewindableStreams) &&
      fetch(ZEBFetchPositionableStreamProcs, &services.positionableStreams);
  if (!complete) return std::nullopt;
  return services;
}

}  // namespace examples

#endif
