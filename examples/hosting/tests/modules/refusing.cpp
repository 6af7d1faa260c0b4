// A module that does not start, and says why.
#include "module.h"
#include "support/services.h"

int32_t HostingModuleStart(ZEBGetProcAddress getProcAddress) {
  const auto services = hosting::fetchServices(getProcAddress);
  if (services) services->frame.ReportError("no licence found");
  return 0;
}

void HostingModuleStop() {}
