// The library where it meets malloc: what it asks for in its default configuration, what becomes of
// it when malloc fails, and that a host with memory procs of its own sees no malloc at all.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "contract/child_process.h"
#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/import_hook.h"
#include "contract/library.h"
#include "contract/start_failure.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Host = HostMemory<0>;
using Reports = ErrorReports<0>;

// The library's malloc and free, watched and made to fail. One at a time.
class WatchedMalloc {
 public:
  WatchedMalloc() {
    Clear();
    s_failAt = 0;
  }

  static std::vector<std::size_t> TakeSizes() { return std::exchange(s_sizes, {}); }
  static std::vector<void*> TakeFreed() { return std::exchange(s_freed, {}); }
  static std::int64_t LiveBlocks() { return s_live; }
  static std::uint64_t Calls() { return s_calls; }

  static void Clear() {
    s_sizes.clear();
    s_freed.clear();
    s_calls = 0;
    s_live = 0;
  }

  static void FailAt(std::uint64_t nth, bool andAllAfter) {
    s_failAt = nth;
    s_failAllAfter = andAllAfter;
    s_sinceArmed = 0;
  }
  static bool StopFailing() {
    const bool failed = s_failAt != 0 && s_sinceArmed >= s_failAt;
    s_failAt = 0;
    return failed;
  }

  bool found() const { return malloc_.found() && free_.found(); }

 private:
  static bool FailsNow() {
    if (s_failAt == 0) return false;
    ++s_sinceArmed;
    return s_sinceArmed == s_failAt || (s_failAllAfter && s_sinceArmed > s_failAt);
  }

  static void* Malloc(std::size_t size) {
    ++s_calls;
    s_sizes.push_back(size);
    if (FailsNow()) return nullptr;
    ++s_live;
    return std::malloc(size);
  }
  static void Free(void* block) {
    ++s_calls;
    s_freed.push_back(block);
    if (block != nullptr) --s_live;
    std::free(block);
  }
  static void* New(std::size_t size) {
    ++s_calls;
    return ::operator new(size);
  }

  static inline std::vector<std::size_t> s_sizes;
  static inline std::vector<void*> s_freed;
  static inline std::uint64_t s_calls = 0;
  static inline std::int64_t s_live = 0;
  static inline std::uint64_t s_failAt = 0;
  static inline std::uint64_t s_sinceArmed = 0;
  static inline bool s_failAllAfter = false;

  ImportHook malloc_{Library().handle, "malloc", reinterpret_cast<void*>(&Malloc)};
  ImportHook free_{Library().handle, "free", reinterpret_cast<void*>(&Free)};
  ImportHook new_{Library().handle, "_Znwm", reinterpret_cast<void*>(&New)};
};

class DirectBlocks : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(malloc_.found()); }

  // What the library asks malloc for when a client asks it for `size` bytes.
  std::size_t AskedFor(std::uint64_t size) {
    WatchedMalloc::TakeSizes();
    void* block = zeb_.memory.Alloc(size);
    const auto sizes = WatchedMalloc::TakeSizes();
    zeb_.memory.Free(block);
    EXPECT_EQ(sizes.size(), 1u);
    return sizes.empty() ? 0 : sizes.front();
  }

  WatchedMalloc malloc_;
  RunningLibrary zeb_;
};

constexpr std::size_t kHeader = 16;

TEST_F(DirectBlocks, CostAHeaderAndTheLeastSlackWhenSmall) {
  for (const std::uint64_t size : {0u, 1u, 15u, 16u, 48u, 300u, 319u}) {
    EXPECT_EQ(AskedFor(size), size + kHeader + 16) << size;
  }
}

TEST_F(DirectBlocks, CostATwentiethOfTheirSizeInBetween) {
  EXPECT_EQ(AskedFor(340), 340 + kHeader + 17);
  EXPECT_EQ(AskedFor(359), 359 + kHeader + 17);
  EXPECT_EQ(AskedFor(1000), 1000 + kHeader + 50);
  EXPECT_EQ(AskedFor(2019), 2019 + kHeader + 100);
  EXPECT_EQ(AskedFor(3999), 3999 + kHeader + 199);
}

TEST_F(DirectBlocks, CostTheMostSlackWhenLarge) {
  for (const std::uint64_t size : {4000u, 4001u, 65024u, 65025u, 131072u, 1u << 20}) {
    EXPECT_EQ(AskedFor(size), size + kHeader + 200) << size;
  }
}

TEST_F(DirectBlocks, StandSixteenBytesIntoWhatIsFreed) {
  void* block = zeb_.memory.Alloc(100);
  const auto start = reinterpret_cast<std::uintptr_t>(block) - kHeader;
  WatchedMalloc::TakeFreed();
  zeb_.memory.Free(block);
  EXPECT_THAT(WatchedMalloc::TakeFreed(), ElementsAre(reinterpret_cast<void*>(start)));
}

TEST_F(DirectBlocks, AreNeverAskedForWithASizeThatWrapped) {
  for (const std::uint64_t size :
       {UINT64_MAX, UINT64_MAX - 16, UINT64_MAX - 199, UINT64_MAX - 200, UINT64_MAX - 215}) {
    WatchedMalloc::TakeSizes();
    EXPECT_EQ(zeb_.memory.Alloc(size), nullptr);
    EXPECT_THAT(WatchedMalloc::TakeSizes(), IsEmpty()) << size;
  }
}

TEST_F(DirectBlocks, AreGivenBackByTheStop) {
  MakeNewAtoms(zeb_, 200);
  zeb_.Stop();
  WatchedMalloc::Clear();
  RunningLibrary again;
  EXPECT_GT(WatchedMalloc::LiveBlocks(), 0);
  MakeNewAtoms(again, 200);
  again.frame.RegisterProcAddress("left", "registered", "here", FakeProc(16));
  again.Stop();
  EXPECT_EQ(WatchedMalloc::LiveBlocks(), 0);
}

TEST(HostWithMemoryProcs, SeesNoMallocOfTheLibrary) {
  WatchedMalloc watched;
  ASSERT_TRUE(watched.found());
  {
    RunningLibrary zeb(Host::WithObjectProcs(Reports::Told()));
    MakeNewAtoms(zeb, 200);
    zeb.error.Release(zeb.error.NewError("message", "component", 1, nullptr, nullptr));
    zeb.event.DeleteEventCounter(zeb.event.NewEventCounter("counter", 1));
    zeb.frame.RegisterProcAddress("left", "registered", "here", FakeProc(16));
    zeb.getProcAddress("unknown", "names", "three");
  }
  EXPECT_EQ(WatchedMalloc::Calls(), 0u);
  EXPECT_EQ(Host::LiveBlocks(), 0u);
}

class FailingMalloc : public ::testing::TestWithParam<bool> {
 protected:
  // One start with the `nth` malloc failing, and what it came to.
  static StartOutcome TryStart(std::uint64_t nth, bool andAllAfter) {
    Reports::Take();
    WatchedMalloc watched;
    WatchedMalloc::FailAt(nth, andAllAfter);
    const ZEBGetProcAddress find = Start(Reports::Told());
    const bool failed = WatchedMalloc::StopFailing();
    EXPECT_EQ(exports().GetGetProcAddress(), find);
    EXPECT_THAT(Reports::Take(), IsEmpty());
    if (find == nullptr) {
      EXPECT_TRUE(failed);
      return kRefused;
    }
    if (failed) ExpectDegraded(find);
    Reports::Take();
    exports().Terminate();
    EXPECT_THAT(Reports::Take(), IsEmpty());
    EXPECT_EQ(WatchedMalloc::LiveBlocks(), 0);
    return failed ? kDegraded : kNeededFewer;
  }

  // The number of mallocs that a start makes.
  static std::uint64_t MallocsOfAStart() {
    WatchedMalloc watched;
    WatchedMalloc::Clear();
    RunningLibrary zeb;
    return WatchedMalloc::TakeSizes().size();
  }

  // See out_of_memory_test.cpp: the same, over malloc.
  template <class Operation, class Check>
  static void Sweep(Operation operation, Check check) {
    WatchedMalloc watched;
    RunningLibrary zeb(Reports::Told());
    std::uint64_t nth = 0;
    for (bool failed = true; failed;) {
      SCOPED_TRACE(++nth);
      ForgetRecentAtoms(zeb);
      const std::int64_t live = WatchedMalloc::LiveBlocks();
      WatchedMalloc::FailAt(nth, GetParam());
      const auto answer = operation(zeb);
      failed = WatchedMalloc::StopFailing();
      check(zeb, answer, failed);
      if (failed) check(zeb, operation(zeb), false);
      ForgetRecentAtoms(zeb);
      EXPECT_EQ(WatchedMalloc::LiveBlocks(), live);
    }
    EXPECT_GT(nth, 1u) << "the operation allocates nothing";
    Reports::Take();
    zeb.Stop();
    EXPECT_THAT(Reports::Take(), IsEmpty());
  }
};

INSTANTIATE_TEST_SUITE_P(Allocations, FailingMalloc, ::testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "AllFromTheNth" : "TheNthAlone");
});

TEST_P(FailingMalloc, FailsTheStartOrShowsInIt) {
  int degraded = 0;
  for (std::uint64_t nth = 1;; ++nth) {
    const ChildEnd end = RunInChild([=] { return TryStart(nth, GetParam()); });
    if (end.answer == kNeededFewer) {
      EXPECT_GT(nth, 40u) << "a start makes at least the names of its procs";
      break;
    }
    if (end.answer == kDegraded) {
      ++degraded;
    } else {
      ASSERT_TRUE(end.passed()) << "at malloc " << nth;
    }
  }
  EXPECT_EQ(degraded > 0, !GetParam());
}

// A failed start is not rolled back: what it registered is in the next one's way.
TEST_P(FailingMalloc, LateInAStartFailsTheNextStartToo) {
  const std::uint64_t last = MallocsOfAStart();
  ExpectPassesInChild([=] {
    WatchedMalloc watched;
    WatchedMalloc::FailAt(last, GetParam());
    ASSERT_EQ(Start(), nullptr);
    ASSERT_TRUE(WatchedMalloc::StopFailing());
    EXPECT_EQ(Start(), nullptr);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
  });
}

TEST_P(FailingMalloc, MakesNoAtom) {
  Sweep([](const Procs& zeb) { return zeb.string.NewStringAtom("an unseen text"); },
        [](const Procs& zeb, ZEBString* atom, bool failed) {
          EXPECT_EQ(atom == nullptr, failed);
          zeb.string.DeleteStringAtom(atom);
        });
}

TEST_P(FailingMalloc, MakesTheStandardErrorInsteadOfANewOne) {
  static int deletions;
  Sweep(
      [](const Procs& zeb) {
        deletions = 0;
        Reports::Take();
        return zeb.error.NewError("an unseen message", "an unseen component", 7, nullptr,
                                  [](void*) { ++deletions; });
      },
      [](const Procs& zeb, ZEBErrorObject* error, bool failed) {
        EXPECT_EQ(zeb.error.GetID(error), failed ? ZEB_ERROR_OUT_OF_MEMORY : 7);
        EXPECT_EQ(deletions, failed ? 1 : 0);
        EXPECT_EQ(Reports::Take().size(), failed ? 0u : 1u);
        zeb.error.Release(error);
        EXPECT_EQ(deletions, 1);
      });
}

TEST_P(FailingMalloc, RegistersNoProc) {
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

TEST_P(FailingMalloc, MakesNoEventCounter) {
  Sweep([](const Procs& zeb) { return zeb.event.NewEventCounter("counter", 5); },
        [](const Procs& zeb, ZEBEventCounter* counter, bool failed) {
          EXPECT_EQ(counter == nullptr, failed);
          EXPECT_EQ(Snapshot(zeb).size(), failed ? 20u : 21u);
          zeb.event.DeleteEventCounter(counter);
        });
}

TEST_P(FailingMalloc, TakesNoSnapshot) {
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

TEST_P(FailingMalloc, GivesNoBlock) {
  Sweep([](const Procs& zeb) { return zeb.memory.Alloc(100); },
        [](const Procs& zeb, void* block, bool failed) {
          EXPECT_EQ(block == nullptr, failed);
          zeb.memory.Free(block);
        });
}

TEST_P(FailingMalloc, LeavesABlockThatCannotBeResized) {
  Sweep(
      [](const Procs& zeb) {
        void* block = zeb.memory.Realloc(nullptr, 64);
        void* moved = zeb.memory.Realloc(block, 128);
        if (moved != nullptr) return moved;
        EXPECT_EQ(zeb.memory.GetBlockSize(block), block == nullptr ? 0u : 64u);
        zeb.memory.Free(block);
        return moved;
      },
      [](const Procs& zeb, void* moved, bool failed) {
        EXPECT_EQ(zeb.memory.GetBlockSize(moved), failed && moved == nullptr ? 0u : 128u);
        zeb.memory.Free(moved);
      });
}

}  // namespace
}  // namespace contract
