// How a container finds methods and instances by name. Atoms are compared by identity.
#include "base/library_counters.h"
#include "container/container.h"
#include "registry/proc_registry.h"

namespace zeb::container {

namespace {

// Asks the given interface and those after it.
ZEBProc findFrom(const InterfaceMethods* entry, const ZEBString* method,
                 const ZEBString* proc) noexcept {
  for (; entry != nullptr; entry = entry->older()) {
    if (ZEBProc found = registry::findByAtoms(entry->name.get(), method, proc)) return found;
  }
  return nullptr;
}

}  // namespace

ZEBProc findMethod(const ZEBContainer& container, const ZEBString* method,
                   const ZEBString* proc) noexcept {
  return findFrom(container.interfaces.head(), method, proc);
}

ZEBProc findParentMethod(const ZEBContainer& container, const ZEBString* current,
                         const ZEBString* method, const ZEBString* proc) noexcept {
  const auto* entry = container.interfaces.head();
  while (entry != nullptr && entry->name.get() != current) entry = entry->older();
  return entry != nullptr ? findFrom(entry->older(), method, proc) : nullptr;
}

const Instance* findInstance(const ZEBContainer& container, const ZEBString* name) noexcept {
  counters::instanceLookup.signal();
  const auto* instance = container.instances.head();
  while (instance != nullptr && instance->name.get() != name) instance = instance->older();
  return instance;
}

}  // namespace zeb::container
