#include "memory/object_pool.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <vector>

#include "base/library_counters.h"
#include "memory/allocator.h"
#include "memory/page_walk.h"
#include "support/counted_events.h"
#include "support/counting_memory.h"
#include "support/random.h"
#include "support/threads.h"

namespace {

using zeb::ObjectPool;
using zeb_test::Byte;
using zeb_test::wordAt;

constexpr uint64_t kHeader = 48;
constexpr uint64_t kLink = 8;

// The pools that the library has.
struct Shape {
  const char* name;
  uint32_t slots;
  uint64_t slotBytes;
  uint64_t pageBytes;
};
constexpr Shape kShapes[] = {{"Containers", 16, 104, 1712},
                             {"Instances", 16, 64, 1072},
                             {"InterfaceMethods", 16, 48, 816},
                             {"SharedBuffers", 8, 56, 496}};

class PoolOfShape : public testing::TestWithParam<Shape> {
 protected:
  void TearDown() override {
    for (Byte* object : taken_) pool.giveBack(object);
    EXPECT_EQ(host.live(), 0u);
  }

  Byte* take() {
    taken_.push_back(static_cast<Byte*>(pool.take()));
    return taken_.back();
  }
  std::vector<Byte*> take(uint64_t count) {
    std::vector<Byte*> objects;
    while (objects.size() < count) objects.push_back(take());
    return objects;
  }
  void giveBack(Byte* object) {
    std::erase(taken_, object);
    pool.giveBack(object);
  }
  [[nodiscard]] uint64_t misses() const { return events_.of(zeb::counters::containerPageMiss); }

  const Shape shape = GetParam();
  const uint64_t slots = shape.slots;
  zeb_test::CountingHost host;
  ObjectPool pool{shape.slots, shape.slotBytes, zeb::counters::containerPageMiss};

 private:
  zeb_test::CountedEvents events_{&zeb::counters::containerPageMiss};
  std::vector<Byte*> taken_;
};
INSTANTIATE_TEST_SUITE_P(Pools, PoolOfShape, testing::ValuesIn(kShapes),
                         [](const auto& it) { return it.param.name; });

TEST_P(PoolOfShape, TakesPagesOfTheKnownSize) {
  EXPECT_EQ(pool.pageBytes(), shape.pageBytes);
  take();
  EXPECT_EQ(host.requests(), std::vector<uint64_t>{shape.pageBytes});
}

TEST_P(PoolOfShape, HandsTheSlotsOfAFreshPageOutInAddressOrder) {
  const auto objects = take(slots);
  Byte* const page = host.lastGiven();
  for (uint64_t i = 0; i < slots; ++i) {
    EXPECT_EQ(objects[i], page + kHeader + i * shape.slotBytes + kLink);
  }
}

TEST_P(PoolOfShape, GivesEachObjectTheWholeOfItsSlot) {
  const auto objects = take(2 * slots);
  for (size_t i = 0; i < objects.size(); ++i) {
    std::memset(objects[i], static_cast<int>(i), shape.slotBytes - kLink);
  }
  for (size_t i = 0; i < objects.size(); ++i) {
    for (uint64_t at = 0; at < shape.slotBytes - kLink; ++at) ASSERT_EQ(objects[i][at], i);
  }
}

TEST_P(PoolOfShape, MissesAPageForTheFirstObjectAndForOneTooMany) {
  EXPECT_EQ(misses(), 0u);
  take(slots);
  EXPECT_EQ(misses(), 1u);
  EXPECT_EQ(host.given(), 1u);
  take();  // the 17th or the 9th
  EXPECT_EQ(misses(), 2u);
  EXPECT_EQ(host.given(), 2u);
  take(slots - 1);
  EXPECT_EQ(misses(), 2u);
  EXPECT_EQ(host.given(), 2u);
}

TEST_P(PoolOfShape, KnowsHowManySlotsAreTaken) {
  EXPECT_EQ(pool.taken(), 0u);
  const auto objects = take(2 * slots + 3);  // two full pages and one that is not
  EXPECT_EQ(pool.taken(), 2 * slots + 3);
  giveBack(objects[1]);
  giveBack(objects[slots]);
  EXPECT_EQ(pool.taken(), 2 * slots + 1);
  for (uint64_t i = 2; i < slots; ++i) giveBack(objects[i]);
  giveBack(objects[0]);  // the first page is gone
  EXPECT_EQ(pool.taken(), slots + 2);
}

TEST_P(PoolOfShape, UsesAFullPageAgainBeforeAnyOther) {
  const auto first = take(slots);
  const auto second = take(slots);
  take();  // a third page, with free slots
  giveBack(second[3]);
  giveBack(first[5]);
  EXPECT_EQ(take(), first[5]);
  EXPECT_EQ(take(), second[3]);
  EXPECT_EQ(host.given(), 3u);
}

TEST_P(PoolOfShape, UsesTheSlotThatWasGivenBackLast) {
  const auto objects = take(slots);
  for (const size_t i : {2u, 6u, 4u}) giveBack(objects[i]);
  EXPECT_EQ(take(), objects[4]);
  EXPECT_EQ(take(), objects[6]);
  EXPECT_EQ(take(), objects[2]);
  EXPECT_EQ(misses(), 1u);
}

TEST_P(PoolOfShape, GivesAPageBackWithItsLastObject) {
  const auto objects = take(slots);
  for (Byte* object : objects) {
    EXPECT_EQ(host.live(), 1u);
    giveBack(object);
  }
  EXPECT_EQ(host.live(), 0u);
  EXPECT_EQ(host.takenBack(), 1u);
  take();
  EXPECT_EQ(misses(), 2u);
  EXPECT_EQ(host.live(), 1u);
}

TEST_P(PoolOfShape, KeepsNoPageForASingleObject) {
  for (uint64_t round = 1; round <= 3; ++round) {
    giveBack(take());
    EXPECT_EQ(misses(), round);
    EXPECT_EQ(host.live(), 0u);
  }
}

TEST_P(PoolOfShape, GivesBackOnlyThePageThatIsEmpty) {
  const auto first = take(slots);
  const auto second = take(slots);
  const auto third = take(slots);
  for (Byte* object : second) giveBack(object);
  EXPECT_EQ(host.live(), 2u);
  giveBack(first[0]);
  giveBack(third[0]);
  EXPECT_EQ(take(), third[0]);
  EXPECT_EQ(take(), first[0]);
}

TEST_P(PoolOfShape, LinksASlotToItsPageWhileItIsUsed) {
  const auto objects = take(slots + 1);
  Byte* const page = objects[0] - kLink - kHeader;
  for (uint64_t i = 0; i < slots; ++i) EXPECT_EQ(wordAt<Byte*>(objects[i] - kLink), page);
  EXPECT_EQ(wordAt<Byte*>(objects[slots] - kLink), host.lastGiven());
  EXPECT_EQ(wordAt<Byte*>(page), nullptr);  // no free slot
  EXPECT_EQ(wordAt<uint64_t>(page + 8), slots);
}

TEST_P(PoolOfShape, LinksASlotToTheNextFreeOneWhileItIsFree) {
  const auto objects = take(slots);
  Byte* const page = host.lastGiven();
  giveBack(objects[1]);
  giveBack(objects[3]);
  EXPECT_EQ(wordAt<Byte*>(page), objects[3] - kLink);
  EXPECT_EQ(wordAt<Byte*>(objects[3] - kLink), objects[1] - kLink);
  EXPECT_EQ(wordAt<Byte*>(objects[1] - kLink), nullptr);
  EXPECT_EQ(wordAt<uint64_t>(page + 8), slots - 2);
}

TEST_P(PoolOfShape, StaysUsableWhenThereIsNoPage) {
  host.grant(0);
  EXPECT_THROW((void)pool.take(), int);
  EXPECT_THROW((void)pool.take(), int);
  EXPECT_EQ(misses(), 2u);  // each was a miss, though nothing came of it
  host.grant(1);
  const auto objects = take(slots);
  EXPECT_THROW((void)pool.take(), int);
  giveBack(objects[0]);
  EXPECT_EQ(take(), objects[0]);
  host.grantAll();
  take();
  EXPECT_EQ(host.live(), 2u);
}

TEST_P(PoolOfShape, LetsWhatTheHostThrowsPass) {
  host.throwOnGive(true);
  EXPECT_THROW((void)pool.take(), zeb_test::HostThrew);
  host.throwOnGive(false);
  take();
}

// --- A model ---

// The pool as it is described: two lists of pages, each page a stack of free slots.
class PoolModel {
 public:
  PoolModel(ObjectPool& pool, const Shape& shape, const zeb_test::MemoryAccount& host)
      : pool_(pool), shape_(shape), host_(host) {}

  void take() {
    const bool miss = withFreeSlots_.empty();
    const uint64_t givenBefore = host_.given();
    auto* object = static_cast<Byte*>(pool_.take());
    ASSERT_EQ(host_.given(), givenBefore + (miss ? 1 : 0));
    if (miss) openPage();
    const auto page = withFreeSlots_.begin();
    ASSERT_EQ(object, page->freeObjects.back());
    page->freeObjects.pop_back();
    if (page->freeObjects.empty()) full_.splice(full_.begin(), withFreeSlots_, page);
    taken_.push_back({object, page});
  }

  void giveBack(size_t index) {
    const auto [object, page] = taken_[index];
    taken_[index] = taken_.back();
    taken_.pop_back();
    const uint64_t liveBefore = host_.live();
    pool_.giveBack(object);
    const bool wasFull = page->freeObjects.empty();
    page->freeObjects.push_back(object);
    const bool isEmpty = page->freeObjects.size() == shape_.slots;
    ASSERT_EQ(host_.live(), liveBefore - (isEmpty ? 1 : 0));
    auto& list = wasFull ? full_ : withFreeSlots_;
    if (isEmpty) {
      list.erase(page);
    } else if (wasFull) {
      withFreeSlots_.splice(withFreeSlots_.begin(), full_, page);
    }
  }

  [[nodiscard]] size_t taken() const { return taken_.size(); }

 private:
  struct Page {
    std::vector<Byte*> freeObjects;  // the next one last
  };
  using Pages = std::list<Page>;
  struct Taken {
    Byte* object;
    Pages::iterator page;
  };

  void openPage() {
    Page& page = withFreeSlots_.emplace_front();
    for (uint64_t slot = shape_.slots; slot-- > 0;) {
      page.freeObjects.push_back(host_.lastGiven() + kHeader + slot * shape_.slotBytes + kLink);
    }
  }

  ObjectPool& pool_;
  const Shape& shape_;
  const zeb_test::MemoryAccount& host_;
  Pages withFreeSlots_;
  Pages full_;
  std::vector<Taken> taken_;
};

TEST_P(PoolOfShape, AgreesWithAModelThroughRandomUse) {
  zeb_test::forEachSeed([&](zeb_test::Random& random) {
    PoolModel model(pool, shape, host);
    for (int step = 0; step < 4000 && !HasFailure(); ++step) {
      const uint64_t takes = step / 400 % 2 == 0 ? 60 : 40;  // grows and shrinks by turns
      if (model.taken() == 0 || random.below(100) < takes) {
        model.take();
      } else {
        model.giveBack(random.below(model.taken()));
      }
    }
    while (model.taken() > 0 && !HasFailure()) model.giveBack(random.below(model.taken()));
    EXPECT_EQ(host.live(), 0u);
  });
}

// --- Without a host, and with many threads ---

TEST(ObjectPool, TakesItsPagesFromTheProcessAllocatorWithoutAHost) {
  ObjectPool pool(16, 64, zeb::counters::instancePageMiss);
  auto* object = static_cast<Byte*>(pool.take());
  EXPECT_EQ(zeb::processAllocator.blockSize(object - kLink - kHeader), pool.pageBytes());
  pool.giveBack(object);
}

TEST(ObjectPool, ManagesWithOneSlotAPage) {
  const zeb_test::CountingHost host;
  ObjectPool pool(1, 24, zeb::counters::instancePageMiss);
  void* first = pool.take();
  void* second = pool.take();
  EXPECT_EQ(host.live(), 2u);
  pool.giveBack(second);  // the head of the full pages
  EXPECT_EQ(host.live(), 1u);
  void* third = pool.take();
  EXPECT_EQ(host.given(), 3u);
  pool.giveBack(first);
  pool.giveBack(third);
  EXPECT_EQ(host.live(), 0u);
}

TEST(ObjectPool, MayBeUsedByManyThreads) {
  constexpr unsigned kThreads = 4;
  constexpr uint64_t kObjectBytes = 56;
  const zeb_test::CountingHost host;
  const zeb_test::CountedEvents events{&zeb::counters::instancePageMiss};
  ObjectPool pool(16, kObjectBytes + kLink, zeb::counters::instancePageMiss);
  std::vector<Byte*> leftBehind[kThreads];
  zeb_test::runTogether(kThreads, [&](unsigned index) {
    zeb_test::Random random(index);
    std::vector<Byte*>& taken = leftBehind[index];
    for (int step = 0; step < 20000; ++step) {
      if (taken.empty() || (taken.size() < 100 && random.oneIn(2))) {
        taken.push_back(static_cast<Byte*>(pool.take()));
        std::memset(taken.back(), static_cast<int>(index), kObjectBytes);
      } else {
        std::swap(taken[random.below(taken.size())], taken.back());
        for (uint64_t at = 0; at < kObjectBytes; ++at) ASSERT_EQ(taken.back()[at], index);
        pool.giveBack(taken.back());
        taken.pop_back();
      }
    }
  });
  EXPECT_EQ(events.of(zeb::counters::instancePageMiss), host.given());
  // Given back by other threads than those that took them.
  zeb_test::runTogether(kThreads, [&](unsigned index) {
    for (Byte* object : leftBehind[(index + 1) % kThreads]) pool.giveBack(object);
  });
  EXPECT_EQ(host.live(), 0u);
}

}  // namespace
