// The digest interface as this module sees it: known by name, fetched in bulk, fetched again
// whenever the change counter has moved, for this interface or another.
#ifndef HOSTING_WORDS_DIGEST_BINDING_H
#define HOSTING_WORDS_DIGEST_BINDING_H

#include <cstdint>

#include "common/support/change_counter.h"
#include "common/support/services.h"
#include "interfaces/digest.h"

namespace examples {

// One thread at a time.
class DigestBinding {
 public:
  // The services must outlive this object.
  explicit DigestBinding(const Services& services)
      : services_(services), changeCounter_(services.frame) {}

  // The procs as they are published now, or null if nobody publishes them. Ask again before each
  // use: what was answered before an interface was unregistered must not be called any more.
  [[nodiscard]] const HostingDigestProcs* current();

  // An error for whoever got null.
  [[nodiscard]] ZEBErrorObject* notPublished() const;

  // The change counter's value at the last successful fetch, and the number of those.
  [[nodiscard]] uint32_t boundAt() const noexcept { return boundAt_; }
  [[nodiscard]] uint32_t timesBound() const noexcept { return timesBound_; }

 private:
  const Services& services_;
  ChangeCounter changeCounter_;
  uint32_t boundAt_ = ChangeCounter::kNever;
  uint32_t timesBound_ = 0;
  HostingDigestProcs procs_{};
};

}  // namespace examples

#endif
