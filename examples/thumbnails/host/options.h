// The command line.
#ifndef THUMBNAILS_HOST_OPTIONS_H
#define THUMBNAILS_HOST_OPTIONS_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "common/host/host_options.h"

namespace examples {

struct Options : HostOptions {
  std::vector<std::filesystem::path> folders;
  std::filesystem::path output = "thumbnails";
  std::vector<uint32_t> edges{128, 48};   // pixels
  uint64_t budget = uint64_t{64} << 20U;  // bytes
  unsigned passes = 1;
  unsigned quality = 85;
};

// The options as given; what is not given is found relative to this program's own place. Nothing
// when the command line itself settles the matter: *exitStatus then says how the program ends, and
// the help or the complaint has been printed.
std::optional<Options> parseOptions(int argc, char** argv, int* exitStatus);

}  // namespace examples

#endif
