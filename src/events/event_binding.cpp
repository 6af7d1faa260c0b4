#include "events/event_binding.h"

#include "base/event_counter.h"
#include "events/event_registry.h"
#include "events/event_service.h"
#include "registry/client_binding.h"

namespace zeb::events {

namespace {

using EventBinding = registry::ClientBinding<ZEBEventProcs>;
constexpr EventBinding::Requests kRequests{{ZEB_EVENT_PROCS(ZEB_PROC_REQUEST)}};
constinit EventBinding binding{ZEB_EVENT_INTERFACE, kRequests};
constinit bool unusable = false;

EventRegistration registerThroughInterface(const char* name, int32_t criticality) {
  if (!eventsAvailable()) return {};
  const ZEBEventProcs& procs = binding.procs();
  ZEBEventCounter* handle = procs.NewEventCounter(name, criticality);
  if (handle == nullptr) return {};
  return {.handle = handle,
          .signal = procs.SignalEventCounter,
          .remove = procs.DeleteEventCounter,
          .tally = isLibrarySignal(procs.SignalEventCounter) ? &handle->total : nullptr};
}

}  // namespace

bool eventsAvailable() noexcept {
  if (!unusable && !binding.refresh()) unusable = true;
  return !unusable;
}

void connectCounters() noexcept { registerCounter = registerThroughInterface; }

void disconnectCounters() noexcept { binding.invalidate(); }

}  // namespace zeb::events
