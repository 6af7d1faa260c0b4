#include "host/options.h"

#include <CLI/CLI.hpp>

#include "common/host/program.h"

#if !defined(EXAMPLE_DEFAULT_LIBRARY)
#error "the build must say where the library is"
#endif

namespace examples {
namespace {

constexpr const char* kFooter =
    "Exit status:\n"
    "  0  the target holds what the source holds\n"
    "  1  it does not, or something leaked; the reason is on the error output\n"
    "  2  the command line is wrong\n";

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv, int* exitStatus) {
  Options options;
  CLI::App app(
      "Copies a file from stream to stream, through memory, and compares what arrived.\n"
      "What ends in .gz is compressed: a TARGET is packed, a SOURCE unpacked.",
      "copy");
  app.add_option("SOURCE", options.source, "File to copy")->type_name("")->required();
  app.add_option("TARGET", options.target, "File to write; one that exists is replaced")
      ->type_name("")
      ->required();
  addHostOptions(app, options, EXAMPLE_DEFAULT_LIBRARY);
  app.footer(kFooter);
  if (!parseCommandLine(app, argc, argv, exitStatus)) return std::nullopt;
  return options;
}

}  // namespace examples
