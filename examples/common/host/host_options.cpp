#include "common/host/host_options.h"

#include <CLI/CLI.hpp>

#include "common/host/program.h"

namespace examples {
namespace {

using zeb::sdk::Unload;

// A sanitizer's report names functions by their place in memory: of an unloaded file it could only
// say "unknown module".
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr Unload kDefaultUnload = Unload::never;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr Unload kDefaultUnload = Unload::never;
#else
constexpr Unload kDefaultUnload = Unload::atEnd;
#endif
#else
constexpr Unload kDefaultUnload = Unload::atEnd;
#endif

}  // namespace

void addHostOptions(CLI::App& app, HostOptions& options, const char* library) {
  const std::filesystem::path here = programFolder();
  options.library = (here / library).lexically_normal();
  options.modules = here / "modules";
  options.unload = kDefaultUnload;

  app.add_option("--library", options.library, "Library to load\n(default: the one of this build)")
      ->type_name("PATH");
  app.add_option("--modules", options.modules,
                 "Folder of the modules\n(default: modules beside this program)")
      ->type_name("FOLDER");
  app.add_flag_callback(
      "--keep-mapped", [&options] { options.unload = Unload::never; },
      "Keep files in memory when they are unloaded,\nfor debuggers and the like\n"
      "(always so in a build with sanitizers)");
}

}  // namespace examples
