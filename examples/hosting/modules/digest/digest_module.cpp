// A digest module's entry points.
#include "modules/digest/digest_module.h"

#include "module.h"

namespace hosting {

ModuleInstance<DigesterNames> digestModule;

ZEBErrorObject* newDigestError(int32_t id, const char* message) {
  return digestModule.services().errors.NewError(message, HOSTING_DIGEST_COMPONENT, id, nullptr,
                                                 nullptr);
}

}  // namespace hosting

int32_t HostingModuleStart(ZEBGetProcAddress getProcAddress) {
  // The digest interface comes last, as its NewDigester needs the others.
  const hosting::Publication publications[] = {hosting::digesterPublication(),
                                               hosting::checkedDigesterPublication(),
                                               hosting::digestPublication()};
  return hosting::digestModule.start(getProcAddress, publications);
}

void HostingModuleStop() { hosting::digestModule.stop(); }
