// hosting_host: a host that knows a library, an interface name and a folder, and nothing else.
#include <cstdio>
#include <exception>

#include "host/demo.h"
#include "host/failure.h"
#include "host/input_file.h"
#include "host/options.h"

namespace {

using hosting::ExitStatus;

// What was printed so far comes first, also when both go to the same file.
ExitStatus complain(const char* message, ExitStatus status) {
  static_cast<void>(std::fflush(stdout));
  static_cast<void>(std::fprintf(stderr, "hosting_host: %s\n", message));
  return status;
}

ExitStatus run(const hosting::Options& options) {
  try {
    const ExitStatus status = hosting::runDemo(options, hosting::readTextFile(options.file));
    if (std::fflush(stdout) != 0) return complain("cannot write", ExitStatus::failed);
    return status;
  } catch (const hosting::Failure& failure) {
    return complain(failure.what(), failure.status());
  } catch (const std::exception& failure) {
    return complain(failure.what(), ExitStatus::failed);
  }
}

}  // namespace

int main(int argc, char** argv) {
  int status = 0;
  const auto options = hosting::parseOptions(argc, argv, &status);
  return options ? static_cast<int>(run(*options)) : status;
}
