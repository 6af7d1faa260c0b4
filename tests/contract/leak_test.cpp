// What is left at the stop: who is told of atoms that clients still hold, how long those live, and
// that a host gets every block back, no block twice and no block that it did not give.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Host = HostMemory<0>;
using OtherHost = HostMemory<1>;
using Reports = ErrorReports<0>;

constexpr const char* kLeakReport = "string memory leak";

// A bit of everything, all given back.
void UseEverything(const RunningLibrary& zeb) {
  zeb.memory.Free(zeb.memory.Realloc(zeb.memory.Alloc(100), 200));
  std::vector<ZEBString*> atoms;
  for (int i = 0; i < 200; ++i) {
    atoms.push_back(zeb.string.NewStringAtom(("atom " + std::to_string(i)).c_str()));
    zeb.string.AddRef(atoms.back());
  }
  for (ZEBString* atom : atoms) zeb.string.DeleteStringAtom(atom);
  for (ZEBString* atom : atoms) zeb.string.DeleteStringAtom(atom);
  for (std::int32_t id = 0; id < 5; ++id) zeb.error.Release(zeb.error.GetCoreError(id));
  zeb.error.Release(zeb.error.NewError("message", "component", 1, nullptr, nullptr));
  zeb.event.DeleteEventCounter(zeb.event.NewEventCounter("counter", 1));
  Snapshot(zeb);
  zeb.frame.RegisterProcAddress("left registered", "method", "proc", FakeProc(16));
  zeb.frame.RegisterProcAddress("left registered", "method", "proc", FakeProc(16));
  zeb.frame.RegisterProcAddress(nullptr, "", nullptr, FakeProc(16));
  zeb.frame.RegisterProcAddress("unregistered", "method", "proc", FakeProc(16));
  zeb.frame.UnregisterInterface("unregistered");
  zeb.getProcAddress("unknown interface", "unknown method", "unknown proc");
}

void ExpectAllIsBack() {
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
}

TEST(CleanStop, ReportsNothing) {
  for (const StartOptions& options : {Reports::Told(), Host::WithObjectProcs(Reports::Told())}) {
    RunningLibrary zeb(options);
    UseEverything(zeb);
    Reports::Take();
    zeb.Stop();
    EXPECT_THAT(Reports::Take(), IsEmpty());
  }
}

TEST(CleanStop, ReportsNothingWhenNothingWasDone) {
  RunningLibrary(Reports::Told()).Stop();
  EXPECT_THAT(Reports::Take(), IsEmpty());
}

TEST(CleanStop, GivesTheHostEveryBlockBack) {
  for (int round = 0; round < 3; ++round) {
    RunningLibrary zeb(Host::WithObjectProcs());
    EXPECT_GT(Host::LiveBlocks(), 0u);
    UseEverything(zeb);
    zeb.Stop();
    ExpectAllIsBack();
  }
}

TEST(CleanStop, GivesTheHostEveryBlockBackWhenNothingWasDone) {
  RunningLibrary(Host::WithObjectProcs()).Stop();
  ExpectAllIsBack();
}

TEST(CleanStop, NeedsNoMemory) {
  RunningLibrary zeb(Host::WithObjectProcs(Reports::Told()));
  UseEverything(zeb);
  Reports::Take();
  Host::FailAt(1, true);
  zeb.Stop();
  EXPECT_FALSE(Host::StopFailing());
  EXPECT_THAT(Reports::Take(), IsEmpty());
  ExpectAllIsBack();
}

TEST(CleanStop, LeavesAHostsClientBlocksAlone) {
  RunningLibrary zeb(Host::WithObjectProcs());
  void* block = zeb.memory.Alloc(100);
  zeb.Stop();
  EXPECT_EQ(Host::LiveBlocks(), 1u);
  EXPECT_EQ(Host::Size(block), 100u);
  Host::Free(block);
  ExpectAllIsBack();
}

class HeldAtom : public ::testing::TestWithParam<bool> {
 protected:
  HeldAtom() { Reports::Take(); }

  static StartOptions Options() {
    return GetParam() ? Host::WithObjectProcs(Reports::Told()) : Reports::Told();
  }

  // Stops with `held` still held by the client.
  void StopOverLeak(RunningLibrary& zeb) {
    Reports::Take();
    zeb.Stop();
    EXPECT_THAT(Reports::Take(), ElementsAre(kLeakReport));
  }
};

INSTANTIATE_TEST_SUITE_P(InEitherMemory, HeldAtom, ::testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "HostObjects" : "Default");
});

TEST_P(HeldAtom, IsReportedOnceAtTheStop) {
  RunningLibrary zeb(Options());
  ZEBString* held = zeb.string.NewStringAtom("held over the stop");
  StopOverLeak(zeb);
  zeb.string.DeleteStringAtom(held);
  ExpectAllIsBack();
}

TEST_P(HeldAtom, IsReportedOnceWithManyOthers) {
  RunningLibrary zeb(Options());
  std::vector<ZEBString*> held;
  for (int i = 0; i < 200; ++i) {
    held.push_back(zeb.string.NewStringAtom(("held " + std::to_string(i)).c_str()));
  }
  StopOverLeak(zeb);
  for (std::size_t i = 0; i < held.size(); ++i) {
    EXPECT_EQ(zeb.string.GetCString(held[i]), "held " + std::to_string(i));
    zeb.string.DeleteStringAtom(held[i]);
  }
  ExpectAllIsBack();
}

TEST_P(HeldAtom, StaysValidUntilItsLastRelease) {
  RunningLibrary zeb(Options());
  ZEBString* held = zeb.string.NewStringAtom("valid after the stop");
  zeb.string.AddRef(held);
  StopOverLeak(zeb);
  EXPECT_STREQ(zeb.string.GetCString(held), "valid after the stop");
  zeb.string.AddRef(held);
  zeb.string.DeleteStringAtom(held);
  zeb.string.DeleteStringAtom(held);
  EXPECT_STREQ(zeb.string.GetCString(held), "valid after the stop");
  zeb.string.DeleteStringAtom(held);
  ExpectAllIsBack();
}

TEST_P(HeldAtom, IsNotReportedAgainAtTheNextStop) {
  RunningLibrary zeb(Options());
  ZEBString* held = zeb.string.NewStringAtom("reported once");
  StopOverLeak(zeb);
  RunningLibrary again(Options());
  again.Stop();
  EXPECT_THAT(Reports::Take(), IsEmpty());
  again.string.DeleteStringAtom(held);
  ExpectAllIsBack();
}

TEST_P(HeldAtom, MayBeReleasedInTheNextRun) {
  RunningLibrary zeb(Options());
  ZEBString* held = zeb.string.NewStringAtom("released in the next run");
  StopOverLeak(zeb);
  RunningLibrary again(Options());
  EXPECT_STREQ(again.string.GetCString(held), "released in the next run");
  again.string.DeleteStringAtom(held);
  again.Stop();
  EXPECT_THAT(Reports::Take(), IsEmpty());
  ExpectAllIsBack();
}

TEST_P(HeldAtom, IsNoAtomOfTheNextRun) {
  RunningLibrary zeb(Options());
  ZEBString* old = zeb.string.NewStringAtom("the same text twice");
  StopOverLeak(zeb);

  RunningLibrary again(Options());
  ZEBString* fresh = again.string.NewStringAtom("the same text twice");
  EXPECT_NE(fresh, old);
  again.string.DeleteStringAtom(old);
  EXPECT_STREQ(again.string.GetCString(fresh), "the same text twice");
  ForgetRecentAtoms(again);
  EXPECT_EQ(again.string.NewStringAtom("the same text twice"), fresh);
  again.string.DeleteStringAtom(fresh);
  again.string.DeleteStringAtom(fresh);
  again.Stop();
  EXPECT_THAT(Reports::Take(), IsEmpty());
  ExpectAllIsBack();
}

TEST_P(HeldAtom, MayBeWhatTheLibraryItselfNeeds) {
  RunningLibrary zeb(Options());
  std::vector<ZEBString*> held;
  for (const char* text : {".", "", "ZEB", "KST", "Out of Memory", "ZEBStreamInterface"}) {
    held.push_back(zeb.string.NewStringAtom(text));
  }
  StopOverLeak(zeb);
  {
    RunningLibrary again(Options());
    EXPECT_NE(again.getProcAddress("ZEB", "ZEBReportError", "ZEBReportError"), nullptr);
    UseEverything(again);
  }
  for (ZEBString* atom : held) zeb.string.DeleteStringAtom(atom);
  ExpectAllIsBack();
}

TEST_P(HeldAtom, ThatAnErrorHoldsIsReportedToo) {
  static int deletions;
  deletions = 0;
  RunningLibrary zeb(Options());
  ZEBErrorObject* error =
      zeb.error.NewError("the message", "the component", 4, nullptr, [](void*) { ++deletions; });
  StopOverLeak(zeb);
  EXPECT_STREQ(zeb.string.GetCString(zeb.error.GetErrorMessage(error)), "the message");
  EXPECT_STREQ(zeb.string.GetCString(zeb.error.GetComponent(error)), "the component");
  EXPECT_EQ(zeb.error.GetID(error), 4);
  EXPECT_EQ(deletions, 0);
  zeb.error.Release(error);
  EXPECT_EQ(deletions, 1);
  ExpectAllIsBack();
}

TEST_P(HeldAtom, ThatAStandardErrorHoldsIsReportedToo) {
  RunningLibrary zeb(Options());
  ZEBErrorObject* error = zeb.error.GetCoreError(ZEB_ERROR_CORRUPT_DATA);
  StopOverLeak(zeb);
  EXPECT_STREQ(zeb.string.GetCString(zeb.error.GetErrorMessage(error)), "Corrupt Data");
  RunningLibrary again(Options());
  ZEBErrorObject* fresh = again.error.GetCoreError(ZEB_ERROR_CORRUPT_DATA);
  EXPECT_NE(fresh, error);
  again.error.Release(fresh);
  again.error.Release(error);
  again.Stop();
  EXPECT_THAT(Reports::Take(), IsEmpty());
  ExpectAllIsBack();
}

// Blocks belong to whoever gave them, also when another configuration runs by now.
TEST(AtomOfAnEarlierHost, IsNotGivenToTheNextOne) {
  RunningLibrary zeb;
  ZEBString* held = zeb.string.NewStringAtom("made without a host's memory");
  zeb.Stop();
  RunningLibrary again(Host::WithObjectProcs());
  EXPECT_STREQ(again.string.GetCString(held), "made without a host's memory");
  again.string.DeleteStringAtom(held);
  again.Stop();
  ExpectAllIsBack();
}

TEST(AtomOfAnEarlierHost, GoesBackToThatHost) {
  RunningLibrary zeb(Host::WithObjectProcs());
  ZEBString* held = zeb.string.NewStringAtom("made in the first host's memory");
  zeb.Stop();
  EXPECT_GT(Host::LiveBlocks(), 0u);
  RunningLibrary again(OtherHost::WithObjectProcs());
  again.string.DeleteStringAtom(held);
  again.Stop();
  ExpectAllIsBack();
  EXPECT_EQ(OtherHost::LiveBlocks(), 0u);
  EXPECT_EQ(OtherHost::ForeignFrees(), 0u);
}

TEST(AtomOfAnEarlierHost, GoesBackWhenTheNextRunHasNone) {
  RunningLibrary zeb(Host::WithObjectProcs());
  ZEBString* held = zeb.string.NewStringAtom("made in the host's memory");
  zeb.Stop();
  RunningLibrary again;
  again.string.DeleteStringAtom(held);
  again.Stop();
  ExpectAllIsBack();
}

class ErrorOfAnEarlierHost : public ::testing::Test {
 protected:
  // An error made and held in a first run, released in a second one.
  static void MakeInOneRunReleaseInTheNext(const StartOptions& first, const StartOptions& second) {
    static int deletions;
    deletions = 0;
    RunningLibrary zeb(first);
    ZEBErrorObject* held = zeb.error.NewError("held over a restart", "component", 8, nullptr,
                                              [](void*) { ++deletions; });
    zeb.Stop();
    RunningLibrary again(second);
    EXPECT_EQ(again.error.GetID(held), 8);
    EXPECT_STREQ(again.string.GetCString(again.error.GetErrorMessage(held)), "held over a restart");
    again.error.Release(held);
    EXPECT_EQ(deletions, 1);
    again.Stop();
    ExpectAllIsBack();
    EXPECT_EQ(OtherHost::LiveBlocks(), 0u);
    EXPECT_EQ(OtherHost::ForeignFrees(), 0u);
  }
};

TEST_F(ErrorOfAnEarlierHost, IsNotGivenToTheNextOne) {
  MakeInOneRunReleaseInTheNext({}, Host::WithObjectProcs());
}

TEST_F(ErrorOfAnEarlierHost, GoesBackToThatHost) {
  MakeInOneRunReleaseInTheNext(Host::WithObjectProcs(), OtherHost::WithObjectProcs());
}

TEST_F(ErrorOfAnEarlierHost, GoesBackWhenTheNextRunHasNone) {
  MakeInOneRunReleaseInTheNext(Host::WithObjectProcs(), {});
}

TEST(CountedStops, ReportALeakAtTheLastOnly) {
  RunningLibrary zeb(Reports::Told());
  ZEBString* held = zeb.string.NewStringAtom("held over two stops");
  ASSERT_NE(Start(), nullptr);
  exports().Terminate();
  EXPECT_THAT(Reports::Take(), IsEmpty());
  zeb.Stop();
  EXPECT_THAT(Reports::Take(), ElementsAre(kLeakReport));
  zeb.string.DeleteStringAtom(held);
}

TEST(SilentHost, LosesNothingByALeak) {
  RunningLibrary zeb(Host::WithObjectProcs());
  ZEBString* held = zeb.string.NewStringAtom("nobody is told of this");
  zeb.Stop();
  EXPECT_STREQ(zeb.string.GetCString(held), "nobody is told of this");
  zeb.string.DeleteStringAtom(held);
  ExpectAllIsBack();
}

}  // namespace
}  // namespace contract
