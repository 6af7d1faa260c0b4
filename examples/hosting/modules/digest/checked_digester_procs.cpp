// The interface that is added to a digester after the first: it overrides Update, and calls what it
// overrides without knowing whose that is.
#include "modules/digest/digest_module.h"
#include "modules/digest/digester_state.h"

namespace examples {
namespace {

// The Update that the container has besides ours: the parent's.
ZEBErrorObject* findOverridden(ZEBContainer* digester, HostingDigesterUpdateProc* update) {
  constexpr int32_t kMissingIsAnError = 1;
  const DigesterNames& names = DigestModule::state();
  ZEBProc found = nullptr;
  ZEBErrorObject* const error = DigestModule::services().containers.GetParentMethod(
      &found, digester, names.checkedDigester.get(), names.update.get(), names.updateProc.get(),
      kMissingIsAnError);
  if (error == nullptr) *update = reinterpret_cast<HostingDigesterUpdateProc>(found);
  return error;
}

ZEBErrorObject* digestAndCount(ZEBContainer* digester, const void* bytes, uint64_t size) {
  DigesterState* state = nullptr;
  if (ZEBErrorObject* const error = findState(digester, &state)) return error;
  HostingDigesterUpdateProc overridden = nullptr;
  if (ZEBErrorObject* const error = findOverridden(digester, &overridden)) return error;
  if (ZEBErrorObject* const error = overridden(digester, bytes, size)) return error;
  state->byteCount += size;
  ++state->pieceCount;
  return nullptr;
}

ZEBErrorObject* Update(ZEBContainer* digester, const void* bytes, uint64_t size) noexcept {
  if (bytes == nullptr && size != 0) {
    return newDigestError(HOSTING_DIGEST_ERROR_NO_BYTES, "no bytes given");
  }
  return guardedDigest([&] { return digestAndCount(digester, bytes, size); });
}

constexpr HostingCheckedDigesterProcs procs{Update};
const ZEBProcTableEntry entries[] = {HOSTING_CHECKED_DIGESTER_PROCS(EXAMPLES_PUBLISH_ROW)};

}  // namespace

Publication checkedDigesterPublication() { return {HOSTING_CHECKED_DIGESTER_INTERFACE, entries}; }

}  // namespace examples
