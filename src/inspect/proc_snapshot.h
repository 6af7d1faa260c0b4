// Snapshots of the registry.
#ifndef ZEB_INSPECT_PROC_SNAPSHOT_H
#define ZEB_INSPECT_PROC_SNAPSHOT_H

#include "inspect/record_copier.h"
#include "zeb/inspect.h"

namespace zeb::inspect {

// The entries of one moment, sorted by their names, without the files. Raises what allocation
// raises.
[[nodiscard]] Records<ZEBInspectedProc> copyProcs();

// Fills in the files of the procs. Raises what allocation raises.
void findFiles(Records<ZEBInspectedProc>& procs);

}  // namespace zeb::inspect

#endif
