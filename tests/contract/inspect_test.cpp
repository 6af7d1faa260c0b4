// Inspection: the registry, the live atoms and the live objects as snapshots show them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "contract/inspected_library.h"
#include "contract/proc_rows.h"

namespace contract {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

static_assert(sizeof(ZEBInspectedProc) == 48);
static_assert(offsetof(ZEBInspectedProc, interfaceName) == 0);
static_assert(offsetof(ZEBInspectedProc, methodName) == 8);
static_assert(offsetof(ZEBInspectedProc, procName) == 16);
static_assert(offsetof(ZEBInspectedProc, proc) == 24);
static_assert(offsetof(ZEBInspectedProc, file) == 32);
static_assert(offsetof(ZEBInspectedProc, fileOffset) == 40);
static_assert(sizeof(ZEBInspectedAtom) == 24);
static_assert(offsetof(ZEBInspectedAtom, text) == 0);
static_assert(offsetof(ZEBInspectedAtom, length) == 8);
static_assert(offsetof(ZEBInspectedAtom, references) == 16);
static_assert(offsetof(ZEBInspectedAtom, reserved) == 20);
static_assert(sizeof(ZEBInspectedKind) == 24);
static_assert(offsetof(ZEBInspectedKind, kind) == 0);
static_assert(offsetof(ZEBInspectedKind, live) == 8);
static_assert(offsetof(ZEBInspectedKind, kept) == 16);

using Key = std::tuple<RegistryName, RegistryName, RegistryName>;

std::vector<Key> KeysOf(const std::vector<InspectedProc>& procs) {
  std::vector<Key> keys;
  for (const InspectedProc& it : procs) {
    keys.emplace_back(it.interfaceName, it.methodName, it.procName);
  }
  return keys;
}

class Inspection : public ::testing::Test {
 protected:
  InspectedProc Find(const Key& key) const {
    for (InspectedProc& it : zeb_.InspectedProcs()) {
      if (Key(it.interfaceName, it.methodName, it.procName) == key) return std::move(it);
    }
    ADD_FAILURE() << "not in the snapshot";
    return {};
  }

  InspectedLibrary zeb_;
};

using InspectedRegistry = Inspection;

TEST_F(InspectedRegistry, ShowsEveryProcThatTheLibraryPublishes) {
  const auto keys = KeysOf(zeb_.InspectedProcs());
  for (const ProcRow& row : kProcRows) {
    EXPECT_THAT(keys, Contains(Key(row.interfaceName, row.methodName, row.procName)));
  }
}

TEST_F(InspectedRegistry, ShowsTheFunctionThatALookUpFinds) {
  for (const InspectedProc& it : zeb_.InspectedProcs()) {
    EXPECT_EQ(zeb_.getProcAddress(it.interfaceName->c_str(), it.methodName->c_str(),
                                  it.procName->c_str()),
              it.proc)
        << *it.interfaceName << "/" << *it.methodName << "/" << *it.procName;
    EXPECT_NE(it.proc, nullptr);
  }
}

TEST_F(InspectedRegistry, NamesTheLibrarysFileForItsOwnProcs) {
  for (const InspectedProc& it : zeb_.InspectedProcs()) {
    ASSERT_TRUE(it.file.has_value());
    // The report procedure stands in the registry under the host's choice, here the library's.
    EXPECT_TRUE(std::filesystem::equivalent(*it.file, ZEB_LIBRARY_PATH)) << *it.file;
    EXPECT_GT(it.fileOffset, 0u);
    EXPECT_LT(it.fileOffset, std::uint64_t{1} << 32);
  }
}

void OwnProc() {}

TEST_F(InspectedRegistry, NamesTheProgramForItsProcs) {
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("Own", "Method", "Proc", &OwnProc), 1);
  const InspectedProc found = Find({"Own", "Method", "Proc"});
  EXPECT_EQ(found.proc, &OwnProc);
  ASSERT_TRUE(found.file.has_value());
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_TRUE(std::filesystem::equivalent(*found.file, program)) << *found.file;
}

TEST_F(InspectedRegistry, NamesNoFileWhereThereIsNone) {
  zeb_.Register("Own", "Nowhere", "Proc", 16);
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("Own", "Null", "Proc", nullptr), 1);
  for (const char* method : {"Nowhere", "Null"}) {
    const InspectedProc found = Find({"Own", method, "Proc"});
    EXPECT_EQ(found.file, std::nullopt);
    EXPECT_EQ(found.fileOffset, 0u);
  }
  EXPECT_EQ(Find({"Own", "Null", "Proc"}).proc, nullptr);
}

TEST_F(InspectedRegistry, IsSortedByNamesWithNullBeforeEveryText) {
  zeb_.Register("B", "x", "p");
  zeb_.Register("A", "y", "p");
  zeb_.Register("A", "x", "q");
  zeb_.Register("A", "x", "p");
  zeb_.Register("A", "x", nullptr);
  zeb_.Register("A", nullptr, "p");
  zeb_.Register("A", "", "p");
  zeb_.Register("", "", "");
  zeb_.Register(nullptr, nullptr, nullptr);
  zeb_.Register("\xFF", "x", "p");
  const auto keys = KeysOf(zeb_.InspectedProcs());
  EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));  // nothing sorts before every text
  EXPECT_EQ(keys.front(), Key(std::nullopt, std::nullopt, std::nullopt));
  EXPECT_EQ(keys[1], Key("", "", ""));
  EXPECT_EQ(keys[2], Key("A", std::nullopt, "p"));
  EXPECT_EQ(keys[3], Key("A", "", "p"));
  EXPECT_EQ(keys[4], Key("A", "x", std::nullopt));
  EXPECT_EQ(keys.back(), Key("\xFF", "x", "p"));
}

TEST_F(InspectedRegistry, FollowsUnregistering) {
  const auto before = KeysOf(zeb_.InspectedProcs());
  zeb_.Register("Client", "Method", "Proc");
  EXPECT_EQ(KeysOf(zeb_.InspectedProcs()).size(), before.size() + 1);
  zeb_.frame.UnregisterInterface("Client");
  EXPECT_EQ(KeysOf(zeb_.InspectedProcs()), before);
}

TEST_F(InspectedRegistry, MayGrowByThousands) {
  std::set<Key> added;
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "proc " + std::to_string(i);
    zeb_.Register("Large", "Method", name.c_str());
    added.emplace("Large", "Method", name);
  }
  std::set<Key> found;
  for (const Key& key : KeysOf(zeb_.InspectedProcs())) {
    if (std::get<0>(key) == "Large") found.insert(key);
  }
  EXPECT_EQ(found, added);
}

TEST_F(InspectedRegistry, KeepsItsTextsWhenTheInterfaceIsGone) {
  zeb_.Register("A passing interface", "Method", "Proc");
  std::uint32_t count = 0;
  ZEBInspectedProc* records = zeb_.inspect.NewProcSnapshot(&count);
  zeb_.frame.UnregisterInterface("A passing interface");
  ForgetRecentAtoms(zeb_);
  EXPECT_THAT(zeb_.Atoms(), Not(Contains(::testing::Key("A passing interface"))));
  EXPECT_STREQ(records[0].interfaceName, "A passing interface");
  EXPECT_STREQ(records[0].methodName, "Method");
  zeb_.inspect.DeleteSnapshot(records);
}

TEST_F(InspectedRegistry, MovesNoEventOfTheLibrary) {
  const AtomEvents events = AtomEventsOf(zeb_, [&] {
    zeb_.InspectedProcs();
    zeb_.Atoms();
    zeb_.Objects();
    zeb_.Explain("no such interface", "no such method", "no such proc");
  });
  EXPECT_EQ(events, AtomEvents());
}

TEST_F(InspectedRegistry, IsOfNoUseToTheRest) {
  zeb_.frame.UnregisterInterface("ZEBInspectInterface");
  EXPECT_EQ(
      zeb_.getProcAddress("ZEBInspectInterface", "DeleteSnapshot", "ZEBInspectDeleteSnapshotProc"),
      nullptr);
  MakeNewAtoms(zeb_, 3);
  ZEBContainer* container = zeb_.NewEmpty();
  zeb_.container.Release(container);
  zeb_.Stop();
  const InspectedLibrary again;
  EXPECT_FALSE(again.InspectedProcs().empty());
}

TEST_F(Inspection, AnswersANullCountWithNull) {
  EXPECT_EQ(zeb_.inspect.NewProcSnapshot(nullptr), nullptr);
  EXPECT_EQ(zeb_.inspect.NewAtomSnapshot(nullptr), nullptr);
  EXPECT_EQ(zeb_.inspect.NewObjectSnapshot(nullptr), nullptr);
  zeb_.inspect.DeleteSnapshot(nullptr);
}

using InspectedAtoms = Inspection;

TEST_F(InspectedAtoms, ShowTheirReferences) {
  ZEBString* atom = zeb_.string.NewStringAtom("a held atom");
  ForgetRecentAtoms(zeb_);
  EXPECT_EQ(zeb_.Atoms().at("a held atom"), 1u);
  zeb_.string.AddRef(atom);
  EXPECT_EQ(zeb_.string.NewStringAtom("a held atom"), atom);
  EXPECT_EQ(zeb_.Atoms().at("a held atom"), 3u);
  for (int i = 0; i < 3; ++i) zeb_.string.DeleteStringAtom(atom);
  EXPECT_THAT(zeb_.Atoms(), Not(Contains(::testing::Key("a held atom"))));
}

TEST_F(InspectedAtoms, CountTheLibrarysOwnReferences) {
  ZEBString* atom = zeb_.string.NewStringAtom("a recent atom");
  EXPECT_EQ(zeb_.Atoms().at("a recent atom"), 2u);  // the maker's and the ring's
  zeb_.string.DeleteStringAtom(atom);
  EXPECT_EQ(zeb_.Atoms().at("a recent atom"), 1u);
}

TEST_F(InspectedAtoms, AreThoseOfTheRegistryToo) {
  const auto atoms = zeb_.Atoms();
  for (const ProcRow& row : kProcRows) {
    EXPECT_THAT(atoms, Contains(::testing::Key(row.interfaceName)));
    EXPECT_THAT(atoms, Contains(::testing::Key(row.procName)));
  }
}

TEST_F(InspectedAtoms, AreSortedByTextAndKnowTheirLength) {
  ZEBString* atoms[] = {zeb_.string.NewStringAtom("\xFFlast"), zeb_.string.NewStringAtom(""),
                        zeb_.string.NewStringAtom("m")};
  std::uint32_t count = 0;
  ZEBInspectedAtom* records = zeb_.inspect.NewAtomSnapshot(&count);
  ASSERT_GT(count, 3u);
  for (std::uint32_t i = 0; i < count; ++i) {
    EXPECT_EQ(records[i].length, std::string(records[i].text).size());
    EXPECT_EQ(records[i].reserved, 0u);
    EXPECT_GT(records[i].references, 0u);
    if (i > 0) {
      EXPECT_LT(std::string(records[i - 1].text), records[i].text);
    }
  }
  EXPECT_STREQ(records[0].text, "");
  EXPECT_STREQ(records[count - 1].text, "\xFFlast");
  zeb_.inspect.DeleteSnapshot(records);
  for (ZEBString* atom : atoms) zeb_.string.DeleteStringAtom(atom);
}

TEST_F(InspectedAtoms, MayBeThousands) {
  std::vector<ZEBString*> held;
  for (int i = 0; i < 5000; ++i) {
    held.push_back(zeb_.string.NewStringAtom(("held " + std::to_string(i)).c_str()));
  }
  const auto atoms = zeb_.Atoms();
  for (int i = 0; i < 5000; ++i) {
    EXPECT_GE(atoms.at("held " + std::to_string(i)), 1u);
  }
  for (ZEBString* atom : held) zeb_.string.DeleteStringAtom(atom);
}

using InspectedObjects = Inspection;

TEST_F(InspectedObjects, StandInAnOrderThatLastsForEver) {
  std::uint32_t count = 0;
  ZEBInspectedKind* records = zeb_.inspect.NewObjectSnapshot(&count);
  std::vector<std::string> kinds;
  for (std::uint32_t i = 0; i < count; ++i) kinds.emplace_back(records[i].kind);
  zeb_.inspect.DeleteSnapshot(records);
  ASSERT_GE(kinds.size(), 13u);
  kinds.resize(13);  // later ones are added behind
  EXPECT_THAT(kinds, ElementsAre("proc", "atom", "error", "event counter", "container", "instance",
                                 "interface method", "shared buffer", "progress", "stream",
                                 "cache identifier", "cache set", "data sink"));
}

TEST_F(InspectedObjects, AgreeWithTheSnapshots) {
  EXPECT_EQ(zeb_.Objects("proc").live, zeb_.InspectedProcs().size());
  EXPECT_EQ(zeb_.Objects("atom").live, zeb_.Atoms().size());
  EXPECT_EQ(zeb_.Objects("event counter").live, Snapshot(zeb_).size());
}

TEST_F(InspectedObjects, AreNoneAtTheStartButTheLibrarysOwn) {
  EXPECT_EQ(zeb_.Objects("error"), (LiveCount{5, 0}));  // the standard errors
  EXPECT_EQ(zeb_.Objects("event counter"), (LiveCount{20, 0}));
  for (const char* kind :
       {"container", "instance", "interface method", "shared buffer", "progress"}) {
    const LiveCount count = zeb_.Objects(kind);
    EXPECT_EQ(count.live, count.kept) << kind;  // other tests may have left recycled ones
  }
}

TEST_F(InspectedObjects, CountErrors) {
  ZEBErrorObject* error = zeb_.error.NewError("message", "component", 1, nullptr, nullptr);
  zeb_.error.AddRef(error);
  EXPECT_EQ(zeb_.Objects("error").live, 6u);
  zeb_.error.Release(error);
  EXPECT_EQ(zeb_.Objects("error").live, 6u);
  zeb_.error.Release(error);
  EXPECT_EQ(zeb_.Objects("error").live, 5u);
}

TEST_F(InspectedObjects, CountEventCounters) {
  ZEBEventCounter* counter = zeb_.event.NewEventCounter("counter", 1);
  EXPECT_EQ(zeb_.Objects("event counter").live, 21u);
  zeb_.event.DeleteEventCounter(counter);
  EXPECT_EQ(zeb_.Objects("event counter").live, 20u);
}

TEST_F(InspectedObjects, CountContainersWithTheirParts) {
  const auto before = zeb_.Objects();
  ZEBContainer* container = zeb_.NewEmpty();
  Data data[2];
  for (const char* name : {"a", "b", "c"}) {
    EXPECT_EQ(zeb_.Outcome(zeb_.container.RegisterInterface(container, zeb_.Name(name))), kSuccess);
  }
  for (Data& it : data) {
    EXPECT_EQ(zeb_.Outcome(zeb_.container.RegisterInstance(container, &it, zeb_.Name("instance"),
                                                           &Data::Destroy)),
              kSuccess);
  }
  const auto during = zeb_.Objects();
  EXPECT_EQ(during.at("container").live, before.at("container").live + 1);
  EXPECT_EQ(during.at("interface method").live, before.at("interface method").live + 3);
  EXPECT_EQ(during.at("instance").live, before.at("instance").live + 2);
  zeb_.container.Release(container);
  for (const char* kind : {"container", "interface method", "instance"}) {
    EXPECT_EQ(zeb_.Objects(kind), before.at(kind)) << kind;
  }
}

TEST_F(InspectedObjects, TellRecycledContainersFromThoseInUse) {
  const auto inUse = [&] {
    const LiveCount count = zeb_.Objects("container");
    return count.live - count.kept;
  };
  const std::uint64_t before = inUse();
  Data data;
  ZEBContainer* container = zeb_.NewFull(&data);
  EXPECT_EQ(inUse(), before + 1);
  const LiveCount held = zeb_.Objects("container");
  zeb_.container.Release(container);
  EXPECT_EQ(zeb_.Objects("container"), (LiveCount{held.live, held.kept + 1}));
  EXPECT_EQ(inUse(), before);
  zeb_.DrainRecycled();
  EXPECT_EQ(zeb_.Objects("container").kept, 0u);
}

TEST_F(InspectedObjects, CountHundredsOverManyPages) {
  const LiveCount before = zeb_.Objects("shared buffer");
  std::vector<ZEBSharedBuffer*> buffers;
  for (int i = 0; i < 300; ++i) {
    buffers.push_back(zeb_.buffer.NewBuffer(16, nullptr, nullptr, nullptr, nullptr));
  }
  EXPECT_EQ(zeb_.Objects("shared buffer").live, before.live + 300);
  for (std::size_t i = 0; i < buffers.size(); i += 2) zeb_.buffer.Release(buffers[i]);
  EXPECT_EQ(zeb_.Objects("shared buffer").live, before.live + 150);
  for (std::size_t i = 1; i < buffers.size(); i += 2) zeb_.buffer.Release(buffers[i]);
  EXPECT_EQ(zeb_.Objects("shared buffer"), before);
}

TEST_F(InspectedObjects, CountProgressObjectsOfBothKinds) {
  ZEBProgress* null = zeb_.progress.NewNullProgress();
  ZEBProgress* client = zeb_.progress.NewClientProgress(
      nullptr, [](void*, std::uint64_t, std::uint64_t) { return 0; }, [](void*) {});
  EXPECT_EQ(zeb_.Objects("progress").live, 2u);
  zeb_.progress.Release(client);
  zeb_.progress.Release(null);
  EXPECT_EQ(zeb_.Objects("progress").live, 0u);
}

TEST_F(InspectedObjects, CountStreams) {
  ZEBStreamFactoryProcs streams{};
  ASSERT_EQ(ZEBFetchStreamFactoryProcs(zeb_.getProcAddress, &streams), 1);
  const std::uint64_t before = zeb_.Objects("stream").live;
  ZEBContainer* stream = nullptr;
  EXPECT_EQ(zeb_.Outcome(streams.NewPositionableMemoryStream(&stream)), kSuccess);
  EXPECT_EQ(zeb_.Objects("stream").live, before + 1);
  ZEBContainer* none = nullptr;
  EXPECT_NE(zeb_.Outcome(streams.NewPositionableFileStream(&none, "no/such/file", "r")), kSuccess);
  EXPECT_EQ(zeb_.Objects("stream").live, before + 1);
  zeb_.container.Release(stream);
  EXPECT_EQ(zeb_.Objects("stream").live, before);
}

TEST_F(InspectedObjects, CountCacheIdentifiersAndSets) {
  ZEBCacheProcs cache{};
  ASSERT_EQ(ZEBFetchCacheProcs(zeb_.getProcAddress, &cache), 1);
  const auto before = zeb_.Objects();
  ZEBCacheID* id = cache.NewCacheID();
  ZEBCacheSet* set = cache.NewCacheSet([](void*, void*) { return 0; });
  cache.AddRefCacheSet(set);
  EXPECT_EQ(zeb_.Objects("cache identifier").live, before.at("cache identifier").live + 1);
  EXPECT_EQ(zeb_.Objects("cache set").live, before.at("cache set").live + 1);
  cache.DeleteCacheSet(set);
  cache.Release(id);
  EXPECT_EQ(zeb_.Objects("cache identifier"), before.at("cache identifier"));
  EXPECT_EQ(zeb_.Objects("cache set"), before.at("cache set"));
}

TEST_F(InspectedObjects, CountTheMembersOfAChain) {
  ZEBFilterProcs filters{};
  ASSERT_EQ(ZEBFetchFilterProcs(zeb_.getProcAddress, &filters), 1);
  const std::uint64_t before = zeb_.Objects("data sink").live;
  ZEBDataSink* sink = nullptr;
  ZEBDataSink* filter = nullptr;
  EXPECT_EQ(zeb_.Outcome(filters.NewNullDataSink(&sink)), kSuccess);
  EXPECT_EQ(zeb_.Outcome(filters.NewIdentityFilter(&filter, sink)), kSuccess);
  EXPECT_EQ(zeb_.Outcome(filters.AddRef(filter)), kSuccess);
  EXPECT_EQ(zeb_.Objects("data sink").live, before + 2);
  filters.Release(filter);
  EXPECT_EQ(zeb_.Objects("data sink").live, before);
}

TEST_F(InspectedObjects, KnowTheAtomsThatOnlyTheRingKeeps) {
  ForgetRecentAtoms(zeb_);
  EXPECT_EQ(zeb_.Objects("atom").kept, 64u);
  ZEBString* atom = zeb_.string.NewStringAtom("held and recent");
  EXPECT_EQ(zeb_.Objects("atom").kept, 63u);
  zeb_.string.DeleteStringAtom(atom);
  EXPECT_EQ(zeb_.Objects("atom").kept, 64u);
}

}  // namespace
}  // namespace contract
