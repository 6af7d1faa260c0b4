#include "atoms/atom.h"

#include <algorithm>

#include "atoms/atom_table.h"
#include "base/library_counters.h"

namespace zeb::atoms {

namespace {
constinit AtomTable table;
}

ZEBString* make(const TextKey& key) { return table.make(key); }

void makeAll(std::span<const TextKey> keys, std::span<Ref> made) { table.makeAll(keys, made); }

void addReference(ZEBString* atom) noexcept {
  counters::atomAddRef.signal();
  if (atom != nullptr) atom->references.fetch_add(1, std::memory_order_relaxed);
}

void release(ZEBString* atom) noexcept {
  if (atom == nullptr) return;
  if (atom->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  if (atom->orphan) {
    freeObjectThrough(atom->freeThrough, atom);
  } else {
    table.removeDying(atom);
  }
}

bool areKnown(std::span<const TextKey> keys) noexcept {
  return std::all_of(keys.begin(), keys.end(),
                     [](const TextKey& key) { return key.text == nullptr || table.isKnown(key); });
}

void excuseReference(ZEBString* atom) noexcept {
  if (atom != nullptr) ++atom->excused;
}

void forgetRecent() noexcept { table.forgetRecent(); }

void forEachLive(const Visitor<const ZEBString&, uint32_t>& visit) noexcept {
  table.forEachLive(visit);
}

LiveObjects live() noexcept { return table.live(); }

void addTableUser() noexcept { table.addUser(); }
void dropTableUser() noexcept { table.dropUser(); }

}  // namespace zeb::atoms
