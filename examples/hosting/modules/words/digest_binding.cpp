#include "modules/words/digest_binding.h"

#include "interfaces/job.h"

namespace examples {

const HostingDigestProcs* DigestBinding::current() {
  // Read before fetching: an interface that goes away in between then costs one fetch too many
  // instead of going unnoticed.
  const uint32_t now = changeCounter_.read();
  if (now == boundAt_) return &procs_;

  boundAt_ = ChangeCounter::kNever;
  if (HostingFetchDigestProcs(services_.getProcAddress, &procs_) == 0) return nullptr;
  boundAt_ = now;
  ++timesBound_;
  return &procs_;
}

ZEBErrorObject* DigestBinding::notPublished() const {
  return services_.errors.NewError("no module publishes " HOSTING_DIGEST_INTERFACE,
                                   HOSTING_JOB_COMPONENT, HOSTING_JOB_ERROR_NO_DIGEST, nullptr,
                                   nullptr);
}

}  // namespace examples
