// The command line.
#ifndef COPY_HOST_OPTIONS_H
#define COPY_HOST_OPTIONS_H

#include <filesystem>
#include <optional>

#include "common/host/host_options.h"

namespace examples {

struct Options : HostOptions {
  std::filesystem::path source;
  std::filesystem::path target;
};

// The options as given; what is not given is found relative to this program's own place. Nothing
// when the command line itself settles the matter: *exitStatus then says how the program ends, and
// the help or the complaint has been printed.
std::optional<Options> parseOptions(int argc, char** argv, int* exitStatus);

}  // namespace examples

#endif
