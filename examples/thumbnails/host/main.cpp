// thumbnails: a host that makes thumbnails of what its modules can decode.
#include "common/host/program.h"
#include "host/options.h"
#include "host/run.h"

int main(int argc, char** argv) {
  int status = 0;
  const auto options = examples::parseOptions(argc, argv, &status);
  if (!options) return status;
  return examples::runProgram("thumbnails", [&] { return examples::makeThumbnails(*options); });
}
