// An atom held for as long as a C++ object lives.
//
// Equal texts are the same atom in the whole process, so atoms compare as pointers.
#ifndef HOSTING_SUPPORT_ATOM_H
#define HOSTING_SUPPORT_ATOM_H

#include <new>
#include <utility>

#include "zeb/atom.h"

namespace hosting {

class Atom {
 public:
  Atom() = default;

  // Takes over one reference that the caller owns.
  Atom(const ZEBStringProcs& procs, ZEBString* owned) noexcept : procs_(&procs), atom_(owned) {}

  // The atom of a text. Throws std::bad_alloc.
  static Atom intern(const ZEBStringProcs& procs, const char* text) {
    ZEBString* const atom = procs.NewStringAtom(text);
    if (atom == nullptr) throw std::bad_alloc();
    return {procs, atom};
  }

  Atom(Atom&& other) noexcept : procs_(other.procs_), atom_(other.release()) {}
  Atom& operator=(Atom&& other) noexcept {
    std::swap(procs_, other.procs_);
    std::swap(atom_, other.atom_);
    return *this;
  }
  Atom(const Atom&) = delete;
  Atom& operator=(const Atom&) = delete;

  ~Atom() {
    if (atom_ != nullptr) procs_->DeleteStringAtom(atom_);
  }

  [[nodiscard]] ZEBString* get() const noexcept { return atom_; }
  [[nodiscard]] const char* text() const {
    return atom_ != nullptr ? procs_->GetCString(atom_) : "";
  }

  // Hands the reference to the caller, as when an atom leaves through an out argument.
  [[nodiscard]] ZEBString* release() noexcept { return std::exchange(atom_, nullptr); }

  friend bool operator==(const Atom& a, const Atom& b) noexcept { return a.atom_ == b.atom_; }

 private:
  const ZEBStringProcs* procs_ = nullptr;
  ZEBString* atom_ = nullptr;
};

}  // namespace hosting

#endif
