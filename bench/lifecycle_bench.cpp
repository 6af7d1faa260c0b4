// Starting and stopping the library, after a first time.
//
// There is no peer: the limit is a time. The first row starts and stops the loaded library as a
// host does. The other rows tell where such a time goes: they walk the steps of a start and a stop
// by hand, in the library's objects linked into this program, and each shows the time of one step.
// A look at the clock costs some 20 ns, so the steps add up to a little more than the whole.
#include <chrono>
#include <cstdlib>

#include "atoms/atom.h"
#include "atoms/atom_service.h"
#include "base/host_state.h"
#include "base/lazy_list.h"
#include "buffers/buffer_client.h"
#include "buffers/buffer_services.h"
#include "container/container.h"
#include "container/container_service.h"
#include "errors/client_error.h"
#include "errors/error_service.h"
#include "errors/standard_errors.h"
#include "events/event_binding.h"
#include "events/event_service.h"
#include "frame/services.h"
#include "frame/stream_names.h"
#include "library.h"
#include "memory/allocator.h"
#include "memory/memory_services.h"
#include "registry/memory_binding.h"
#include "registry/proc_registry.h"
#include "rows.h"

namespace zeb::bench {

namespace {

constexpr double kMostMicroseconds = 100;

void checkStartAndStop() {
  const Library& library = theLibrary();
  check(!library.getGetProcAddress(), "another row left the library running");
  const ZEBGetProcAddress getProcAddress = library.initialize(nullptr, nullptr, nullptr);
  check(getProcAddress, "the library does not start");
  check(getProcAddress("ZEBStringInterface", "NewStringAtom", "ZEBNewStringAtomProc"),
        "a started library lacks a proc");
  library.terminate();
  check(!library.getGetProcAddress(), "the library does not stop");
}

Row startAndStopRow() {
  Row row{.area = "life cycle",
          .name = "start + stop, warm",
          .unit = "us",
          .goal = Goal{.limit = kMostMicroseconds, .kind = Goal::Kind::time}};
  row.prepare = checkStartAndStop;
  row.ours = measure("ours", [](size_t) {
    return [library = theLibrary()] {
      benchmark::DoNotOptimize(library.initialize(nullptr, nullptr, nullptr));
      library.terminate();
    };
  });
  return row;
}

// --- where the time goes ----------------------------------------------------------------------

void* takePage(uint64_t size) { return std::malloc(size); }
void freePage(void* page) { std::free(page); }

bool registerService(const ServiceTable& table) {
  return registry::addAll(table.entries, table.interfaceName) &&
         registry::addAll(table.olderEntries, table.interfaceName);
}

struct Step {
  const char* name;
  bool (*run)();
};

// All that starting and stopping do, in their order.
constexpr Step kSteps[] = {
    {"start: memory service", [] { return registerService(memoryService()); }},
    {"start: memory-debugging service", [] { return registerService(memoryDebugService()); }},
    {"start: error service, standard errors",
     [] {
       errors::makeStandardErrors();
       return registerService(errorService());
     }},
    {"start: container service", [] { return registerService(containerService()); }},
    {"start: string service",
     [] {
       atoms::addTableUser();
       return registerService(atomService());
     }},
    {"start: shared-buffer service", [] { return registerService(sharedBufferService()); }},
    {"start: progress service", [] { return registerService(progressService()); }},
    {"start: event service",
     [] {
       events::connectCounters();
       return registerService(eventService());
     }},
    {"start: own client of the memory service", [] { return registry::bindMemory(); }},
    {"start: the library's event counters", [] { return initialiseLazyList(lazyList); }},
    {"start: interface \"ZEB\"", [] { return frame::registerFrameProcs(); }},
    {"start: stream interface names",
     [] {
       frame::makeStreamNames();
       return true;
     }},
    {"stop: registry and event counters",
     [] {
       buffers::forgetClientProcs();
       releaseClientErrors();
       terminateLazyList(lazyList);
       return true;
     }},
    {"stop: names, standard errors, string table, pages",
     [] {
       events::disconnectCounters();
       registry::unbindMemory();
       frame::releaseStreamNames();
       errors::releaseStandardErrors();
       container::excuseRecycledNames();
       atoms::dropTableUser();
       processAllocator.releasePages();
       return true;
     }},
};

// Walks all steps and returns the seconds that one of them took.
double timeStep(size_t which) {
  using Clock = std::chrono::steady_clock;
  double seconds = 0;
  for (size_t i = 0; i < std::size(kSteps); ++i) {
    const auto before = Clock::now();
    const bool done = kSteps[i].run();
    const auto after = Clock::now();
    if (!done) check(false, std::string("this step fails: ") + kSteps[i].name);
    if (i == which) seconds = std::chrono::duration<double>(after - before).count();
  }
  return seconds;
}

Row stepRow(size_t which) {
  Row row{.area = "life cycle", .name = kSteps[which].name, .unit = "us"};
  row.manualTime = true;
  row.prepare = [] {
    check(hostState.initCount == 0, "another row left the linked library running");
    hostState.pages = {takePage, freePage};
    hostState.multiThreaded = true;
    hostState.unregisterCount = 1;
  };
  row.ours = Side{"ours", [which](benchmark::State& state) {
                    pinThread(0);
                    for (auto _ : state) state.SetIterationTime(timeStep(which));
                  }};
  return row;
}

}  // namespace

void addLifecycleRows(Rows& rows) {
  rows.push_back(startAndStopRow());
  for (size_t i = 0; i < std::size(kSteps); ++i) rows.push_back(stepRow(i));
}

}  // namespace zeb::bench
