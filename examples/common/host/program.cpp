#include "common/host/program.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

namespace examples {
namespace {

// What was printed so far comes first, also when both go to the same file.
ExitStatus complain(const char* name, const char* message, ExitStatus status) {
  static_cast<void>(std::fflush(stdout));
  static_cast<void>(std::fprintf(stderr, "%s: %s\n", name, message));
  return status;
}

ExitStatus statusOf(const char* name, const std::function<ExitStatus()>& work) {
  try {
    const ExitStatus status = work();
    if (std::fflush(stdout) != 0) return complain(name, "cannot write", ExitStatus::failed);
    return status;
  } catch (const Failure& failure) {
    return complain(name, failure.what(), failure.status());
  } catch (const std::exception& failure) {
    return complain(name, failure.what(), ExitStatus::failed);
  }
}

}  // namespace

std::filesystem::path programFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

bool parseCommandLine(CLI::App& app, int argc, char** argv, int* exitStatus) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& stop) {
    const bool asked = app.exit(stop) == 0;
    *exitStatus = static_cast<int>(asked ? ExitStatus::success : ExitStatus::usage);
    return false;
  }
  return true;
}

int runProgram(const char* name, const std::function<ExitStatus()>& work) {
  return static_cast<int>(statusOf(name, work));
}

}  // namespace examples
