// What the user asks for.
#ifndef ZEBINFO_OPTIONS_H
#define ZEBINFO_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "module.h"

namespace zebinfo {

// The three names of --exists.
struct ProcNames {
  std::string interfaceName;
  std::string methodName;
  std::string procName;
};

struct Options {
  std::string library;  // empty: the one that zebinfo is linked with
  std::vector<std::string> modules;
  EntryNames entryNames;
  bool atoms = false;
  bool json = false;
  std::optional<ProcNames> exists;
};

// Nothing when the program is to end at once, with *exitStatus; what there is to say has then been
// printed.
std::optional<Options> parseOptions(int argc, char** argv, int* exitStatus);

}  // namespace zebinfo

#endif
