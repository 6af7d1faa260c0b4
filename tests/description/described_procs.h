// Every proc that share/zeb/zeb.json describes; the table is generated.
#ifndef ZEB_TESTS_DESCRIPTION_DESCRIBED_PROCS_H
#define ZEB_TESTS_DESCRIPTION_DESCRIBED_PROCS_H

#include <span>

namespace description {

struct DescribedProc {
  const char* interfaceName;
  const char* methodName;
  const char* procName;
  bool older;
};

std::span<const DescribedProc> describedProcs();

}  // namespace description

#endif
