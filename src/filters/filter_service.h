// What the filters room publishes.
#ifndef ZEB_FILTERS_FILTER_SERVICE_H
#define ZEB_FILTERS_FILTER_SERVICE_H

#include "base/service_table.h"

namespace zeb {

ServiceTable filterService();

}  // namespace zeb

#endif
