// The table behind the registry's operations. See proc_registry.h.
#ifndef ZEB_REGISTRY_PROC_TABLE_H
#define ZEB_REGISTRY_PROC_TABLE_H

#include <algorithm>
#include <array>
#include <cstdint>

#include "atoms/atom.h"
#include "base/read_section.h"
#include "memory/object_memory.h"
#include "platform/spin_lock.h"
#include "util/concurrent_table.h"
#include "util/text_key.h"
#include "util/visitor.h"
#include "zeb/types.h"

namespace zeb::registry {

inline uint64_t combinedHash(uint64_t first, uint64_t second, uint64_t third) noexcept {
  return text_hash::fold(first ^ (second * text_hash::kFactor), third ^ text_hash::kSeed);
}

// Three names and their common hash.
struct ProcKey {
  static constexpr unsigned kNames = 3;
  std::array<TextKey, kNames> names;
  uint64_t hash;

  ProcKey(const TextKey& interfaceName, const char* methodName, const char* procName) noexcept
      : names{interfaceName, TextKey(methodName), TextKey(procName)},
        hash(combinedHash(names[0].hash, names[1].hash, names[2].hash)) {}

  // How many of the names are texts: each of them is counted as an atom that is made.
  [[nodiscard]] unsigned texts() const noexcept {
    return static_cast<unsigned>(std::count_if(
        names.begin(), names.end(), [](const TextKey& name) { return name.text != nullptr; }));
  }
};

// Three names that are atoms, none of them null.
struct AtomKey {
  std::array<const ZEBString*, ProcKey::kNames> names;
  uint64_t hash;

  AtomKey(const ZEBString* interfaceName, const ZEBString* methodName,
          const ZEBString* procName) noexcept
      : names{interfaceName, methodName, procName},
        hash(combinedHash(interfaceName->hash, methodName->hash, procName->hash)) {}
};

// Made before it is inserted, never changed afterwards.
struct ProcEntry {
  uint64_t hash = 0;
  ZEBProc proc = nullptr;
  std::array<atoms::Ref, ProcKey::kNames> names;
  ProcEntry* nextRetired = nullptr;

  [[nodiscard]] bool isFor(const ProcKey& key) const noexcept;
  // Atoms are compared by identity.
  [[nodiscard]] bool isFor(const AtomKey& key) const noexcept {
    return names[0].get() == key.names[0] && names[1].get() == key.names[1] &&
           names[2].get() == key.names[2];
  }
};

class ProcTable {
 public:
  using Table = ConcurrentTable<ProcEntry>;

  constexpr ProcTable() noexcept = default;
  ProcTable(const ProcTable&) = delete;
  ProcTable& operator=(const ProcTable&) = delete;

  // False until the first insertion and after clear.
  [[nodiscard]] bool exists() const noexcept { return table_.exists(); }

  // Inside a read section. `Key` is ProcKey or AtomKey.
  template <class Key>
  [[nodiscard]] Table::Found search(const Key& key) const noexcept {
    return table_.search(key.hash, [&](const ProcEntry& entry) { return entry.isFor(key); });
  }

  template <class Key>
  [[nodiscard]] ZEBProc findLocked(const Key& key) noexcept ZEB_EXCLUDES(lock_) {
    const SpinGuard guard(lock_);
    const ProcEntry* entry = search(key).node;
    return entry != nullptr ? entry->proc : nullptr;
  }

  // Takes the entry over when it is inserted; false when its names are taken. Raises what
  // allocation raises.
  bool insert(const ProcKey& key, ProcEntry* entry) ZEB_EXCLUDES(lock_);

  // False when there was no such interface.
  bool removeInterface(const ZEBString* interfaceName) noexcept ZEB_EXCLUDES(lock_);
  void clear() noexcept ZEB_EXCLUDES(lock_);
  void forget() noexcept { (void)table_.release(); }

  // `visit` is called under the lock.
  void forEach(const Visitor<const ProcEntry&>& visit) noexcept ZEB_EXCLUDES(lock_);
  [[nodiscard]] uint64_t count() noexcept ZEB_EXCLUDES(lock_);

 private:
  using Array = Table::Array;
  enum class Outcome { inserted, taken, full };

  // What is to be freed after the lock.
  struct Leftovers {
    ProcEntry* entries = nullptr;
    Array* arrays = nullptr;
    Leftovers() noexcept = default;
    Leftovers(const Leftovers&) = delete;
    Leftovers& operator=(const Leftovers&) = delete;
    ~Leftovers();
  };

  Outcome tryInsert(const ProcKey& key, ProcEntry* entry, ObjectMemory& array,
                    uint64_t& arrayCapacity) noexcept ZEB_EXCLUDES(lock_);

  SpinLock lock_{50};
  Table table_;  // searched without the lock, changed under it
  RetireList<ProcEntry> retiredEntries_ ZEB_GUARDED_BY(lock_);
  RetireList<Array> retiredArrays_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb::registry

#endif
