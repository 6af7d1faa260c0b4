// A library whose events go to the host's own event service, and one that lost its event service.
//
// The library registers its counters during the start, with whatever event interface the registry
// holds by then. A host gets its own in place from its allocator, with procs that it kept from an
// earlier run; the library holds no lock then.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>

#include "contract/child_process.h"
#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {
namespace {

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

using Host = HostMemory<0>;
using Reports = ErrorReports<0>;

constexpr std::size_t kLibraryCounterCount = 20;

// The host's event service. Handles are made up from a number that never repeats.
struct HostService {
  std::map<ZEBEventCounter*, std::string> counters;
  std::map<std::string, std::int32_t> criticalities;
  std::map<std::string, std::uint64_t> totals;
  std::set<std::uint64_t> amounts;
  int foreignHandles = 0;
  int calls = 0;
  bool throwing = false;
};
HostService g_service;

void CountCall() {
  ++g_service.calls;
  if (g_service.throwing) throw HostException();
}

ZEBEventCounter* NewCounter(const char* name, std::int32_t criticality) {
  static std::uintptr_t lastHandle = 0;
  CountCall();
  auto* handle = reinterpret_cast<ZEBEventCounter*>(lastHandle += 64);
  g_service.counters[handle] = name;
  g_service.criticalities[name] = criticality;
  return handle;
}

void DeleteCounter(ZEBEventCounter* counter) {
  CountCall();
  if (g_service.counters.erase(counter) == 0) ++g_service.foreignHandles;
}

void SignalCounter(ZEBEventCounter* counter, std::uint64_t amount) {
  CountCall();
  const auto entry = g_service.counters.find(counter);
  if (entry == g_service.counters.end()) {
    ++g_service.foreignHandles;
    return;
  }
  g_service.totals[entry->second] += amount;
  g_service.amounts.insert(amount);
}

ZEBEventRecord* TakeSnapshot(std::uint32_t* count) {
  CountCall();
  *count = 0;
  return nullptr;
}

// What the host kept of an earlier run.
ZEBGetProcAddress g_find = nullptr;
ZEBFrameProcs g_frame{};

void KeepProcsOfAFirstRun() {
  RunningLibrary first;
  g_find = first.getProcAddress;
  g_frame = first.frame;
}

// Runs once, when the fourth proc of the library's event interface is registered and the fifth is
// about to be.
bool IsTimeToReplace() {
  return g_find("ZEBEventInterface", "NewEventSnapshot", "ZEBNewEventSnapshotProc") != nullptr;
}

void PutHostServiceInPlace() {
  const auto add = [](const char* method, const char* proc, ZEBProc function) {
    EXPECT_EQ(g_frame.RegisterProcAddress("ZEBEventInterface", method, proc, function), 1);
  };
  g_frame.UnregisterInterface("ZEBEventInterface");
  add("NewEventCounter", "ZEBNewEventCounterProc", AsProc(&NewCounter));
  add("DeleteEventCounter", "ZEBDeleteEventCounterProc", AsProc(&DeleteCounter));
  add("SignalEventCounter", "ZEBSignalEventCounterProc", AsProc(&SignalCounter));
  add("NewEventSnapshot", "ZEBNewEventSnapshotProc", AsProc(&TakeSnapshot));
}

void TakeServiceAway() { g_frame.UnregisterInterface("ZEBEventInterface"); }

void (*g_atTheMoment)() = nullptr;

// Asking and meddling allocate too.
void* AllocWaitingForTheMoment(std::uint64_t size) {
  static bool busy = false;
  if (g_atTheMoment != nullptr && !std::exchange(busy, true)) {
    if (IsTimeToReplace()) std::exchange(g_atTheMoment, nullptr)();
    busy = false;
  }
  return Host::Alloc(size);
}

// A start during which `atTheMoment` meddles with the event interface.
StartOptions Meddling(void (*atTheMoment)()) {
  KeepProcsOfAFirstRun();
  g_atTheMoment = atTheMoment;
  StartOptions options = Host::WithObjectProcs(Reports::Told());
  options.objAlloc = &AllocWaitingForTheMoment;
  return options;
}

// The host's service serves no snapshots, so the usual struct of procs cannot be filled by name.
struct HostServed {
  explicit HostServed(ZEBGetProcAddress found) : find(found) {
    if (find == nullptr) throw std::runtime_error("the library did not start");
    if (g_atTheMoment != nullptr) throw std::runtime_error("the moment did not come");
    ZEBFetchStringProcs(find, &string);
  }

  ZEBGetProcAddress find;
  ZEBStringProcs string{};
};

TEST(HostEventService, IsGivenTheLibrarysCounters) {
  ExpectPassesInFreshChild([] {
    const HostServed zeb(Start(Meddling(&PutHostServiceInPlace)));
    EXPECT_THAT(g_service.counters, SizeIs(kLibraryCounterCount));
    EXPECT_THAT(g_service.criticalities, SizeIs(kLibraryCounterCount));
    EXPECT_THAT(g_service.criticalities, Contains(Pair(kAtomFound, 10)));
    EXPECT_THAT(g_service.criticalities, Contains(Pair(kAtomAllocated, 60)));
    EXPECT_THAT(g_service.criticalities, Contains(Pair(kAtomAddRef, -1)));
    exports().Terminate();
    EXPECT_THAT(g_service.counters, IsEmpty());
    EXPECT_EQ(g_service.foreignHandles, 0);
  });
}

TEST(HostEventService, IsToldEveryEventByOnes) {
  ExpectPassesInFreshChild([] {
    const HostServed zeb(Start(Meddling(&PutHostServiceInPlace)));
    g_service.totals.clear();
    ZEBString* atom = zeb.string.NewStringAtom("a text that is new");
    zeb.string.NewStringAtom("a text that is new");
    zeb.string.AddRef(atom);
    zeb.string.AddRef(nullptr);
    EXPECT_EQ(g_service.totals[kAtomAllocated], 1u);
    EXPECT_EQ(g_service.totals[kAtomFound], 1u);
    EXPECT_EQ(g_service.totals[kAtomAddRef], 2u);
    zeb.find("ZEBStringInterface", "AddRef", "ZEBAddRefStringAtomProc");
    EXPECT_EQ(g_service.totals[kAtomFound], 4u);
    EXPECT_THAT(g_service.amounts, ::testing::ElementsAre(1u));
    for (int i = 0; i < 3; ++i) zeb.string.DeleteStringAtom(atom);
    exports().Terminate();
    EXPECT_EQ(g_service.foreignHandles, 0);
    EXPECT_THAT(Reports::Take(), IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  });
}

// The change counter starts where the last run left it, so that it cannot tell the runs apart.
TEST(HostEventService, IsNotCalledInALaterRun) {
  ExpectPassesInFreshChild([] {
    const HostServed zeb(Start(Meddling(&PutHostServiceInPlace)));
    const std::uint32_t counter = exports().Terminate();
    const int calls = g_service.calls;
    RunningLibrary again({.unregisterCountStart = counter});
    EXPECT_EQ(Snapshot(again).size(), kLibraryCounterCount);
    MakeNewAtoms(again, 10);
    again.Stop();
    EXPECT_EQ(g_service.calls, calls);
  });
}

TEST(HostEventService, MayThrowWhenCountersAreMade) {
  ExpectPassesInFreshChild([] {
    StartOptions options = Meddling(&PutHostServiceInPlace);
    g_service.throwing = true;
    ZEBGetProcAddress find = nullptr;
    EXPECT_NO_THROW(find = Start(options));
    EXPECT_EQ(exports().GetGetProcAddress(), find);
    EXPECT_GT(g_service.calls, 0);
    EXPECT_NO_THROW(exports().Terminate());
  });
}

TEST(HostEventService, MayThrowWhenItIsToldAnEvent) {
  ExpectPassesInFreshChild([] {
    const HostServed zeb(Start(Meddling(&PutHostServiceInPlace)));
    g_service.throwing = true;
    const int calls = g_service.calls;
    ZEBString* atom = nullptr;
    EXPECT_NO_THROW(atom = zeb.string.NewStringAtom("a text that is new"));
    EXPECT_STREQ(zeb.string.GetCString(atom), "a text that is new");
    EXPECT_NO_THROW(zeb.string.AddRef(atom));
    EXPECT_NO_THROW(zeb.string.DeleteStringAtom(atom));
    EXPECT_NO_THROW(zeb.string.DeleteStringAtom(atom));
    EXPECT_NE(zeb.find("ZEBStringInterface", "AddRef", "ZEBAddRefStringAtomProc"), nullptr);
    EXPECT_GT(g_service.calls, calls);
    g_service.throwing = false;
    exports().Terminate();
    EXPECT_THAT(Reports::Take(), IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
  });
}

TEST(HostEventService, MayThrowWhenCountersAreDeleted) {
  ExpectPassesInFreshChild([] {
    const HostServed zeb(Start(Meddling(&PutHostServiceInPlace)));
    g_service.throwing = true;
    EXPECT_NO_THROW(exports().Terminate());
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
  });
}

// Once the event service could not be reached, the library counts no more in this process.
TEST(LostEventService, LeavesTheLibraryWithoutCountersForGood) {
  ExpectPassesInFreshChild([] {
    const HostServed zeb(Start(Meddling(&TakeServiceAway)));
    ZEBString* atom = zeb.string.NewStringAtom("not counted");
    zeb.string.AddRef(atom);
    zeb.string.DeleteStringAtom(atom);
    zeb.string.DeleteStringAtom(atom);
    exports().Terminate();
    EXPECT_THAT(Reports::Take(), IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);

    RunningLibrary again;
    std::uint32_t count = 77;
    again.event.DeleteEventSnapshot(again.event.NewEventSnapshot(&count));
    EXPECT_EQ(count, 0u);
    ZEBEventCounter* counter = again.event.NewEventCounter("a client's", 1);
    again.event.SignalEventCounter(counter, 5);
    EXPECT_EQ(Total(again, "a client's"), 5);
    again.event.DeleteEventCounter(counter);
  });
}

}  // namespace
}  // namespace contract
