// A digest module's entry points.
#include "modules/digest/digest_module.h"

#include "common/module.h"

namespace examples {

ModuleInstance<DigesterNames> digestModule;

ZEBErrorObject* newDigestError(int32_t id, const char* message) {
  return digestModule.services().errors.NewError(message, HOSTING_DIGEST_COMPONENT, id, nullptr,
                                                 nullptr);
}

}  // namespace examples

int32_t ExampleModuleStart(ZEBGetProcAddress getProcAddress) {
  // The digest interface comes last, as its NewDigester needs the others.
  const examples::Publication publications[] = {examples::digesterPublication(),
                                                examples::checkedDigesterPublication(),
                                                examples::digestPublication()};
  return examples::digestModule.start(getProcAddress, publications);
}

void ExampleModuleStop() { examples::digestModule.stop(); }
