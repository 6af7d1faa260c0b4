#include "host/options.h"

#include <CLI/CLI.hpp>
#include <limits>

#include "common/host/program.h"

#if !defined(EXAMPLE_DEFAULT_LIBRARY)
#error "the build must say where the library is"
#endif

namespace examples {
namespace {

constexpr const char* kFooter =
    "Exit status:\n"
    "  0  every thumbnail was made and nothing leaked\n"
    "  1  a thumbnail could not be written, or something leaked\n"
    "  2  the command line is wrong\n"
    "  3  a picture was damaged and skipped, or a folder is missing or without pictures\n"
    "  4  the library cannot be loaded or started\n"
    "  5  a module folder is missing, or a module that is needed\n";

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv, int* exitStatus) {
  constexpr int kThousandMeansThousand = true;
  Options options;
  CLI::App app(
      "Makes thumbnails of the pictures in folders, and keeps pictures and thumbnails in the\n"
      "library's cache so that they need not be made twice.",
      "thumbnails");
  app.add_option("FOLDER", options.folders, "Folders of pictures")->type_name("")->required();
  app.add_option("--output", options.output,
                 "Folder for the thumbnails, made if need be\n(default: thumbnails)")
      ->type_name("FOLDER");
  app.add_option("--edge", options.edges,
                 "Longest side of a thumbnail, in pixels; given\n"
                 "more than once, each picture gets more than one\n(default: 128 and 48)")
      ->type_name("PIXELS")
      ->allow_extra_args(false)
      ->check(CLI::Range(1, 4096));
  app.add_option("--budget", options.budget,
                 "How much the cache may hold, in bytes; kB and MB\n"
                 "are understood (default: 64 MiB)")
      ->type_name("BYTES")
      ->transform(CLI::AsSizeValue(kThousandMeansThousand));
  app.add_option("--passes", options.passes, "How often to go through a folder (default: 1)")
      ->type_name("NUMBER")
      ->check(CLI::Range(1, 100));
  app.add_option("--quality", options.quality, "JPEG quality, 1 to 100 (default: 85)")
      ->type_name("NUMBER")
      ->check(CLI::Range(1, 100));
  addHostOptions(app, options, EXAMPLE_DEFAULT_LIBRARY);
  app.footer(kFooter);
  if (!parseCommandLine(app, argc, argv, exitStatus)) return std::nullopt;
  return options;
}

}  // namespace examples
