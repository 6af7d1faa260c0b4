#include "modules/words/digest_binding.h"

#include <atomic>

namespace hosting {

DigestBinding::DigestBinding(const Services& services)
    : getProcAddress_(services.getProcAddress),
      changeCounter_(services.frame.GetUnregisterCountAddr()) {}

const HostingDigestProcs* DigestBinding::current() {
  // Read before fetching: an interface that goes away in between then costs one fetch too many
  // instead of going unnoticed.
  const uint32_t now = std::atomic_ref(*changeCounter_).load(std::memory_order_acquire);
  if (now == boundAt_) return &procs_;

  boundAt_ = 0;
  if (HostingFetchDigestProcs(getProcAddress_, &procs_) == 0) return nullptr;
  boundAt_ = now;
  ++timesBound_;
  return &procs_;
}

}  // namespace hosting
