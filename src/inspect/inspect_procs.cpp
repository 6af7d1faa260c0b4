// Interface "ZEBInspectInterface".
#include <array>

#include "base/value_boundary.h"
#include "inspect/atom_snapshot.h"
#include "inspect/explanation.h"
#include "inspect/inspect_service.h"
#include "inspect/object_snapshot.h"
#include "inspect/proc_snapshot.h"
#include "zeb/inspect.h"

namespace zeb {

namespace {

template <class Record>
Record* handOut(inspect::Records<Record>&& records, uint32_t& count) noexcept {
  count = static_cast<uint32_t>(records.count);
  return static_cast<Record*>(records.memory.release());
}

namespace procs {

ZEBInspectedProc* NewProcSnapshot(uint32_t* count) {
  if (count == nullptr) return nullptr;
  *count = 0;
  auto records = inspect::copyProcs();
  inspect::findFiles(records);
  return handOut(std::move(records), *count);
}

ZEBInspectedAtom* NewAtomSnapshot(uint32_t* count) {
  if (count == nullptr) return nullptr;
  *count = 0;
  return handOut(inspect::copyAtoms(), *count);
}

ZEBInspectedKind* NewObjectSnapshot(uint32_t* count) {
  if (count == nullptr) return nullptr;
  *count = 0;
  return handOut(inspect::countObjects(), *count);
}

ZEBLookupExplanation* NewLookupExplanation(const char* interfaceName, const char* methodName,
                                           const char* procName) {
  return static_cast<ZEBLookupExplanation*>(
      inspect::explainLookup(interfaceName, methodName, procName).release());
}

void DeleteSnapshot(void* snapshot) noexcept { inspect::SnapshotMemory::free(snapshot); }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_INSPECT_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable inspectService() { return {ZEB_INSPECT_INTERFACE, entries, {}}; }

}  // namespace zeb
