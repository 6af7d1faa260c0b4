// Event counters: the library's own, those that clients make, and snapshots of all of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::UnorderedElementsAreArray;

using Host = HostMemory<0>;

static_assert(sizeof(ZEBEventRecord) == 24);
static_assert(alignof(ZEBEventRecord) == 8);
static_assert(offsetof(ZEBEventRecord, total) == 0);
static_assert(offsetof(ZEBEventRecord, name) == 8);
static_assert(offsetof(ZEBEventRecord, criticality) == 16);
static_assert(offsetof(ZEBEventRecord, reserved) == 20);

using NameAndCriticality = std::pair<std::string, std::int32_t>;

const NameAndCriticality kLibraryCounters[] = {
    {"ZEB memory allocation", 50},
    {"ZEB large memory allocation (allocation request larger than 64k)", 100},
    {"ZEB memory page allocation (no adequate free block available)", 100},
    {"ZEB container allocation page miss", 60},
    {"ZEB instance allocation page miss", 60},
    {"ZEB interface method allocation page miss", 60},
    {"ZEB calls to NewFullContainer that hit the cache", 5},
    {"ZEB calls to NewFullContainer that missed the cache", 20},
    {"ZEB calls to NewContainer instead of NewFullContainer", 20},
    {"ZEB calls to DeleteContainer that won't be cached because they have multiple instances or "
     "interfaces",
     20},
    {"ZEB calls to Container::AddRef", -1},
    {"ZEB calls to Container::GetInstance that missed the client-side cache", 5},
    {"ZEB calls to new ZEBSharedBuffer", 20},
    {"ZEB ZEBSharedBuffer allocation page miss", 60},
    {"ZEB new string atom from char* found duplicate and called AddRef", 10},
    {"ZEB new string atom from char* did not find duplicate so allocated", 60},
    {"ZEB calls to ZEBString::AddRef", -1},
    {"ZEB evicting a cache item", 50},
    {"ZEB call to TZEBCacheID::MarkNoPurge on previously purged item", 100},
    {"ZEB creation of CZEBCachePurge (sorts the cache)", 1000},
};
const std::size_t kLibraryCounterCount = std::size(kLibraryCounters);

std::vector<NameAndCriticality> NamesAndCriticalities(const Procs& zeb) {
  std::vector<NameAndCriticality> pairs;
  for (const ZEBEventRecord& record : Snapshot(zeb)) {
    pairs.emplace_back(record.name, record.criticality);
  }
  return pairs;
}

std::vector<std::pair<std::string, std::int64_t>> NamesAndTotals(const Procs& zeb) {
  std::vector<std::pair<std::string, std::int64_t>> pairs;
  for (const ZEBEventRecord& record : Snapshot(zeb)) pairs.emplace_back(record.name, record.total);
  return pairs;
}

class Events : public ::testing::Test {
 protected:
  explicit Events(const StartOptions& options = {}) : zeb_(options) {}

  ZEBEventCounter* New(const char* name, std::int32_t criticality = 10) const {
    return zeb_.event.NewEventCounter(name, criticality);
  }
  void Signal(ZEBEventCounter* counter, std::uint64_t amount = 1) const {
    zeb_.event.SignalEventCounter(counter, amount);
  }
  void Delete(ZEBEventCounter* counter) const { zeb_.event.DeleteEventCounter(counter); }

  // The counters that clients have made, latest first.
  std::vector<std::string> ClientNames() const {
    std::vector<std::string> names;
    const auto records = Snapshot(zeb_);
    for (std::size_t i = 0; i + kLibraryCounterCount < records.size(); ++i) {
      names.emplace_back(records[i].name);
    }
    return names;
  }

  RunningLibrary zeb_;
};

using LibraryCounters = Events;

TEST_F(LibraryCounters, AreRegisteredWithTheirNamesAndCriticalities) {
  EXPECT_THAT(NamesAndCriticalities(zeb_), UnorderedElementsAreArray(kLibraryCounters));
}

TEST_F(LibraryCounters, HaveTheReservedWordCleared) {
  for (const ZEBEventRecord& record : Snapshot(zeb_)) EXPECT_EQ(record.reserved, 0) << record.name;
}

TEST_F(LibraryCounters, AreRegisteredWithTheHostsAllocatorsToo) {
  zeb_.Stop();
  RunningLibrary zeb(Host::WithObjectProcs());
  EXPECT_THAT(NamesAndCriticalities(zeb), UnorderedElementsAreArray(kLibraryCounters));
}

TEST_F(LibraryCounters, StartAfreshWithEachStart) {
  const auto atStart = NamesAndTotals(zeb_);
  for (int i = 0; i < 10; ++i) {
    MakeNewAtoms(zeb_, 10);
    zeb_.string.AddRef(nullptr);
  }
  EXPECT_NE(NamesAndTotals(zeb_), atStart);
  zeb_.Stop();
  RunningLibrary again;
  EXPECT_EQ(NamesAndTotals(again), atStart);
}

TEST_F(LibraryCounters, AreThereAgainAfterTheirInterfaceWasUnregistered) {
  zeb_.frame.UnregisterInterface("ZEBEventInterface");
  zeb_.Stop();
  RunningLibrary again;
  EXPECT_THAT(NamesAndCriticalities(again), UnorderedElementsAreArray(kLibraryCounters));
  EXPECT_EQ(AtomEventsOf(again, [&] { MakeNewAtoms(again, 2); }), (AtomEvents{.allocated = 2}));
}

TEST_F(LibraryCounters, GoOnCountingWhenTheirInterfaceIsUnregistered) {
  zeb_.frame.UnregisterInterface("ZEBEventInterface");
  EXPECT_EQ(AtomEventsOf(zeb_, [&] { MakeNewAtoms(zeb_, 3); }), (AtomEvents{.allocated = 3}));
}

// Only blocks cut from pages are counted, and no page is ever taken.
TEST_F(LibraryCounters, CountNoMemoryTakenDirectly) {
  for (const std::uint64_t size : {1u, 1000u, 65024u, 65025u, 200'000u}) {
    zeb_.memory.Free(zeb_.memory.Alloc(size));
  }
  MakeNewAtoms(zeb_, 100);
  EXPECT_EQ(Total(zeb_, "ZEB memory allocation"), 0);
  EXPECT_EQ(Total(zeb_, "ZEB large memory allocation (allocation request larger than 64k)"), 0);
  EXPECT_EQ(Total(zeb_, "ZEB memory page allocation (no adequate free block available)"), 0);
}

TEST_F(LibraryCounters, AreUntouchedByClientEvents) {
  const auto before = NamesAndTotals(zeb_);
  ZEBEventCounter* counter = New("ZEB memory allocation");
  Signal(counter, 100);
  Delete(counter);
  EXPECT_EQ(NamesAndTotals(zeb_), before);
}

TEST_F(Events, AddUpWhatIsSignalled) {
  ZEBEventCounter* counter = New("signalled");
  ASSERT_NE(counter, nullptr);
  EXPECT_EQ(Total(zeb_, "signalled"), 0);
  for (int i = 0; i < 3; ++i) Signal(counter, 1);
  Signal(counter, 5);
  EXPECT_EQ(Total(zeb_, "signalled"), 8);
  Signal(counter, 0);
  EXPECT_EQ(Total(zeb_, "signalled"), 8);
  Signal(counter, std::uint64_t{1} << 40);
  EXPECT_EQ(Total(zeb_, "signalled"), (std::int64_t{1} << 40) + 8);
  Delete(counter);
}

TEST_F(Events, CountEachOnItsOwn) {
  ZEBEventCounter* first = New("first");
  ZEBEventCounter* second = New("second");
  Signal(first, 3);
  Signal(second, 4);
  EXPECT_EQ(Total(zeb_, "first"), 3);
  EXPECT_EQ(Total(zeb_, "second"), 4);
  Delete(first);
  Delete(second);
}

TEST_F(Events, StandBeforeTheLibrarysTheLatestFirst) {
  ZEBEventCounter* first = New("first");
  ZEBEventCounter* second = New("second");
  ZEBEventCounter* third = New("third");
  EXPECT_THAT(ClientNames(), ElementsAre("third", "second", "first"));
  EXPECT_EQ(Snapshot(zeb_).size(), kLibraryCounterCount + 3);
  Delete(second);
  EXPECT_THAT(ClientNames(), ElementsAre("third", "first"));
  second = New("second again");
  EXPECT_THAT(ClientNames(), ElementsAre("second again", "third", "first"));
  Delete(second);
  EXPECT_THAT(ClientNames(), ElementsAre("third", "first"));
  Delete(first);
  EXPECT_THAT(ClientNames(), ElementsAre("third"));
  Delete(third);
  EXPECT_THAT(ClientNames(), ElementsAre());
}

TEST_F(Events, CarryAnyCriticality) {
  for (const std::int32_t criticality : {0, 1, -1, INT_MAX, INT_MIN}) {
    ZEBEventCounter* counter = New("counter", criticality);
    const ZEBEventRecord record = Snapshot(zeb_).front();
    EXPECT_STREQ(record.name, "counter");
    EXPECT_EQ(record.criticality, criticality);
    EXPECT_EQ(record.reserved, 0);
    Delete(counter);
  }
}

TEST_F(Events, MayShareAName) {
  ZEBEventCounter* first = New("shared name");
  ZEBEventCounter* second = New("shared name");
  EXPECT_NE(first, second);
  Signal(first, 7);
  EXPECT_THAT(ClientNames(), ElementsAre("shared name", "shared name"));
  EXPECT_EQ(Snapshot(zeb_)[0].total, 0);
  EXPECT_EQ(Snapshot(zeb_)[1].total, 7);
  Delete(first);
  EXPECT_THAT(ClientNames(), ElementsAre("shared name"));
  Delete(second);
}

TEST_F(Events, KeepTheCallersNameItself) {
  char name[] = "before";
  ZEBEventCounter* counter = New(name);
  EXPECT_EQ(Snapshot(zeb_).front().name, name);
  name[0] = 'B';
  EXPECT_THAT(ClientNames(), ElementsAre("Before"));
  Delete(counter);
}

TEST_F(Events, MayHaveAnEmptyName) {
  ZEBEventCounter* counter = New("");
  ASSERT_NE(counter, nullptr);
  EXPECT_THAT(ClientNames(), ElementsAre(""));
  Delete(counter);
}

TEST_F(Events, AnswerANullNameWithNull) {
  EXPECT_EQ(New(nullptr), nullptr);
  EXPECT_EQ(Snapshot(zeb_).size(), kLibraryCounterCount);
}

TEST_F(Events, HarmlesslyTakeNull) {
  Delete(nullptr);
  Signal(nullptr, 1);
  zeb_.event.DeleteEventSnapshot(nullptr);
  EXPECT_EQ(zeb_.event.NewEventSnapshot(nullptr), nullptr);
  EXPECT_EQ(Snapshot(zeb_).size(), kLibraryCounterCount);
}

TEST_F(Events, ExistInGreatNumber) {
  constexpr std::size_t kCounters = 2000;
  std::vector<ZEBEventCounter*> counters;
  for (std::size_t i = 0; i < kCounters; ++i) {
    counters.push_back(New("one of many"));
    Signal(counters.back(), i);
  }
  const auto records = Snapshot(zeb_);
  ASSERT_EQ(records.size(), kCounters + kLibraryCounterCount);
  for (std::size_t i = 0; i < kCounters; ++i) {
    EXPECT_EQ(records[i].total, static_cast<std::int64_t>(kCounters - 1 - i));
  }
  for (ZEBEventCounter* counter : counters) Delete(counter);
  EXPECT_EQ(Snapshot(zeb_).size(), kLibraryCounterCount);
}

class Snapshots : public Events {
 protected:
  using Events::Events;

  ZEBEventRecord* Take() {
    count_ = 0;
    return zeb_.event.NewEventSnapshot(&count_);
  }

  std::uint32_t count_ = 0;
};

TEST_F(Snapshots, StayAsTheyWereTaken) {
  ZEBEventCounter* counter = New("counter");
  Signal(counter, 2);
  ZEBEventRecord* records = Take();
  ASSERT_NE(records, nullptr);
  Signal(counter, 40);
  ZEBEventCounter* later = New("later");
  EXPECT_EQ(count_, kLibraryCounterCount + 1);
  EXPECT_STREQ(records[0].name, "counter");
  EXPECT_EQ(records[0].total, 2);
  Delete(counter);
  EXPECT_EQ(records[0].total, 2);
  zeb_.event.DeleteEventSnapshot(records);
  Delete(later);
}

TEST_F(Snapshots, AreIndependentOfEachOther) {
  ZEBEventCounter* counter = New("counter");
  ZEBEventRecord* before = Take();
  Signal(counter, 5);
  ZEBEventRecord* after = Take();
  EXPECT_NE(before, after);
  EXPECT_EQ(before[0].total, 0);
  zeb_.event.DeleteEventSnapshot(before);
  EXPECT_EQ(after[0].total, 5);
  zeb_.event.DeleteEventSnapshot(after);
  Delete(counter);
}

TEST_F(Snapshots, PutNothingIntoTheTotals) {
  const auto before = NamesAndTotals(zeb_);
  for (int i = 0; i < 5; ++i) zeb_.event.DeleteEventSnapshot(Take());
  EXPECT_EQ(NamesAndTotals(zeb_), before);
}

class EventsInHostMemory : public Snapshots {
 protected:
  EventsInHostMemory() : Snapshots(Host::WithObjectProcs()) {}
};

TEST_F(EventsInHostMemory, GiveTheirBlocksBack) {
  const std::uint64_t live = Host::LiveBlocks();
  ZEBEventCounter* counter = New("counter");
  EXPECT_GT(Host::LiveBlocks(), live);
  ZEBEventRecord* records = Take();
  EXPECT_GT(Host::LiveBlocks(), live + 1);
  zeb_.event.DeleteEventSnapshot(records);
  Delete(counter);
  EXPECT_EQ(Host::LiveBlocks(), live);
}

TEST_F(EventsInHostMemory, AnswerAFailedAllocationWithNull) {
  Host::FailAt(1, true);
  EXPECT_EQ(New("no memory for this"), nullptr);
  count_ = 77;
  EXPECT_EQ(zeb_.event.NewEventSnapshot(&count_), nullptr);
  EXPECT_EQ(count_, 0u);
  EXPECT_TRUE(Host::StopFailing());
  EXPECT_EQ(Snapshot(zeb_).size(), kLibraryCounterCount);
}

TEST_F(EventsInHostMemory, SignalAndDeleteWithoutAllocating) {
  ZEBEventCounter* counter = New("counter");
  Host::FailAt(1, true);
  Signal(counter, 3);
  Delete(counter);
  EXPECT_FALSE(Host::StopFailing());
}

// A host's own event interface, which must only ever see counters that it made itself.
struct HostEvents {
  static inline int made = 0;
  static inline int foreign = 0;
  static inline ZEBEventCounter* const kHandle = reinterpret_cast<ZEBEventCounter*>(&made);

  static ZEBEventCounter* New(const char*, std::int32_t) {
    ++made;
    return kHandle;
  }
  static void Delete(ZEBEventCounter* counter) { foreign += counter != kHandle ? 1 : 0; }
  static void Signal(ZEBEventCounter* counter, std::uint64_t) {
    foreign += counter != kHandle ? 1 : 0;
  }
  static ZEBEventRecord* Take(std::uint32_t* count) {
    *count = 0;
    return nullptr;
  }
  static void Drop(ZEBEventRecord*) {}

  static void Replace(const Procs& zeb) {
    const auto add = [&](const char* method, const char* proc, ZEBProc function) {
      EXPECT_EQ(zeb.frame.RegisterProcAddress("ZEBEventInterface", method, proc, function), 1);
    };
    zeb.frame.UnregisterInterface("ZEBEventInterface");
    add("NewEventCounter", "ZEBNewEventCounterProc", AsProc(&New));
    add("DeleteEventCounter", "ZEBDeleteEventCounterProc", AsProc(&Delete));
    add("SignalEventCounter", "ZEBSignalEventCounterProc", AsProc(&Signal));
    add("NewEventSnapshot", "ZEBNewEventSnapshotProc", AsProc(&Take));
    add("DeleteEventSnapshot", "ZEBDeleteEventSnapshotProc", AsProc(&Drop));
  }
};

TEST(ReplacedEventInterface, NeverSeesCountersThatItDidNotMake) {
  {
    RunningLibrary zeb;
    HostEvents::Replace(zeb);
    MakeNewAtoms(zeb, 100);
    zeb.string.AddRef(nullptr);
    zeb.getProcAddress("unknown", "unknown", "unknown");
  }
  EXPECT_EQ(HostEvents::foreign, 0);
}

TEST(ReplacedEventInterface, IsGoneAfterARestart) {
  { HostEvents::Replace(RunningLibrary()); }
  const int made = HostEvents::made;
  RunningLibrary zeb;
  EXPECT_THAT(NamesAndCriticalities(zeb), UnorderedElementsAreArray(kLibraryCounters));
  EXPECT_EQ(HostEvents::made, made);
}

}  // namespace
}  // namespace contract
