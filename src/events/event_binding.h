// How the library's own counters reach an event service: by name, like any client, so that a host
// which registers an event interface of its own receives the library's counts.
#ifndef ZEB_EVENTS_EVENT_BINDING_H
#define ZEB_EVENTS_EVENT_BINDING_H

namespace zeb::events {

// Fills the slot of base/event_counter.h, so that counters can be registered.
void connectCounters() noexcept;

// Forgets the fetched procs.
void disconnectCounters() noexcept;

// True when the procs of the event interface are at hand, fetched again if the change counter has
// moved. A fetch that fails makes the answer false for the rest of the process. [while one thread
// starts or stops the library]
bool eventsAvailable() noexcept;

}  // namespace zeb::events

#endif
