// The command line.
#ifndef HOSTING_HOST_OPTIONS_H
#define HOSTING_HOST_OPTIONS_H

#include <filesystem>
#include <optional>

#include "common/host/host_options.h"

namespace examples {

struct Options : HostOptions {
  std::filesystem::path file;
  std::filesystem::path replacement;
  std::optional<unsigned> cancelAt;  // percent of the work at which to cancel it, 1 to 100
};

// The options as given; what is not given is found relative to this program's own place. Nothing
// when the command line itself settles the matter: *exitStatus then says how the program ends, and
// the help or the complaint has been printed.
std::optional<Options> parseOptions(int argc, char** argv, int* exitStatus);

}  // namespace examples

#endif
