#include "registry/proc_registry.h"

#include "base/host_state.h"
#include "base/library_counters.h"
#include "registry/proc_table.h"

namespace zeb::registry {

namespace {

constinit ProcTable table;

// What a search without lock and references came to.
struct Answer {
  bool certain;  // false: some name may not be an atom yet, or another thread is in the way
  ZEBProc proc;
};

Answer searchInSection(const ProcKey& key) noexcept {
  const auto found = table.search(key);
  if (found.node != nullptr) return {true, found.node->proc};
  return {found.certain && atoms::areKnown(key.names), nullptr};
}

Answer searchUnlocked(const ProcKey& key) noexcept {
  const ReadSection section;
  if (!section.entered()) return {false, nullptr};
  return searchInSection(key);
}

// Interns the names for the time of the look-up, as a look-up of an unknown name is seen to do.
ZEBProc findByInterning(const ProcKey& key) noexcept {
  try {
    std::array<atoms::Ref, ProcKey::kNames> names;
    atoms::makeAll(key.names, names);
    return table.findLocked(key);
  } catch (...) {
    return nullptr;
  }
}

ZEBProc findKey(const ProcKey& key) noexcept {
  // Without a table nothing is registered, and nothing must be left behind by asking.
  if (!table.exists()) return nullptr;
  const Answer answer = searchUnlocked(key);
  if (!answer.certain) return findByInterning(key);
  counters::atomFound.signal(key.texts());
  return answer.proc;
}

}  // namespace

ZEBProc find(const char* interfaceName, const char* methodName, const char* procName) noexcept {
  return findKey(ProcKey(TextKey(interfaceName), methodName, procName));
}

ZEBProc findByAtoms(const ZEBString* interfaceName, const ZEBString* methodName,
                    const ZEBString* procName) noexcept {
  const AtomKey key{interfaceName, methodName, procName};
  {
    const ReadSection section;
    if (section.entered()) {
      const auto found = table.search(key);
      if (found.certain) return found.node != nullptr ? found.node->proc : nullptr;
    }
  }
  return table.findLocked(key);
}

bool add(const char* interfaceName, const char* methodName, const char* procName,
         ZEBProc proc) noexcept {
  try {
    const ProcKey key(TextKey(interfaceName), methodName, procName);
    ObjectHolder<ProcEntry> entry(makeObject<ProcEntry>());
    entry.get()->hash = key.hash;
    entry.get()->proc = proc;
    atoms::makeAll(key.names, entry.get()->names);
    if (!table.insert(key, entry.get())) return false;
    (void)entry.release();
    return true;
  } catch (...) {
    return false;
  }
}

void removeInterface(const char* interfaceName) noexcept {
  moveUnregisterCount();
  try {
    const atoms::Ref name(interfaceName);
    table.removeInterface(name.get());
  } catch (...) {  // no memory to intern a name means that nothing is registered under it
  }
}

bool addAll(std::span<const ZEBProcTableEntry> entries, const char* interfaceName) noexcept {
  for (const ZEBProcTableEntry& entry : entries) {
    if (!add(interfaceName, entry.methodName, entry.procName, entry.proc)) return false;
  }
  return true;
}

// One read section serves a run of requests; only a name that is not an atom yet interrupts it.
bool findAll(std::span<const ZEBProcRequest> requests, const char* interfaceName,
             ZEBProc* procs) noexcept {
  const TextKey interfaceKey(interfaceName);
  for (size_t i = 0; i < requests.size(); ++i) {
    procs[i] = findKey(ProcKey(interfaceKey, requests[i].methodName, requests[i].procName));
    if (procs[i] == nullptr) return false;
  }
  return true;
}

void removeEverything() noexcept { table.clear(); }
void forgetEverything() noexcept { table.forget(); }

}  // namespace zeb::registry
