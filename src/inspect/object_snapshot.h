// How many objects of each kind live.
#ifndef ZEB_INSPECT_OBJECT_SNAPSHOT_H
#define ZEB_INSPECT_OBJECT_SNAPSHOT_H

#include "inspect/record_copier.h"
#include "zeb/inspect.h"

namespace zeb::inspect {

// Raises what allocation raises.
[[nodiscard]] Records<ZEBInspectedKind> countObjects();

}  // namespace zeb::inspect

#endif
