// What the files of a digest module share. Each interface has a file of its own; digest_module.cpp
// lists and publishes them.
#ifndef HOSTING_DIGEST_DIGEST_MODULE_H
#define HOSTING_DIGEST_DIGEST_MODULE_H

#include <cstdint>

#include "common/support/guard.h"
#include "common/support/module_base.h"
#include "interfaces/digest.h"
#include "modules/digest/digester_names.h"

namespace examples {

class DigestModule : public ModuleBase<DigestModule, DigesterNames> {
 public:
  DigestModule();
};

// An error of component "HostingDigest".
ZEBErrorObject* newDigestError(int32_t id, const char* message);

// The barrier of all procs of the module.
template <class Body>
ZEBErrorObject* guardedDigest(const Body& body) noexcept {
  return guarded(DigestModule::services().errors, HOSTING_DIGEST_COMPONENT,
                 HOSTING_DIGEST_ERROR_FAILED, body);
}

// A new digester for NewDigester. Throws std::bad_alloc.
ZEBErrorObject* makeDigester(ZEBContainer** digester);

// What the module publishes.
Publication digestPublication();
Publication digesterPublication();
Publication checkedDigesterPublication();

}  // namespace examples

#endif
