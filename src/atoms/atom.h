// Atoms: interned, immutable, reference-counted texts. Equal texts are one atom.
//
// A live atom has a count above 0. The count never rises from 0 again: an atom that has reached it
// is dying, and whoever wants its text waits until it has left the table and makes a new one.
#ifndef ZEB_ATOMS_ATOM_H
#define ZEB_ATOMS_ATOM_H

#include <atomic>
#include <cstdint>
#include <span>
#include <utility>

#include "util/text_key.h"
#include "zeb/exports.h"

// One block: this header, then the text and its zero.
struct ZEBString {
  uint64_t hash;
  uint64_t length;
  std::atomic<uint32_t> references;
  bool orphan;       // outlived its table; freed by its last release, through `freeThrough`
  uint16_t excused;  // references that are no leak when the table goes
  union {
    ZEBString* nextRetired;  // on its way out of the table
    ZEBObjFree freeThrough;  // of the host that the memory came from; null: the library's own
  };

  [[nodiscard]] const char* text() const noexcept {
    return reinterpret_cast<const char*>(this + 1);
  }

  // Adds a reference unless the atom is dying.
  bool addReferenceIfAlive() noexcept {
    uint32_t count = references.load(std::memory_order_relaxed);
    while (count != 0) {
      if (references.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
        return true;
    }
    return false;
  }
};

namespace zeb::atoms {

// The atom of a text with one reference for the caller; null for a null text. Raises what
// allocation raises.
[[nodiscard]] ZEBString* make(const TextKey& key);

// Null is ignored.
void addReference(ZEBString* atom) noexcept;
void release(ZEBString* atom) noexcept;

// True when the atom of each key (null keys aside) is in the table now. Only inside a read section;
// what it says stays true until the section ends, because no atom can be freed before.
[[nodiscard]] bool areKnown(std::span<const TextKey> keys) noexcept;

// Lets go of the texts that are kept because they were made a short time ago.
void forgetRecent() noexcept;

// The table's users. The first make after load or after a stop makes the table and counts one; the
// frame counts itself. When the last one is dropped the table goes, and if clients still hold atoms
// the host is told. Only while one thread uses the library.
void addTableUser() noexcept;

// One reference to the atom is held on purpose beyond the stop that is under way: it is no leak.
// Null is ignored. Only before the last user is dropped.
void excuseReference(ZEBString* atom) noexcept;
void dropTableUser() noexcept;

// Owns one reference.
class Ref {
 public:
  constexpr Ref() noexcept = default;
  explicit Ref(const char* text) : atom_(make(TextKey(text))) {}
  // Takes the caller's reference over.
  explicit Ref(ZEBString* owned) noexcept : atom_(owned) {}
  Ref(Ref&& other) noexcept : atom_(std::exchange(other.atom_, nullptr)) {}
  Ref& operator=(Ref&& other) noexcept {
    std::swap(atom_, other.atom_);
    return *this;
  }
  ~Ref() { release(atom_); }

  [[nodiscard]] ZEBString* get() const noexcept { return atom_; }
  [[nodiscard]] ZEBString* handOver() noexcept { return std::exchange(atom_, nullptr); }

 private:
  ZEBString* atom_ = nullptr;
};

// Makes the atoms of several texts in one go, which costs less than one by one. `made` has as many
// elements as `keys`.
void makeAll(std::span<const TextKey> keys, std::span<Ref> made);

}  // namespace zeb::atoms

#endif
