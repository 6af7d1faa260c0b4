// The demo: its steps in their order.
#ifndef HOSTING_HOST_DEMO_H
#define HOSTING_HOST_DEMO_H

#include <string>

#include "common/host/failure.h"
#include "host/options.h"

namespace examples {

// Runs all steps on a text and prints what happens. Returns success, or failed when something
// leaked or did not behave as it must. Throws Failure when it cannot go on; modules and library
// are then stopped already.
ExitStatus runDemo(const Options& options, std::string text);

}  // namespace examples

#endif
