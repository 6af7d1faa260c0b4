// A digester as this module sees it: a component that is asked for its methods and its state by
// name. Who made it, and which of its interfaces answers, stays unknown.
#ifndef HOSTING_WORDS_DIGESTER_CLIENT_H
#define HOSTING_WORDS_DIGESTER_CLIENT_H

#include <cstdint>
#include <string_view>

#include "common/support/change_counter.h"
#include "common/support/container.h"
#include "common/support/services.h"
#include "interfaces/digester.h"

namespace examples {

// One thread at a time. All procedures that return an error handle throw std::bad_alloc.
class DigesterClient {
 public:
  // The services must outlive this object.
  DigesterClient(const Services& services, Container component);

  // Has one more piece digested.
  ZEBErrorObject* update(std::string_view piece);

  // The digest of all pieces so far; untouched on failure.
  ZEBErrorObject* finish(uint64_t* digest);

  // The component's state, as long as this object lives; untouched on failure.
  ZEBErrorObject* findState(const HostingDigestState** state) const;

  // The names of the component's interfaces, the earliest first.
  [[nodiscard]] const char* signature() const;

  // How often the component was asked for its methods.
  [[nodiscard]] uint32_t timesAsked() const noexcept { return timesAsked_; }

 private:
  ZEBErrorObject* keepMethodsCurrent();

  const Services& services_;
  ChangeCounter changeCounter_;
  Container component_;
  uint32_t askedAt_ = ChangeCounter::kNever;
  uint32_t timesAsked_ = 0;
  HostingDigesterProcs methods_{};
};

}  // namespace examples

#endif
