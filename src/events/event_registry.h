// The registry of event counters.
//
// New counters stand at the head of the list. The lock guards the list; totals are added without it
// (base/tally.h). Memory is taken and freed outside the lock.
#ifndef ZEB_EVENTS_EVENT_REGISTRY_H
#define ZEB_EVENTS_EVENT_REGISTRY_H

#include <cstdint>

#include "base/live_objects.h"
#include "base/object_bases.h"
#include "base/tally.h"
#include "util/intrusive_list.h"
#include "zeb/event.h"

// A registered counter.
struct ZEBEventCounter : zeb::double_linked_list_element<ZEBEventCounter, ZEBBasePMT> {
  ZEBEventCounter(const char* counterName, int32_t counterCriticality) noexcept
      : name(counterName), criticality(counterCriticality) {}

  zeb::Tally total;
  const char* const name;  // the caller's text, not a copy
  const int32_t criticality;
};

namespace ZEB_T_MT {
using ::ZEBEventCounter;
}

namespace zeb::events {

// Raises what allocation raises.
[[nodiscard]] ZEBEventCounter* makeCounter(const char* name, int32_t criticality);
void deleteCounter(ZEBEventCounter* counter) noexcept;  // not null

[[nodiscard]] LiveObjects liveCounters() noexcept;

// One record per counter, the latest made first, in memory of freeObject. Raises what allocation
// raises.
[[nodiscard]] ZEBEventRecord* makeSnapshot(uint32_t& count);

}  // namespace zeb::events

#endif
