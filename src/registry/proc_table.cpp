#include "registry/proc_table.h"

#include <algorithm>

namespace zeb::registry {

namespace {

constexpr uint64_t kFirstCapacity = 2048;

bool sameName(const ZEBString* atom, const TextKey& key) noexcept {
  if (atom == nullptr || key.text == nullptr) return atom == nullptr && key.text == nullptr;
  return key.equals(atom->text(), atom->length);
}

}  // namespace

bool ProcEntry::isFor(const ProcKey& key) const noexcept {
  // The proc name differs most often between entries of one hash run, so it is compared first.
  return sameName(names[2].get(), key.names[2]) && sameName(names[1].get(), key.names[1]) &&
         sameName(names[0].get(), key.names[0]);
}

ProcTable::Leftovers::~Leftovers() {
  disposeRetired(entries, [](ProcEntry* entry) { destroyObject(entry); });
  disposeRetired(arrays, [](Array* array) { freeObject(array); });
}

bool ProcTable::insert(const ProcKey& key, ProcEntry* entry) {
  ObjectMemory array;
  uint64_t arrayCapacity = 0;
  Outcome outcome = tryInsert(key, entry, array, arrayCapacity);
  while (outcome == Outcome::full) {
    array = ObjectMemory(Array::bytesFor(arrayCapacity));
    outcome = tryInsert(key, entry, array, arrayCapacity);
  }
  return outcome == Outcome::inserted;
}

ProcTable::Outcome ProcTable::tryInsert(const ProcKey& key, ProcEntry* entry, ObjectMemory& array,
                                        uint64_t& arrayCapacity) noexcept {
  Leftovers leftovers;  // freed after the guard is gone
  const SpinGuard guard(lock_);
  if (search(key).node != nullptr) return Outcome::taken;
  if (!table_.hasRoom()) {
    const uint64_t wanted = std::max(table_.capacity() * 2, kFirstCapacity);
    if (!array || arrayCapacity < wanted) {
      arrayCapacity = wanted;
      return Outcome::full;
    }
    if (Array* old = table_.adopt(Array::construct(array.release(), arrayCapacity))) {
      retiredArrays_.add(old);
    }
  }
  table_.insert(entry);
  leftovers.arrays = retiredArrays_.takeUnseen();
  return Outcome::inserted;
}

bool ProcTable::removeInterface(const ZEBString* interfaceName) noexcept {
  Leftovers leftovers;
  const SpinGuard guard(lock_);
  const uint64_t before = table_.count();
  table_.forEach([&](ProcEntry* entry) ZEB_NO_THREAD_SAFETY_ANALYSIS {  // called right here
    if (entry->names[0].get() != interfaceName) return false;
    table_.remove(entry);
    retiredEntries_.add(entry);
    return true;
  });
  leftovers.entries = retiredEntries_.takeUnseen();
  leftovers.arrays = retiredArrays_.takeUnseen();
  return table_.count() != before;
}

void ProcTable::forEach(const Visitor<const ProcEntry&>& visit) noexcept {
  const SpinGuard guard(lock_);
  table_.forEach([&](const ProcEntry* entry) {
    visit(*entry);
    return false;
  });
}

uint64_t ProcTable::count() noexcept {
  const SpinGuard guard(lock_);
  return table_.count();
}

void ProcTable::clear() noexcept {
  Leftovers leftovers;
  const SpinGuard guard(lock_);
  table_.forEach([&](ProcEntry* entry) ZEB_NO_THREAD_SAFETY_ANALYSIS {  // called right here
    retiredEntries_.add(entry);
    return false;
  });
  if (Array* array = table_.release()) retiredArrays_.add(array);
  leftovers.entries = retiredEntries_.takeAll();
  leftovers.arrays = retiredArrays_.takeAll();
}

}  // namespace zeb::registry
