// Snapshots of the atom table.
#ifndef ZEB_INSPECT_ATOM_SNAPSHOT_H
#define ZEB_INSPECT_ATOM_SNAPSHOT_H

#include "inspect/record_copier.h"
#include "zeb/inspect.h"

namespace zeb::inspect {

// The live atoms of one moment, sorted by their texts. Raises what allocation raises.
[[nodiscard]] Records<ZEBInspectedAtom> copyAtoms();

}  // namespace zeb::inspect

#endif
