#include "inspect/object_snapshot.h"

#include <iterator>

#include "atoms/atom.h"
#include "base/live_objects.h"
#include "buffers/progress.h"
#include "buffers/shared_buffer.h"
#include "cache/cache.h"
#include "cache/cache_set.h"
#include "container/container.h"
#include "errors/error_object.h"
#include "events/event_registry.h"
#include "filters/data_sink.h"
#include "registry/proc_registry.h"
#include "streams/stream_impl.h"

namespace zeb::inspect {

static_assert(sizeof(ZEBInspectedKind) == 24);

namespace {

struct Kind {
  const char* name;
  LiveObjects (*count)() noexcept;
};

// In the order in which they are shown. New kinds go to the end.
constexpr Kind kKinds[] = {
    {"proc", registry::liveProcs},
    {"atom", atoms::live},
    {"error", errors::live},
    {"event counter", events::liveCounters},
    {"container", container::liveContainers},
    {"instance", container::liveInstances},
    {"interface method", container::liveInterfaces},
    {"shared buffer", buffers::liveBuffers},
    {"progress", buffers::liveProgress},
    {"stream", streams::liveStreams},
    {"cache identifier", cache::liveIDs},
    {"cache set", cache::liveSets},
    {"data sink", filters::liveSinks},
};

}  // namespace

Records<ZEBInspectedKind> countObjects() {
  return copyRecords<ZEBInspectedKind>([](RecordCopier<ZEBInspectedKind>& copier) {
    for (const Kind& kind : kKinds) {
      const uint64_t length = std::strlen(kind.name);
      ZEBInspectedKind* record = copier.add(length + 1);
      if (record == nullptr) continue;
      const LiveObjects objects = kind.count();
      *record = {
          .kind = copier.copy(kind.name, length), .live = objects.live, .kept = objects.kept};
    }
  });
}

}  // namespace zeb::inspect
