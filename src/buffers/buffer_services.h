// What the buffers room publishes.
#ifndef ZEB_BUFFERS_BUFFER_SERVICES_H
#define ZEB_BUFFERS_BUFFER_SERVICES_H

#include "base/service_table.h"

namespace zeb {

ServiceTable sharedBufferService();
ServiceTable progressService();

}  // namespace zeb

#endif
