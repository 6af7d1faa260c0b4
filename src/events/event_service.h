// What the events room publishes.
#ifndef ZEB_EVENTS_EVENT_SERVICE_H
#define ZEB_EVENTS_EVENT_SERVICE_H

#include "base/service_table.h"
#include "zeb/event.h"

namespace zeb {

ServiceTable eventService();

namespace events {

// The same table under a name of the caller's. Never throws; false when a row is refused.
bool registerEventsAs(const char* interfaceName) noexcept;

// True for the library's own signal proc: counters signalled by it are the library's own.
[[nodiscard]] bool isLibrarySignal(ZEBSignalEventCounterProc proc) noexcept;

}  // namespace events

}  // namespace zeb

#endif
