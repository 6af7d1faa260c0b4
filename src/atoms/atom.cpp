#include "atoms/atom.h"

#include "atoms/atom_table.h"
#include "base/library_counters.h"

namespace zeb::atoms {

namespace {
constinit AtomTable table;
}

ZEBString* make(const char* text) { return table.make(text); }

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

bool areKnown(const TextKey* keys, unsigned count) noexcept {
  for (unsigned i = 0; i < count; ++i) {
    if (keys[i].text != nullptr && !table.isKnown(keys[i])) return false;
  }
  return true;
}

void addTableUser() noexcept { table.addUser(); }
void dropTableUser() noexcept { table.dropUser(); }

}  // namespace zeb::atoms
