// A module with a fault: an exception leaves its entry point.
#include <stdexcept>

#include "zeb/sdk/module_entry.h"

int32_t ZEBModuleStart(ZEBGetProcAddress /*find*/) {
  throw std::runtime_error("thrown by the module");
}

void ZEBModuleStop() {}
