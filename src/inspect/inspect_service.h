// What the inspect room publishes.
#ifndef ZEB_INSPECT_INSPECT_SERVICE_H
#define ZEB_INSPECT_INSPECT_SERVICE_H

#include "base/service_table.h"

namespace zeb {

ServiceTable inspectService();

}  // namespace zeb

#endif
