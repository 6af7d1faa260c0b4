// copy: copies a file through streams, one of which a module brings.
#include "common/host/program.h"
#include "host/copy.h"
#include "host/options.h"

int main(int argc, char** argv) {
  int status = 0;
  const auto options = examples::parseOptions(argc, argv, &status);
  if (!options) return status;
  return examples::runProgram("copy", [&] { return examples::runCopy(*options); });
}
