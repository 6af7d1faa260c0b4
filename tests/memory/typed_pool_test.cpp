#include "memory/typed_pool.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "base/library_counters.h"
#include "support/counted_events.h"
#include "support/counting_memory.h"

namespace {

using zeb_test::CountedEvents;
using zeb_test::CountingHost;

struct Object {
  explicit Object(int* destroyedCount, uint64_t first = 1, uint64_t second = 2)
      : destroyed(destroyedCount), a(first), b(second) {}
  ~Object() { ++*destroyed; }

  int* destroyed;
  uint64_t a;
  uint64_t b;
};

using Pool = zeb::TypedPool<Object, 40, 4>;

class TypedPoolTest : public testing::Test {
 protected:
  CountingHost host_;
  CountedEvents events_{&zeb::counters::containerPageMiss};
  Pool pool_{zeb::counters::containerPageMiss};
  int destroyed_ = 0;
};

TEST_F(TypedPoolTest, ConstructsAndDestroysInPlace) {
  Object* object = pool_.make(&destroyed_, 7u, 9u);
  EXPECT_EQ(object->a, 7u);
  EXPECT_EQ(object->b, 9u);
  EXPECT_EQ(destroyed_, 0);
  pool_.destroy(object);
  EXPECT_EQ(destroyed_, 1);
  EXPECT_EQ(host_.live(), 0u);
}

TEST_F(TypedPoolTest, GivesEachObjectTheRoomItWasPromised) {
  Object* first = pool_.make(&destroyed_);
  Object* second = pool_.make(&destroyed_);
  EXPECT_EQ(reinterpret_cast<char*>(second) - reinterpret_cast<char*>(first), 48);
  EXPECT_EQ(host_.sizeOf(host_.lastGiven()), 48u + 4 * 48u);
  pool_.destroy(first);
  pool_.destroy(second);
}

TEST_F(TypedPoolTest, CountsAPageForEveryFewObjects) {
  std::vector<Object*> made;
  for (int i = 0; i < 9; ++i) made.push_back(pool_.make(&destroyed_));
  EXPECT_EQ(events_.of(zeb::counters::containerPageMiss), 3u);
  EXPECT_EQ(host_.live(), 3u);
  for (Object* object : made) pool_.destroy(object);
  EXPECT_EQ(host_.live(), 0u);
  EXPECT_EQ(destroyed_, 9);
}

TEST_F(TypedPoolTest, StartsEveryObjectAnewInAUsedSlot) {
  Object* keepsThePage = pool_.make(&destroyed_);
  Object* first = pool_.make(&destroyed_, 5u, 6u);
  pool_.destroy(first);
  Object* second = pool_.make(&destroyed_);
  EXPECT_EQ(second, first);
  EXPECT_EQ(second->a, 1u);
  EXPECT_EQ(second->b, 2u);
  pool_.destroy(second);
  pool_.destroy(keepsThePage);
}

TEST_F(TypedPoolTest, LeavesTwoPoolsOfOneTypeApart) {
  Pool other{zeb::counters::containerPageMiss};
  Object* here = pool_.make(&destroyed_);
  Object* there = other.make(&destroyed_);
  EXPECT_EQ(host_.live(), 2u);
  pool_.destroy(here);
  EXPECT_EQ(host_.live(), 1u);
  other.destroy(there);
  EXPECT_EQ(host_.live(), 0u);
}

}  // namespace
