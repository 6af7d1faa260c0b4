// Client procedures that throw: no exception may come out of the proc that called them, and what
// the proc had begun is brought to an end.

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "contract/child_process.h"
#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"
#include "contract/start_failure.h"

namespace contract {
namespace {

using Host = HostMemory<0>;

int g_deletions = 0;

template <class Exception>
void ThrowingReport(const char*) {
  throw Exception("thrown by the error report");
}

struct NoTypeAtAll {
  explicit NoTypeAtAll(const char*) {}
};

// Makes an error while the host's report procedure throws; nothing may come of it but the answer.
template <class Exception>
void MakeErrorWhileTheReportThrows() {
  g_deletions = 0;
  {
    RunningLibrary zeb(Host::WithObjectProcs({.errorReport = &ThrowingReport<Exception>}));
    ZEBErrorObject* unknown = zeb.error.GetCoreError(ZEB_ERROR_UNKNOWN);
    ZEBErrorObject* error = nullptr;
    EXPECT_NO_THROW(error = zeb.error.NewError("message", "component", 5, &g_deletions,
                                               [](void*) { ++g_deletions; }));
    EXPECT_EQ(error, unknown);
    EXPECT_EQ(g_deletions, 1);
    zeb.error.Release(error);
    zeb.error.Release(unknown);
  }
  EXPECT_EQ(g_deletions, 1);
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
}

TEST(ThrowingErrorReport, TurnsTheNewErrorIntoTheStandardOne) {
  MakeErrorWhileTheReportThrows<std::runtime_error>();
}

TEST(ThrowingErrorReport, MayThrowAnything) { MakeErrorWhileTheReportThrows<NoTypeAtAll>(); }

TEST(ThrowingErrorReport, DoesNotCrossTheStop) {
  ExpectPassesInChild([] {
    RunningLibrary zeb(
        {.errorReport = &ThrowingReport<std::runtime_error>, .unregisterCountStart = 17});
    ZEBString* held = zeb.string.NewStringAtom("reported at the stop");
    std::uint32_t counter = 0;
    EXPECT_NO_THROW(counter = zeb.Stop());
    EXPECT_EQ(counter, 17u);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
    EXPECT_STREQ(zeb.string.GetCString(held), "reported at the stop");
  });
}

TEST(ThrowingInfoDelete, DoesNotCrossTheRelease) {
  g_deletions = 0;
  {
    RunningLibrary zeb(Host::WithObjectProcs());
    ZEBErrorObject* error = zeb.error.NewError("message", "component", 5, nullptr, [](void*) {
      ++g_deletions;
      throw std::runtime_error("thrown by the info delete");
    });
    EXPECT_NO_THROW(zeb.error.Release(error));
    EXPECT_EQ(g_deletions, 1);
  }
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
}

TEST(ThrowingInfoDelete, DoesNotCrossAFailingNewError) {
  g_deletions = 0;
  {
    RunningLibrary zeb(Host::WithObjectProcs());
    Host::FailAt(1, true);
    ZEBErrorObject* error = nullptr;
    EXPECT_NO_THROW(
        error = zeb.error.NewError("unseen message", "unseen component", 5, nullptr, [](void*) {
          ++g_deletions;
          throw 5;
        }));
    EXPECT_TRUE(Host::StopFailing());
    EXPECT_EQ(g_deletions, 1);
    EXPECT_NE(error, nullptr);
    zeb.error.Release(error);
  }
  EXPECT_EQ(Host::LiveBlocks(), 0u);
}

// The host's allocator throws where it should answer null.
class ThrowingAllocator : public ::testing::Test {
 protected:
  // Runs `operation` with ever later allocations throwing, until it needs no more of them; `check`
  // sees each answer and whether an allocation threw.
  template <class Operation, class Check>
  void Sweep(Operation operation, Check check) {
    std::uint64_t nth = 1;
    for (bool threw = true; threw; ++nth) {
      ForgetRecentAtoms(zeb_);
      Host::FailAt(nth, true, true);
      decltype(operation()) answer{};
      EXPECT_NO_THROW(answer = operation()) << nth;
      threw = Host::StopFailing();
      check(answer, threw);
    }
    EXPECT_GT(nth, 2u) << "nothing was allocated";
  }

  ~ThrowingAllocator() override {
    zeb_.Stop();
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  }

  RunningLibrary zeb_{Host::WithObjectProcs()};
};

TEST_F(ThrowingAllocator, MakesNoAtom) {
  Sweep([&] { return zeb_.string.NewStringAtom("unseen text"); },
        [&](ZEBString* atom, bool threw) {
          EXPECT_EQ(atom == nullptr, threw);
          zeb_.string.DeleteStringAtom(atom);
        });
}

TEST_F(ThrowingAllocator, MakesNoError) {
  ZEBErrorObject* unknown = zeb_.error.GetCoreError(ZEB_ERROR_UNKNOWN);
  Sweep(
      [&] {
        g_deletions = 0;
        return zeb_.error.NewError("unseen message", "unseen component", 5, nullptr,
                                   [](void*) { ++g_deletions; });
      },
      [&](ZEBErrorObject* error, bool threw) {
        EXPECT_EQ(error == unknown, threw);
        EXPECT_EQ(g_deletions, threw ? 1 : 0);
        zeb_.error.Release(error);
      });
  zeb_.error.Release(unknown);
}

TEST_F(ThrowingAllocator, RegistersNoProc) {
  Sweep([&] { return zeb_.frame.RegisterProcAddress("i", "m", "p", FakeProc(16)); },
        [&](std::int32_t answer, bool threw) {
          EXPECT_EQ(answer, threw ? 0 : 1);
          EXPECT_EQ(zeb_.getProcAddress("i", "m", "p"), threw ? nullptr : FakeProc(16));
        });
}

TEST_F(ThrowingAllocator, MakesNoEventCounter) {
  Sweep([&] { return zeb_.event.NewEventCounter("counter", 1); },
        [&](ZEBEventCounter* counter, bool threw) {
          EXPECT_EQ(counter == nullptr, threw);
          EXPECT_EQ(Snapshot(zeb_).size(), threw ? 20u : 21u);
          zeb_.event.DeleteEventCounter(counter);
        });
}

TEST_F(ThrowingAllocator, TakesNoSnapshot) {
  std::uint32_t count = 0;
  Sweep(
      [&] {
        count = 77;
        return zeb_.event.NewEventSnapshot(&count);
      },
      [&](ZEBEventRecord* records, bool threw) {
        EXPECT_EQ(records == nullptr, threw);
        EXPECT_EQ(count, threw ? 0u : 20u);
        zeb_.event.DeleteEventSnapshot(records);
      });
}

TEST_F(ThrowingAllocator, FindsNothingUnderUnknownNames) {
  for (std::uint64_t nth = 1; nth <= 6; ++nth) {
    ForgetRecentAtoms(zeb_);
    Host::FailAt(nth, true, true);
    EXPECT_NO_THROW(EXPECT_EQ(zeb_.getProcAddress("unknown", "names", "three"), nullptr));
    Host::StopFailing();
  }
}

TEST_F(ThrowingAllocator, LetsAnUnknownInterfaceBeUnregistered) {
  for (std::uint64_t nth = 1; nth <= 3; ++nth) {
    const std::uint32_t before = zeb_.frame.GetUnregisterCount();
    ForgetRecentAtoms(zeb_);
    Host::FailAt(nth, true, true);
    EXPECT_NO_THROW(zeb_.frame.UnregisterInterface("unknown"));
    Host::StopFailing();
    EXPECT_EQ(zeb_.frame.GetUnregisterCount(), before + 1);
  }
}

TEST(ThrowingAllocatorAtTheStart, FailsTheStart) {
  std::uint64_t nth = 1;
  for (bool started = false; !started; ++nth) {
    const ChildEnd end = RunInChild([nth] {
      Host::FailAt(nth, true, true);
      ZEBGetProcAddress find = nullptr;
      EXPECT_NO_THROW(find = Start(Host::WithObjectProcs()));
      const bool threw = Host::StopFailing();
      EXPECT_EQ(find == nullptr, threw);
      EXPECT_EQ(exports().GetGetProcAddress(), find);
      return threw ? kRefused : kNeededFewer;
    });
    started = end.answer == kNeededFewer;
    if (!started) {
      ASSERT_TRUE(end.passed()) << "at allocation " << nth;
    }
  }
  EXPECT_GT(nth, 40u);
}

// A host's free procedure that throws once it has taken the block back.
int g_throwsLeft = 0;

void ThrowingFree(void* block) {
  Host::Free(block);
  if (g_throwsLeft > 0) {
    --g_throwsLeft;
    throw HostException();
  }
}

StartOptions WithThrowingFree() {
  StartOptions options = Host::WithObjectProcs({.unregisterCountStart = 23});
  options.objFree = &ThrowingFree;
  return options;
}

TEST(ThrowingFree, DoesNotCrossTheProcsThatRelease) {
  ExpectPassesInChild([] {
    RunningLibrary zeb(WithThrowingFree());
    ZEBString* atom = zeb.string.NewStringAtom("released");
    ForgetRecentAtoms(zeb);
    ZEBErrorObject* error = zeb.error.NewError("message", "component", 1, nullptr, nullptr);
    ZEBEventCounter* counter = zeb.event.NewEventCounter("counter", 1);
    std::uint32_t count = 0;
    ZEBEventRecord* records = zeb.event.NewEventSnapshot(&count);
    zeb.frame.RegisterProcAddress("i", "m", "p", FakeProc(16));

    const auto whileItThrows = [](auto operation) {
      g_throwsLeft = 1000;
      EXPECT_NO_THROW(operation());
      EXPECT_LT(g_throwsLeft, 1000) << "nothing was freed";
      g_throwsLeft = 0;
    };
    whileItThrows([&] { zeb.string.DeleteStringAtom(atom); });
    whileItThrows([&] { zeb.error.Release(error); });
    whileItThrows([&] { zeb.event.DeleteEventCounter(counter); });
    whileItThrows([&] { zeb.event.DeleteEventSnapshot(records); });
    whileItThrows([&] { zeb.frame.UnregisterInterface("i"); });

    ZEBString* after = zeb.string.NewStringAtom("the library still works");
    EXPECT_STREQ(zeb.string.GetCString(after), "the library still works");
    zeb.string.DeleteStringAtom(after);
    EXPECT_NE(zeb.getProcAddress("ZEB", "ZEBReportError", "ZEBReportError"), nullptr);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  });
}

TEST(ThrowingFree, DoesNotCrossTheStop) {
  ExpectPassesInChild([] {
    RunningLibrary zeb(WithThrowingFree());
    g_throwsLeft = 1'000'000;
    std::uint32_t counter = 0;
    EXPECT_NO_THROW(counter = zeb.Stop());
    EXPECT_EQ(counter, 23u);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  });
}

// A host's event interface that throws whenever it is called.
[[noreturn]] ZEBEventCounter* ThrowingNewCounter(const char*, std::int32_t) {
  throw HostException();
}
[[noreturn]] void ThrowingDeleteCounter(ZEBEventCounter*) { throw HostException(); }
[[noreturn]] void ThrowingSignal(ZEBEventCounter*, std::uint64_t) { throw HostException(); }
[[noreturn]] ZEBEventRecord* ThrowingSnapshot(std::uint32_t*) { throw HostException(); }
[[noreturn]] void ThrowingDrop(ZEBEventRecord*) { throw HostException(); }

TEST(ThrowingEventInterface, CrossesNothing) {
  ErrorReports<>::Take();
  RunningLibrary zeb(Host::WithObjectProcs(ErrorReports<>::Told()));
  zeb.frame.UnregisterInterface("ZEBEventInterface");
  const auto add = [&](const char* method, const char* proc, ZEBProc function) {
    EXPECT_EQ(zeb.frame.RegisterProcAddress("ZEBEventInterface", method, proc, function), 1);
  };
  add("NewEventCounter", "ZEBNewEventCounterProc", AsProc(&ThrowingNewCounter));
  add("DeleteEventCounter", "ZEBDeleteEventCounterProc", AsProc(&ThrowingDeleteCounter));
  add("SignalEventCounter", "ZEBSignalEventCounterProc", AsProc(&ThrowingSignal));
  add("NewEventSnapshot", "ZEBNewEventSnapshotProc", AsProc(&ThrowingSnapshot));
  add("DeleteEventSnapshot", "ZEBDeleteEventSnapshotProc", AsProc(&ThrowingDrop));

  EXPECT_NO_THROW({
    MakeNewAtoms(zeb, 100);
    zeb.string.AddRef(nullptr);
    zeb.getProcAddress("unknown", "names", "three");
    zeb.error.Release(zeb.error.NewError("message", "component", 1, nullptr, nullptr));
  });
  ErrorReports<>::Take();
  EXPECT_NO_THROW(zeb.Stop());
  EXPECT_TRUE(ErrorReports<>::Take().empty());
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
}

}  // namespace
}  // namespace contract
