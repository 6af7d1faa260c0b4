// What the errors room publishes.
#ifndef ZEB_ERRORS_ERROR_SERVICE_H
#define ZEB_ERRORS_ERROR_SERVICE_H

#include "base/service_table.h"

namespace zeb {

ServiceTable errorService();

}  // namespace zeb

#endif
