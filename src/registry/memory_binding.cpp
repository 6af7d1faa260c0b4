#include "registry/memory_binding.h"

#include "registry/client_binding.h"

namespace zeb::registry {

namespace {

using MemoryBinding = ClientBinding<ZEBMemoryProcs>;
constexpr MemoryBinding::Requests kRequests{{ZEB_MEMORY_PROCS(ZEB_PROC_REQUEST)}};
constinit MemoryBinding binding{ZEB_MEMORY_INTERFACE, kRequests};

}  // namespace

bool bindMemory() noexcept { return binding.refresh(); }

const ZEBMemoryProcs& memoryProcs() noexcept {
  if (!binding.refresh()) endWithoutInterface(ZEB_MEMORY_INTERFACE);
  return binding.procs();
}

void unbindMemory() noexcept { binding.invalidate(); }

}  // namespace zeb::registry
