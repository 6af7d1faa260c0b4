// A host whose memory runs out: every allocation of every operation fails once, first alone, then
// with all that follow. Starts are tried in processes that have never loaded the library.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "contract/child_process.h"
#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"
#include "contract/start_failure.h"

namespace contract {
namespace {

using ::testing::IsEmpty;

using Host = HostMemory<0>;
using Reports = ErrorReports<0>;

// One start with the `nth` allocation failing, and what it came to.
StartOutcome TryStart(std::uint64_t nth, bool andAllAfter) {
  Host::FailAt(nth, andAllAfter);
  const ZEBGetProcAddress find = Start(Host::WithObjectProcs(Reports::Told()));
  const bool failed = Host::StopFailing();
  EXPECT_EQ(exports().GetGetProcAddress(), find);
  EXPECT_THAT(Reports::Take(), IsEmpty());
  if (find == nullptr) {
    EXPECT_TRUE(failed);
    // What was installed stays installed, and a start over host allocators is refused.
    EXPECT_EQ(Start(), nullptr);
    EXPECT_EQ(Start(Host::WithObjectProcs()), nullptr);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
    return kRefused;
  }
  if (failed) ExpectDegraded(find);
  Reports::Take();
  exports().Terminate();
  EXPECT_THAT(Reports::Take(), IsEmpty());
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
  return failed ? kDegraded : kNeededFewer;
}

class FailingStart : public ::testing::Test {
 protected:
  // Tries starts until one needs fewer allocations; answers how many started all the same.
  static int Sweep(bool andAllAfter) {
    int degraded = 0;
    for (std::uint64_t nth = 1;; ++nth) {
      const ChildEnd end = RunInFreshChild([=] { return TryStart(nth, andAllAfter); });
      if (end.answer == kNeededFewer) {
        EXPECT_GT(nth, 40u) << "a start makes at least the names of its procs";
        return degraded;
      }
      if (end.answer == kDegraded) {
        ++degraded;
      } else if (!end.passed()) {
        ADD_FAILURE() << "at allocation " << nth << ": " << end.passed().message();
        return degraded;
      }
    }
  }
};

TEST_F(FailingStart, AnswersNullUntilMemorySuffices) { EXPECT_EQ(Sweep(true), 0); }

// A failed start does not count, so a stop is one too many: it answers the counter and does
// nothing.
TEST_F(FailingStart, IsNotMadeGoodByAStop) {
  ExpectPassesInFreshChild([] {
    Host::FailAt(1, true);
    EXPECT_EQ(Start(Host::WithObjectProcs({.unregisterCountStart = 19})), nullptr);
    EXPECT_TRUE(Host::StopFailing());
    EXPECT_EQ(exports().Terminate(), 19u);
    EXPECT_EQ(Start(), nullptr);
    EXPECT_EQ(Start(Host::WithObjectProcs()), nullptr);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
  });
}

// Four texts and four objects at the least, then twenty counters.
TEST_F(FailingStart, GoesOnWithoutStandardErrorsOrWithACounterLess) { EXPECT_GT(Sweep(false), 24); }

// One operation of a running library under every failure. Each sweep runs in a child, so that this
// process never loads the library.
class FailingOperation : public ::testing::TestWithParam<bool> {
 protected:
  static void PrepareNothing(const RunningLibrary&) {}

  // `operation(zeb)` runs with ever later allocations failing, and `check(zeb, answer, failed)`
  // sees each answer; after a failure the same operation must succeed. A check of success takes
  // back what `prepare` and the operation made.
  template <class Operation, class Check, class Prepare = void (*)(const RunningLibrary&)>
  static void Sweep(Operation operation, Check check, Prepare prepare = &PrepareNothing) {
    ExpectPassesInFreshChild([&] { SweepHere(operation, check, prepare, GetParam()); });
  }

 private:
  template <class Operation, class Check, class Prepare>
  static void SweepHere(Operation operation, Check check, Prepare prepare, bool andAllAfter) {
    RunningLibrary zeb(Host::WithObjectProcs(Reports::Told()));
    std::uint64_t nth = 0;
    for (bool failed = true; failed;) {
      SCOPED_TRACE(++nth);
      ForgetRecentAtoms(zeb);
      const std::uint64_t live = Host::LiveBlocks();
      prepare(zeb);
      Host::FailAt(nth, andAllAfter);
      const auto answer = operation(zeb);
      failed = Host::StopFailing();
      check(zeb, answer, failed);
      if (failed) check(zeb, operation(zeb), false);
      ForgetRecentAtoms(zeb);
      EXPECT_EQ(Host::LiveBlocks(), live);
    }
    EXPECT_GT(nth, 1u) << "the operation allocates nothing";
    Reports::Take();
    zeb.Stop();
    EXPECT_THAT(Reports::Take(), IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  }
};

INSTANTIATE_TEST_SUITE_P(Allocations, FailingOperation, ::testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "AllFromTheNth" : "TheNthAlone");
});

TEST_P(FailingOperation, MakesNoAtom) {
  Sweep([](const Procs& zeb) { return zeb.string.NewStringAtom("an unseen text"); },
        [](const Procs& zeb, ZEBString* atom, bool failed) {
          EXPECT_EQ(atom == nullptr, failed);
          EXPECT_STREQ(zeb.string.GetCString(atom), failed ? nullptr : "an unseen text");
          zeb.string.DeleteStringAtom(atom);
        });
}

TEST_P(FailingOperation, MakesNoUtf16Atom) {
  Sweep([](const Procs& zeb) { return zeb.string.NewStringAtom("\xFE\xFF unseen"); },
        [](const Procs& zeb, ZEBString* atom, bool failed) {
          EXPECT_EQ(atom == nullptr, failed);
          zeb.string.DeleteStringAtom(atom);
        });
}

TEST_P(FailingOperation, MakesTheStandardErrorInsteadOfANewOne) {
  static int deletions;
  Sweep(
      [](const Procs& zeb) {
        deletions = 0;
        Reports::Take();
        return zeb.error.NewError("an unseen message", "an unseen component", 7, nullptr,
                                  [](void*) { ++deletions; });
      },
      [](const Procs& zeb, ZEBErrorObject* error, bool failed) {
        ZEBErrorObject* standard = zeb.error.GetCoreError(ZEB_ERROR_OUT_OF_MEMORY);
        EXPECT_EQ(error == standard, failed);
        EXPECT_EQ(zeb.error.GetID(error), failed ? ZEB_ERROR_OUT_OF_MEMORY : 7);
        EXPECT_EQ(deletions, failed ? 1 : 0);
        EXPECT_EQ(Reports::Take().size(), failed ? 0u : 1u);
        zeb.error.Release(standard);
        zeb.error.Release(error);
        EXPECT_EQ(deletions, 1);
      });
}

TEST_P(FailingOperation, RegistersNoProc) {
  Sweep(
      [](const RunningLibrary& zeb) {
        return zeb.frame.RegisterProcAddress("new interface", "new method", "new proc",
                                             FakeProc(16));
      },
      [](const RunningLibrary& zeb, std::int32_t answer, bool failed) {
        EXPECT_EQ(answer, failed ? 0 : 1);
        EXPECT_EQ(zeb.getProcAddress("new interface", "new method", "new proc"),
                  failed ? nullptr : FakeProc(16));
        if (!failed) zeb.frame.UnregisterInterface("new interface");
      });
}

TEST_P(FailingOperation, LeavesTheOtherProcsOfAnInterface) {
  Sweep(
      [](const RunningLibrary& zeb) {
        return zeb.frame.RegisterProcAddress("client", "new method", "new proc", FakeProc(32));
      },
      [](const RunningLibrary& zeb, std::int32_t answer, bool failed) {
        EXPECT_EQ(answer, failed ? 0 : 1);
        EXPECT_EQ(zeb.getProcAddress("client", "method", "proc"), FakeProc(16));
        if (!failed) zeb.frame.UnregisterInterface("client");
      },
      [](const RunningLibrary& zeb) {
        EXPECT_EQ(zeb.frame.RegisterProcAddress("client", "method", "proc", FakeProc(16)), 1);
      });
}

TEST_P(FailingOperation, FindsNothingUnderUnknownNames) {
  Sweep(
      [](const RunningLibrary& zeb) {
        return zeb.getProcAddress("unknown interface", "unknown method", "unknown proc");
      },
      [](const RunningLibrary& zeb, ZEBProc found, bool) {
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(zeb.getProcAddress("ZEBMemoryInterface", "Alloc", "ZEBMemAllocProc"),
                  AsProc(zeb.memory.Alloc));
      });
}

TEST_P(FailingOperation, StillMovesTheChangeCounter) {
  Sweep(
      [](const Procs& zeb) {
        const std::uint32_t before = zeb.frame.GetUnregisterCount();
        zeb.frame.UnregisterInterface("an interface that nobody has seen");
        return zeb.frame.GetUnregisterCount() - before;
      },
      [](const Procs&, std::uint32_t moved, bool) { EXPECT_EQ(moved, 1u); });
}

TEST_P(FailingOperation, MakesNoEventCounter) {
  Sweep([](const Procs& zeb) { return zeb.event.NewEventCounter("counter", 5); },
        [](const Procs& zeb, ZEBEventCounter* counter, bool failed) {
          EXPECT_EQ(counter == nullptr, failed);
          EXPECT_EQ(Snapshot(zeb).size(), failed ? 20u : 21u);
          zeb.event.DeleteEventCounter(counter);
        });
}

TEST_P(FailingOperation, TakesNoSnapshot) {
  static std::uint32_t count;
  Sweep(
      [](const Procs& zeb) {
        count = 77;
        return zeb.event.NewEventSnapshot(&count);
      },
      [](const Procs& zeb, ZEBEventRecord* records, bool failed) {
        EXPECT_EQ(records == nullptr, failed);
        EXPECT_EQ(count, failed ? 0u : 20u);
        zeb.event.DeleteEventSnapshot(records);
      });
}

TEST_P(FailingOperation, GivesNoBlock) {
  Sweep([](const Procs& zeb) { return zeb.memory.Alloc(100); },
        [](const Procs& zeb, void* block, bool failed) {
          EXPECT_EQ(block == nullptr, failed);
          if (block != nullptr) zeb.memory.Free(block);
        });
}

// What allocates nothing, done while nothing can be allocated.
TEST(ExhaustedHost, IsStillServedWithWhatIsThere) {
  ExpectPassesInFreshChild([] {
    RunningLibrary zeb(Host::WithObjectProcs(Reports::Told()));
    ZEBString* atom = zeb.string.NewStringAtom("made before");
    ZEBErrorObject* error = zeb.error.NewError("message", "component", 3, nullptr, nullptr);
    ZEBEventCounter* counter = zeb.event.NewEventCounter("counter", 1);
    ASSERT_EQ(zeb.frame.RegisterProcAddress("client", "method", "proc", FakeProc(16)), 1);
    Reports::Take();

    Host::FailAt(1, true);
    EXPECT_EQ(zeb.string.NewStringAtom("made before"), atom);
    zeb.string.AddRef(atom);
    EXPECT_STREQ(zeb.string.GetCString(atom), "made before");
    for (int i = 0; i < 3; ++i) zeb.string.DeleteStringAtom(atom);
    EXPECT_EQ(zeb.getProcAddress("client", "method", "proc"), FakeProc(16));
    EXPECT_EQ(zeb.frame.RegisterProcAddress("client", "method", "proc", FakeProc(32)), 0);
    zeb.error.AddRef(error);
    EXPECT_EQ(zeb.error.GetID(error), 3);
    zeb.error.Release(error);
    zeb.error.Release(error);
    zeb.event.SignalEventCounter(counter, 5);
    zeb.event.DeleteEventCounter(counter);
    zeb.frame.UnregisterInterface("client");
    EXPECT_EQ(zeb.getProcAddress("client", "method", "proc"), nullptr);
    zeb.Stop();
    Host::StopFailing();

    EXPECT_THAT(Reports::Take(), IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  });
}

}  // namespace
}  // namespace contract
