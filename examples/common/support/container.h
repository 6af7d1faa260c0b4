// A component held for as long as a C++ object lives, and how to ask it for its methods.
#ifndef EXAMPLES_COMMON_SUPPORT_CONTAINER_H
#define EXAMPLES_COMMON_SUPPORT_CONTAINER_H

#include <array>
#include <cstddef>
#include <cstring>

#include "common/support/atom.h"
#include "common/support/handle.h"
#include "common/support/services.h"
#include "zeb/container.h"

namespace examples {

using Container = Handle<ZEBContainer, ZEBContainerProcs, &ZEBContainerProcs::Release>;

// Asks a component for the methods of an interface's list and fills the typed struct with them.
//
// Each answer comes from the latest interface of the component that has the method, which need not
// be the interface that the list belongs to. Returns null, or the error of the first method that is
// missing with *methods untouched. Throws std::bad_alloc.
template <class Methods, size_t count>
ZEBErrorObject* askForMethods(const Services& services, ZEBContainer* component,
                              const ZEBProcRequest (&requests)[count], Methods* methods) {
  static_assert(sizeof(Methods) == count * sizeof(ZEBProc), "one request for each member");
  constexpr int32_t kMissingIsAnError = 1;
  std::array<ZEBProc, count> found{};
  for (size_t i = 0; i < count; ++i) {
    const Atom method = Atom::intern(services.strings, requests[i].methodName);
    const Atom proc = Atom::intern(services.strings, requests[i].procName);
    ZEBErrorObject* const error = services.containers.GetMethod(&found[i], component, method.get(),
                                                                proc.get(), kMissingIsAnError);
    if (error != nullptr) return error;
  }
  std::memcpy(methods, found.data(), sizeof(Methods));
  return nullptr;
}

}  // namespace examples

#endif
