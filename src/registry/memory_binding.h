// The library's own client binding of the memory interface. The last thing that starting the
// library binds: it fails exactly when the memory procs cannot be found by name, as any module
// would.
#ifndef ZEB_REGISTRY_MEMORY_BINDING_H
#define ZEB_REGISTRY_MEMORY_BINDING_H

#include "zeb/memory.h"

namespace zeb::registry {

// False when the procs cannot be fetched.
bool bindMemory() noexcept;

// The memory procs, fetched again if the change counter has moved. Ends the process, after telling
// the host why, when they cannot be fetched. [while one thread uses the library]
const ZEBMemoryProcs& memoryProcs() noexcept;

void unbindMemory() noexcept;

}  // namespace zeb::registry

#endif
