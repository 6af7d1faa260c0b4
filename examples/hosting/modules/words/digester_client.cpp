#include "modules/words/digester_client.h"

#include <utility>

namespace examples {

DigesterClient::DigesterClient(const Services& services, Container component)
    : services_(services), changeCounter_(services.frame), component_(std::move(component)) {}

// Asking costs a look-up under each interface of the component; comparing the change counter costs
// one load.
ZEBErrorObject* DigesterClient::keepMethodsCurrent() {
  static constexpr ZEBProcRequest kMethods[] = {HOSTING_DIGESTER_PROCS(ZEB_PROC_REQUEST)};
  const uint32_t now = changeCounter_.read();
  if (now == askedAt_) return nullptr;

  ++timesAsked_;
  ZEBErrorObject* const error = askForMethods(services_, component_.get(), kMethods, &methods_);
  askedAt_ = error == nullptr ? now : ChangeCounter::kNever;
  return error;
}

ZEBErrorObject* DigesterClient::update(std::string_view piece) {
  if (ZEBErrorObject* const error = keepMethodsCurrent()) return error;
  return methods_.Update(component_.get(), piece.data(), piece.size());
}

ZEBErrorObject* DigesterClient::finish(uint64_t* digest) {
  if (ZEBErrorObject* const error = keepMethodsCurrent()) return error;
  return methods_.Finish(component_.get(), digest);
}

ZEBErrorObject* DigesterClient::findState(const HostingDigestState** state) const {
  const Atom name = Atom::intern(services_.strings, HOSTING_DIGEST_STATE);
  void* instance = nullptr;
  ZEBErrorObject* const error =
      services_.containers.NGetInstance(&instance, component_.get(), name.get());
  if (error == nullptr) *state = static_cast<const HostingDigestState*>(instance);
  return error;
}

const char* DigesterClient::signature() const {
  return services_.containers.GetSignature(component_.get());
}

}  // namespace examples
