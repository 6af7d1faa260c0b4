// What happens when the cache grows: the marks, the thread, the host's request, stopping.

#include <dirent.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <thread>
#include <vector>

#include "contract/cache_library.h"

namespace contract {
namespace {

using ::testing::ElementsAre;

constexpr std::int64_t kHigh = 2000000;
constexpr std::int64_t kLow = 1500000;

std::atomic<int> deletions{0};
std::atomic<int> deletionsElsewhere{0};
std::thread::id callersThread;
void CountWhere(void* data, std::int32_t survives) {
  ++(std::this_thread::get_id() == callersThread ? deletions : deletionsElsewhere);
  Result::Delete(data, survives);
}

unsigned ThreadsOfProcess() {
  unsigned threads = 0;
  DIR* tasks = opendir("/proc/self/task");
  if (tasks == nullptr) return 0;
  while (const dirent* task = readdir(tasks)) threads += task->d_name[0] != '.' ? 1 : 0;
  closedir(tasks);
  return threads;
}

class AutomaticPurge : public CacheTest {
 protected:
  explicit AutomaticPurge(const StartOptions& options = SingleThreaded()) : CacheTest(options) {
    callersThread = std::this_thread::get_id();
    deletions = 0;
    deletionsElsewhere = 0;
  }

  void TearDown() override {
    for (ZEBCacheID* id : ids_) cache_.Release(id);
    CacheTest::TearDown();
  }

  static StartOptions SingleThreaded() { return Host::WithObjectProcs(Reports::Told()); }
  static StartOptions MultiThreaded() {
    StartOptions options = SingleThreaded();
    options.flags = ZEB_FLAG_MULTI_THREADED;
    return options;
  }

  ZEBCacheID* Add(std::uint64_t size) {
    ZEBCacheID* id = cache_.NewCacheID();
    cache_.Attach(&id, &results_.emplace_back(), nullptr, size, CountWhere, nullptr);
    ids_.push_back(id);
    return id;
  }

  // As soon as the purge thread has purged.
  void AwaitTotal(std::int64_t most) {
    while (zeb_.Total() > most) std::this_thread::yield();
  }

  std::deque<Result> results_;
  std::vector<ZEBCacheID*> ids_;
};

TEST_F(AutomaticPurge, LeavesTheHighWaterMarkAlone) {
  for (int i = 0; i < 20; ++i) Add(kHigh / 20);
  EXPECT_EQ(zeb_.Total(), kHigh);
  EXPECT_EQ(deletions, 0);
}

TEST_F(AutomaticPurge, BeginsOneAboveIt) {
  for (int i = 0; i < 20; ++i) Add(kHigh / 20);
  cache_.Add(ids_[0], 1, nullptr);
  EXPECT_EQ(zeb_.Total(), kLow);  // the one that grew is the oldest
  EXPECT_EQ(deletions, 5);
  EXPECT_EQ(deletionsElsewhere, 0);  // the host said that it has one thread
}

TEST_F(AutomaticPurge, StopsAtTheLowWaterMark) {
  for (int i = 0; i < 5; ++i) Add(500000);  // 2500000 at the last one, two must go
  EXPECT_EQ(zeb_.Total(), kLow);
  EXPECT_EQ(deletions, 2);
}

TEST_F(AutomaticPurge, FollowsUpdateCost) {
  Add(kHigh);
  EXPECT_EQ(deletions, 0);
  cache_.UpdateCost(ids_[0], 1, nullptr);
  EXPECT_EQ(deletions, 1);
  EXPECT_EQ(zeb_.Total(), 0);
}

TEST_F(AutomaticPurge, GivesTheAttachedDataBackEvenWhenItIsEvictedAtOnce) {
  Result result;
  ZEBCacheID* id = cache_.NewCacheID();
  EXPECT_EQ(cache_.Attach(&id, &result, nullptr, kHigh + 1, CountWhere, nullptr), &result);
  EXPECT_EQ(result.evicted, 1);
  cache_.Release(id);
}

TEST_F(AutomaticPurge, LeavesThePinned) {
  ZEBCacheID* id = Add(kHigh);
  cache_.MarkNoPurge(id, nullptr, 0);
  cache_.Add(id, 1000, nullptr);
  EXPECT_EQ(zeb_.Total(), kHigh + 1000);
  cache_.MarkPurge(id);
  EXPECT_EQ(zeb_.Total(), kHigh + 1000);  // only growing triggers it
  cache_.UpdateCost(id, 0, nullptr);
  EXPECT_EQ(zeb_.Total(), 0);
}

TEST_F(AutomaticPurge, ReturnsAtOnceWhileAnotherGoesOn) {
  Add(kHigh);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  Add(1000);
  EXPECT_EQ(zeb_.Total(), kHigh + 1000);
  cache_.DeleteCachePurge(purge);
  Add(1);
  EXPECT_LE(zeb_.Total(), kLow);
}

TEST_F(AutomaticPurge, LeavesNoActivePurgeBehind) {
  for (int i = 0; i < 5; ++i) Add(500000);
  ZEBCachePurge* purge = cache_.NewCachePurge();
  EXPECT_NE(purge, nullptr);
  cache_.DeleteCachePurge(purge);
}

// ---- On a thread.

class PurgeThread : public AutomaticPurge {
 protected:
  // A sanitizer adds a thread of its own with the first one that is made: it is there before
  // threads are counted.
  PurgeThread() : AutomaticPurge(MultiThreaded()) {
    std::thread([] {}).join();
  }
};

TEST_F(PurgeThread, PurgesInsteadOfTheCaller) {
  for (int i = 0; i < 5; ++i) Add(500000);
  AwaitTotal(kLow);
  zeb_.Stop();  // waits for the thread
  EXPECT_EQ(deletions, 0);
  EXPECT_EQ(deletionsElsewhere, 2);
  ASSERT_NE(Start(MultiThreaded()), nullptr);
}

TEST_F(PurgeThread, IsOnlyThereToPurge) {
  const unsigned before = ThreadsOfProcess();
  for (int i = 0; i < 4; ++i) Add(500000);
  EXPECT_EQ(ThreadsOfProcess(), before);
  Add(1);
  AwaitTotal(kLow);
  while (ThreadsOfProcess() != before) std::this_thread::yield();  // it ends by itself
}

TEST_F(PurgeThread, IsGoneWhenTheLibraryHasStopped) {
  for (int round = 0; round < 20; ++round) {
    const unsigned before = ThreadsOfProcess();
    for (int i = 0; i < 5; ++i) Add(500000);
    zeb_.Stop();
    // A joined thread may be listed for a moment longer.
    while (ThreadsOfProcess() > before) std::this_thread::yield();
    EXPECT_EQ(zeb_.Total(), kLow);
    for (ZEBCacheID* id : ids_) cache_.Release(id);
    ids_.clear();
    ASSERT_NE(Start(MultiThreaded()), nullptr);
  }
}

TEST_F(PurgeThread, IsNotWantedWhileClientsPurgeOnTheirOwn) {
  const auto purge = [](void* value) { return value; };
  cache_.AddClientPurge(purge, 0);
  cache_.AddClientPurge(purge, 1);
  for (int i = 0; i < 5; ++i) Add(500000);
  EXPECT_EQ(zeb_.Total(), kLow);
  EXPECT_EQ(deletions, 2);
  EXPECT_EQ(deletionsElsewhere, 0);
  cache_.RemoveClientPurge(purge, 1);
  cache_.RemoveClientPurge(purge, 0);
  for (int i = 0; i < 2; ++i) Add(500000);
  AwaitTotal(kLow);
  zeb_.Stop();
  EXPECT_EQ(deletions, 2);
  EXPECT_GT(deletionsElsewhere, 0);
  ASSERT_NE(Start(MultiThreaded()), nullptr);
}

TEST_F(PurgeThread, IsWantedBesideClientPurgesThatAllowIt) {
  const auto purge = [](void* value) { return value; };
  cache_.AddClientPurge(purge, 1);
  for (int i = 0; i < 5; ++i) Add(500000);
  AwaitTotal(kLow);
  EXPECT_EQ(deletions, 0);
  cache_.RemoveClientPurge(purge, 1);
}

std::atomic<int> threadDeletionsBegun{0};
std::atomic<bool> threadMayGoOn{false};
void WaitInDeletion(void* data, std::int32_t survives) {
  ++threadDeletionsBegun;
  while (!threadMayGoOn) std::this_thread::yield();
  Result::Delete(data, survives);
}

TEST_F(PurgeThread, IsWaitedForByTheStop) {
  threadDeletionsBegun = 0;
  threadMayGoOn = false;
  Result result;
  ZEBCacheID* id = cache_.NewCacheID();
  cache_.Attach(&id, &result, nullptr, kHigh + 1, WaitInDeletion, nullptr);
  while (threadDeletionsBegun == 0) std::this_thread::yield();
  std::thread helper([] { threadMayGoOn = true; });
  zeb_.Stop();
  EXPECT_EQ(result.evicted, 1);
  helper.join();
  cache_.Release(id);
  ASSERT_NE(Start(MultiThreaded()), nullptr);
}

TEST_F(PurgeThread, PurgesAgainWhatGrowsWhileItPurges) {
  for (int i = 0; i < 200; ++i) Add(100000);
  AwaitTotal(kHigh);
  Add(1);
  AwaitTotal(kHigh);
}

TEST_F(PurgeThread, IsDoneWithoutWhenTheSystemHasNone) {
  pthread_attr_t before;
  pthread_attr_t huge;
  ASSERT_EQ(pthread_getattr_default_np(&before), 0);
  ASSERT_EQ(pthread_getattr_default_np(&huge), 0);
  pthread_attr_setstacksize(&huge, std::size_t{1} << 48);  // no address space has room for it
  ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
  for (int i = 0; i < 5; ++i) Add(500000);
  EXPECT_EQ(zeb_.Total(), kLow);
  EXPECT_EQ(deletions, 2);
  pthread_setattr_default_np(&before);
  pthread_attr_destroy(&huge);
  pthread_attr_destroy(&before);
}

// ---- The host's request instead.

std::vector<std::int64_t> requests;
bool requestThrows = false;
void Request(std::int64_t newTotal) {
  requests.push_back(newTotal);
  if (requestThrows) throw HostException();
}

class HostPurge : public AutomaticPurge {
 protected:
  HostPurge() : AutomaticPurge(Options()) {
    requests.clear();
    requestThrows = false;
  }
  static StartOptions Options() {
    StartOptions options = MultiThreaded();
    options.purgeRequest = Request;
    return options;
  }
};

TEST_F(HostPurge, IsToldEveryNewTotal) {
  ZEBCacheID* id = Add(10);
  cache_.Add(id, 5, nullptr);
  cache_.UpdateCost(id, -3, nullptr);
  Result more;
  cache_.Attach(&id, &more, nullptr, 1, Result::Delete, nullptr);  // refused: no change
  EXPECT_THAT(requests, ElementsAre(10, 15, 12));
}

TEST_F(HostPurge, ReplacesTheLibrarys) {
  Add(kHigh * 2);
  EXPECT_THAT(requests, ElementsAre(kHigh * 2));
  EXPECT_EQ(zeb_.Total(), kHigh * 2);
  EXPECT_EQ(deletions + deletionsElsewhere, 0);
}

TEST_F(HostPurge, MayThrow) {
  requestThrows = true;
  Result result;
  ZEBCacheID* id = cache_.NewCacheID();
  EXPECT_EQ(cache_.Attach(&id, &result, nullptr, 7, Result::Delete, nullptr), &result);
  EXPECT_EQ(zeb_.Total(), 7);
  cache_.Release(id);
  EXPECT_EQ(result.gone, 1);
}

// ---- Purging when memory is short.

TEST_F(AutomaticPurge, IsPutOffWhenThereIsNoMemoryToSort) {
  for (int i = 0; i < 4; ++i) Add(500000);
  ZEBCacheID* last = cache_.NewCacheID();
  ids_.push_back(last);
  Result& result = results_.emplace_back();
  Host::FailAt(1, true);
  EXPECT_EQ(cache_.Attach(&last, &result, nullptr, 1, CountWhere, nullptr), &result);
  EXPECT_EQ(cache_.NewCachePurge(), nullptr);
  cache_.PurgeAll();
  Host::StopFailing();
  EXPECT_EQ(zeb_.Total(), kHigh + 1);
  EXPECT_EQ(deletions, 0);
  cache_.Add(last, 1, nullptr);
  EXPECT_LE(zeb_.Total(), kLow);
}

}  // namespace
}  // namespace contract
