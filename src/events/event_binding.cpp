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

ZEBEventCounter* create(const char* name, int32_t criticality) {
  return eventsAvailable() ? binding.procs().NewEventCounter(name, criticality) : nullptr;
}

// Through the procs that made the counter: they stay fetched until disconnectCounters.
void destroy(ZEBEventCounter* counter) { binding.procs().DeleteEventCounter(counter); }

void signal(ZEBEventCounter* counter, uint64_t amount) {
  binding.procs().SignalEventCounter(counter, amount);
}

Tally* tallyOf(ZEBEventCounter* counter) {
  return isLibrarySignal(binding.procs().SignalEventCounter) ? &counter->total : nullptr;
}

}  // namespace

bool eventsAvailable() noexcept {
  if (!unusable && !binding.refresh()) unusable = true;
  return !unusable;
}

void connectCounters() noexcept {
  eventSlots = {.create = create, .destroy = destroy, .signal = signal, .tallyOf = tallyOf};
}

void disconnectCounters() noexcept { binding.invalidate(); }

}  // namespace zeb::events
