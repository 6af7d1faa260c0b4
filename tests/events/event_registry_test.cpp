#include "events/event_registry.h"

#include <gtest/gtest.h>

#include <thread>

#include "base/library_counters.h"
#include "events/event_binding.h"
#include "events/event_service.h"
#include "registry/proc_registry.h"
#include "support/started_library.h"

namespace zeb::events {
namespace {

using test::CountingHost;
using test::StartedLibrary;

class EventRegistryTest : public testing::Test {
 protected:
  void SetUp() override {
    const ZEBProcRequest requests[] = {ZEB_EVENT_PROCS(ZEB_PROC_REQUEST)};
    ZEBProc found[std::size(requests)];
    ASSERT_TRUE(registry::findAll(requests, ZEB_EVENT_INTERFACE, found));
    std::memcpy(&procs_, found, sizeof procs_);
  }

  std::vector<ZEBEventRecord> snapshot() {
    uint32_t count = 0;
    ZEBEventRecord* records = procs_.NewEventSnapshot(&count);
    std::vector<ZEBEventRecord> copy(records, records + count);
    procs_.DeleteEventSnapshot(records);
    return copy;
  }

  StartedLibrary library_;
  ZEBEventProcs procs_{};
};

TEST_F(EventRegistryTest, SumsWhatIsSignalled) {
  ZEBEventCounter* counter = procs_.NewEventCounter("mine", 7);
  for (const uint64_t amount : {1u, 1u, 1u, 5u}) procs_.SignalEventCounter(counter, amount);
  const ZEBEventRecord record = snapshot().front();
  EXPECT_EQ(record.total, 8);
  EXPECT_STREQ(record.name, "mine");
  EXPECT_EQ(record.criticality, 7);
  EXPECT_EQ(record.reserved, 0);
  procs_.DeleteEventCounter(counter);
}

TEST_F(EventRegistryTest, PutsTheLatestCounterFirst) {
  ZEBEventCounter* older = procs_.NewEventCounter("older", 1);
  ZEBEventCounter* newer = procs_.NewEventCounter("newer", 2);
  const auto records = snapshot();
  EXPECT_STREQ(records[0].name, "newer");
  EXPECT_STREQ(records[1].name, "older");
  procs_.DeleteEventCounter(older);
  EXPECT_STREQ(snapshot()[0].name, "newer");
  procs_.DeleteEventCounter(newer);
  EXPECT_STREQ(snapshot()[0].name, "ZEB memory allocation");
}

TEST_F(EventRegistryTest, ShowsANameThatItsOwnerChanges) {
  char name[] = "before";
  ZEBEventCounter* counter = procs_.NewEventCounter(name, 1);
  EXPECT_STREQ(snapshot()[0].name, "before");
  std::memcpy(name, "after!", sizeof name);
  EXPECT_STREQ(snapshot()[0].name, "after!");
  procs_.DeleteEventCounter(counter);
}

TEST_F(EventRegistryTest, IgnoresNullEverywhere) {
  EXPECT_EQ(procs_.NewEventCounter(nullptr, 1), nullptr);
  EXPECT_EQ(procs_.NewEventSnapshot(nullptr), nullptr);
  procs_.DeleteEventCounter(nullptr);
  procs_.SignalEventCounter(nullptr, 1);
  procs_.DeleteEventSnapshot(nullptr);
}

TEST_F(EventRegistryTest, AnswersNullWhenMemoryIsShort) {
  CountingHost::failAllocation(1);
  EXPECT_EQ(procs_.NewEventCounter("none", 1), nullptr);
  CountingHost::failAllocation(1);
  uint32_t count = 99;
  EXPECT_EQ(procs_.NewEventSnapshot(&count), nullptr);
  EXPECT_EQ(count, 0u);
}

TEST_F(EventRegistryTest, LosesNoSignalOfManyThreads) {
  constexpr unsigned kThreads = 24;  // more than have a cell of their own
  constexpr unsigned kSignals = 4000;
  ZEBEventCounter* counter = procs_.NewEventCounter("contended", 1);
  std::atomic<unsigned> ready{0};
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      for (unsigned i = 0; i < kSignals; ++i) procs_.SignalEventCounter(counter, 3);
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(snapshot()[0].total, int64_t{3} * kThreads * kSignals);
  procs_.DeleteEventCounter(counter);
}

TEST_F(EventRegistryTest, TakesSnapshotsWhileCountersComeAndGo) {
  std::atomic<bool> done{false};
  std::thread maker([&] {
    while (!done) {
      ZEBEventCounter* counter = procs_.NewEventCounter("passing", 1);
      procs_.SignalEventCounter(counter, 1);
      procs_.DeleteEventCounter(counter);
    }
  });
  for (int i = 0; i < 500; ++i) ASSERT_GE(snapshot().size(), 20u);
  done = true;
  maker.join();
  library_.stop();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

TEST_F(EventRegistryTest, ServesItsTableUnderAnotherName) {
  ASSERT_TRUE(registerEventsAs("AnotherEventInterface"));
  EXPECT_EQ(registry::find("AnotherEventInterface", "NewEventCounter", "ZEBNewEventCounterProc"),
            reinterpret_cast<ZEBProc>(procs_.NewEventCounter));
  EXPECT_FALSE(registerEventsAs("AnotherEventInterface"));
}

TEST_F(EventRegistryTest, RegistersTheLibrarysCountersBetweenStartAndStop) {
  EXPECT_TRUE(counters::atomFound.registered());
  EXPECT_EQ(snapshot().size(), 20u);
  library_.stop();
  EXPECT_FALSE(counters::atomFound.registered());
}

TEST_F(EventRegistryTest, StartsTotalsAnewAfterARestart) {
  counters::cacheEviction.signal(5);
  EXPECT_EQ(test::totalOf(counters::cacheEviction), 5);
  library_.stop();
  counters::cacheEviction.signal();  // nobody counts
  const StartedLibrary again;
  EXPECT_EQ(test::totalOf(counters::cacheEviction), 0);
}

// A host's event service, which stands in for the library's.
struct HostEvents {
  static inline int made = 0;
  static inline int deleted = 0;
  static inline std::vector<uint64_t> amounts;

  static ZEBEventCounter* create(const char*, int32_t) {
    static int anchor;
    ++made;
    return reinterpret_cast<ZEBEventCounter*>(&anchor);
  }
  static void destroy(ZEBEventCounter*) { ++deleted; }
  static void signal(ZEBEventCounter*, uint64_t amount) { amounts.push_back(amount); }
  static ZEBEventRecord* snapshot(uint32_t* count) {
    *count = 0;
    return nullptr;
  }
  static void deleteSnapshot(ZEBEventRecord*) {}

  static bool registerAll() {
    const ZEBEventProcs procs{create, destroy, signal, snapshot, deleteSnapshot};
    const ZEBProcRequest requests[] = {ZEB_EVENT_PROCS(ZEB_PROC_REQUEST)};
    ZEBProc functions[std::size(requests)];
    std::memcpy(functions, &procs, sizeof procs);
    for (size_t i = 0; i < std::size(requests); ++i) {
      if (!registry::add(ZEB_EVENT_INTERFACE, requests[i].methodName, requests[i].procName,
                         functions[i])) {
        return false;
      }
    }
    return true;
  }
};

TEST_F(EventRegistryTest, GivesItsCountsToAHostsEventService) {
  // A counter that registers after the host has put its own service in place.
  ZEB_T_MT::CZEBEventCounter late("late", 1);
  registry::removeInterface(ZEB_EVENT_INTERFACE);
  ASSERT_TRUE(HostEvents::registerAll());
  ASSERT_TRUE(late.initialise());
  EXPECT_EQ(HostEvents::made, 1);
  late.signal(3);
  EXPECT_EQ(HostEvents::amounts, (std::vector<uint64_t>{1, 1, 1}));
  late.terminate();
  EXPECT_EQ(HostEvents::deleted, 1);
  // What the library's own service made goes back to it.
  library_.stop();
  EXPECT_EQ(HostEvents::deleted, 1);
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

}  // namespace
}  // namespace zeb::events
