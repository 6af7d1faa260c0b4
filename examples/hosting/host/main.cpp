// hosting_host: a host that knows a library, an interface name and a folder, and nothing else.
#include "common/host/program.h"
#include "host/demo.h"
#include "host/input_file.h"
#include "host/options.h"

int main(int argc, char** argv) {
  int status = 0;
  const auto options = examples::parseOptions(argc, argv, &status);
  if (!options) return status;
  return examples::runProgram("hosting_host", [&] {
    return examples::runDemo(*options, examples::readTextFile(options->file));
  });
}
