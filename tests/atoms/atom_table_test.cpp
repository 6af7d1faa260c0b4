#include "atoms/atom_table.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>

#include "base/library_counters.h"
#include "support/started_library.h"

namespace zeb::atoms {
namespace {

using test::CountingHost;
using test::StartedLibrary;
using test::totalOf;

class AtomTableTest : public testing::Test {
 protected:
  ZEBString* make(const char* text) { return table_.make(TextKey(text)); }
  ZEBString* make(const std::string& text) { return make(text.c_str()); }

  void release(ZEBString* atom) {
    if (atom->references.fetch_sub(1) == 1) table_.removeDying(atom);
  }

  // Makes and releases so many new atoms that the ring holds nothing made before.
  void turnTheRing() {
    for (unsigned i = 0; i < AtomTable::kRingSize; ++i) {
      release(make("turn " + std::to_string(++turns_)));
    }
  }

  bool isKnown(const char* text) { return table_.isKnown(TextKey(text)); }

  void TearDown() override { table_.dropUser(); }

  AtomTable table_;
  unsigned turns_ = 0;
};

TEST_F(AtomTableTest, HasOneAtomForEqualTexts) {
  ZEBString* first = make("abc");
  const std::string copy = "abc";
  ZEBString* second = make(copy);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(first->text(), "abc");
  EXPECT_NE(first->text(), copy.c_str());
  release(first);
  release(second);
}

TEST_F(AtomTableTest, TellsTextsApartThatDifferInOneByte) {
  ZEBString* abc = make("abc");
  for (const char* other : {"abd", "ab", "abcc", "Abc", ""}) {
    ZEBString* atom = make(other);
    EXPECT_NE(atom, abc) << other;
    EXPECT_STREQ(atom->text(), other);
    release(atom);
  }
  release(abc);
}

TEST_F(AtomTableTest, HasNoAtomForANullText) {
  EXPECT_EQ(make(static_cast<const char*>(nullptr)), nullptr);
}

TEST_F(AtomTableTest, EndsWideTextsWithThreeZeros) {
  const char text[] = {'\xFE', '\xFF', 'x', 0, 'y', 'y', 'y'};
  ZEBString* atom = make(text);
  const char expected[] = {'\xFE', '\xFF', 'x', 0, 0, 0};
  EXPECT_EQ(std::memcmp(atom->text(), expected, sizeof expected), 0);
  release(atom);

  ZEBString* markOnly = make("\xFE\xFF");
  EXPECT_EQ(std::memcmp(markOnly->text(), "\xFE\xFF\0\0", 5), 0);
  release(markOnly);
}

TEST_F(AtomTableTest, TakesWideTextsForEqualUpToTheFirstZero) {
  const char first[] = {'\xFE', '\xFF', 'a', 0, 'b', 0, 0};
  const char second[] = {'\xFE', '\xFF', 'a', 0, 'c', 0, 0};
  ZEBString* one = make(first);
  ZEBString* other = make(second);
  EXPECT_EQ(one, other);
  release(one);
  release(other);
}

TEST_F(AtomTableTest, KeepsAReleasedAtomUntilTheRingHasTurned) {
  release(make("kept"));
  EXPECT_TRUE(isKnown("kept"));
  for (unsigned i = 0; i + 1 < AtomTable::kRingSize; ++i) release(make("fill" + std::to_string(i)));
  EXPECT_TRUE(isKnown("kept"));
  release(make("the last straw"));
  EXPECT_FALSE(isKnown("kept"));
}

TEST_F(AtomTableTest, KeepsAHeldAtomWhenTheRingTurns) {
  ZEBString* held = make("held");
  turnTheRing();
  EXPECT_TRUE(isKnown("held"));
  ZEBString* again = make("held");
  EXPECT_EQ(again, held);
  release(again);
  release(held);
  EXPECT_FALSE(isKnown("held"));
}

TEST_F(AtomTableTest, KeepsIdentityWhileItGrows) {
  std::vector<ZEBString*> atoms;
  for (int i = 0; i < 5000; ++i) atoms.push_back(make("grow " + std::to_string(i)));
  for (int i = 0; i < 5000; ++i) {
    ZEBString* again = make("grow " + std::to_string(i));
    ASSERT_EQ(again, atoms[static_cast<size_t>(i)]);
    release(again);
  }
  for (ZEBString* atom : atoms) release(atom);
}

TEST_F(AtomTableTest, WaitsForADyingAtomAndMakesANewOne) {
  ZEBString* dying = make("dying");
  turnTheRing();
  ASSERT_EQ(dying->references.fetch_sub(1), 1u);  // the last release, not yet in the table's lock

  std::atomic<bool> made{false};
  ZEBString* fresh = nullptr;
  std::thread maker([&] {
    fresh = make("dying");
    made = true;
  });
  // The maker must not take the dying atom, however long the release takes.
  for (int i = 0; i < 20; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_FALSE(made);
  }
  table_.removeDying(dying);
  maker.join();
  ASSERT_NE(fresh, nullptr);
  EXPECT_STREQ(fresh->text(), "dying");
  EXPECT_EQ(fresh->references.load(), 2u);  // the maker's and the ring's
  release(fresh);
}

TEST_F(AtomTableTest, MakesSeveralAtOnceFoundOrNew) {
  ZEBString* there = make("there");
  const std::array keys{TextKey("there"), TextKey("new"), TextKey(nullptr)};
  std::array<Ref, 3> made;
  table_.makeAll(keys, made);
  EXPECT_EQ(made[0].get(), there);
  ASSERT_NE(made[1].get(), nullptr);
  EXPECT_STREQ(made[1].get()->text(), "new");
  EXPECT_EQ(made[2].get(), nullptr);
  for (Ref& ref : made) {
    if (ZEBString* atom = ref.handOver()) release(atom);
  }
  release(there);
}

TEST_F(AtomTableTest, ShowsItsLiveAtomsWithTheirReferences) {
  ZEBString* held = make("held");
  ZEBString* dying = make("dying");
  turnTheRing();
  ASSERT_EQ(dying->references.fetch_sub(1), 1u);  // the last release, not yet in the table's lock
  held->references.fetch_add(4);
  uint64_t atoms = 0;
  table_.forEachLive([&](const ZEBString& atom, uint32_t references) {
    ++atoms;
    EXPECT_NE(&atom, dying);
    EXPECT_EQ(references, &atom == held ? 5u : 1u)
        << atom.text();  // the others are the ring's or "."
  });
  EXPECT_EQ(atoms, AtomTable::kRingSize + 2);
  EXPECT_EQ(table_.live().live, AtomTable::kRingSize + 2);
  EXPECT_EQ(table_.live().kept, uint64_t{AtomTable::kRingSize});
  table_.removeDying(dying);
  for (int i = 0; i < 5; ++i) release(held);
  EXPECT_EQ(table_.live().live, AtomTable::kRingSize + 1);
}

TEST_F(AtomTableTest, AgreesWithASetOfTexts) {
  const auto seed = std::random_device{}();
  RecordProperty("seed", std::to_string(seed));
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  std::vector<std::pair<std::string, ZEBString*>> held;
  for (int step = 0; step < 20000; ++step) {
    if (held.size() < 500 && random() % 2 == 0) {
      std::string text = std::to_string(random() % 800);
      ZEBString* atom = make(text);
      ASSERT_EQ(text, atom->text());
      for (const auto& [otherText, other] : held) ASSERT_EQ(otherText == text, other == atom);
      held.emplace_back(std::move(text), atom);
    } else if (!held.empty()) {
      std::swap(held[random() % held.size()], held.back());
      release(held.back().second);
      held.pop_back();
    }
  }
  for (auto& [text, atom] : held) release(atom);
}

TEST_F(AtomTableTest, GivesEveryThreadTheSameLiveAtoms) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 20000;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      std::mt19937 random(static_cast<unsigned>(t));
      for (int i = 0; i < kRounds; ++i) {
        // Few enough texts to meet, enough to turn the ring and let atoms die all the time.
        const std::string text = std::to_string(random() % 150);
        ZEBString* one = make(text);
        ZEBString* two = make(text);
        if (one != two || text != one->text() || one->references.load() < 2) ++wrong;
        release(one);
        release(two);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST(AtomTableLifeTest, GivesEverythingBackWhenItsUserGoes) {
  CountingHost::reset();
  hostState.objects = CountingHost::objects();
  hostState.errorReport = CountingHost::report;
  AtomTable table;
  for (int i = 0; i < 3000; ++i) {
    ZEBString* atom = table.make(TextKey(std::to_string(i).c_str()));
    if (atom->references.fetch_sub(1) == 1) table.removeDying(atom);
  }
  table.dropUser();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
  EXPECT_TRUE(CountingHost::reports.empty());
  hostState.objects = {};
  hostState.errorReport = nullptr;
}

TEST(AtomTableLifeTest, WaitsForItsSecondUser) {
  AtomTable table;
  table.addUser();
  ZEBString* atom = table.make(TextKey("user"));
  table.dropUser();
  EXPECT_TRUE(table.isKnown(TextKey("user")));
  atom->references.fetch_sub(1);
  table.dropUser();
  EXPECT_FALSE(table.isKnown(TextKey("user")));
}

TEST(AtomTableLifeTest, ReportsHeldAtomsOnceAndLeavesThemValid) {
  StartedLibrary library;
  ZEBString* held = atoms::make(TextKey("held over the stop"));
  ZEBString* alsoHeld = atoms::make(TextKey("held too"));
  library.stop();
  EXPECT_EQ(CountingHost::reports, std::vector<std::string>{"string memory leak"});
  EXPECT_STREQ(held->text(), "held over the stop");
  EXPECT_EQ(CountingHost::liveBlocks, 2);
  atoms::release(held);
  atoms::release(alsoHeld);
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

TEST(AtomTableLifeTest, FreesAnOrphanThroughTheHostThatItCameFrom) {
  ZEBString* orphan = nullptr;
  {
    StartedLibrary library;
    orphan = atoms::make(TextKey("orphan"));
  }
  ASSERT_EQ(CountingHost::liveBlocks, 1);
  ASSERT_NE(frame::start({}), nullptr);  // another host, on the library's own allocator
  ZEBString* fresh = atoms::make(TextKey("orphan"));
  EXPECT_NE(fresh, orphan);
  atoms::release(fresh);
  atoms::release(orphan);
  EXPECT_EQ(CountingHost::liveBlocks, 0);
  frame::stop();
}

TEST(AtomCountersTest, CountWhatMakingComesTo) {
  const StartedLibrary library;
  const int64_t found = totalOf(counters::atomFound);
  const int64_t allocated = totalOf(counters::atomAllocated);
  ZEBString* first = atoms::make(TextKey("counted"));
  EXPECT_EQ(totalOf(counters::atomFound), found);
  EXPECT_EQ(totalOf(counters::atomAllocated), allocated + 1);
  ZEBString* second = atoms::make(TextKey("counted"));
  EXPECT_EQ(totalOf(counters::atomFound), found + 1);
  EXPECT_EQ(totalOf(counters::atomAllocated), allocated + 1);
  atoms::release(first);
  atoms::release(second);
}

TEST(AtomCountersTest, CountAddRefAlsoForNull) {
  const StartedLibrary library;
  const int64_t before = totalOf(counters::atomAddRef);
  atoms::addReference(nullptr);
  EXPECT_EQ(totalOf(counters::atomAddRef), before + 1);
}

TEST(AtomFailureTest, LeavesNothingBehindWhenMemoryIsShort) {
  StartedLibrary library;
  const int64_t before = CountingHost::liveBlocks;
  CountingHost::failAllocation(1);
  EXPECT_ANY_THROW((void)atoms::make(TextKey("no memory for this")));
  EXPECT_EQ(CountingHost::liveBlocks, before);
  EXPECT_FALSE(CountingHost::failureIsPending());
  atoms::release(atoms::make(TextKey("no memory for this")));
}

TEST(AtomFailureTest, SurvivesAFailureToGrow) {
  StartedLibrary library;
  std::vector<ZEBString*> atoms;
  bool failedToGrow = false;
  for (int i = 0; i < 2000; ++i) {
    const std::string text = "growing " + std::to_string(i);
    CountingHost::failAllocation(2);  // the first is the atom, a second only for a larger array
    try {
      atoms.push_back(atoms::make(TextKey(text.c_str())));
    } catch (...) {
      failedToGrow = true;
      CountingHost::stopFailing();
      atoms.push_back(atoms::make(TextKey(text.c_str())));
    }
    CountingHost::stopFailing();
  }
  EXPECT_TRUE(failedToGrow);
  for (ZEBString* atom : atoms) atoms::release(atom);
  library.stop();
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

}  // namespace
}  // namespace zeb::atoms
