// Why a look-up finds what it finds.
#ifndef ZEB_INSPECT_EXPLANATION_H
#define ZEB_INSPECT_EXPLANATION_H

#include "inspect/snapshot_memory.h"
#include "zeb/inspect.h"

namespace zeb::inspect {

// The memory begins with the ZEBLookupExplanation. Raises what allocation raises.
[[nodiscard]] SnapshotMemory explainLookup(const char* interfaceName, const char* methodName,
                                           const char* procName);

}  // namespace zeb::inspect

#endif
