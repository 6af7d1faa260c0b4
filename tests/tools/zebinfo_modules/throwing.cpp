// A module with a fault: an exception leaves its entry point.
#include <stdexcept>

#include "zeb/zeb.h"

extern "C" __attribute__((visibility("default"))) int32_t ExampleModuleStart(ZEBGetProcAddress);
extern "C" __attribute__((visibility("default"))) void ExampleModuleStop();

int32_t ExampleModuleStart(ZEBGetProcAddress /*getProcAddress*/) {
  throw std::runtime_error("thrown by the module");
}

void ExampleModuleStop() {}
