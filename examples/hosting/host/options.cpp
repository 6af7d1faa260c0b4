#include "host/options.h"

#include <CLI/CLI.hpp>
#include <string>

#include "common/host/program.h"

// Where the build puts things, relative to the folder of this program. Set by CMakeLists.txt.
#if !defined(HOSTING_DEFAULT_FILE) || !defined(EXAMPLE_DEFAULT_LIBRARY)
#error "the build must say where the library and the default file are"
#endif

namespace examples {
namespace {

constexpr const char* kFooter =
    "Exit status:\n"
    "  0  every step worked and nothing leaked\n"
    "  1  a step failed, or something leaked\n"
    "  2  the command line is wrong\n"
    "  3  FILE is missing, unreadable, empty or not a text\n"
    "  4  the library cannot be loaded or started\n"
    "  5  a module folder is missing, or a module that is needed\n";

Options defaults() {
  const std::filesystem::path here = programFolder();
  Options options;
  options.file = (here / HOSTING_DEFAULT_FILE).lexically_normal();
  options.replacement = here / "replacement";
  return options;
}

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv, int* exitStatus) {
  Options options = defaults();
  CLI::App app(
      "Loads libzeb at run time and modules from a folder, lets them work on a text file,\n"
      "replaces one of them while running, and shows that nothing leaked.",
      "hosting_host");
  app.add_option("FILE", options.file, "Text to work on\n(default: README.md of this repository)")
      ->type_name("");
  addHostOptions(app, options, EXAMPLE_DEFAULT_LIBRARY);
  app.add_option("--replacement", options.replacement,
                 "Folder of the modules that take over, each for\n"
                 "the module with the same file name\n"
                 "(default: replacement beside this program)")
      ->type_name("FOLDER");
  app.add_option("--cancel-at", options.cancelAt,
                 "Cancel digesting in pieces at this much of the\n"
                 "work, 1 to 100; the demo goes on without it")
      ->type_name("PERCENT")
      ->check(CLI::Range(1, 100));
  app.footer(kFooter);

  if (!parseCommandLine(app, argc, argv, exitStatus)) return std::nullopt;
  return options;
}

}  // namespace examples
