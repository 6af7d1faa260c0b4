// A module that does not start, and says why.
#include "common/support/services.h"
#include "zeb/sdk/module_entry.h"

int32_t ZEBModuleStart(ZEBGetProcAddress find) {
  const auto services = examples::fetchServices(find);
  if (services) services->frame.ReportError("no licence found");
  return 0;
}

void ZEBModuleStop() {}
