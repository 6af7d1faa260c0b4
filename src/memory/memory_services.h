// What the memory room publishes.
#ifndef ZEB_MEMORY_MEMORY_SERVICES_H
#define ZEB_MEMORY_MEMORY_SERVICES_H

#include "base/service_table.h"

namespace zeb {

// The four memory procs: the host's own functions when it gave all four, else the library's.
ServiceTable memoryService();

// Eight procs without effect.
ServiceTable memoryDebugService();

}  // namespace zeb

#endif
