// Shows all event counters of the process.
#ifndef HOSTING_HOST_EVENT_TABLE_H
#define HOSTING_HOST_EVENT_TABLE_H

#include "zeb/event.h"

namespace hosting {

// Prints the counters that have counted something, the most critical first, equally critical ones
// by name, and how many have not. Throws std::bad_alloc.
void printEventTable(const ZEBEventProcs& events);

}  // namespace hosting

#endif
