// Interface "ZEBMemDbgInterface": every name is there, nothing is watched.
#include <array>

#include "base/value_boundary.h"
#include "memory/memory_services.h"
#include "zeb/memory_debug.h"

namespace zeb {

namespace {

namespace procs {

void StartWatch() noexcept {}
void StopWatch() noexcept {}
void VerifyHeap() noexcept {}
void ReportStats() noexcept {}
void SetFailureRate(uint32_t /*rate*/) noexcept {}
uint64_t GetCurAlloc() noexcept { return 0; }
uint64_t GetHighWaterAlloc() noexcept { return 0; }
uint64_t GetNumAllocs() noexcept { return 0; }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_MEMORY_DEBUG_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable memoryDebugService() { return {ZEB_MEMORY_DEBUG_INTERFACE, entries, {}}; }

}  // namespace zeb
