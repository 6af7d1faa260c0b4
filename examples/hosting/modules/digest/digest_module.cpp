// A digest module's class.
#include "modules/digest/digest_module.h"

namespace examples {

ZEBErrorObject* newDigestError(int32_t id, const char* message) {
  return DigestModule::services().errors.NewError(message, HOSTING_DIGEST_COMPONENT, id, nullptr,
                                                  nullptr);
}

// The digest interface comes last, as its NewDigester needs the others.
DigestModule::DigestModule()
    : ModuleBase({digesterPublication(), checkedDigesterPublication(), digestPublication()}) {}

}  // namespace examples

ZEB_SDK_MODULE(examples::DigestModule);
