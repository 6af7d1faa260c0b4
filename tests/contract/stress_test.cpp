// Many threads in one library, with counts that must come out exactly and nothing left over.
//
// The threads of a test begin together and do a fixed amount of work: a smaller one where the
// thread sanitizer watches every step of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"
#include "contract/sanitizers.h"

namespace contract {
namespace {

using ::testing::IsEmpty;

using Host = HostMemory<0>;
using Reports = ErrorReports<0>;

constexpr int kScale = kSanitized ? 1 : 5;

// Failed checks of threads are counted, not asserted: one message for all of them is enough.
class Mistakes {
 public:
  void CountUnless(bool right) {
    if (!right) count_.fetch_add(1, std::memory_order_relaxed);
  }
  ~Mistakes() { EXPECT_EQ(count_.load(), 0); }

 private:
  std::atomic<int> count_ = 0;
};

// The library in either memory; a test ends with a clean stop.
class Stress : public ::testing::TestWithParam<bool> {
 protected:
  Stress()
      : zeb_(GetParam() ? Host::WithObjectProcs(Reports::Told({.flags = ZEB_FLAG_MULTI_THREADED}))
                        : Reports::Told()) {
    Reports::Take();
  }

  ~Stress() override {
    Reports::Take();
    zeb_.Stop();
    EXPECT_THAT(Reports::Take(), IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  }

  // Runs `body(index)` in `count` threads that begin together. Each has called the library before,
  // so that whatever it keeps for a thread is taken by all of them at the same time.
  template <class Body>
  void InThreads(int count, Body body) const {
    std::latch begin(count);
    std::vector<std::thread> threads;
    for (int index = 0; index < count; ++index) {
      threads.emplace_back([&, index] {
        zeb_.getProcAddress(nullptr, nullptr, nullptr);
        begin.arrive_and_wait();
        body(index);
      });
    }
    for (std::thread& thread : threads) thread.join();
  }

  bool MakesAndReleases(const std::string& text) const {
    ZEBString* atom = zeb_.string.NewStringAtom(text.c_str());
    const bool right = atom != nullptr && text == zeb_.string.GetCString(atom);
    zeb_.string.DeleteStringAtom(atom);
    return right;
  }

  RunningLibrary zeb_;
  Mistakes mistakes_;
};

INSTANTIATE_TEST_SUITE_P(InEitherMemory, Stress, ::testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "HostObjects" : "Default");
});

constexpr int kThreads = 8;

TEST_P(Stress, FindsHeldAtomsExactlyAsOftenAsTheyAreMade) {
  constexpr int kRounds = 5000 * kScale;
  constexpr int kTexts = 5;
  std::vector<ZEBString*> held;
  for (int i = 0; i < kTexts; ++i) {
    held.push_back(zeb_.string.NewStringAtom(("held " + std::to_string(i)).c_str()));
  }
  const AtomEvents events = AtomEventsOf(zeb_, [&] {
    InThreads(kThreads, [&](int thread) {
      for (int round = 0; round < kRounds; ++round) {
        const auto index = static_cast<std::size_t>((round + thread) % kTexts);
        ZEBString* atom = zeb_.string.NewStringAtom(("held " + std::to_string(index)).c_str());
        mistakes_.CountUnless(atom == held[index]);
        zeb_.string.AddRef(atom);
        zeb_.string.DeleteStringAtom(atom);
        zeb_.string.DeleteStringAtom(atom);
      }
    });
  });
  EXPECT_EQ(events, (AtomEvents{.found = kThreads * kRounds, .addRefs = kThreads * kRounds}));
  for (ZEBString* atom : held) zeb_.string.DeleteStringAtom(atom);
}

// Few texts, and so many others that the few die and come back all the time.
TEST_P(Stress, KeepsAtomsRightWhileTheyDieAndComeBack) {
  constexpr int kRounds = 5000 * kScale;
  const AtomEvents events = AtomEventsOf(zeb_, [&] {
    InThreads(kThreads, [&](int thread) {
      for (int round = 0; round < kRounds; ++round) {
        const bool few = (round + thread) % 2 == 0;
        mistakes_.CountUnless(MakesAndReleases(few ? "few " + std::to_string(round % 3)
                                                   : "many " + std::to_string(round % 150)));
      }
    });
  });
  // A maker that meets a dying atom counts it as found and tries again.
  EXPECT_GE(events.found + events.allocated, kThreads * kRounds);
  EXPECT_LE(events.allocated, kThreads * kRounds);
  EXPECT_GT(events.allocated, kRecentAtoms);
}

// One thread holds a text until only its own reference keeps it alive, and drops that while another
// thread asks for the text all the time. More threads would keep the text alive for each other.
TEST_P(Stress, HandsOutNoAtomWhoseLastReleaseIsUnderWay) {
  constexpr int kRounds = 1000 * kScale;
  constexpr const char* kText = "dies and comes back";
  std::atomic<bool> over = false;
  const auto holdAndDrop = [&] {
    for (int round = 0; round < kRounds; ++round) {
      ZEBString* atom = zeb_.string.NewStringAtom(kText);
      for (int i = 0; i < kRecentAtoms; ++i) {
        mistakes_.CountUnless(MakesAndReleases(std::to_string(round * kRecentAtoms + i)));
      }
      mistakes_.CountUnless(std::string(kText) == zeb_.string.GetCString(atom));
      zeb_.string.DeleteStringAtom(atom);
    }
    over = true;
  };
  const auto ask = [&] {
    while (!over) {
      ZEBString* first = zeb_.string.NewStringAtom(kText);
      ZEBString* second = zeb_.string.NewStringAtom(kText);
      mistakes_.CountUnless(first == second);
      mistakes_.CountUnless(std::string(kText) == zeb_.string.GetCString(first));
      zeb_.string.DeleteStringAtom(first);
      mistakes_.CountUnless(std::string(kText) == zeb_.string.GetCString(second));
      zeb_.string.DeleteStringAtom(second);
    }
  };
  InThreads(2, [&](int thread) { thread == 0 ? holdAndDrop() : ask(); });
}

TEST_P(Stress, AllocatesEachNewTextOnce) {
  constexpr int kTexts = 2000 * kScale;
  std::array<std::vector<ZEBString*>, kThreads> made;
  const AtomEvents events = AtomEventsOf(zeb_, [&] {
    InThreads(kThreads, [&](int thread) {
      auto& own = made[static_cast<std::size_t>(thread)];
      for (int i = 0; i < kTexts; ++i) {
        own.push_back(zeb_.string.NewStringAtom(("made by all " + std::to_string(i)).c_str()));
      }
    });
  });
  EXPECT_EQ(events, (AtomEvents{.found = (kThreads - 1) * kTexts, .allocated = kTexts}));
  for (const auto& own : made) EXPECT_EQ(own, made.front());
  for (const auto& own : made) {
    for (ZEBString* atom : own) zeb_.string.DeleteStringAtom(atom);
  }
}

TEST_P(Stress, SharesAtomsBetweenThreads) {
  constexpr int kRounds = 8000 * kScale;
  ZEBString* shared = zeb_.string.NewStringAtom("shared");
  InThreads(kThreads, [&](int) {
    for (int round = 0; round < kRounds; ++round) {
      zeb_.string.AddRef(shared);
      mistakes_.CountUnless(std::string("shared") == zeb_.string.GetCString(shared));
      zeb_.string.DeleteStringAtom(shared);
    }
  });
  EXPECT_STREQ(zeb_.string.GetCString(shared), "shared");
  zeb_.string.DeleteStringAtom(shared);
}

TEST_P(Stress, FindsProcsWhileOtherInterfacesComeAndGo) {
  constexpr int kLookUps = 4000 * kScale;
  constexpr std::uint32_t kRounds = 500 * kScale;
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("stays", "method", "proc", FakeProc(16)), 1);
  const std::uint32_t before = zeb_.frame.GetUnregisterCount();
  const ZEBProc alloc = AsProc(zeb_.memory.Alloc);

  const auto comeAndGo = [&] {
    for (std::uint32_t round = 0; round < kRounds; ++round) {
      const std::string name = "comes and goes " + std::to_string(round % 7);
      for (std::uintptr_t i = 0; i < 5; ++i) {
        const std::string proc = "proc " + std::to_string(i);
        mistakes_.CountUnless(zeb_.frame.RegisterProcAddress(name.c_str(), "method", proc.c_str(),
                                                             FakeProc(16 + i)) == 1);
      }
      mistakes_.CountUnless(zeb_.getProcAddress(name.c_str(), "method", "proc 3") == FakeProc(19));
      zeb_.frame.UnregisterInterface(name.c_str());
      mistakes_.CountUnless(zeb_.getProcAddress(name.c_str(), "method", "proc 3") == nullptr);
    }
  };
  const auto lookUp = [&](int thread) {
    const std::string unknown = "unknown to " + std::to_string(thread);
    for (int i = 0; i < kLookUps; ++i) {
      mistakes_.CountUnless(zeb_.getProcAddress("ZEBMemoryInterface", "Alloc", "ZEBMemAllocProc") ==
                            alloc);
      mistakes_.CountUnless(zeb_.getProcAddress("stays", "method", "proc") == FakeProc(16));
      mistakes_.CountUnless(zeb_.getProcAddress(unknown.c_str(), "method", "proc") == nullptr);
      mistakes_.CountUnless(
          zeb_.getProcAddress("stays", unknown.c_str(), std::to_string(i).c_str()) == nullptr);
    }
  };
  InThreads(kThreads, [&](int thread) { thread == 0 ? comeAndGo() : lookUp(thread); });

  EXPECT_EQ(zeb_.frame.GetUnregisterCount(), before + kRounds);
}

TEST_P(Stress, RegistersEachNameOnce) {
  constexpr int kNames = 1000 * kScale;
  std::atomic<int> accepted = 0;
  InThreads(kThreads, [&](int thread) {
    for (int i = 0; i < kNames; ++i) {
      const ZEBProc own = FakeProc(16 + static_cast<std::uintptr_t>(thread));
      const std::string name = "wanted by all " + std::to_string(i);
      const bool first = zeb_.frame.RegisterProcAddress("client", name.c_str(), "p", own) == 1;
      accepted += first ? 1 : 0;
      const ZEBProc found = zeb_.getProcAddress("client", name.c_str(), "p");
      mistakes_.CountUnless(first ? found == own : found != nullptr);
    }
  });
  EXPECT_EQ(accepted, kNames);
}

TEST_P(Stress, CountsEveryUnregistration) {
  constexpr std::uint32_t kRounds = 500 * kScale;
  const std::uint32_t before = zeb_.frame.GetUnregisterCount();
  InThreads(kThreads, [&](int thread) {
    const std::string name = "interface " + std::to_string(thread);
    for (std::uint32_t round = 0; round < kRounds; ++round) {
      const ZEBProc proc = FakeProc(16 + round);
      mistakes_.CountUnless(zeb_.frame.RegisterProcAddress(name.c_str(), "method", "proc", proc) ==
                            1);
      mistakes_.CountUnless(zeb_.getProcAddress(name.c_str(), "method", "proc") == proc);
      zeb_.frame.UnregisterInterface(name.c_str());
    }
  });
  EXPECT_EQ(zeb_.frame.GetUnregisterCount(), before + kThreads * kRounds);
}

TEST_P(Stress, ShowsTheChangeCounterToReadersMeanwhile) {
  constexpr std::uint32_t kRounds = 1000 * kScale;
  std::uint32_t* address = zeb_.frame.GetUnregisterCountAddr();
  const std::uint32_t before = zeb_.frame.GetUnregisterCount();
  InThreads(4, [&](int thread) {
    std::uint32_t last = before;
    for (std::uint32_t round = 0; round < kRounds; ++round) {
      if (thread == 0) {
        zeb_.frame.UnregisterInterface("moves the counter");
        continue;
      }
      const std::uint32_t now =
          thread == 1 ? zeb_.frame.GetUnregisterCount() : std::atomic_ref(*address).load();
      mistakes_.CountUnless(now >= last && now <= before + kRounds);
      last = now;
    }
  });
  EXPECT_EQ(zeb_.frame.GetUnregisterCount(), before + kRounds);
}

// More threads than a library that gives each a place of its own is likely to have places for.
constexpr int kManyThreads = 28;

TEST_P(Stress, LosesNoSignal) {
  constexpr int kSignals = 50'000 * kScale;
  ZEBEventCounter* shared = zeb_.event.NewEventCounter("shared", 1);
  std::vector<ZEBEventCounter*> own;
  std::vector<std::string> names;
  for (int i = 0; i < kManyThreads; ++i) names.push_back("thread " + std::to_string(i));
  for (const std::string& name : names) own.push_back(zeb_.event.NewEventCounter(name.c_str(), 1));

  InThreads(kManyThreads, [&](int thread) {
    for (int i = 0; i < kSignals; ++i) {
      zeb_.event.SignalEventCounter(shared, 3);
      zeb_.event.SignalEventCounter(own[static_cast<std::size_t>(thread)], 1);
    }
  });

  EXPECT_EQ(Total(zeb_, "shared"), std::int64_t{3} * kManyThreads * kSignals);
  for (const std::string& name : names) EXPECT_EQ(Total(zeb_, name), kSignals) << name;
  zeb_.event.DeleteEventCounter(shared);
  for (ZEBEventCounter* counter : own) zeb_.event.DeleteEventCounter(counter);
}

TEST_P(Stress, LosesNoEventOfTheLibrary) {
  constexpr int kRounds = 1000 * kScale;
  ZEBString* atom = zeb_.string.NewStringAtom("counted");
  const AtomEvents events = AtomEventsOf(zeb_, [&] {
    InThreads(kManyThreads, [&](int) {
      for (int round = 0; round < kRounds; ++round) {
        zeb_.string.AddRef(atom);
        zeb_.string.DeleteStringAtom(atom);
      }
    });
  });
  EXPECT_EQ(events, (AtomEvents{.addRefs = kManyThreads * kRounds}));
  zeb_.string.DeleteStringAtom(atom);
}

TEST_P(Stress, AnswersManyThreadsAtOnce) {
  constexpr int kRounds = 300 * kScale;
  ZEBString* held = zeb_.string.NewStringAtom("held");
  const AtomEvents events = AtomEventsOf(zeb_, [&] {
    InThreads(kManyThreads, [&](int) {
      for (int round = 0; round < kRounds; ++round) {
        mistakes_.CountUnless(zeb_.getProcAddress("ZEB", "ZEBReportError", "ZEBReportError") ==
                              AsProc(&Reports::Report));
        mistakes_.CountUnless(zeb_.getProcAddress("ZEB", "held", "held") == nullptr);
        mistakes_.CountUnless(zeb_.string.NewStringAtom("held") == held);
        zeb_.string.DeleteStringAtom(held);
      }
    });
  });
  EXPECT_EQ(events, (AtomEvents{.found = 7 * kManyThreads * kRounds}));
  zeb_.string.DeleteStringAtom(held);
}

// Threads come and go one after another, so that any place of their own passes from one to the
// next.
TEST_P(Stress, LosesNoSignalOfThreadsThatEnded) {
  constexpr int kGenerations = 40 * kScale;
  ZEBEventCounter* counter = zeb_.event.NewEventCounter("generations", 1);
  for (int generation = 0; generation < kGenerations; ++generation) {
    InThreads(3, [&](int thread) {
      zeb_.event.SignalEventCounter(counter, static_cast<std::uint64_t>(1 + thread));
      MakesAndReleases("generation");
    });
    EXPECT_EQ(Total(zeb_, "generations"), 6 * (generation + 1));
  }
  zeb_.event.DeleteEventCounter(counter);
}

TEST_P(Stress, TakesSnapshotsWhileCountersComeAndGo) {
  constexpr int kRounds = 300 * kScale;
  InThreads(kThreads, [&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      if (thread < 3) {
        bool complete = false;
        const auto records = Snapshot(zeb_);
        for (const auto& record : records) {
          complete |= record.name == std::string("ZEB evicting a cache item");
          mistakes_.CountUnless(record.total >= 0);
        }
        mistakes_.CountUnless(complete && records.size() >= 20 && records.size() <= 20 + kThreads);
        continue;
      }
      ZEBEventCounter* counter = zeb_.event.NewEventCounter("comes and goes", thread);
      zeb_.event.SignalEventCounter(counter, 2);
      zeb_.event.DeleteEventCounter(counter);
    }
  });
  EXPECT_EQ(Snapshot(zeb_).size(), 20u);
}

TEST_P(Stress, DeletesTheInfoOfASharedErrorOnce) {
  static std::atomic<int> deletions;
  constexpr int kRounds = 5000 * kScale;
  deletions = 0;
  ZEBErrorObject* error =
      zeb_.error.NewError("shared", "component", 6, nullptr, [](void*) { ++deletions; });
  for (int i = 0; i < kThreads; ++i) zeb_.error.AddRef(error);
  InThreads(kThreads, [&](int) {
    for (int round = 0; round < kRounds; ++round) {
      zeb_.error.AddRef(error);
      mistakes_.CountUnless(zeb_.error.GetID(error) == 6);
      mistakes_.CountUnless(std::string("shared") ==
                            zeb_.string.GetCString(zeb_.error.GetErrorMessage(error)));
      zeb_.error.Release(error);
    }
    zeb_.error.Release(error);
  });
  EXPECT_EQ(deletions, 0);
  zeb_.error.Release(error);
  EXPECT_EQ(deletions, 1);
}

TEST_P(Stress, LetsTheLastOfManyThreadsDestroyAnError) {
  static std::atomic<int> deletions;
  constexpr int kErrors = 500 * kScale;
  deletions = 0;
  std::vector<ZEBErrorObject*> errors;
  for (int i = 0; i < kErrors; ++i) {
    errors.push_back(zeb_.error.NewError(("error " + std::to_string(i)).c_str(), "component", 6,
                                         nullptr, [](void*) { ++deletions; }));
    for (int thread = 1; thread < kThreads; ++thread) zeb_.error.AddRef(errors.back());
  }
  InThreads(kThreads, [&](int) {
    for (ZEBErrorObject* error : errors) zeb_.error.Release(error);
  });
  EXPECT_EQ(deletions, kErrors);
}

TEST_P(Stress, MakesAndReportsErrorsInEveryThread) {
  static std::atomic<int> deletions;
  constexpr int kRounds = 1000 * kScale;
  deletions = 0;
  InThreads(kThreads, [&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      const std::string message = "message " + std::to_string(round % 9);
      ZEBErrorObject* error = zeb_.error.NewError(message.c_str(), "component", thread, nullptr,
                                                  [](void*) { ++deletions; });
      mistakes_.CountUnless(zeb_.error.GetID(error) == thread);
      mistakes_.CountUnless(message == zeb_.string.GetCString(zeb_.error.GetErrorMessage(error)));
      zeb_.error.Release(error);
      zeb_.error.Release(zeb_.error.GetCoreError(round % 5));
    }
  });
  EXPECT_EQ(deletions, kThreads * kRounds);
  EXPECT_EQ(Reports::Take().size(), std::size_t{kThreads} * kRounds);
}

TEST_P(Stress, HandsBlocksFromThreadToThread) {
  constexpr int kRounds = 2000 * kScale;
  std::array<std::atomic<unsigned char*>, 16> shelf{};
  InThreads(kThreads, [&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      const auto size = static_cast<std::uint64_t>(16 + (round * 37 + thread) % 3000);
      auto* block = static_cast<unsigned char*>(zeb_.memory.Alloc(size));
      block[0] = block[size - 1] = 0x42;
      block = shelf[static_cast<std::size_t>(round) % shelf.size()].exchange(block);
      if (block == nullptr) continue;
      const std::uint64_t found = zeb_.memory.GetBlockSize(block);
      mistakes_.CountUnless(block[0] == 0x42 && block[found - 1] == 0x42);
      block = static_cast<unsigned char*>(zeb_.memory.Realloc(block, found + 100));
      mistakes_.CountUnless(block[0] == 0x42);
      zeb_.memory.Free(block);
    }
  });
  for (auto& place : shelf) {
    if (place != nullptr) zeb_.memory.Free(place);
  }
}

TEST_P(Stress, ServesEverythingAtOnce) {
  constexpr int kRounds = 1000 * kScale;
  std::atomic<int> unregistrations = 0;
  const std::uint32_t before = zeb_.frame.GetUnregisterCount();
  InThreads(kThreads, [&](int thread) {
    const std::string own = "interface " + std::to_string(thread);
    for (int round = 0; round < kRounds; ++round) {
      switch ((round + thread) % 5) {
        case 0:
          mistakes_.CountUnless(MakesAndReleases("text " + std::to_string(round % 90)));
          break;
        case 1:
          zeb_.error.Release(zeb_.error.NewError(own.c_str(), "text 7", 1, nullptr, nullptr));
          break;
        case 2:
          zeb_.frame.RegisterProcAddress(own.c_str(), "text 7", "text 8", FakeProc(16));
          break;
        case 3:
          zeb_.frame.UnregisterInterface(own.c_str());
          ++unregistrations;
          break;
        default:
          zeb_.event.DeleteEventCounter(zeb_.event.NewEventCounter("at once", 1));
          mistakes_.CountUnless(zeb_.getProcAddress("text 7", "text 8", own.c_str()) == nullptr);
      }
    }
  });
  EXPECT_EQ(zeb_.frame.GetUnregisterCount(),
            before + static_cast<std::uint32_t>(unregistrations.load()));
}

}  // namespace
}  // namespace contract
