// Interface "ZEBEventInterface".
#include <array>

#include "base/value_boundary.h"
#include "events/event_registry.h"
#include "events/event_service.h"
#include "memory/object_memory.h"
#include "registry/proc_registry.h"
#include "zeb/event.h"

namespace zeb {

namespace {

namespace procs {

ZEBEventCounter* NewEventCounter(const char* name, int32_t criticality) {
  return name != nullptr ? events::makeCounter(name, criticality) : nullptr;
}

void DeleteEventCounter(ZEBEventCounter* counter) noexcept {
  if (counter != nullptr) events::deleteCounter(counter);
}

void SignalEventCounter(ZEBEventCounter* counter, uint64_t amount) noexcept {
  if (counter != nullptr) counter->total.add(amount);
}

ZEBEventRecord* NewEventSnapshot(uint32_t* count) {
  if (count == nullptr) return nullptr;
  *count = 0;
  return events::makeSnapshot(*count);
}

void DeleteEventSnapshot(ZEBEventRecord* snapshot) noexcept { freeObject(snapshot); }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_EVENT_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable eventService() { return {ZEB_EVENT_INTERFACE, entries, {}}; }

namespace events {

bool registerEventsAs(const char* interfaceName) noexcept {
  return registry::addAll(entries, interfaceName);
}

bool isLibrarySignal(ZEBSignalEventCounterProc proc) noexcept {
  return proc == &ValueProc<&procs::SignalEventCounter>::call;
}

}  // namespace events

}  // namespace zeb
