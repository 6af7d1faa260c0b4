// A module with a fault: it keeps an atom, which the host must notice.
#include "common/module.h"
#include "common/support/services.h"

int32_t ExampleModuleStart(ZEBGetProcAddress getProcAddress) {
  const auto services = examples::fetchServices(getProcAddress);
  return services && services->strings.NewStringAtom("never given back") ? 1 : 0;
}

void ExampleModuleStop() {}
