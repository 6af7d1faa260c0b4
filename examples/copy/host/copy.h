// The copy: its steps in their order.
#ifndef COPY_HOST_COPY_H
#define COPY_HOST_COPY_H

#include "common/host/failure.h"
#include "host/options.h"

namespace examples {

// Copies, compares and prints what happens. Returns success, or failed when something leaked.
// Throws Failure when the target does not hold what the source holds; a target that was begun is
// removed then.
ExitStatus runCopy(const Options& options);

}  // namespace examples

#endif
