// Publishes the digest interface over the algorithms that the module was built with.
#include <string>
#include <string_view>

#include "interfaces/digest.h"
#include "module.h"
#include "modules/digest/algorithms.h"
#include "support/guard.h"
#include "support/module_instance.h"

namespace hosting {
namespace {

ModuleInstance<NoState> instance;

ZEBErrorObject* newError(int32_t id, const char* message) {
  return instance.services().errors.NewError(message, HOSTING_DIGEST_COMPONENT, id, nullptr,
                                             nullptr);
}

ZEBErrorObject* unknownAlgorithm(std::string_view name) {
  const std::string message = "unknown algorithm \"" + std::string(name) + "\": try " +
                              kAlgorithms.narrowName + " or " + kAlgorithms.wideName;
  return newError(HOSTING_DIGEST_ERROR_UNKNOWN_ALGORITHM, message.c_str());
}

ZEBErrorObject* digestBy(std::string_view name, uint64_t* digest, const void* bytes,
                         uint64_t size) {
  if (name == kAlgorithms.wideName) {
    *digest = kAlgorithms.wide(bytes, size);
  } else if (name == kAlgorithms.narrowName) {
    *digest = kAlgorithms.narrow(bytes, size);
  } else {
    return unknownAlgorithm(name);
  }
  return nullptr;
}

ZEBErrorObject* Digest(uint64_t* digest, const char* algorithm, const void* bytes,
                       uint64_t size) noexcept {
  if (digest == nullptr) {
    return newError(HOSTING_DIGEST_ERROR_NO_RESULT, "no place for the digest given");
  }
  if (bytes == nullptr && size != 0) {
    return newError(HOSTING_DIGEST_ERROR_NO_BYTES, "no bytes given");
  }
  const char* const name = algorithm != nullptr ? algorithm : kAlgorithms.wideName;
  return guarded(instance.services().errors, HOSTING_DIGEST_COMPONENT, HOSTING_DIGEST_ERROR_FAILED,
                 [&] { return digestBy(name, digest, bytes, size); });
}

uint32_t DigestV1(const void* bytes, uint64_t size) noexcept {
  return kAlgorithms.narrow(bytes, size);
}

const char* GetName() noexcept { return kAlgorithms.publisher; }

constexpr HostingDigestProcs procs{Digest, DigestV1, GetName};
const ZEBProcTableEntry entries[] = {HOSTING_DIGEST_PROCS(HOSTING_PUBLISH_ROW)};
const Publication publications[] = {{HOSTING_DIGEST_INTERFACE, entries}};

}  // namespace
}  // namespace hosting

int32_t HostingModuleStart(ZEBGetProcAddress getProcAddress) {
  return hosting::instance.start(getProcAddress, hosting::publications);
}

void HostingModuleStop() { hosting::instance.stop(); }
