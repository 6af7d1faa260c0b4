// The state of a digester: what clients may read of it, and the digest that is under way.
#ifndef HOSTING_DIGEST_DIGESTER_STATE_H
#define HOSTING_DIGEST_DIGESTER_STATE_H

#include <memory>

#include "interfaces/digester.h"
#include "modules/digest/algorithms.h"

namespace examples {

// The container keeps a pointer to the base, so that clients find it where the state begins.
struct DigesterState : HostingDigestState {
  std::unique_ptr<RunningDigest> running;
};

// Finds the state of a digester by its name. Returns null, or the error with *state untouched.
ZEBErrorObject* findState(ZEBContainer* digester, DigesterState** state);

}  // namespace examples

#endif
