// The event counters of a running library, by name.
#ifndef ZEB_TESTS_CONTRACT_EVENT_TOTALS_H
#define ZEB_TESTS_CONTRACT_EVENT_TOTALS_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "contract/library.h"

namespace contract {

inline constexpr const char* kAtomFound =
    "ZEB new string atom from char* found duplicate and called AddRef";
inline constexpr const char* kAtomAllocated =
    "ZEB new string atom from char* did not find duplicate so allocated";
inline constexpr const char* kAtomAddRef = "ZEB calls to ZEBString::AddRef";

// A copy of a snapshot, latest counter first, in memory of the test's own.
inline std::vector<ZEBEventRecord> Snapshot(const Procs& zeb) {
  std::uint32_t count = 0;
  ZEBEventRecord* records = zeb.event.NewEventSnapshot(&count);
  if (records == nullptr) throw std::runtime_error("no snapshot");
  std::vector<ZEBEventRecord> copy(records, records + count);
  zeb.event.DeleteEventSnapshot(records);
  return copy;
}

inline std::int64_t Total(const Procs& zeb, const std::string& name) {
  for (const ZEBEventRecord& record : Snapshot(zeb)) {
    if (name == record.name) return record.total;
  }
  throw std::runtime_error("there is no counter " + name);
}

// How often each of the three atom events happened.
struct AtomEvents {
  std::int64_t found = 0;
  std::int64_t allocated = 0;
  std::int64_t addRefs = 0;

  bool operator==(const AtomEvents&) const = default;
  AtomEvents operator-(const AtomEvents& other) const {
    return {found - other.found, allocated - other.allocated, addRefs - other.addRefs};
  }
};

inline void PrintTo(const AtomEvents& events, std::ostream* out) {
  *out << "{found " << events.found << ", allocated " << events.allocated << ", AddRef "
       << events.addRefs << "}";
}

inline AtomEvents CountAtomEvents(const Procs& zeb) {
  return {Total(zeb, kAtomFound), Total(zeb, kAtomAllocated), Total(zeb, kAtomAddRef)};
}

// The atom events of one operation.
template <class Operation>
AtomEvents AtomEventsOf(const Procs& zeb, Operation operation) {
  const AtomEvents before = CountAtomEvents(zeb);
  operation();
  return CountAtomEvents(zeb) - before;
}

// The library keeps this many of the atoms made last alive after their clients released them.
inline constexpr int kRecentAtoms = 64;

// Makes and releases `count` atoms that nobody has made before.
inline void MakeNewAtoms(const Procs& zeb, int count) {
  static int serial = 0;
  for (int i = 0; i < count; ++i) {
    const std::string text = "a new atom, the " + std::to_string(++serial) + ".";
    zeb.string.DeleteStringAtom(zeb.string.NewStringAtom(text.c_str()));
  }
}

// After this, no atom lives that neither a client nor an object of the library holds.
inline void ForgetRecentAtoms(const Procs& zeb) { MakeNewAtoms(zeb, kRecentAtoms); }

}  // namespace contract

#endif
