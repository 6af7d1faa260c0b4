// A module with a fault: it keeps an atom, which the host must notice.
#include "module.h"
#include "support/services.h"

int32_t HostingModuleStart(ZEBGetProcAddress getProcAddress) {
  const auto services = hosting::fetchServices(getProcAddress);
  return services && services->strings.NewStringAtom("never given back") ? 1 : 0;
}

void HostingModuleStop() {}
