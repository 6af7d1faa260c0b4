// A module that does not start, and says why.
#include "common/module.h"
#include "common/support/services.h"

int32_t ExampleModuleStart(ZEBGetProcAddress getProcAddress) {
  const auto services = examples::fetchServices(getProcAddress);
  if (services) services->frame.ReportError("no licence found");
  return 0;
}

void ExampleModuleStop() {}
