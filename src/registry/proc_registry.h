// The proc registry: interface name, method name, versioned proc name -> function.
//
// One hash table of entries, each holding its three names as atoms. A look-up whose names are
// registered, or at least known as atoms, takes no lock and no references; a look-up with a name
// never seen before interns it first, as every look-up is seen to do by the atom counters.
// Registering and unregistering work under the registry's lock.
//
// A null name has no atom; it is a name of its own, equal only to itself.
//
// Thread safety: everything but terminate may be called by any thread. Nothing of the host is
// called under the lock: memory is taken before and freed after.
#ifndef ZEB_REGISTRY_PROC_REGISTRY_H
#define ZEB_REGISTRY_PROC_REGISTRY_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "base/live_objects.h"
#include "base/service_table.h"
#include "util/visitor.h"
#include "zeb/types.h"

namespace zeb::registry {

// The function, or null when it is missing or anything fails.
ZEBProc find(const char* interfaceName, const char* methodName, const char* procName) noexcept;

// The same for names that are atoms already. None of them is null.
ZEBProc findByAtoms(const ZEBString* interfaceName, const ZEBString* methodName,
                    const ZEBString* procName) noexcept;

// False when the three names are taken or anything fails.
bool add(const char* interfaceName, const char* methodName, const char* procName,
         ZEBProc proc) noexcept;

// Moves the change counter, whether or not there is such an interface, then removes its entries.
void removeInterface(const char* interfaceName) noexcept;

// Adds the entries in order and stops at the first that is refused; those before it stay.
bool addAll(std::span<const ZEBProcTableEntry> entries, const char* interfaceName) noexcept;

// Looks the requests up in order, each answer going to the same index of `procs`. Stops at the
// first that is missing: its slot becomes null, the slots behind it stay as they were.
bool findAll(std::span<const ZEBProcRequest> requests, const char* interfaceName,
             ZEBProc* procs) noexcept;

// One entry as it stands in the registry.
struct RegisteredProc {
  std::array<const ZEBString*, 3> names;  // of interface, method and proc; null for a null name
  ZEBProc proc;
};

// Calls `visit` with every entry, in no order, under the registry's lock: it must not allocate,
// call the library or keep what it sees.
void forEachProc(const Visitor<const RegisteredProc&>& visit) noexcept;

[[nodiscard]] LiveObjects liveProcs() noexcept;

// The change counter that the interface's last unregistration since the start brought about, if
// that is remembered: the last 64 names are.
[[nodiscard]] std::optional<uint32_t> lastUnregistration(const char* interfaceName) noexcept;

// Empties the registry. Only while no other thread uses the library.
void removeEverything() noexcept;

// Forgets every entry without freeing anything. Only while no other thread uses the library.
void forgetEverything() noexcept;

}  // namespace zeb::registry

#endif
