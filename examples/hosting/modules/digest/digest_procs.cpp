// The digest interface, over the algorithms that the module was built with.
#include <string>
#include <string_view>

#include "modules/digest/algorithms.h"
#include "modules/digest/digest_module.h"

namespace examples {
namespace {

ZEBErrorObject* unknownAlgorithm(std::string_view name) {
  const std::string message = "unknown algorithm \"" + std::string(name) + "\": try " +
                              kAlgorithms.narrowName + " or " + kAlgorithms.wideName;
  return newDigestError(HOSTING_DIGEST_ERROR_UNKNOWN_ALGORITHM, message.c_str());
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
    return newDigestError(HOSTING_DIGEST_ERROR_NO_RESULT, "no place for the digest given");
  }
  if (bytes == nullptr && size != 0) {
    return newDigestError(HOSTING_DIGEST_ERROR_NO_BYTES, "no bytes given");
  }
  const char* const name = algorithm != nullptr ? algorithm : kAlgorithms.wideName;
  return guardedDigest([&] { return digestBy(name, digest, bytes, size); });
}

uint32_t DigestV1(const void* bytes, uint64_t size) noexcept {
  return kAlgorithms.narrow(bytes, size);
}

const char* GetName() noexcept { return kAlgorithms.publisher; }

ZEBErrorObject* NewDigester(ZEBContainer** digester) noexcept {
  if (digester == nullptr) {
    return newDigestError(HOSTING_DIGEST_ERROR_NO_RESULT, "no place for the digester given");
  }
  return guardedDigest([&] { return makeDigester(digester); });
}

constexpr HostingDigestProcs procs{Digest, DigestV1, GetName, NewDigester};
const ZEBProcTableEntry entries[] = {HOSTING_DIGEST_PROCS(EXAMPLES_PUBLISH_ROW)};

}  // namespace

Publication digestPublication() { return {HOSTING_DIGEST_INTERFACE, entries}; }

}  // namespace examples
