// The proc registry: registering, finding, unregistering, the change counter, fetching in bulk.

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"
#include "contract/proc_rows.h"

namespace contract {
namespace {

using Host = HostMemory<0>;

class Registry : public ::testing::Test {
 protected:
  ZEBProc Find(const char* interfaceName, const char* method, const char* proc) const {
    return zeb_.getProcAddress(interfaceName, method, proc);
  }
  std::int32_t Register(const char* interfaceName, const char* method, const char* proc,
                        ZEBProc function) const {
    return zeb_.frame.RegisterProcAddress(interfaceName, method, proc, function);
  }
  void Unregister(const char* interfaceName) const {
    zeb_.frame.UnregisterInterface(interfaceName);
  }
  std::uint32_t Counter() const { return zeb_.frame.GetUnregisterCount(); }

  RunningLibrary zeb_;
};

TEST_F(Registry, PublishesEveryRow) {
  for (const ProcRow& row : kProcRows) {
    EXPECT_NE(Find(row.interfaceName, row.methodName, row.procName), nullptr)
        << ::testing::PrintToString(row);
  }
}

TEST_F(Registry, AnswersTheTypedFetchesWithTheRowsByName) {
  EXPECT_EQ(AsProc(zeb_.frame.RegisterProcAddress),
            Find("ZEB", "ZEBRegisterProcAddress", "ZEBRegisterProcAddress"));
  EXPECT_EQ(AsProc(zeb_.frame.IsMultiThreaded),
            Find("ZEB", "ZEBIsMultiThreaded", "ZEBIsMultiThreaded"));
  EXPECT_EQ(AsProc(zeb_.memory.Alloc), Find("ZEBMemoryInterface", "Alloc", "ZEBMemAllocProc"));
  EXPECT_EQ(AsProc(zeb_.memory.GetBlockSize),
            Find("ZEBMemoryInterface", "GetBlockSize", "ZEBMemGetBlockSizeProc"));
  EXPECT_EQ(AsProc(zeb_.memoryDebug.GetNumAllocs),
            Find("ZEBMemDbgInterface", "GetNumAllocs", "ZEBMemDbgGetNumAllocsProc"));
  EXPECT_EQ(AsProc(zeb_.error.NewError), Find("ZEBErrorInterface", "NewError", "ZEBNewErrorProc"));
  EXPECT_EQ(AsProc(zeb_.error.GetErrorInfo),
            Find("ZEBErrorInterface", "GetErrorInfo", "ZEBGetErrorInfoProc"));
  EXPECT_EQ(AsProc(zeb_.string.AddRef),
            Find("ZEBStringInterface", "AddRef", "ZEBAddRefStringAtomProc"));
  EXPECT_EQ(AsProc(zeb_.event.DeleteEventSnapshot),
            Find("ZEBEventInterface", "DeleteEventSnapshot", "ZEBDeleteEventSnapshotProc"));
}

TEST_F(Registry, PublishesNothingUnderEmptyNames) {
  for (const ProcRow& row : kProcRows) {
    EXPECT_EQ(Find(row.interfaceName, "", ""), nullptr);
    EXPECT_EQ(Find(row.interfaceName, nullptr, nullptr), nullptr);
  }
}

TEST_F(Registry, RefusesNamesThatAreTaken) {
  EXPECT_EQ(Register("ZEB", "X", "P", FakeProc(16)), 1);
  EXPECT_EQ(Register("ZEB", "X", "P", FakeProc(32)), 0);
  EXPECT_EQ(Find("ZEB", "X", "P"), FakeProc(16));
}

TEST_F(Registry, RefusesTheSameFunctionASecondTime) {
  EXPECT_EQ(Register("Client", "X", "P", FakeProc(16)), 1);
  EXPECT_EQ(Register("Client", "X", "P", FakeProc(16)), 0);
  EXPECT_EQ(Find("Client", "X", "P"), FakeProc(16));
}

TEST_F(Registry, RefusesToRebindAPublishedProc) {
  for (const ProcRow& row : kProcRows) {
    const ZEBProc published = Find(row.interfaceName, row.methodName, row.procName);
    EXPECT_EQ(Register(row.interfaceName, row.methodName, row.procName, FakeProc(16)), 0);
    EXPECT_EQ(Find(row.interfaceName, row.methodName, row.procName), published);
  }
}

TEST_F(Registry, GoesOnAfterARefusal) {
  ASSERT_EQ(Register("Client", "X", "P", FakeProc(16)), 1);
  ASSERT_EQ(Register("Client", "X", "P", FakeProc(32)), 0);
  EXPECT_EQ(Register("Client", "Y", "P", FakeProc(48)), 1);
  EXPECT_EQ(Find("Client", "X", "P"), FakeProc(16));
  EXPECT_EQ(Find("Client", "Y", "P"), FakeProc(48));
}

TEST_F(Registry, KeepsProcsOfOneMethodApart) {
  ASSERT_EQ(Register("Client", "Method", "FirstProc", FakeProc(16)), 1);
  ASSERT_EQ(Register("Client", "Method", "SecondProc", FakeProc(32)), 1);
  EXPECT_EQ(Find("Client", "Method", "FirstProc"), FakeProc(16));
  EXPECT_EQ(Find("Client", "Method", "SecondProc"), FakeProc(32));
}

TEST_F(Registry, KeepsMethodsOfOneProcNameApart) {
  ASSERT_EQ(Register("Client", "First", "Proc", FakeProc(16)), 1);
  ASSERT_EQ(Register("Client", "Second", "Proc", FakeProc(32)), 1);
  EXPECT_EQ(Find("Client", "First", "Proc"), FakeProc(16));
  EXPECT_EQ(Find("Client", "Second", "Proc"), FakeProc(32));
}

TEST_F(Registry, KeepsInterfacesApart) {
  ASSERT_EQ(Register("First", "Method", "Proc", FakeProc(16)), 1);
  ASSERT_EQ(Register("Second", "Method", "Proc", FakeProc(32)), 1);
  EXPECT_EQ(Find("First", "Method", "Proc"), FakeProc(16));
  EXPECT_EQ(Find("Second", "Method", "Proc"), FakeProc(32));
}

TEST_F(Registry, TellsTheThreeNamesApartByTheirPlace) {
  const char* names[] = {"a", "b"};
  std::uintptr_t next = 16;
  for (const char* i : names) {
    for (const char* m : names) {
      for (const char* p : names) EXPECT_EQ(Register(i, m, p, FakeProc(next++)), 1);
    }
  }
  next = 16;
  for (const char* i : names) {
    for (const char* m : names) {
      for (const char* p : names) EXPECT_EQ(Find(i, m, p), FakeProc(next++)) << i << m << p;
    }
  }
}

TEST_F(Registry, DoesNotJoinTheNames) {
  ASSERT_EQ(Register("ab", "c", "d", FakeProc(16)), 1);
  EXPECT_EQ(Find("a", "bc", "d"), nullptr);
  EXPECT_EQ(Find("ab", "cd", ""), nullptr);
  EXPECT_EQ(Find("abc", "", "d"), nullptr);
  EXPECT_EQ(Find("", "abc", "d"), nullptr);
}

TEST_F(Registry, TakesANullNameForAnotherThanAnEmptyOne) {
  const char* names[] = {nullptr, "", "x"};
  std::uintptr_t next = 16;
  for (const char* i : names) {
    for (const char* m : names) {
      for (const char* p : names) {
        EXPECT_EQ(Find(i, m, p), nullptr);
        EXPECT_EQ(Register(i, m, p, FakeProc(next)), 1);
        EXPECT_EQ(Register(i, m, p, FakeProc(8)), 0);
        EXPECT_EQ(Find(i, m, p), FakeProc(next));
        ++next;
      }
    }
  }
}

TEST_F(Registry, UnregistersTheNullInterfaceAlone) {
  ASSERT_EQ(Register(nullptr, "Method", "Proc", FakeProc(16)), 1);
  ASSERT_EQ(Register("", "Method", "Proc", FakeProc(32)), 1);
  Unregister(nullptr);
  EXPECT_EQ(Find(nullptr, "Method", "Proc"), nullptr);
  EXPECT_EQ(Find("", "Method", "Proc"), FakeProc(32));
  EXPECT_EQ(Counter(), 2u);
}

TEST_F(Registry, AcceptsANullFunctionThatCannotBeToldFromNone) {
  EXPECT_EQ(Register("Client", "Method", "Proc", nullptr), 1);
  EXPECT_EQ(Find("Client", "Method", "Proc"), nullptr);
  EXPECT_EQ(Register("Client", "Method", "Proc", FakeProc(16)), 0);
  EXPECT_EQ(Find("Client", "Method", "Proc"), nullptr);
}

TEST_F(Registry, CopiesTheNames) {
  char interfaceName[] = "Client";
  char method[] = "Method";
  char proc[] = "Proc";
  ASSERT_EQ(Register(interfaceName, method, proc, FakeProc(16)), 1);
  interfaceName[0] = method[0] = proc[0] = '?';
  EXPECT_EQ(Find("Client", "Method", "Proc"), FakeProc(16));
  EXPECT_EQ(Find(interfaceName, method, proc), nullptr);
}

TEST_F(Registry, ComparesNamesByteForByte) {
  ASSERT_EQ(Register("Client", "Method", "Proc", FakeProc(16)), 1);
  EXPECT_EQ(Find("client", "Method", "Proc"), nullptr);
  EXPECT_EQ(Find("Client", "METHOD", "Proc"), nullptr);
  EXPECT_EQ(Find("Client", "Method", "Proc "), nullptr);
  EXPECT_EQ(Find("Client", "Method", "Pro"), nullptr);
  ASSERT_EQ(Register("\xFF\x80", "\x01", "\xC3\xA9", FakeProc(32)), 1);
  EXPECT_EQ(Find("\xFF\x80", "\x01", "\xC3\xA9"), FakeProc(32));
  EXPECT_EQ(Find("\xFF\x81", "\x01", "\xC3\xA9"), nullptr);
}

TEST_F(Registry, TakesNamesOfAnyLength) {
  const std::string longName(100'000, 'n');
  const std::string longer = longName + "n";
  ASSERT_EQ(Register(longName.c_str(), longName.c_str(), longName.c_str(), FakeProc(16)), 1);
  EXPECT_EQ(Find(longName.c_str(), longName.c_str(), longName.c_str()), FakeProc(16));
  EXPECT_EQ(Find(longName.c_str(), longName.c_str(), longer.c_str()), nullptr);
  EXPECT_EQ(Find(longName.c_str(), longer.c_str(), longName.c_str()), nullptr);
}

TEST_F(Registry, HoldsThousandsOfProcsAndInterfaces) {
  constexpr std::uintptr_t kInterfaces = 200;
  constexpr std::uintptr_t kProcs = 40;
  const auto name = [](const char* kind, std::uintptr_t number) {
    return kind + std::to_string(number);
  };
  const auto forEach = [&](auto visit) {
    for (std::uintptr_t i = 0; i < kInterfaces; ++i) {
      for (std::uintptr_t p = 0; p < kProcs; ++p) {
        visit(name("Interface", i), name("Method", p / 2), name("Proc", p),
              FakeProc(16 + i * kProcs + p));
      }
    }
  };
  forEach([&](const auto& i, const auto& m, const auto& p, ZEBProc function) {
    ASSERT_EQ(Register(i.c_str(), m.c_str(), p.c_str(), function), 1);
  });
  forEach([&](const auto& i, const auto& m, const auto& p, ZEBProc function) {
    EXPECT_EQ(Find(i.c_str(), m.c_str(), p.c_str()), function);
  });
}

TEST_F(Registry, ForgetsAnUnregisteredInterfaceWhole) {
  ASSERT_EQ(Register("Client", "First", "Proc", FakeProc(16)), 1);
  ASSERT_EQ(Register("Client", "Second", "Proc", FakeProc(32)), 1);
  ASSERT_EQ(Register("Other", "First", "Proc", FakeProc(48)), 1);
  Unregister("Client");
  EXPECT_EQ(Find("Client", "First", "Proc"), nullptr);
  EXPECT_EQ(Find("Client", "Second", "Proc"), nullptr);
  EXPECT_EQ(Find("Other", "First", "Proc"), FakeProc(48));
}

TEST_F(Registry, TakesUnregisteredNamesAgain) {
  for (std::uintptr_t round = 1; round <= 5; ++round) {
    ASSERT_EQ(Register("Client", "Method", "Proc", FakeProc(16 * round)), 1);
    EXPECT_EQ(Find("Client", "Method", "Proc"), FakeProc(16 * round));
    Unregister("Client");
    EXPECT_EQ(Find("Client", "Method", "Proc"), nullptr);
  }
}

TEST_F(Registry, LetsAHostReplaceAServicesInterface) {
  Unregister("ZEBMemDbgInterface");
  EXPECT_EQ(Find("ZEBMemDbgInterface", "GetNumAllocs", "ZEBMemDbgGetNumAllocsProc"), nullptr);
  EXPECT_EQ(
      Register("ZEBMemDbgInterface", "GetNumAllocs", "ZEBMemDbgGetNumAllocsProc", FakeProc(16)), 1);
  EXPECT_EQ(Find("ZEBMemDbgInterface", "GetNumAllocs", "ZEBMemDbgGetNumAllocsProc"), FakeProc(16));
}

TEST_F(Registry, LetsAHostUnregisterEveryServiceAndGoOn) {
  for (const ProcRow& row : kProcRows) Unregister(row.interfaceName);
  for (const ProcRow& row : kProcRows) {
    EXPECT_EQ(Find(row.interfaceName, row.methodName, row.procName), nullptr);
  }
  ASSERT_EQ(Register("Client", "Method", "Proc", FakeProc(16)), 1);
  EXPECT_EQ(Find("Client", "Method", "Proc"), FakeProc(16));

  ZEBString* atom = zeb_.string.NewStringAtom("made by a kept proc");
  EXPECT_STREQ(zeb_.string.GetCString(atom), "made by a kept proc");
  zeb_.string.DeleteStringAtom(atom);
  ZEBErrorObject* error = zeb_.error.NewError("message", "component", 3, nullptr, nullptr);
  EXPECT_EQ(zeb_.error.GetID(error), 3);
  zeb_.error.Release(error);
  void* block = zeb_.memory.Alloc(100);
  EXPECT_EQ(zeb_.memory.GetBlockSize(block), 100u);
  zeb_.memory.Free(block);
}

TEST_F(Registry, MovesTheChangeCounterWithEachUnregistration) {
  const std::uint32_t* address = zeb_.frame.GetUnregisterCountAddr();
  ASSERT_EQ(Counter(), 1u);
  Unregister("never registered");
  EXPECT_EQ(Counter(), 2u);
  EXPECT_EQ(*address, 2u);
  Unregister("never registered");
  EXPECT_EQ(Counter(), 3u);
  ASSERT_EQ(Register("Client", "Method", "Proc", FakeProc(16)), 1);
  EXPECT_EQ(Counter(), 3u);
  Unregister("Client");
  EXPECT_EQ(Counter(), 4u);
  EXPECT_EQ(*address, 4u);
  EXPECT_EQ(zeb_.frame.GetUnregisterCountAddr(), address);
}

TEST_F(Registry, LeavesTheChangeCounterAloneOtherwise) {
  Find("ZEB", "ZEBReportError", "ZEBReportError");
  Find("unknown", "unknown", "unknown");
  Register("Client", "Method", "Proc", FakeProc(16));
  Register("Client", "Method", "Proc", FakeProc(16));
  EXPECT_EQ(Counter(), 1u);
}

TEST_F(Registry, HoldsTheAtomsOfItsNamesUntilTheyAreUnregistered) {
  ASSERT_EQ(Register("a client's interface", "its method", "its proc", FakeProc(16)), 1);
  ForgetRecentAtoms(zeb_);
  const auto makeNames = [&] {
    for (const char* name : {"a client's interface", "its method", "its proc"}) {
      zeb_.string.DeleteStringAtom(zeb_.string.NewStringAtom(name));
    }
  };
  EXPECT_EQ(AtomEventsOf(zeb_, makeNames), (AtomEvents{.found = 3}));
  Unregister("a client's interface");
  ForgetRecentAtoms(zeb_);
  EXPECT_EQ(AtomEventsOf(zeb_, makeNames), (AtomEvents{.allocated = 3}));
}

TEST_F(Registry, LeavesNoNamesOfALookUpBehind) {
  EXPECT_EQ(Find("an unknown interface", "an unknown method", "an unknown proc"), nullptr);
  ForgetRecentAtoms(zeb_);
  const auto makeNames = [&] {
    for (const char* name : {"an unknown interface", "an unknown method", "an unknown proc"}) {
      zeb_.string.DeleteStringAtom(zeb_.string.NewStringAtom(name));
    }
  };
  EXPECT_EQ(AtomEventsOf(zeb_, makeNames), (AtomEvents{.allocated = 3}));
}

TEST_F(Registry, LeavesNoNamesOfARefusalBehind) {
  ASSERT_EQ(Register("Client", "Method", "Proc", FakeProc(16)), 1);
  ASSERT_EQ(Register("Client", "Method", "Proc", FakeProc(16)), 0);
  Unregister("Client");
  ForgetRecentAtoms(zeb_);
  const auto makeNames = [&] {
    for (const char* name : {"Client", "Method", "Proc"}) {
      zeb_.string.DeleteStringAtom(zeb_.string.NewStringAtom(name));
    }
  };
  EXPECT_EQ(AtomEventsOf(zeb_, makeNames), (AtomEvents{.allocated = 3}));
}

TEST_F(Registry, InternsTheNamesOfEveryCall) {
  const auto lookUpKnown = [&] { Find("ZEBErrorInterface", "NewError", "ZEBNewErrorProc"); };
  EXPECT_EQ(AtomEventsOf(zeb_, lookUpKnown), (AtomEvents{.found = 3}));
  const auto lookUpUnknown = [&] { Find("ZEBErrorInterface", "no method", "no proc"); };
  EXPECT_EQ(AtomEventsOf(zeb_, lookUpUnknown), (AtomEvents{.found = 1, .allocated = 2}));
  const auto registerNew = [&] { Register("one", "two", "three", FakeProc(16)); };
  const AtomEvents registering = AtomEventsOf(zeb_, registerNew);
  EXPECT_EQ(registering.found, 0);
  EXPECT_EQ(registering.allocated, 3);
  const auto unregister = [&] { Unregister("one"); };
  EXPECT_EQ(AtomEventsOf(zeb_, unregister), (AtomEvents{.found = 1}));
}

TEST_F(Registry, InternsNoNullNames) {
  const auto lookUp = [&] { Find(nullptr, nullptr, nullptr); };
  EXPECT_EQ(AtomEventsOf(zeb_, lookUp), AtomEvents());
}

TEST(RegistryMemory, IsGivenBackByUnregistering) {
  RunningLibrary zeb(Host::WithObjectProcs());
  const auto registerMany = [&] {
    for (std::uintptr_t i = 0; i < 50; ++i) {
      const std::string name = "Proc" + std::to_string(i);
      zeb.frame.RegisterProcAddress("Client", "Method", name.c_str(), FakeProc(16 + i));
    }
  };
  registerMany();
  zeb.frame.UnregisterInterface("Client");
  ForgetRecentAtoms(zeb);
  const std::uint64_t live = Host::LiveBlocks();
  for (int round = 0; round < 3; ++round) {
    registerMany();
    EXPECT_GT(Host::LiveBlocks(), live);
    zeb.frame.UnregisterInterface("Client");
    ForgetRecentAtoms(zeb);
    EXPECT_EQ(Host::LiveBlocks(), live);
  }
}

TEST(RegistryMemory, DoesNotGrowWithLookUpsAndRefusals) {
  RunningLibrary zeb(Host::WithObjectProcs());
  ForgetRecentAtoms(zeb);
  const std::uint64_t live = Host::LiveBlocks();
  for (int i = 0; i < 1000; ++i) {
    const std::string unknown = "unknown " + std::to_string(i);
    EXPECT_EQ(zeb.getProcAddress(unknown.c_str(), "Method", "Proc"), nullptr);
    EXPECT_EQ(zeb.getProcAddress("ZEB", unknown.c_str(), unknown.c_str()), nullptr);
    EXPECT_EQ(zeb.frame.RegisterProcAddress("ZEB", "ZEBReportError", "ZEBReportError", nullptr), 0);
  }
  ForgetRecentAtoms(zeb);
  EXPECT_EQ(Host::LiveBlocks(), live);
}

class BulkFetch : public Registry {
 protected:
  static constexpr ZEBProcRequest kRequests[] = {
      {"Alloc", "ZEBMemAllocProc"},
      {"Realloc", "ZEBMemReallocProc"},
      {"Alloc", "no such proc"},
      {"Free", "ZEBMemFreeProc"},
  };
  static constexpr std::size_t kCount = std::size(kRequests);

  const ZEBProc untouched_ = FakeProc(0xDEAD);
  ZEBProc slots_[kCount] = {untouched_, untouched_, untouched_, untouched_};
};

TEST_F(BulkFetch, StopsAtTheFirstMissingProc) {
  EXPECT_EQ(ZEBFetchProcs(zeb_.getProcAddress, "ZEBMemoryInterface", kRequests, kCount, slots_), 0);
  EXPECT_EQ(slots_[0], AsProc(zeb_.memory.Alloc));
  EXPECT_EQ(slots_[1], AsProc(zeb_.memory.Realloc));
  EXPECT_EQ(slots_[2], nullptr);
  EXPECT_EQ(slots_[3], untouched_);
}

TEST_F(BulkFetch, FillsEverySlotWhenNothingIsMissing) {
  EXPECT_EQ(ZEBFetchProcs(zeb_.getProcAddress, "ZEBMemoryInterface", kRequests, 2, slots_), 1);
  EXPECT_EQ(slots_[0], AsProc(zeb_.memory.Alloc));
  EXPECT_EQ(slots_[1], AsProc(zeb_.memory.Realloc));
  EXPECT_EQ(slots_[2], untouched_);
}

TEST_F(BulkFetch, SucceedsWithNothingToFetch) {
  EXPECT_EQ(ZEBFetchProcs(zeb_.getProcAddress, "no such interface", nullptr, 0, nullptr), 1);
}

TEST_F(BulkFetch, ClearsTheFirstSlotWhenTheInterfaceIsUnknown) {
  EXPECT_EQ(ZEBFetchProcs(zeb_.getProcAddress, "no such interface", kRequests, kCount, slots_), 0);
  EXPECT_EQ(slots_[0], nullptr);
  EXPECT_EQ(slots_[1], untouched_);
}

TEST_F(BulkFetch, TakesANullFunctionForAMissingOne) {
  ASSERT_EQ(Register("Client", "Alloc", "ZEBMemAllocProc", nullptr), 1);
  ASSERT_EQ(Register("Client", "Realloc", "ZEBMemReallocProc", FakeProc(16)), 1);
  EXPECT_EQ(ZEBFetchProcs(zeb_.getProcAddress, "Client", kRequests, 2, slots_), 0);
  EXPECT_EQ(slots_[0], nullptr);
  EXPECT_EQ(slots_[1], untouched_);
}

TEST_F(BulkFetch, LeavesATypedStructAloneWhenItFails) {
  ZEBMemoryProcs procs = zeb_.memory;
  procs.Alloc = nullptr;
  Unregister("ZEBMemoryInterface");
  EXPECT_EQ(ZEBFetchMemoryProcs(zeb_.getProcAddress, &procs), 0);
  EXPECT_EQ(procs.Alloc, nullptr);
  EXPECT_EQ(procs.Realloc, zeb_.memory.Realloc);
  EXPECT_EQ(procs.GetBlockSize, zeb_.memory.GetBlockSize);
}

// The scheme by which every client keeps its procs: fetch again when the counter has moved.
TEST_F(BulkFetch, FollowsTheChangeCounter) {
  ASSERT_EQ(Register("Client", "Alloc", "ZEBMemAllocProc", FakeProc(16)), 1);
  std::uint32_t fetchedAt = 0;
  ZEBProc proc = nullptr;
  const auto current = [&] {
    if (Counter() != fetchedAt) {
      EXPECT_EQ(ZEBFetchProcs(zeb_.getProcAddress, "Client", kRequests, 1, &proc), 1);
      fetchedAt = Counter();
    }
    return proc;
  };
  EXPECT_EQ(current(), FakeProc(16));
  Unregister("Client");
  ASSERT_EQ(Register("Client", "Alloc", "ZEBMemAllocProc", FakeProc(32)), 1);
  EXPECT_EQ(current(), FakeProc(32));
}

static_assert(sizeof(ZEBProcRequest) == 16);
static_assert(offsetof(ZEBProcRequest, methodName) == 0);
static_assert(offsetof(ZEBProcRequest, procName) == 8);
static_assert(sizeof(ZEBProcTableEntry) == 24);
static_assert(offsetof(ZEBProcTableEntry, methodName) == 0);
static_assert(offsetof(ZEBProcTableEntry, procName) == 8);
static_assert(offsetof(ZEBProcTableEntry, proc) == 16);

}  // namespace
}  // namespace contract
