// The digest interface as this module sees it: known by name, fetched in bulk, fetched again
// whenever the change counter has moved.
//
// The change counter moves with every interface that is unregistered, this one or another. While
// it stands still, every proc that was fetched is still there; so the check before each use costs
// one load and no look-up.
#ifndef HOSTING_WORDS_DIGEST_BINDING_H
#define HOSTING_WORDS_DIGEST_BINDING_H

#include <cstdint>

#include "interfaces/digest.h"
#include "support/services.h"

namespace hosting {

// One thread at a time.
class DigestBinding {
 public:
  explicit DigestBinding(const Services& services);

  // The procs as they are published now, or null if nobody publishes them. Ask again before each
  // use: what was answered before an interface was unregistered must not be called any more.
  [[nodiscard]] const HostingDigestProcs* current();

  // The change counter's value at the last successful fetch, and the number of those.
  [[nodiscard]] uint32_t boundAt() const noexcept { return boundAt_; }
  [[nodiscard]] uint32_t timesBound() const noexcept { return timesBound_; }

 private:
  ZEBGetProcAddress getProcAddress_;
  uint32_t* changeCounter_;
  uint32_t boundAt_ = 0;  // the counter is never 0, so this says that nothing is fetched yet
  uint32_t timesBound_ = 0;
  HostingDigestProcs procs_{};
};

}  // namespace hosting

#endif
