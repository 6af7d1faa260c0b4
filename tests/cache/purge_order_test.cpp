#include "cache/purge_order.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <limits>
#include <vector>

namespace zeb::cache {
namespace {

ZEBCacheID& make(std::deque<ZEBCacheID>& ids, uint64_t size, float cost, uint64_t time) {
  ZEBCacheID& id = ids.emplace_back(nullptr);
  id.size = size;
  id.cost = cost;
  id.cacheTime = time;
  return id;
}

float priorityOf(uint64_t size, float cost, uint64_t age) {
  std::deque<ZEBCacheID> ids;
  return purgePriority(make(ids, size, cost, 100), 100 + age);
}

TEST(PurgePriorityTest, IsTheLargestNumberWithoutASize) {
  EXPECT_FLOAT_EQ(priorityOf(0, 5, 1), std::numeric_limits<float>::max());
}

TEST(PurgePriorityTest, IsCostPerSizeWhileYoung) {
  EXPECT_FLOAT_EQ(priorityOf(4, 10, 0), 2.5F);
  EXPECT_FLOAT_EQ(priorityOf(4, 10, 1), 2.5F);
}

TEST(PurgePriorityTest, FallsWithTheLogarithmOfTheAge) {
  for (const uint64_t age : {2U, 3U, 10U, 1000U, 1000000U}) {
    const auto divisor = static_cast<float>(std::log(static_cast<double>(age))) + 1.0F;
    EXPECT_FLOAT_EQ(priorityOf(4, 10, age), 2.5F / divisor) << age;
    EXPECT_LT(priorityOf(4, 10, age), priorityOf(4, 10, age - 1));
  }
}

TEST(PurgePriorityTest, IsNegativeForANegativeCost) { EXPECT_LT(priorityOf(4, -10, 5), 0); }

TEST(SortRoomTest, SortsFromTwoToTheLimit) {
  EXPECT_FALSE(isSorted(0));
  EXPECT_FALSE(isSorted(1));
  EXPECT_TRUE(isSorted(2));
  EXPECT_TRUE(isSorted(10000));
  EXPECT_FALSE(isSorted(10001));
}

// The identifiers in list order from the newest, by their place in `ids`.
std::vector<size_t> order(const RecencyList& list, const std::deque<ZEBCacheID>& ids) {
  std::vector<size_t> places;
  for (const ZEBCacheID* id = list.newest(); id != nullptr; id = id->older) {
    for (size_t i = 0; i < ids.size(); ++i) {
      if (&ids[i] == id) places.push_back(i);
    }
  }
  return places;
}

TEST(SortRoomTest, PutsTheHighestPriorityFirstAndKeepsEqualOnesInPlace) {
  std::deque<ZEBCacheID> ids;
  RecencyList list;
  // Oldest first. Priorities: 1, 5, max, 5, 1, -3, 0, max
  make(ids, 1, 1, 9);
  make(ids, 2, 10, 9);
  make(ids, 0, 0, 9);
  make(ids, 1, 5, 9);
  make(ids, 3, 3, 9);
  make(ids, 1, -3, 9);
  make(ids, 1, 0, 9);
  make(ids, 0, 7, 9);
  for (ZEBCacheID& id : ids) list.add(id);
  SortRoom(ids.size()).sort(list, 10);
  EXPECT_EQ(order(list, ids), (std::vector<size_t>{7, 2, 3, 1, 4, 0, 6, 5}));
  EXPECT_EQ(list.count(), ids.size());
  EXPECT_EQ(list.oldest(), &ids[5]);
  // And the links agree from the other end.
  std::vector<size_t> backwards;
  for (const ZEBCacheID* id = list.oldest(); id != nullptr; id = id->newer) {
    for (size_t i = 0; i < ids.size(); ++i) {
      if (&ids[i] == id) backwards.insert(backwards.begin(), i);
    }
  }
  EXPECT_EQ(backwards, order(list, ids));
}

TEST(SortRoomTest, TakesNegativeZeroForZero) {
  std::deque<ZEBCacheID> ids;
  RecencyList list;
  make(ids, 1, 0.0F, 9);
  make(ids, 1, -0.0F, 9);
  make(ids, 1, 0.0F, 9);
  for (ZEBCacheID& id : ids) list.add(id);
  SortRoom(3).sort(list, 9);
  EXPECT_EQ(order(list, ids), (std::vector<size_t>{2, 1, 0}));
}

}  // namespace
}  // namespace zeb::cache
