// What is registered and alive in the process, and why a look-up finds what it finds.
//
//   for (const ZEBInspectedProc& proc : registeredProcs().records()) ...
//   log(explainLookUp("ZEBStringInterface", "AddRef", "ZEBAddRefProc").text());
//
// Everything here throws MissingInterface where the library has no inspection, and std::bad_alloc.
#ifndef ZEB_SDK_INSPECTION_HPP
#define ZEB_SDK_INSPECTION_HPP

#include <new>
#include <span>
#include <string_view>
#include <utility>

#include "zeb/inspect.h"
#include "zeb/sdk/owner.hpp"

namespace zeb::sdk {

namespace detail {

template <class Record>
struct InspectedEnding {
  using Handle = Record;
  static void release(Handle* answered) noexcept {
    if (const auto* inspection = tryProcs<Inspection>()) inspection->DeleteSnapshot(answered);
  }
};

}  // namespace detail

// An answer of the inspection: an array of records, or a single one, with the texts they point to.
template <class Record>
class Inspected : private SoleOwner<detail::InspectedEnding<Record>> {
 public:
  // Owns what the inspection has answered.
  Inspected(Record* answered, uint32_t count) noexcept
      : SoleOwner<detail::InspectedEnding<Record>>(answered), count_(count) {}

  // They and their texts live as long as this object; none after it was moved from.
  [[nodiscard]] std::span<const Record> records() const noexcept {
    return {this->get(), this->get() != nullptr ? count_ : 0};
  }

 private:
  uint32_t count_;
};

namespace detail {

template <class Record>
Inspected<Record> inspected(Record* answered, uint32_t count) {
  if (answered == nullptr) throw std::bad_alloc();
  return Inspected<Record>(answered, count);
}

}  // namespace detail

// Every proc of the registry, sorted by its three names.
[[nodiscard]] inline Inspected<ZEBInspectedProc> registeredProcs() {
  uint32_t count = 0;
  ZEBInspectedProc* procs = sdk::procs<Inspection>().NewProcSnapshot(&count);
  return detail::inspected(procs, count);
}

// Every live atom, sorted by its text.
[[nodiscard]] inline Inspected<ZEBInspectedAtom> liveAtoms() {
  uint32_t count = 0;
  ZEBInspectedAtom* atoms = procs<Inspection>().NewAtomSnapshot(&count);
  return detail::inspected(atoms, count);
}

// How many objects of each kind live.
[[nodiscard]] inline Inspected<ZEBInspectedKind> liveObjects() {
  uint32_t count = 0;
  ZEBInspectedKind* kinds = procs<Inspection>().NewObjectSnapshot(&count);
  return detail::inspected(kinds, count);
}

// Why a look-up of three names finds what it finds.
class LookUpExplanation {
 public:
  // Owns the explanation.
  explicit LookUpExplanation(Inspected<ZEBLookupExplanation> owned) noexcept
      : explanation_(std::move(owned)) {}

  // As a sentence in English.
  [[nodiscard]] std::string_view text() const noexcept { return get().text; }
  // Whether there is a function.
  [[nodiscard]] bool found() const noexcept { return get().outcome == ZEB_LOOKUP_FOUND; }
  // The proc names of the method, sorted; one of them may be null, for the null name.
  [[nodiscard]] std::span<const char* const> versions() const noexcept {
    return {get().versions, get().versionCount};
  }
  // Names that resemble the first of the three that is not there, the nearest first.
  [[nodiscard]] std::span<const char* const> nearest() const noexcept {
    return {get().nearest, get().nearestCount};
  }
  // All that is known.
  [[nodiscard]] const ZEBLookupExplanation& get() const noexcept {
    return explanation_.records().front();
  }

 private:
  Inspected<ZEBLookupExplanation> explanation_;
};

// Explains a look-up at this moment; it interns nothing and counts no event.
[[nodiscard]] inline LookUpExplanation explainLookUp(const char* interfaceName,
                                                     const char* methodName, const char* procName) {
  return LookUpExplanation(detail::inspected(
      procs<Inspection>().NewLookupExplanation(interfaceName, methodName, procName), 1));
}

}  // namespace zeb::sdk

#endif
