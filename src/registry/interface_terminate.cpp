#include "registry/interface_terminate.h"

#include "atoms/atom.h"
#include "registry/proc_registry.h"

namespace zeb::registry {

void InterfaceTerminate::terminate() {
  removeEverything();
  atoms::dropTableUser();
}

void InterfaceTerminate::forget() { forgetEverything(); }

}  // namespace zeb::registry
