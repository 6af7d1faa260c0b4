// Interface "ZEBMemoryInterface".
#include <array>

#include "base/value_boundary.h"
#include "memory/memory_services.h"
#include "memory/object_memory.h"
#include "zeb/memory.h"

namespace zeb {

namespace {

namespace procs {

// Clients reach these only when the host gave no memory procs of its own. Inside the library they
// serve memory on a client's behalf, so they ask for the host's procs themselves.

void* Alloc(uint64_t size) { return allocObject(size); }

void* Realloc(void* block, uint64_t size) {
  if (hostState.objects.realloc == nullptr) return processAllocator.realloc(block, size);
  void* moved = hostState.objects.realloc(block, size);
  if (moved == nullptr) processAllocator.exhausted();
  return moved;
}

void Free(void* block) noexcept { freeObject(block); }

uint64_t GetBlockSize(void* block) {
  if (hostState.objects.size == nullptr) return processAllocator.blockSize(block);
  return hostState.objects.size(block);
}

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array libraryEntries{ZEB_MEMORY_PROCS(ZEB_ROW)};
#undef ZEB_ROW

// Filled from the host's choice at each start.
std::array<ZEBProcTableEntry, libraryEntries.size()> hostEntries{};

}  // namespace

ServiceTable memoryService() {
  if (!hostState.objects.complete()) return {ZEB_MEMORY_INTERFACE, libraryEntries, {}};
  ZEBProc const procs[] = {
      reinterpret_cast<ZEBProc>(hostState.objects.alloc),
      reinterpret_cast<ZEBProc>(hostState.objects.realloc),
      reinterpret_cast<ZEBProc>(hostState.objects.free),
      reinterpret_cast<ZEBProc>(hostState.objects.size),
  };
  hostEntries = libraryEntries;
  for (size_t i = 0; i < hostEntries.size(); ++i) hostEntries[i].proc = procs[i];
  return {ZEB_MEMORY_INTERFACE, hostEntries, {}};
}

}  // namespace zeb
