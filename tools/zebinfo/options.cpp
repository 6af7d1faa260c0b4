#include "options.h"

#include <CLI/CLI.hpp>

#include "failure.h"

namespace zebinfo {

namespace {

constexpr const char* kFooter =
    "A module is a shared object that exports two C functions (zeb/sdk/module_entry.h); --start "
    "and\n"
    "--stop name those of another convention:\n"
    "  int32_t " ZEB_MODULE_START
    "(ZEBGetProcAddress find)   1 if it runs now, else 0\n"
    "  void " ZEB_MODULE_STOP
    "(void)                         called at the end if it runs\n"
    "Modules are started in the order in which they are given and stopped in the reverse order.\n"
    "\n"
    "Exit status, the first that applies:\n"
    "  2  the command line is wrong\n"
    "  3  the library cannot be loaded or started, or cannot be inspected\n"
    "  4  a module cannot be loaded or does not start; the rest is shown all the same\n"
    "  1  --exists: there is no such proc; why is said on standard error\n"
    "  6  the output cannot be written\n"
    "  5  the library reported on stopping that something was not given back\n"
    "  0  none of these\n";

std::optional<ProcNames> split(const std::string& names) {
  const auto first = names.find('/');
  const auto last = names.rfind('/');
  if (first == last || names.find('/', first + 1) != last) return std::nullopt;
  return ProcNames{names.substr(0, first), names.substr(first + 1, last - first - 1),
                   names.substr(last + 1)};
}

std::string checkNames(const std::string& names) {
  return split(names) ? "" : "three names separated by two slashes are wanted";
}

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv, int* exitStatus) {
  Options options;
  std::string exists;
  CLI::App app(
      "Shows what a started libzeb serves: its interfaces and who published them, event\n"
      "counters and live objects.",
      "zebinfo");
  app.add_option("--library", options.library, "Library to load\n(default: the installed one)")
      ->type_name("PATH");
  app.add_option("--module", options.modules, "Module to load and start; may be repeated")
      ->type_name("FILE")
      ->expected(1)
      ->take_all();
  app.add_option("--start", options.entryNames.start, "Function that starts a module")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_option("--stop", options.entryNames.stop, "Function that stops a module")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_flag("--atoms", options.atoms, "Show every live atom as well");
  auto* json = app.add_flag("--json", options.json, "Print JSON instead of a table");
  app.add_option("--exists", exists,
                 "Show nothing; tell by the exit status whether\nthe proc is there")
      ->type_name("INTERFACE/METHOD/PROC")
      ->check(CLI::Validator(checkNames, ""))
      ->excludes(json);
  app.footer(kFooter);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& stop) {
    const bool asked = app.exit(stop) == 0;
    *exitStatus = static_cast<int>(asked ? ExitStatus::success : ExitStatus::usage);
    return std::nullopt;
  }
  if (app.count("--exists") != 0) options.exists = split(exists);
  return options;
}

}  // namespace zebinfo
