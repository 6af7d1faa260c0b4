// The part of the command line that all hosts have in common.
#ifndef EXAMPLES_COMMON_HOST_HOST_OPTIONS_H
#define EXAMPLES_COMMON_HOST_HOST_OPTIONS_H

#include <filesystem>

#include "zeb/sdk/shared_object.hpp"

namespace CLI {
class App;
}

namespace examples {

struct HostOptions {
  std::filesystem::path library;
  std::filesystem::path modules;
  zeb::sdk::Unload unload = zeb::sdk::Unload::never;
};

// Sets the options to what they are unless the command line says otherwise, and binds the app's to
// them. `library` is where the build puts the library, relative to this program's own place; the
// modules are beside the program.
void addHostOptions(CLI::App& app, HostOptions& options, const char* library);

}  // namespace examples

#endif
