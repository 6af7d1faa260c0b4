// Shows all event counters of the process.
#ifndef EXAMPLES_COMMON_HOST_EVENT_TABLE_H
#define EXAMPLES_COMMON_HOST_EVENT_TABLE_H

#include "zeb/event.h"

namespace examples {

// Prints the counters that have counted something, the most critical first, equally critical ones
// by name, and how many have not. Throws std::bad_alloc.
void printEventTable(const ZEBEventProcs& events);

}  // namespace examples

#endif
