// A module with a fault: it keeps an atom, which the host must notice.
#include "common/support/services.h"
#include "zeb/sdk/module_entry.h"

int32_t ZEBModuleStart(ZEBGetProcAddress find) {
  const auto services = examples::fetchServices(find);
  return services && services->strings.NewStringAtom("never given back") ? 1 : 0;
}

void ZEBModuleStop() {}
