// Client purges, and the caches of the library's own that are emptied with them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "contract/cache_library.h"
#include "contract/event_totals.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> calls;
const ZEBCacheProcs* running = nullptr;

void* Plus(void* value, std::uintptr_t more) {
  return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(value) + more);
}
void Note(const char* name, void* value) {
  calls.push_back(name + std::to_string(reinterpret_cast<std::uintptr_t>(value)));
}
void* PurgeA(void* value) {
  Note("A", value);
  return Plus(value, 1);
}
void* PurgeB(void* value) {
  Note("B", value);
  return Plus(value, 10);
}
void* PurgeThrowing(void* value) {
  Note("T", value);
  throw HostException();
}
void* PurgeRemovingItself(void* value) {
  Note("R", value);
  running->RemoveClientPurge(PurgeRemovingItself, 1);
  running->RemoveClientPurge(PurgeA, 1);
  running->AddClientPurge(PurgeB, 1);
  return value;
}

class ClientPurges : public CacheTest {
 protected:
  ClientPurges() {
    running = &cache_;
    calls.clear();
  }
  std::vector<std::string> CallsOf(std::uintptr_t value) {
    calls.clear();
    cache_.PurgeAllStaticCaches(Plus(nullptr, value));
    return calls;
  }
};

TEST_F(ClientPurges, AreCalledLatestFirstEachWithTheAnswerBefore) {
  cache_.AddClientPurge(PurgeA, 1);
  cache_.AddClientPurge(PurgeB, 0);
  EXPECT_THAT(CallsOf(100), ElementsAre("B100", "A110"));
  EXPECT_THAT(CallsOf(0), ElementsAre("B0", "A10"));
}

TEST_F(ClientPurges, AreRemovedOneByOneTheLatestFirst) {
  cache_.AddClientPurge(PurgeA, 1);
  cache_.AddClientPurge(PurgeB, 1);
  cache_.AddClientPurge(PurgeA, 1);
  cache_.RemoveClientPurge(PurgeA, 1);
  EXPECT_THAT(CallsOf(0), ElementsAre("B0", "A10"));
  cache_.RemoveClientPurge(PurgeA, 1);
  EXPECT_THAT(CallsOf(0), ElementsAre("B0"));
  cache_.RemoveClientPurge(PurgeA, 1);
  cache_.RemoveClientPurge(PurgeB, 1);
  EXPECT_THAT(CallsOf(0), IsEmpty());
}

TEST_F(ClientPurges, AreKeptByTheOlderProcsToo) {
  zeb_.olderCache.AddClientPurgeV1(PurgeA);
  EXPECT_THAT(CallsOf(3), ElementsAre("A3"));
  zeb_.olderCache.RemoveClientPurgeV1(PurgeA);
  EXPECT_THAT(CallsOf(3), IsEmpty());
}

TEST_F(ClientPurges, PassOnTheValueWhenOneThrows) {
  cache_.AddClientPurge(PurgeA, 1);
  cache_.AddClientPurge(PurgeThrowing, 1);
  cache_.AddClientPurge(PurgeB, 1);
  EXPECT_THAT(CallsOf(0), ElementsAre("B0", "T10", "A10"));
}

TEST_F(ClientPurges, MayChangeTheListMeanwhile) {
  cache_.AddClientPurge(PurgeA, 1);
  cache_.AddClientPurge(PurgeRemovingItself, 1);
  EXPECT_THAT(CallsOf(5), ElementsAre("R5"));  // A is gone, the new B waits for the next time
  EXPECT_THAT(CallsOf(5), ElementsAre("B5"));
}

TEST_F(ClientPurges, IgnoreNull) {
  cache_.AddClientPurge(nullptr, 0);
  cache_.RemoveClientPurge(nullptr, 0);
  zeb_.olderCache.AddClientPurgeV1(nullptr);
  zeb_.olderCache.RemoveClientPurgeV1(nullptr);
  EXPECT_THAT(CallsOf(0), IsEmpty());
}

TEST_F(ClientPurges, GoWithTheLibrary) {
  cache_.AddClientPurge(PurgeA, 0);
  zeb_.Stop();
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  CacheLibrary again(Host::WithObjectProcs());
  calls.clear();
  again.cache.PurgeAllStaticCaches(nullptr);
  EXPECT_THAT(calls, IsEmpty());
  zeb_.cache = again.cache;
  again.Stop();
  ASSERT_NE(Start(Host::WithObjectProcs(Reports::Told())), nullptr);  // for the end of the test
}

TEST_F(ClientPurges, ComeBeforeTheLibrarysOwnCaches) {
  ZEBContainerProcs container{};
  ASSERT_EQ(ZEBFetchContainerProcs(zeb_.getProcAddress, &container), 1);
  ZEBString* name = zeb_.string.NewStringAtom("name");
  std::vector<ZEBContainer*> made(32);
  for (ZEBContainer*& one : made) {
    ASSERT_EQ(container.NewFullContainer(&one, nullptr, name, nullptr, name, nullptr, nullptr, 0),
              nullptr);
  }
  for (ZEBContainer* one : made) container.Release(one);
  zeb_.string.DeleteStringAtom(name);
  cache_.PurgeAllStaticCaches(nullptr);
  const std::uint64_t without = Host::LiveBlocks();
  ZEBContainer* recycled = nullptr;
  name = zeb_.string.NewStringAtom("name");
  container.NewFullContainer(&recycled, nullptr, name, nullptr, name, nullptr, nullptr, 0);
  container.Release(recycled);
  zeb_.string.DeleteStringAtom(name);
  EXPECT_GT(Host::LiveBlocks(), without);
  cache_.PurgeAllStaticCaches(nullptr);
  EXPECT_EQ(Host::LiveBlocks(), without);
}

TEST_F(ClientPurges, ForgetRecentAtoms) {
  cache_.PurgeAllStaticCaches(nullptr);
  const std::uint64_t without = Host::LiveBlocks();
  MakeNewAtoms(zeb_, 10);
  EXPECT_EQ(Host::LiveBlocks(), without + 10);
  ZEBString* held = zeb_.string.NewStringAtom("held");
  cache_.PurgeAllStaticCaches(nullptr);
  EXPECT_EQ(Host::LiveBlocks(), without + 1);
  EXPECT_STREQ(zeb_.string.GetCString(held), "held");
  ZEBString* again = zeb_.string.NewStringAtom("held");
  EXPECT_EQ(again, held);
  zeb_.string.DeleteStringAtom(again);
  zeb_.string.DeleteStringAtom(held);
  cache_.PurgeAllStaticCaches(nullptr);
  EXPECT_EQ(Host::LiveBlocks(), without);
  MakeNewAtoms(zeb_, 64);  // the ring goes on as before
  EXPECT_EQ(Host::LiveBlocks(), without + 64);
}

}  // namespace
}  // namespace contract
