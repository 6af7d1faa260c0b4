// The services in the order in which starting the library registers them.
#ifndef ZEB_FRAME_SERVICES_H
#define ZEB_FRAME_SERVICES_H

#include <span>

#include "base/service_table.h"

namespace zeb::frame {

struct Service {
  ServiceTable (*table)();
  void (*prepare)();  // before the table is registered; null: nothing to prepare
};

std::span<const Service> services() noexcept;

// Interface "ZEB", which is registered when everything else has been.
ServiceTable frameService();

// Registers every service and binds the library's own client of the memory interface. Stops at the
// first that fails and returns false; what is registered stays.
bool registerServices();

// Registers the seven procs of interface "ZEB".
bool registerFrameProcs();

}  // namespace zeb::frame

#endif
