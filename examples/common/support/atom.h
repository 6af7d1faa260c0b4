// An atom held for as long as a C++ object lives.
//
// Equal texts are the same atom in the whole process, so atoms compare as pointers.
#ifndef EXAMPLES_COMMON_SUPPORT_ATOM_H
#define EXAMPLES_COMMON_SUPPORT_ATOM_H

#include <new>

#include "common/support/handle.h"
#include "zeb/atom.h"

namespace examples {

class Atom : public Handle<ZEBString, ZEBStringProcs, &ZEBStringProcs::DeleteStringAtom> {
 public:
  using Handle::Handle;

  // The atom of a text. Throws std::bad_alloc.
  static Atom intern(const ZEBStringProcs& procs, const char* text) {
    ZEBString* const atom = procs.NewStringAtom(text);
    if (atom == nullptr) throw std::bad_alloc();
    return {procs, atom};
  }

  // Empty for no atom.
  [[nodiscard]] const char* text() const {
    return get() != nullptr ? procs().GetCString(get()) : "";
  }

  friend bool operator==(const Atom& a, const Atom& b) noexcept { return a.get() == b.get(); }
};

}  // namespace examples

#endif
