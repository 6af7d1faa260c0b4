#include "base/read_section.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "support/random.h"
#include "support/threads.h"

namespace {

struct Object {
  static constexpr uint64_t kAlive = 0xA11FEA11FEA11FE;

  uint64_t value = kAlive;
  Object* nextRetired = nullptr;
};

using List = zeb::RetireList<Object>;
using Objects = std::set<Object*>;

Objects inChain(Object* chain) {
  Objects objects;
  zeb::disposeRetired(chain, [&](Object* object) { EXPECT_TRUE(objects.insert(object).second); });
  return objects;
}

// A thread that enters and leaves a section when the test says so.
class Reader {
 public:
  void enter() {
    thread_.run([this] { section_.emplace(); });
  }
  void leave() {
    thread_.run([this] { section_.reset(); });
  }
  [[nodiscard]] bool entered() {
    bool entered = false;
    thread_.run([&] {
      const zeb::ReadSection section;
      entered = section.entered();
    });
    return entered;
  }

 private:
  std::optional<zeb::ReadSection> section_;
  zeb_test::OtherThread thread_;
};

class RetiredObjects : public testing::Test {
 protected:
  [[nodiscard]] Objects takeUnseen() { return inChain(list.takeUnseen()); }

  List list;
  Object a, b, c;
};

TEST_F(RetiredObjects, AreHandedOutAtOnceWhenNobodyReads) {
  list.add(&a);
  list.add(&b);
  EXPECT_EQ(takeUnseen(), (Objects{&a, &b}));
  EXPECT_EQ(takeUnseen(), Objects{});
}

TEST_F(RetiredObjects, AreNotHandedOutWhileAReaderIsInside) {
  Reader reader;
  reader.enter();
  list.add(&a);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(takeUnseen(), Objects{});
  reader.leave();
  EXPECT_EQ(takeUnseen(), Objects{&a});
}

TEST_F(RetiredObjects, AreNotHandedOutWhileTheWriterItselfReads) {
  auto section = std::make_unique<zeb::ReadSection>();
  list.add(&a);
  EXPECT_EQ(takeUnseen(), Objects{});
  section.reset();
  EXPECT_EQ(takeUnseen(), Objects{&a});
}

TEST_F(RetiredObjects, WaitForEachOfSeveralReaders) {
  std::deque<Reader> readers(3);
  for (Reader& reader : readers) reader.enter();
  list.add(&a);
  EXPECT_EQ(takeUnseen(), Objects{});
  readers[1].leave();
  EXPECT_EQ(takeUnseen(), Objects{});
  readers[2].leave();
  EXPECT_EQ(takeUnseen(), Objects{});
  readers[0].leave();
  EXPECT_EQ(takeUnseen(), Objects{&a});
}

TEST_F(RetiredObjects, DoNotWaitForReadersThatCameLater) {
  Reader early;
  Reader late;
  early.enter();
  list.add(&a);
  EXPECT_EQ(takeUnseen(), Objects{});
  late.enter();
  EXPECT_EQ(takeUnseen(), Objects{});
  early.leave();
  EXPECT_EQ(takeUnseen(), Objects{&a});
  late.leave();
}

TEST_F(RetiredObjects, DoNotWaitForAReaderThatLeftAndCameBack) {
  Reader reader;
  reader.enter();
  list.add(&a);
  EXPECT_EQ(takeUnseen(), Objects{});
  reader.leave();
  reader.enter();
  EXPECT_EQ(takeUnseen(), Objects{&a});
  reader.leave();
}

TEST_F(RetiredObjects, OfTwoGenerationsWaitForTheirOwnReaders) {
  Reader first;
  Reader second;
  first.enter();
  list.add(&a);
  EXPECT_EQ(takeUnseen(), Objects{});
  second.enter();
  list.add(&b);
  EXPECT_EQ(takeUnseen(), Objects{});
  first.leave();
  EXPECT_EQ(takeUnseen(), Objects{&a});
  list.add(&c);
  EXPECT_EQ(takeUnseen(), Objects{});  // b is in the second's sight; c waits behind it
  second.leave();
  EXPECT_EQ(takeUnseen(), (Objects{&b, &c}));
}

TEST_F(RetiredObjects, AreSafeFromASectionThatBeganBeforeTheyWereTaken) {
  list.add(&a);
  Reader reader;
  reader.enter();  // after the unlinking, but nobody can tell
  EXPECT_EQ(takeUnseen(), Objects{});
  reader.leave();
  EXPECT_EQ(takeUnseen(), Objects{&a});
}

TEST_F(RetiredObjects, OfBothGenerationsAreTakenTogetherAtTheEnd) {
  Reader reader;
  reader.enter();
  list.add(&a);
  EXPECT_EQ(takeUnseen(), Objects{});
  list.add(&b);
  EXPECT_EQ(inChain(list.takeAll()), (Objects{&a, &b}));
  EXPECT_EQ(list.takeAll(), nullptr);
  reader.leave();
  EXPECT_EQ(takeUnseen(), Objects{});
}

TEST_F(RetiredObjects, AreGoneFromAnEmptyList) {
  EXPECT_EQ(list.takeUnseen(), nullptr);
  EXPECT_EQ(list.takeAll(), nullptr);
}

TEST_F(RetiredObjects, MayBeFreedWhileTheirChainIsWalked) {
  for (int i = 0; i < 10; ++i) list.add(new Object);
  int freed = 0;
  zeb::disposeRetired(list.takeUnseen(), [&](Object* object) {
    delete object;
    ++freed;
  });
  EXPECT_EQ(freed, 10);
}

TEST_F(RetiredObjects, DoNotWaitForAThreadWithoutACell) {
  zeb::ReadSection();  // this thread has a cell
  std::deque<Reader> owners(zeb::kExclusiveThreadSlots - 1);
  for (Reader& owner : owners) EXPECT_TRUE(owner.entered());
  Reader without;
  EXPECT_FALSE(without.entered());
  without.enter();
  list.add(&a);
  EXPECT_EQ(takeUnseen(), Objects{&a});
  without.leave();
}

TEST(ReadSection, IsEnteredByAThreadThatHasACell) {
  const zeb::ReadSection section;
  EXPECT_TRUE(section.entered());
}

TEST(ReadSection, OfAThreadInheritsTheCellAtRest) {
  List list;
  Object object;
  for (int i = 0; i < 40; ++i) {
    Reader reader;
    reader.enter();
    reader.leave();
  }
  list.add(&object);
  EXPECT_EQ(inChain(list.takeUnseen()), Objects{&object});
}

// --- All schedules of a small case ---
//
// Two readers that enter, take the published object and leave; a writer that twice replaces and
// retires it and asks what may be freed. Whatever the order of these steps, nothing is handed out
// while a reader holds it, and everything is handed out in the end.

class SmallCase {
 public:
  static constexpr int kThreads = 3;
  static constexpr int kSteps[kThreads] = {3, 3, 4};

  explicit SmallCase(std::deque<zeb_test::OtherThread>& readers) : readers_(readers) {}

  void step(int thread, int index) {
    if (thread < kReaders) {
      readers_[static_cast<size_t>(thread)].run([&] { readerStep(holds_[thread], index); });
    } else if (index % 2 == 0) {
      list_.add(published_++);
    } else {
      takeUnseen();
    }
  }

  void finish() {
    takeUnseen();
    takeUnseen();
    EXPECT_EQ(freed_, (Objects{&objects_[0], &objects_[1]}));
  }

 private:
  static constexpr int kReaders = 2;

  struct Held {
    std::optional<zeb::ReadSection> section;
    Object* object = nullptr;
  };

  void readerStep(Held& held, int index) {
    switch (index) {
      case 0:
        held.section.emplace();
        break;
      case 1:
        held.object = published_;
        break;
      default:
        held.object = nullptr;
        held.section.reset();
    }
  }

  void takeUnseen() {
    for (Object* object : inChain(list_.takeUnseen())) {
      for (const Held& held : holds_) EXPECT_NE(held.object, object) << "freed under a reader";
      EXPECT_TRUE(freed_.insert(object).second) << "freed twice";
    }
  }

  std::deque<zeb_test::OtherThread>& readers_;
  Object objects_[3];
  Object* published_ = objects_;
  List list_;
  Objects freed_;
  Held holds_[kReaders];
};

TEST(ReadSection, ProtectsItsReaderUnderEverySchedule) {
  std::deque<zeb_test::OtherThread> readers(2);
  std::vector<int> schedule;
  for (int thread = 0; thread < SmallCase::kThreads; ++thread) {
    schedule.insert(schedule.end(), static_cast<size_t>(SmallCase::kSteps[thread]), thread);
  }
  int schedules = 0;
  do {
    // The readers are alike: one order of their beginnings stands for the other.
    if (std::find(schedule.begin(), schedule.end(), 0) >
        std::find(schedule.begin(), schedule.end(), 1)) {
      continue;
    }
    SmallCase smallCase(readers);
    int done[SmallCase::kThreads] = {};
    for (const int thread : schedule) smallCase.step(thread, done[thread]++);
    smallCase.finish();
    ++schedules;
    ASSERT_FALSE(HasFailure()) << testing::PrintToString(schedule);
  } while (std::next_permutation(schedule.begin(), schedule.end()));
  EXPECT_EQ(schedules, 2100);  // 10! / (3! 3! 4!) / 2
}

// --- Many threads ---

// Readers dereference what a writer replaces, retires, poisons and frees.
TEST(ReadSection, KeepsObjectsAliveUnderTheirReaders) {
  constexpr unsigned kReaders = 3;
  constexpr size_t kPlaces = 4;
  constexpr uint64_t kFreed = 5000;
  std::atomic<Object*> places[kPlaces];
  for (auto& place : places) place = new Object;
  std::atomic<bool> writing{true};
  List list;

  const auto dispose = [](Object* object) {
    object->value = 0xDEAD;
    delete object;
  };
  const auto write = [&] {
    zeb_test::Random random(5);
    for (uint64_t freed = 0; freed < kFreed;) {
      list.add(places[random.below(kPlaces)].exchange(new Object));
      zeb::disposeRetired(list.takeUnseen(), [&](Object* object) {
        dispose(object);
        ++freed;
      });
    }
    writing = false;
  };
  const auto read = [&](unsigned reader) {
    zeb_test::Random random(reader);
    for (uint64_t round = 0; round < 1000 || writing; ++round) {
      const zeb::ReadSection section;
      ASSERT_TRUE(section.entered());
      ASSERT_EQ(places[random.below(kPlaces)].load()->value, Object::kAlive);
    }
  };
  zeb_test::runTogether(kReaders + 1, [&](unsigned index) { index == 0 ? write() : read(index); });

  zeb::disposeRetired(list.takeAll(), dispose);
  for (auto& place : places) dispose(place);
}

}  // namespace
