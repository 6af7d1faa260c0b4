#include "frame/services.h"

#include "atoms/atom.h"
#include "atoms/atom_service.h"
#include "buffers/buffer_services.h"
#include "cache/cache_service.h"
#include "container/container_service.h"
#include "errors/error_service.h"
#include "errors/standard_errors.h"
#include "events/event_binding.h"
#include "events/event_service.h"
#include "filters/filter_service.h"
#include "memory/memory_services.h"
#include "registry/memory_binding.h"
#include "registry/proc_registry.h"
#include "streams/stream_services.h"

namespace zeb::frame {

namespace {

struct Service {
  ServiceTable (*table)();
  void (*prepare)();  // before the table is registered; null: nothing to prepare
};

// Start-up can be read off this array.
constexpr Service kServices[] = {
    {memoryService, nullptr},
    {memoryDebugService, nullptr},
    {errorService, errors::makeStandardErrors},
    {containerService, nullptr},
    {atomService, atoms::addTableUser},
    {sharedBufferService, nullptr},
    {cacheService, cache::prepare},
    {progressService, nullptr},
    {streamFactoryService, nullptr},
    {simpleStreamService, nullptr},
    {rewindableStreamService, nullptr},
    {positionableStreamService, nullptr},
    {newStreamService, nullptr},
    {streamService, nullptr},
    {filterService, nullptr},
    {eventService, events::connectCounters},
};

bool registerService(const Service& service) {
  if (service.prepare != nullptr) service.prepare();
  const ServiceTable table = service.table();
  return registry::addAll(table.entries, table.interfaceName) &&
         registry::addAll(table.olderEntries, table.interfaceName);
}

}  // namespace

bool registerServices() {
  for (const Service& service : kServices) {
    if (!registerService(service)) return false;
  }
  return registry::bindMemory();
}

}  // namespace zeb::frame
