// The process-wide table of atoms.
//
// Found atoms are found without a lock (util/concurrent_table.h, base/read_section.h). New atoms
// enter and dying ones leave under the table's lock. The 64 atoms made last are kept alive by a
// ring of references, so that texts made and dropped repeatedly are not copied again each time.
//
// States of the table: absent until the first make; present until its last user goes; then absent
// again, for the next make to start afresh. Atoms that clients still hold when it goes become
// orphans: valid, in no table, freed by their last release.
//
// Nothing of the host is called under the lock: memory is taken before and freed after.
#ifndef ZEB_ATOMS_ATOM_TABLE_H
#define ZEB_ATOMS_ATOM_TABLE_H

#include <array>
#include <cstdint>

#include "atoms/atom.h"
#include "base/read_section.h"
#include "memory/object_memory.h"
#include "platform/spin_lock.h"
#include "util/concurrent_table.h"

namespace zeb::atoms {

class AtomTable {
 public:
  static constexpr unsigned kRingSize = 64;

  constexpr AtomTable() noexcept = default;
  AtomTable(const AtomTable&) = delete;
  AtomTable& operator=(const AtomTable&) = delete;

  [[nodiscard]] ZEBString* make(const TextKey& key);
  void makeAll(std::span<const TextKey> keys, std::span<Ref> made);
  void removeDying(ZEBString* atom) noexcept ZEB_EXCLUDES(lock_);
  [[nodiscard]] bool isKnown(const TextKey& key) const noexcept;

  // Empties the ring.
  void forgetRecent() noexcept ZEB_EXCLUDES(lock_);

  // `visit` is called under the lock.
  void forEachLive(const Visitor<const ZEBString&, uint32_t>& visit) noexcept ZEB_EXCLUDES(lock_);
  [[nodiscard]] LiveObjects live() noexcept ZEB_EXCLUDES(lock_);

  void addUser() noexcept { ++users_; }
  void dropUser() noexcept;

 private:
  using Table = ConcurrentTable<ZEBString>;
  using Array = Table::Array;

  // What one look at the table came to.
  enum class Outcome {
    found,     // the atom is there, with a reference for the caller
    inserted,  // the new atom is there now, with a reference for the caller
    absent,    // not there, and there is no new atom to insert
    full,      // not there, and the table must grow first
    dying,     // there, but its last release is under way
    unsure,    // this thread must look under the lock
  };

  // Memory that an insertion may need, taken before the lock.
  struct Supplies {
    ObjectMemory atom;
    ObjectMemory array;
    uint64_t arrayCapacity = 0;
  };

  // What is to be freed after the lock.
  struct Leftovers {
    ZEBString* atoms = nullptr;
    Array* arrays = nullptr;
    Leftovers() noexcept = default;
    Leftovers(const Leftovers&) = delete;
    Leftovers& operator=(const Leftovers&) = delete;
    ~Leftovers();
  };

  void createIfAbsent();
  [[nodiscard]] ZEBString* find(const TextKey& key) const noexcept;
  ZEBString* makeAfter(Outcome outcome, const TextKey& key, ZEBString* atom);
  Outcome lookUnlocked(const TextKey& key, ZEBString*& atom) const noexcept;
  Outcome lookInSection(const TextKey& key, ZEBString*& atom) const noexcept;
  Outcome look(const TextKey& key, Supplies& supplies, ZEBString*& atom) noexcept
      ZEB_EXCLUDES(lock_);
  Outcome lookLocked(const TextKey& key, Supplies& supplies, ZEBString*& atom) noexcept
      ZEB_REQUIRES(lock_);
  void adoptArrayLocked(Supplies& supplies) noexcept ZEB_REQUIRES(lock_);
  void insertLocked(ZEBString* atom) noexcept ZEB_REQUIRES(lock_);
  void dropReferenceLocked(ZEBString* atom) noexcept ZEB_REQUIRES(lock_);
  void removeLocked(ZEBString* atom) noexcept ZEB_REQUIRES(lock_);
  void collectLocked(Leftovers& leftovers) noexcept ZEB_REQUIRES(lock_);
  void emptyRingLocked() noexcept ZEB_REQUIRES(lock_);
  void tearDown() noexcept ZEB_EXCLUDES(lock_);
  bool orphanTheRestLocked() noexcept ZEB_REQUIRES(lock_);
  void forEachLiveLocked(const Visitor<const ZEBString&, uint32_t>& visit) noexcept
      ZEB_REQUIRES(lock_);

  SpinLock lock_{50};
  Table table_;  // searched without the lock, changed under it
  std::array<ZEBString*, kRingSize> ring_ ZEB_GUARDED_BY(lock_){};
  unsigned cursor_ ZEB_GUARDED_BY(lock_) = 0;
  RetireList<ZEBString, kRingSize> retiredAtoms_ ZEB_GUARDED_BY(lock_);
  RetireList<Array> retiredArrays_ ZEB_GUARDED_BY(lock_);
  ZEBString* permanent_ = nullptr;  // "."; held as long as the table is there
  int32_t users_ = 0;
};

}  // namespace zeb::atoms

#endif
