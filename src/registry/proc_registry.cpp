#include "registry/proc_registry.h"

#include "base/host_state.h"
#include "base/library_counters.h"
#include "registry/proc_table.h"
#include "registry/unregistered_names.h"

namespace zeb::registry {

namespace {

constinit ProcTable table;
constinit UnregisteredNames unregistered;

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
  const uint32_t count = moveUnregisterCount();
  try {
    const atoms::Ref name(interfaceName);
    if (table.removeInterface(name.get())) unregistered.remember(TextKey(interfaceName), count);
  } catch (...) {  // no memory to intern a name means that nothing is registered under it
  }
}

bool addAll(std::span<const ZEBProcTableEntry> entries, const char* interfaceName) noexcept {
  for (const ZEBProcTableEntry& entry : entries) {
    if (!add(interfaceName, entry.methodName, entry.procName, entry.proc)) return false;
  }
  return true;
}

namespace {

// Finds requests in one read section, from the first on, until one is not there for certain.
// Returns their number.
size_t findRun(std::span<const ZEBProcRequest> requests, const TextKey& interfaceKey,
               ZEBProc* procs) noexcept {
  size_t found = 0;
  uint64_t texts = 0;
  {
    const ReadSection section;
    for (; section.entered() && found < requests.size(); ++found) {
      const ProcKey key(interfaceKey, requests[found].methodName, requests[found].procName);
      const ProcEntry* entry = table.search(key).node;
      if (entry == nullptr || entry->proc == nullptr) break;
      procs[found] = entry->proc;
      texts += key.texts();
    }
  }
  counters::atomFound.signal(texts);
  return found;
}

}  // namespace

bool findAll(std::span<const ZEBProcRequest> requests, const char* interfaceName,
             ZEBProc* procs) noexcept {
  const TextKey interfaceKey(interfaceName);
  for (size_t i = findRun(requests, interfaceKey, procs); i < requests.size(); ++i) {
    procs[i] = findKey(ProcKey(interfaceKey, requests[i].methodName, requests[i].procName));
    if (procs[i] == nullptr) return false;
  }
  return true;
}

void forEachProc(const Visitor<const RegisteredProc&>& visit) noexcept {
  table.forEach([&](const ProcEntry& entry) {
    visit({{entry.names[0].get(), entry.names[1].get(), entry.names[2].get()}, entry.proc});
  });
}

LiveObjects liveProcs() noexcept { return {.live = table.count()}; }

std::optional<uint32_t> lastUnregistration(const char* interfaceName) noexcept {
  return unregistered.find(TextKey(interfaceName));
}

void removeEverything() noexcept {
  table.clear();
  unregistered.forget();
}

void forgetEverything() noexcept {
  table.forget();
  unregistered.forget();
}

}  // namespace zeb::registry
