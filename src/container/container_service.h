// What the container room publishes.
#ifndef ZEB_CONTAINER_CONTAINER_SERVICE_H
#define ZEB_CONTAINER_CONTAINER_SERVICE_H

#include "base/service_table.h"

namespace zeb {

ServiceTable containerService();

namespace container {

// The sixteen current procs under a name of the caller's, without the older ones. False when a row
// is refused.
bool registerContainersAs(const char* interfaceName) noexcept;

}  // namespace container

}  // namespace zeb

#endif
