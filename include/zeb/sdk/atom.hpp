// Atoms: interned texts. Equal texts are the same atom, so comparing two is comparing pointers.
#ifndef ZEB_SDK_ATOM_HPP
#define ZEB_SDK_ATOM_HPP

#include <string>
#include <string_view>

#include "zeb/sdk/error.hpp"

namespace zeb::sdk {

// An interned text and one reference to it; none when default-made.
class Atom : public Owner<detail::AtomCounting> {
 public:
  using Base = Owner<detail::AtomCounting>;

  // No atom, which is not the atom of the empty text.
  Atom() noexcept = default;
  // The atom of a text. Throws std::bad_alloc when memory is short.
  explicit Atom(const char* text) : Base(adopt(procs<Strings>().NewStringAtom(text))) {
    if (get() == nullptr) throw std::bad_alloc();
  }
  // The same; an atom ends at the text's first zero.
  explicit Atom(const std::string& text) : Atom(text.c_str()) {}
  explicit Atom(std::string_view text) : Atom(std::string(text)) {}
  // Takes a reference over.
  explicit Atom(ZEBString* owned) noexcept : Base(adopt(owned)) {}

  [[nodiscard]] Atom share() const { return Atom(Base::share().handOver()); }

  // Lives as long as the atom, zero-terminated; empty for none.
  [[nodiscard]] std::string_view text() const {
    const char* text = procs<Strings>().GetCString(get());
    return text != nullptr ? text : "";
  }

  // Whether both are the same atom: whether their texts are equal.
  friend bool operator==(const Atom& a, const Atom& b) noexcept { return a.get() == b.get(); }
};

}  // namespace zeb::sdk

#endif
