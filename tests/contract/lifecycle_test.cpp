// Starting and stopping: the four starts, their counting and their refusals, what each argument
// does, and what a restart finds.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contract/error_reports.h"
#include "contract/host_memory.h"
#include "contract/library.h"
#include "contract/proc_rows.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Host = HostMemory<0>;
using OtherHost = HostMemory<1>;
using Pages = HostMemory<2>;

bool IsMultiThreadedWhenStartedWith(const StartOptions& options) {
  RunningLibrary zeb(options);
  const std::int32_t answer = zeb.frame.IsMultiThreaded();
  EXPECT_TRUE(answer == 0 || answer == 1) << answer;
  return answer != 0;
}

bool ServesClientsFromTheHost(const Procs& zeb) { return zeb.memory.Alloc == &Host::Alloc; }

void ExpectEveryRow(ZEBGetProcAddress find) {
  for (const ProcRow& row : kProcRows) {
    EXPECT_NE(find(row.interfaceName, row.methodName, row.procName), nullptr)
        << ::testing::PrintToString(row);
  }
}

// The four starts, each reduced to what it does with the arguments that it has.
struct Variant {
  const char* name;
  ZEBGetProcAddress (*start)(const StartOptions&);
};

constexpr Variant kVariants[] = {
    {"Initialize",
     [](const StartOptions& o) {
       return exports().Initialize(o.pageAlloc, o.pageFree, o.errorReport);
     }},
    {"Initialize2",
     [](const StartOptions& o) {
       return exports().Initialize2(o.pageAlloc, o.pageFree, o.objAlloc, o.objRealloc, o.objFree,
                                    o.objSize, o.errorReport);
     }},
    {"Initialize3",
     [](const StartOptions& o) {
       return exports().Initialize3(o.pageAlloc, o.pageFree, o.objAlloc, o.objRealloc, o.objFree,
                                    o.objSize, o.errorReport, o.unregisterCountStart, o.hostValue);
     }},
    {"Initialize4", [](const StartOptions& o) { return Start(o); }},
};

class EveryStart : public ::testing::TestWithParam<Variant> {
 protected:
  static ZEBGetProcAddress Start(const StartOptions& options = {}) {
    return GetParam().start(options);
  }
};

INSTANTIATE_TEST_SUITE_P(Starting, EveryStart, ::testing::ValuesIn(kVariants),
                         [](const auto& variant) { return std::string(variant.param.name); });

TEST_P(EveryStart, SucceedsWithNothingGiven) {
  const ZEBGetProcAddress find = Start();
  ASSERT_NE(find, nullptr);
  EXPECT_EQ(exports().GetGetProcAddress(), find);
  const Procs zeb = FetchAll(find);
  EXPECT_EQ(zeb.frame.IsMultiThreaded(), 1);
  EXPECT_EQ(zeb.frame.GetUnregisterCount(), 1u);
  EXPECT_EQ(exports().Terminate(), 1u);
  EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
}

TEST_P(EveryStart, PublishesEveryProc) {
  const ZEBGetProcAddress find = Start();
  ASSERT_NE(find, nullptr);
  ExpectEveryRow(find);
  exports().Terminate();
}

TEST_P(EveryStart, PublishesAReportProcThatDoesNothingWhenNoneIsGiven) {
  const ZEBGetProcAddress find = Start();
  ASSERT_NE(find, nullptr);
  const Procs zeb = FetchAll(find);
  zeb.frame.ReportError("nobody listens");
  exports().Terminate();
}

TEST_P(EveryStart, TakesTheReportProc) {
  const ZEBGetProcAddress find = Start(ErrorReports<>::Told());
  ASSERT_NE(find, nullptr);
  const Procs zeb = FetchAll(find);
  EXPECT_EQ(zeb.frame.ReportError, &ErrorReports<>::Report);
  exports().Terminate();
}

TEST_P(EveryStart, IsCountedOverTheDefaultConfiguration) {
  const ZEBGetProcAddress first = contract::Start();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(Start(), first);
  exports().Terminate();
  EXPECT_EQ(exports().GetGetProcAddress(), first);
  ExpectEveryRow(first);
  exports().Terminate();
  EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
}

TEST_P(EveryStart, IsRefusedOverAHostPagePair) {
  RunningLibrary zeb(Pages::WithPagePair());
  EXPECT_EQ(Start(), nullptr);
  EXPECT_EQ(exports().GetGetProcAddress(), zeb.getProcAddress);
  ExpectEveryRow(zeb.getProcAddress);
  zeb.Stop();
  EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
}

TEST_P(EveryStart, IsRefusedOverAHostObjectSet) {
  RunningLibrary zeb(Host::WithObjectProcs());
  EXPECT_EQ(Start(), nullptr);
  EXPECT_EQ(exports().GetGetProcAddress(), zeb.getProcAddress);
  zeb.Stop();
  EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
}

TEST_P(EveryStart, TakesTheHostPagePair) {
  const ZEBGetProcAddress find = Start(Pages::WithPagePair());
  ASSERT_NE(find, nullptr);
  EXPECT_EQ(FetchAll(find).frame.IsMultiThreaded(), 0);
  exports().Terminate();
}

TEST_P(EveryStart, IgnoresItsArgumentsWhenOnlyCounted) {
  RunningLibrary zeb(ErrorReports<0>::Told({.unregisterCountStart = 3}));
  StartOptions other = Host::WithObjectProcs(Pages::WithPagePair(ErrorReports<1>::Told()));
  other.unregisterCountStart = 90;
  EXPECT_EQ(Start(other), zeb.getProcAddress);

  const Procs again = FetchAll(zeb.getProcAddress);
  EXPECT_FALSE(ServesClientsFromTheHost(again));
  EXPECT_EQ(again.frame.IsMultiThreaded(), 1);
  EXPECT_EQ(again.frame.GetUnregisterCount(), 3u);
  EXPECT_EQ(again.frame.ReportError, &ErrorReports<0>::Report);
  EXPECT_EQ(exports().Terminate(), 3u);
}

TEST(CountedStarts, NeedAsManyStops) {
  constexpr int kStarts = 40;
  for (int i = 0; i < kStarts; ++i) ASSERT_NE(Start(), nullptr);
  for (int i = 0; i < kStarts; ++i) {
    EXPECT_NE(exports().GetGetProcAddress(), nullptr) << i;
    exports().Terminate();
  }
  EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
}

TEST(CountedStarts, KeepClientObjectsUntilTheLastStop) {
  RunningLibrary zeb;
  ASSERT_NE(Start(), nullptr);
  ZEBString* atom = zeb.string.NewStringAtom("held over an inner stop");
  ASSERT_EQ(zeb.frame.RegisterProcAddress("Client", "Method", "Proc", FakeProc(8)), 1);
  exports().Terminate();
  EXPECT_STREQ(zeb.string.GetCString(atom), "held over an inner stop");
  EXPECT_EQ(zeb.getProcAddress("Client", "Method", "Proc"), FakeProc(8));
  zeb.string.DeleteStringAtom(atom);
}

TEST(RefusedStarts, ChangeNothing) {
  RunningLibrary zeb(Host::WithObjectProcs(ErrorReports<0>::Told({.unregisterCountStart = 5})));
  StartOptions other = OtherHost::WithObjectProcs(ErrorReports<1>::Told());
  other.flags = ZEB_FLAG_MULTI_THREADED;
  other.unregisterCountStart = 70;
  EXPECT_EQ(Start(other), nullptr);

  const Procs again = FetchAll(zeb.getProcAddress);
  EXPECT_TRUE(ServesClientsFromTheHost(again));
  EXPECT_EQ(again.frame.ReportError, &ErrorReports<0>::Report);
  EXPECT_EQ(again.frame.IsMultiThreaded(), 0);
  EXPECT_EQ(again.frame.GetUnregisterCount(), 5u);
  EXPECT_EQ(zeb.Stop(), 5u);
}

TEST(PagePair, WithOneHalfMissingCountsAsNone) {
  StartOptions options;
  options.pageAlloc = &Pages::Alloc;
  EXPECT_TRUE(IsMultiThreadedWhenStartedWith(options));
  options = {};
  options.pageFree = &Pages::Free;
  EXPECT_TRUE(IsMultiThreadedWhenStartedWith(options));
}

TEST(PagePair, WithOneHalfMissingAllowsCountedStarts) {
  StartOptions options;
  options.pageFree = &Pages::Free;
  RunningLibrary zeb(options);
  EXPECT_EQ(Start(), zeb.getProcAddress);
  exports().Terminate();
}

// Small blocks, pages' worth and large ones: the pooled mode, which alone asks the pair, never
// runs.
TEST(PagePair, IsNeverAsked) {
  RunningLibrary zeb(Pages::WithPagePair());
  for (const std::uint64_t size : {0u, 1u, 48u, 65024u, 65025u, 131072u, 1u << 20}) {
    void* block = zeb.memory.Alloc(size);
    EXPECT_NE(block, nullptr) << size;
    zeb.memory.Free(block);
  }
  zeb.string.DeleteStringAtom(zeb.string.NewStringAtom("no page for this"));
  zeb.Stop();
  EXPECT_EQ(Pages::Calls(), 0u);
}

TEST(MultiThreadedFlag, IsTakenFromFlagsWithAHostPagePair) {
  for (const std::uint32_t flags : {0u, 1u, 2u, 3u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    EXPECT_EQ(IsMultiThreadedWhenStartedWith(Pages::WithPagePair({.flags = flags})),
              (flags & 1u) != 0)
        << flags;
  }
}

TEST(MultiThreadedFlag, IsTakenFromFlagsWithAHostObjectSet) {
  for (const std::uint32_t flags : {0u, 1u, 2u, 3u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    EXPECT_EQ(IsMultiThreadedWhenStartedWith(Host::WithObjectProcs({.flags = flags})),
              (flags & 1u) != 0)
        << flags;
  }
}

TEST(MultiThreadedFlag, IsSetWithoutHostAllocatorsWhateverTheFlags) {
  for (const std::uint32_t flags : {0u, 1u, 2u}) {
    EXPECT_TRUE(IsMultiThreadedWhenStartedWith({.flags = flags})) << flags;
  }
}

// The object set with one of its four missing.
class IncompleteObjectSet : public ::testing::TestWithParam<int> {
 protected:
  static StartOptions WithOneMissing(StartOptions options = {}) {
    options = Host::WithObjectProcs(options);
    if (GetParam() == 0) options.objAlloc = nullptr;
    if (GetParam() == 1) options.objRealloc = nullptr;
    if (GetParam() == 2) options.objFree = nullptr;
    if (GetParam() == 3) options.objSize = nullptr;
    return options;
  }
};

INSTANTIATE_TEST_SUITE_P(Missing, IncompleteObjectSet, ::testing::Range(0, 4));

TEST_P(IncompleteObjectSet, IsNotInstalled) {
  const std::uint64_t callsBefore = Host::Calls();
  RunningLibrary zeb(WithOneMissing());
  EXPECT_FALSE(ServesClientsFromTheHost(zeb));
  EXPECT_NE(zeb.memory.Realloc, &Host::Realloc);
  EXPECT_NE(zeb.memory.Free, &Host::Free);
  EXPECT_NE(zeb.memory.GetBlockSize, &Host::Size);
  zeb.memory.Free(zeb.memory.Realloc(zeb.memory.Alloc(10), 20));
  zeb.Stop();
  EXPECT_EQ(Host::Calls(), callsBefore);
}

TEST_P(IncompleteObjectSet, LeavesTheThreadFlagAsThePagePairSetIt) {
  EXPECT_TRUE(IsMultiThreadedWhenStartedWith(WithOneMissing({.flags = 0})));
  EXPECT_FALSE(IsMultiThreadedWhenStartedWith(WithOneMissing(Pages::WithPagePair({.flags = 0}))));
  EXPECT_TRUE(IsMultiThreadedWhenStartedWith(WithOneMissing(Pages::WithPagePair({.flags = 1}))));
}

TEST_P(IncompleteObjectSet, AllowsCountedStarts) {
  RunningLibrary zeb(WithOneMissing());
  EXPECT_EQ(Start(), zeb.getProcAddress);
  exports().Terminate();
}

TEST(ObjectSet, IsInstalledWithoutAPagePair) {
  RunningLibrary zeb(Host::WithObjectProcs());
  EXPECT_TRUE(ServesClientsFromTheHost(zeb));
}

TEST(ObjectSet, IsInstalledBesideAPagePair) {
  RunningLibrary zeb(Host::WithObjectProcs(Pages::WithPagePair()));
  EXPECT_TRUE(ServesClientsFromTheHost(zeb));
  zeb.Stop();
  EXPECT_EQ(Pages::Calls(), 0u);
}

TEST(ChangeCounter, StartsWhereTheHostSays) {
  for (const std::uint32_t start : {7u, 1u, 0x80000000u, 0xFFFFFFFEu}) {
    RunningLibrary zeb({.unregisterCountStart = start});
    EXPECT_EQ(zeb.frame.GetUnregisterCount(), start);
    EXPECT_EQ(*zeb.frame.GetUnregisterCountAddr(), start);
    EXPECT_EQ(zeb.Stop(), start);
  }
}

TEST(ChangeCounter, StartsWhereTheHostSaysInTheThirdVariant) {
  const ZEBGetProcAddress find = exports().Initialize3(nullptr, nullptr, nullptr, nullptr, nullptr,
                                                       nullptr, nullptr, 7, 0xABCDEF0123456789u);
  ASSERT_NE(find, nullptr);
  const Procs zeb = FetchAll(find);
  EXPECT_EQ(zeb.frame.GetUnregisterCount(), 7u);
  zeb.frame.UnregisterInterface("nothing of this name");
  zeb.frame.UnregisterInterface("nor of this");
  EXPECT_EQ(exports().Terminate(), 9u);
}

TEST(ChangeCounter, NeverRepeatsWhenHandedOn) {
  std::uint32_t counter = 1;
  for (std::uint32_t round = 0; round < 4; ++round) {
    RunningLibrary zeb({.unregisterCountStart = counter});
    EXPECT_EQ(zeb.frame.GetUnregisterCount(), 1 + round);
    zeb.frame.UnregisterInterface("moves the counter");
    counter = zeb.Stop();
  }
  EXPECT_EQ(counter, 5u);
}

TEST(ChangeCounter, StartsAtOneAgainUnlessHandedOn) {
  {
    RunningLibrary zeb({.unregisterCountStart = 41});
    zeb.frame.UnregisterInterface("moves the counter");
  }
  RunningLibrary zeb;
  EXPECT_EQ(zeb.frame.GetUnregisterCount(), 1u);
}

TEST(ChangeCounter, IsAnsweredByInnerStops) {
  RunningLibrary zeb({.unregisterCountStart = 11});
  ASSERT_NE(Start(), nullptr);
  zeb.frame.UnregisterInterface("moves the counter");
  EXPECT_EQ(exports().Terminate(), 12u);
  zeb.frame.UnregisterInterface("moves it again");
  EXPECT_EQ(zeb.Stop(), 13u);
}

TEST(ChangeCounter, StaysReadableAfterTheStop) {
  RunningLibrary zeb({.unregisterCountStart = 21});
  const std::uint32_t* address = zeb.frame.GetUnregisterCountAddr();
  zeb.frame.UnregisterInterface("moves the counter");
  const std::uint32_t last = zeb.Stop();
  EXPECT_EQ(*address, last);
  EXPECT_EQ(last, 22u);
}

TEST(EmptyHook, DoesNothing) {
  RunningLibrary zeb;
  ZEBString* held = zeb.string.NewStringAtom("an object that is there");
  zeb.frame.AssertNoObjects();
  EXPECT_STREQ(zeb.string.GetCString(held), "an object that is there");
  zeb.string.DeleteStringAtom(held);
}

TEST(Restart, RegistersEveryServiceAfresh) {
  const StartOptions configurations[] = {
      {}, Host::WithObjectProcs(), {}, Pages::WithPagePair(), OtherHost::WithObjectProcs(), {}};
  for (const StartOptions& configuration : configurations) {
    RunningLibrary zeb(configuration);
    ExpectEveryRow(zeb.getProcAddress);
  }
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(OtherHost::LiveBlocks(), 0u);
}

TEST(Restart, FindsNothingThatAClientLeftRegistered) {
  {
    RunningLibrary zeb;
    ASSERT_EQ(zeb.frame.RegisterProcAddress("Client", "Method", "Proc", FakeProc(8)), 1);
    ASSERT_EQ(zeb.frame.RegisterProcAddress("ZEB", "Method", "Proc", FakeProc(8)), 1);
    ASSERT_EQ(zeb.frame.RegisterProcAddress(nullptr, nullptr, nullptr, FakeProc(8)), 1);
  }
  RunningLibrary zeb;
  EXPECT_EQ(zeb.getProcAddress("Client", "Method", "Proc"), nullptr);
  EXPECT_EQ(zeb.getProcAddress("ZEB", "Method", "Proc"), nullptr);
  EXPECT_EQ(zeb.getProcAddress(nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(zeb.frame.RegisterProcAddress("Client", "Method", "Proc", FakeProc(9)), 1);
}

TEST(Restart, RestoresInterfacesThatAClientUnregistered) {
  {
    RunningLibrary zeb;
    for (const ProcRow& row : kProcRows) zeb.frame.UnregisterInterface(row.interfaceName);
  }
  RunningLibrary zeb;
  ExpectEveryRow(zeb.getProcAddress);
}

TEST(Restart, FollowsTheNewHostsReportProc) {
  RunningLibrary(ErrorReports<0>::Told()).Stop();
  RunningLibrary zeb(ErrorReports<1>::Told());
  zeb.error.Release(zeb.error.NewError("to the new host", "Client", 1, nullptr, nullptr));
  zeb.Stop();
  EXPECT_THAT(ErrorReports<0>::Take(), IsEmpty());
  EXPECT_THAT(ErrorReports<1>::Take(), ElementsAre("to the new host"));
}

// The counter starts at the same value each time, so that nothing but the stop itself can tell the
// library's own bindings that their procs are gone.
TEST(Restart, NeverCallsProcsOfTheLastHost) {
  const StartOptions sameCounter{.unregisterCountStart = 9};
  const auto use = [](const Procs& zeb) {
    zeb.memory.Free(zeb.memory.Realloc(zeb.memory.Alloc(10), 20));
    zeb.string.DeleteStringAtom(zeb.string.NewStringAtom("made in each run"));
    zeb.error.Release(zeb.error.NewError("made in each run", "Client", 1, nullptr, nullptr));
    zeb.event.DeleteEventCounter(zeb.event.NewEventCounter("made in each run", 1));
  };
  const auto run = [&](const StartOptions& options) {
    RunningLibrary zeb(options);
    use(zeb);
  };

  run(Host::WithObjectProcs(sameCounter));
  const std::uint64_t callsOfTheFirst = Host::Calls();
  run(OtherHost::WithObjectProcs(sameCounter));
  const std::uint64_t callsOfTheSecond = OtherHost::Calls();
  run(sameCounter);

  EXPECT_GT(callsOfTheFirst, 0u);
  EXPECT_GT(callsOfTheSecond, 0u);
  EXPECT_EQ(Host::Calls(), callsOfTheFirst);
  EXPECT_EQ(OtherHost::Calls(), callsOfTheSecond);
}

TEST(StoppedLibrary, AnswersKeptProcsWithNothing) {
  RunningLibrary zeb;
  zeb.Stop();
  EXPECT_EQ(zeb.getProcAddress("ZEB", "ZEBReportError", "ZEBReportError"), nullptr);
  EXPECT_EQ(zeb.getProcAddress("unknown", "names", "all three"), nullptr);
  EXPECT_EQ(zeb.error.GetCoreError(ZEB_ERROR_UNKNOWN), nullptr);
  EXPECT_EQ(zeb.error.GetCoreError(ZEB_ERROR_OUT_OF_MEMORY), nullptr);
}

TEST(StoppedLibrary, KeepsNoNamesOfLookUps) {
  RunningLibrary first;
  first.Stop();
  EXPECT_EQ(first.getProcAddress("unknown", "names", "all three"), nullptr);

  RunningLibrary zeb(Host::WithObjectProcs(ErrorReports<>::Told()));
  ExpectEveryRow(zeb.getProcAddress);
  zeb.Stop();
  EXPECT_THAT(ErrorReports<>::Take(), IsEmpty());
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
}

}  // namespace
}  // namespace contract
