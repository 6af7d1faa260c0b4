#include "registry/proc_registry.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <thread>
#include <tuple>

#include "base/library_counters.h"
#include "registry/proc_table.h"
#include "support/started_library.h"

namespace zeb::registry {
namespace {

using test::CountingHost;
using test::StartedLibrary;
using test::totalOf;

void one() {}
void two() {}
void three() {}

class ProcRegistryTest : public testing::Test {
 protected:
  StartedLibrary library_;
};

TEST_F(ProcRegistryTest, FindsWhatWasRegistered) {
  EXPECT_TRUE(add("I", "M", "P", one));
  EXPECT_EQ(find("I", "M", "P"), one);
}

TEST_F(ProcRegistryTest, MissesAnyOtherName) {
  ASSERT_TRUE(add("I", "M", "P", one));
  EXPECT_EQ(find("I2", "M", "P"), nullptr);
  EXPECT_EQ(find("I", "M2", "P"), nullptr);
  EXPECT_EQ(find("I", "M", "P2"), nullptr);
  EXPECT_EQ(find("M", "I", "P"), nullptr);
  EXPECT_EQ(find("", "M", "P"), nullptr);
}

TEST_F(ProcRegistryTest, RefusesTheSameNamesTwiceAndKeepsTheFirst) {
  EXPECT_TRUE(add("I", "M", "P", one));
  EXPECT_FALSE(add("I", "M", "P", two));
  EXPECT_EQ(find("I", "M", "P"), one);
}

TEST_F(ProcRegistryTest, HoldsTwoVersionsOfOneMethod) {
  EXPECT_TRUE(add("I", "M", "P", one));
  EXPECT_TRUE(add("I", "M", "PV2", two));
  EXPECT_EQ(find("I", "M", "P"), one);
  EXPECT_EQ(find("I", "M", "PV2"), two);
}

TEST_F(ProcRegistryTest, TakesNullForANameOfItsOwn) {
  EXPECT_TRUE(add(nullptr, nullptr, nullptr, one));
  EXPECT_TRUE(add("", nullptr, nullptr, two));
  EXPECT_TRUE(add(nullptr, "", nullptr, three));
  EXPECT_EQ(find(nullptr, nullptr, nullptr), one);
  EXPECT_EQ(find("", nullptr, nullptr), two);
  EXPECT_EQ(find(nullptr, "", nullptr), three);
  EXPECT_EQ(find(nullptr, nullptr, ""), nullptr);
  EXPECT_FALSE(add(nullptr, nullptr, nullptr, two));
  removeInterface(nullptr);
  EXPECT_EQ(find(nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(find(nullptr, "", nullptr), nullptr);
  EXPECT_EQ(find("", nullptr, nullptr), two);
}

TEST_F(ProcRegistryTest, CannotTellANullFunctionFromAMissingOne) {
  EXPECT_TRUE(add("I", "M", "P", nullptr));
  EXPECT_EQ(find("I", "M", "P"), nullptr);
  EXPECT_FALSE(add("I", "M", "P", one));
}

TEST_F(ProcRegistryTest, MovesTheChangeCounterAlsoForAnUnknownInterface) {
  const uint32_t before = unregisterCount();
  removeInterface("nobody registered this");
  EXPECT_EQ(unregisterCount(), before + 1);
}

TEST_F(ProcRegistryTest, RemovesAnInterfaceWholeAndNoOther) {
  for (int i = 0; i < 300; ++i) {
    ASSERT_TRUE(add("Going", "M", std::to_string(i).c_str(), one));
    ASSERT_TRUE(add("Staying", "M", std::to_string(i).c_str(), two));
  }
  removeInterface("Going");
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(find("Going", "M", std::to_string(i).c_str()), nullptr);
    ASSERT_EQ(find("Staying", "M", std::to_string(i).c_str()), two);
  }
  EXPECT_TRUE(add("Going", "M", "0", three));
  EXPECT_EQ(find("Going", "M", "0"), three);
}

TEST_F(ProcRegistryTest, RegistersATableInOrderUpToTheFirstRefusal) {
  ASSERT_TRUE(add("I", "M", "second", three));
  const ZEBProcTableEntry entries[] = {
      {"M", "first", one}, {"M", "second", two}, {"M", "third", two}};
  EXPECT_FALSE(addAll(entries, "I"));
  EXPECT_EQ(find("I", "M", "first"), one);
  EXPECT_EQ(find("I", "M", "second"), three);
  EXPECT_EQ(find("I", "M", "third"), nullptr);
  EXPECT_TRUE(addAll({}, "I"));
}

TEST_F(ProcRegistryTest, FetchesInBulkUpToTheFirstMissing) {
  ASSERT_TRUE(add("I", "M", "first", one));
  ASSERT_TRUE(add("I", "M", "second", two));
  ASSERT_TRUE(add("I", "M", "fourth", three));
  const ZEBProcRequest requests[] = {
      {"M", "first"}, {"M", "second"}, {"M", "third"}, {"M", "fourth"}};
  ZEBProc procs[] = {nullptr, nullptr, three, three};
  EXPECT_FALSE(findAll(requests, "I", procs));
  EXPECT_EQ(procs[0], one);
  EXPECT_EQ(procs[1], two);
  EXPECT_EQ(procs[2], nullptr);
  EXPECT_EQ(procs[3], three);
  EXPECT_TRUE(findAll({}, "I", procs));
}

TEST_F(ProcRegistryTest, CountsThreeNamesForEachLookUp) {
  ASSERT_TRUE(add("I", "M", "P", one));
  const int64_t found = totalOf(counters::atomFound);
  const int64_t allocated = totalOf(counters::atomAllocated);
  find("I", "M", "P");
  EXPECT_EQ(totalOf(counters::atomFound), found + 3);
  find("I", "M", nullptr);
  EXPECT_EQ(totalOf(counters::atomFound), found + 5);
  find("I", "M", "a name never heard before");
  EXPECT_EQ(totalOf(counters::atomFound), found + 7);
  EXPECT_EQ(totalOf(counters::atomAllocated), allocated + 1);
  find("I", "M", "a name never heard before");  // the ring still holds it
  EXPECT_EQ(totalOf(counters::atomFound), found + 10);
  EXPECT_EQ(totalOf(counters::atomAllocated), allocated + 1);
}

TEST_F(ProcRegistryTest, FindsNothingAndKeepsNothingOnceEmptied) {
  const ZEBProc proc = one;
  ASSERT_TRUE(add("I", "M", "P", proc));
  library_.stop();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
  EXPECT_EQ(find("I", "M", "P"), nullptr);
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

TEST_F(ProcRegistryTest, AnswersAsAnOracleOfThreeTexts) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const auto name = [&] {
    std::string text(random() % 3, 'a');
    for (char& c : text) c = static_cast<char>('a' + random() % 2);
    return text;
  };
  const ZEBProc functions[] = {one, two, three};
  std::map<std::tuple<std::string, std::string, std::string>, ZEBProc> oracle;
  for (int step = 0; step < 20000; ++step) {
    const std::string i = name(), m = name(), p = name();
    const unsigned choice = static_cast<unsigned>(random() % 100);
    if (choice < 40) {
      const ZEBProc function = functions[random() % 3];
      const bool fresh = oracle.try_emplace({i, m, p}, function).second;
      ASSERT_EQ(add(i.c_str(), m.c_str(), p.c_str(), function), fresh);
    } else if (choice < 42) {
      removeInterface(i.c_str());
      std::erase_if(oracle, [&](const auto& entry) { return std::get<0>(entry.first) == i; });
    } else {
      const auto known = oracle.find({i, m, p});
      const ZEBProc expected = known != oracle.end() ? known->second : nullptr;
      ASSERT_EQ(find(i.c_str(), m.c_str(), p.c_str()), expected) << i << ' ' << m << ' ' << p;
    }
  }
}

TEST_F(ProcRegistryTest, ShowsEachEntryOnce) {
  removeEverything();
  ASSERT_TRUE(add("I", "M", "P", one));
  ASSERT_TRUE(add("I", "M", "Q", two));
  ASSERT_TRUE(add(nullptr, "", nullptr, three));
  std::map<std::string, ZEBProc> seen;
  const auto text = [](const ZEBString* name) { return name != nullptr ? name->text() : "(null)"; };
  forEachProc([&](const RegisteredProc& entry) {
    std::string names;
    for (const ZEBString* name : entry.names) names += std::string(text(name)) + "/";
    EXPECT_TRUE(seen.emplace(names, entry.proc).second) << names;
  });
  const std::map<std::string, ZEBProc> expected{
      {"I/M/P/", one}, {"I/M/Q/", two}, {"(null)//(null)/", three}};
  EXPECT_EQ(seen, expected);
  EXPECT_EQ(liveProcs().live, 3u);
}

TEST_F(ProcRegistryTest, RemembersWhatWasUnregisteredUntilItIsEmptied) {
  ASSERT_TRUE(add("I", "M", "P", one));
  EXPECT_EQ(lastUnregistration("I"), std::nullopt);
  removeInterface("I");
  EXPECT_EQ(lastUnregistration("I"), unregisterCount());
  removeInterface("J");
  EXPECT_EQ(lastUnregistration("I"), unregisterCount() - 1);
  EXPECT_EQ(lastUnregistration("J"), std::nullopt);  // there was no such interface
  removeEverything();
  EXPECT_EQ(lastUnregistration("I"), std::nullopt);
}

TEST_F(ProcRegistryTest, LeavesNothingBehindWhenMemoryIsShort) {
  for (int64_t nth = 1;; ++nth) {
    const int64_t before = CountingHost::liveBlocks;
    CountingHost::failAllocation(nth);
    const bool added = add("short", "of", "memory", one);
    const bool failed = !CountingHost::failureIsPending();
    CountingHost::stopFailing();
    ASSERT_EQ(added, !failed);
    if (added) break;
    EXPECT_EQ(find("short", "of", "memory"), nullptr);
    // The names that could be made stay in the ring; nothing else may.
    EXPECT_LE(CountingHost::liveBlocks - before, 3);
  }
  library_.stop();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

TEST_F(ProcRegistryTest, ServesThreadsWhileOtherInterfacesComeAndGo) {
  for (int i = 0; i < 50; ++i) ASSERT_TRUE(add("Lasting", "M", std::to_string(i).c_str(), one));
  std::atomic<bool> done{false};
  std::atomic<int> wrong{0};
  std::vector<std::thread> readers;
  for (int t = 0; t < 3; ++t) {
    readers.emplace_back([&] {
      for (unsigned i = 0; !done; ++i) {
        if (find("Lasting", "M", std::to_string(i % 50).c_str()) != one) ++wrong;
        if (find("Lasting", "M", "missing") != nullptr) ++wrong;
      }
    });
  }
  for (int round = 0; round < 300; ++round) {
    for (int i = 0; i < 20; ++i) {
      if (!add("Passing", "M", std::to_string(i).c_str(), two)) ++wrong;
    }
    removeInterface("Passing");
  }
  done = true;
  for (auto& reader : readers) reader.join();
  EXPECT_EQ(wrong, 0);
  library_.stop();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

TEST_F(ProcRegistryTest, ServesMoreThreadsThanHaveACellOfTheirOwn) {
  ASSERT_TRUE(add("I", "M", "P", one));
  std::atomic<int> wrong{0};
  std::atomic<unsigned> ready{0};
  constexpr unsigned kThreads = kThreadSlots + 8;
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      (void)threadSlot();
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      for (int i = 0; i < 200; ++i) {
        if (find("I", "M", "P") != one) ++wrong;
        if (find("I", "M", std::to_string(t).c_str()) != nullptr) ++wrong;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace zeb::registry
