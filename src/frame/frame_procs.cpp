// Interface "ZEB".
#include <array>

#include "base/host_state.h"
#include "base/value_boundary.h"
#include "frame/services.h"
#include "registry/proc_registry.h"
#include "zeb/frame.h"

namespace zeb {

namespace {

namespace procs {

int32_t RegisterProcAddress(const char* interfaceName, const char* methodName, const char* procName,
                            ZEBProc proc) noexcept {
  return registry::add(interfaceName, methodName, procName, proc) ? 1 : 0;
}

// Stands in when the host gave no error-report procedure.
void ReportError(const char* /*message*/) noexcept {}

void UnregisterInterface(const char* interfaceName) noexcept {
  registry::removeInterface(interfaceName);
}

uint32_t GetUnregisterCount() noexcept { return unregisterCount(); }
uint32_t* GetUnregisterCountAddr() noexcept { return &hostState.unregisterCount; }
void AssertNoObjects() noexcept {}
int32_t IsMultiThreaded() noexcept { return hostState.multiThreaded ? 1 : 0; }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_FRAME_PROCS(ZEB_ROW)};
#undef ZEB_ROW

constexpr size_t kReportErrorRow = 1;

// Filled from the host's choice at each start.
std::array<ZEBProcTableEntry, entries.size()> hostEntries{};

}  // namespace

ServiceTable frame::frameService() {
  if (hostState.errorReport == nullptr) return {ZEB_FRAME_INTERFACE, entries, {}};
  hostEntries = entries;
  hostEntries[kReportErrorRow].proc = reinterpret_cast<ZEBProc>(hostState.errorReport);
  return {ZEB_FRAME_INTERFACE, hostEntries, {}};
}

bool frame::registerFrameProcs() {
  const ServiceTable table = frameService();
  return registry::addAll(table.entries, table.interfaceName);
}

}  // namespace zeb
