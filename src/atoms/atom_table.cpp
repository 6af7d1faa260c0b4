#include "atoms/atom_table.h"

#include <algorithm>
#include <cstring>

#include "base/checked_size.h"
#include "base/library_counters.h"
#include "platform/sleep.h"

namespace zeb::atoms {

namespace {

constexpr uint64_t kFirstCapacity = 2048;
constexpr const char* kPermanentText = ".";

// A big-endian UTF-16 text ends with a 16-bit zero of its own, whatever its zero bytes say.
constexpr uint64_t kWideZeroBytes = 2;
bool startsAsWideText(const TextKey& key) noexcept {
  return key.length >= 2 && std::memcmp(key.text, "\xFE\xFF", 2) == 0;
}

uint64_t textBytes(const TextKey& key) {
  const uint64_t withZero = sumOfSizes(key.length, 1);
  return startsAsWideText(key) ? sumOfSizes(withZero, kWideZeroBytes) : withZero;
}

ObjectMemory allocAtom(const TextKey& key) {
  return ObjectMemory(sumOfSizes(sizeof(ZEBString), textBytes(key)));
}

// One reference for the maker and one for the ring.
ZEBString* constructAtom(void* memory, const TextKey& key) noexcept {
  auto* atom = new (memory) ZEBString{.hash = key.hash,
                                      .length = key.length,
                                      .references = 2,
                                      .orphan = false,
                                      .excused = 0,
                                      .nextRetired = nullptr};
  char* text = reinterpret_cast<char*>(atom + 1);
  std::memcpy(text, key.text, key.length);
  std::memset(text + key.length, 0, startsAsWideText(key) ? 1 + kWideZeroBytes : 1);
  return atom;
}

// How a make ended: with an atom that was there, or else with a text that had to be copied, whether
// or not there was memory to do so. Nothing is counted before the end: of many threads that miss a
// text at the same time one copies it and the others find it.
class MakeEvent {
 public:
  MakeEvent() noexcept = default;
  MakeEvent(const MakeEvent&) = delete;
  MakeEvent& operator=(const MakeEvent&) = delete;
  ~MakeEvent() { (found_ ? counters::atomFound : counters::atomAllocated).signal(); }
  void found() noexcept { found_ = true; }

 private:
  bool found_ = false;
};

}  // namespace

AtomTable::Leftovers::~Leftovers() {
  disposeRetired(atoms, [](ZEBString* atom) { freeObject(atom); });
  disposeRetired(arrays, [](Array* array) { freeObject(array); });
}

ZEBString* AtomTable::make(const TextKey& key) {
  if (key.text == nullptr) return nullptr;
  ZEBString* atom = nullptr;
  const Outcome outcome = lookUnlocked(key, atom);
  return makeAfter(outcome, key, atom);
}

// One read section finds all that are there; the others are made one by one.
void AtomTable::makeAll(std::span<const TextKey> keys, std::span<Ref> made) {
  uint64_t found = 0;
  {
    const ReadSection section;
    for (size_t i = 0; section.entered() && i < keys.size(); ++i) {
      ZEBString* atom = nullptr;
      if (keys[i].text == nullptr || lookInSection(keys[i], atom) != Outcome::found) continue;
      made[i] = Ref(atom);
      ++found;
    }
  }
  if (found != 0) counters::atomFound.signal(found);
  if (found == keys.size()) return;
  for (size_t i = 0; i < keys.size(); ++i) {
    if (made[i].get() == nullptr) made[i] = Ref(make(keys[i]));
  }
}

// Goes on from what a first look came to. Each round either ends, or learns what memory is missing,
// or finds an atom whose last release is under way: then it gives the releasing thread time, a
// little more in each round.
ZEBString* AtomTable::makeAfter(Outcome outcome, const TextKey& key, ZEBString* atom) {
  MakeEvent event;
  Supplies supplies;
  unsigned naps = 0;
  for (;; outcome = look(key, supplies, atom)) {
    switch (outcome) {
      case Outcome::found:
        event.found();
        return atom;
      case Outcome::inserted:
        return atom;
      case Outcome::absent:
        createIfAbsent();
        supplies.atom = allocAtom(key);
        break;
      case Outcome::full:
        supplies.array = ObjectMemory(Array::bytesFor(supplies.arrayCapacity));
        break;
      case Outcome::dying:
        sleepMilliseconds(naps++);
        break;
      case Outcome::unsure:
        break;
    }
  }
}

// An absence that is seen here may be a moment's; insertion looks again under the lock.
AtomTable::Outcome AtomTable::lookUnlocked(const TextKey& key, ZEBString*& atom) const noexcept {
  const ReadSection section;
  return section.entered() ? lookInSection(key, atom) : Outcome::unsure;
}

AtomTable::Outcome AtomTable::lookInSection(const TextKey& key, ZEBString*& atom) const noexcept {
  atom = find(key);
  if (atom == nullptr) return Outcome::absent;
  return atom->addReferenceIfAlive() ? Outcome::found : Outcome::dying;
}

AtomTable::Outcome AtomTable::look(const TextKey& key, Supplies& supplies,
                                   ZEBString*& atom) noexcept {
  Leftovers leftovers;  // freed after the guard is gone
  const SpinGuard guard(lock_);
  const Outcome outcome = lookLocked(key, supplies, atom);
  collectLocked(leftovers);
  return outcome;
}

AtomTable::Outcome AtomTable::lookLocked(const TextKey& key, Supplies& supplies,
                                         ZEBString*& atom) noexcept {
  atom = find(key);
  if (atom != nullptr) return atom->addReferenceIfAlive() ? Outcome::found : Outcome::dying;
  if (!supplies.atom) return Outcome::absent;
  if (!table_.hasRoom()) {
    const uint64_t wanted = std::max(table_.capacity() * 2, kFirstCapacity);
    if (!supplies.array || supplies.arrayCapacity < wanted) {
      supplies.arrayCapacity = wanted;
      return Outcome::full;
    }
    adoptArrayLocked(supplies);
  }
  atom = constructAtom(supplies.atom.release(), key);
  insertLocked(atom);
  return Outcome::inserted;
}

// Makes the table with its permanent atom. Both are there or none.
void AtomTable::createIfAbsent() {
  if (table_.exists()) return;
  const TextKey key(kPermanentText);
  Supplies supplies{allocAtom(key), ObjectMemory(Array::bytesFor(kFirstCapacity)), kFirstCapacity};
  const SpinGuard guard(lock_);
  if (table_.exists()) return;
  adoptArrayLocked(supplies);
  permanent_ = constructAtom(supplies.atom.release(), key);
  insertLocked(permanent_);
  ++users_;
}

void AtomTable::adoptArrayLocked(Supplies& supplies) noexcept {
  Array* fresh = Array::construct(supplies.array.release(), supplies.arrayCapacity);
  if (Array* old = table_.adopt(fresh)) retiredArrays_.add(old);
}

// A new atom has two references: its maker's and the ring's.
void AtomTable::insertLocked(ZEBString* atom) noexcept {
  table_.insert(atom);
  ZEBString* oldest = ring_[cursor_];
  ring_[cursor_] = atom;
  cursor_ = (cursor_ + 1) % kRingSize;
  if (oldest != nullptr) dropReferenceLocked(oldest);
}

void AtomTable::dropReferenceLocked(ZEBString* atom) noexcept {
  if (atom->references.fetch_sub(1, std::memory_order_acq_rel) == 1) removeLocked(atom);
}

void AtomTable::removeLocked(ZEBString* atom) noexcept {
  if (table_.remove(atom)) retiredAtoms_.add(atom);
}

void AtomTable::removeDying(ZEBString* atom) noexcept {
  Leftovers leftovers;
  const SpinGuard guard(lock_);
  removeLocked(atom);
  collectLocked(leftovers);
}

void AtomTable::collectLocked(Leftovers& leftovers) noexcept {
  leftovers.atoms = retiredAtoms_.takeUnseen();
  leftovers.arrays = retiredArrays_.takeUnseen();
}

bool AtomTable::isKnown(const TextKey& key) const noexcept {
  const ZEBString* atom = find(key);
  return atom != nullptr && atom->references.load(std::memory_order_relaxed) != 0;
}

ZEBString* AtomTable::find(const TextKey& key) const noexcept {
  return table_.find(key.hash,
                     [&](const ZEBString& it) { return key.equals(it.text(), it.length); });
}

void AtomTable::dropUser() noexcept {
  if (users_ > 0 && --users_ == 0) tearDown();
}

void AtomTable::forgetRecent() noexcept {
  Leftovers leftovers;
  const SpinGuard guard(lock_);
  emptyRingLocked();
  collectLocked(leftovers);
}

void AtomTable::emptyRingLocked() noexcept {
  for (ZEBString*& recent : ring_) {
    if (recent != nullptr) dropReferenceLocked(recent);
    recent = nullptr;
  }
  cursor_ = 0;
}

void AtomTable::tearDown() noexcept {
  bool leaked = false;
  {
    Leftovers leftovers;
    const SpinGuard guard(lock_);
    if (permanent_ != nullptr) dropReferenceLocked(permanent_);
    permanent_ = nullptr;
    emptyRingLocked();
    leaked = orphanTheRestLocked();
    if (Array* array = table_.release()) retiredArrays_.add(array);
    leftovers.atoms = retiredAtoms_.takeAll();
    leftovers.arrays = retiredArrays_.takeAll();
  }
  if (leaked) reportToHost("string memory leak");
}

// True when a client holds any of them.
bool AtomTable::orphanTheRestLocked() noexcept {
  bool leaked = false;
  table_.forEach([&](ZEBString* atom) {
    leaked |= atom->references.load(std::memory_order_relaxed) > atom->excused;
    atom->orphan = true;
    atom->freeThrough = hostState.objects.free;
    return false;
  });
  return leaked;
}

}  // namespace zeb::atoms
