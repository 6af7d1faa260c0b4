#include "memory/object_memory.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "support/counting_memory.h"

namespace {

using zeb_test::CountingHost;
using zeb_test::CountingPages;

// An object that tells of its end, or whose making fails.
struct Told {
  explicit Told(int* e, bool fails = false) : ends(e) {
    if (fails) throw std::runtime_error("no such object");
  }
  ~Told() { ++*ends; }

  int* ends;
};

TEST(ObjectMemory, ComesFromTheProcessAllocatorWithoutAHost) {
  const CountingPages pages;
  void* block = zeb::allocObject(100);
  EXPECT_EQ(zeb::processAllocator.blockSize(block), 100u);
  zeb::freeObject(block);
  EXPECT_EQ(pages.asked(), 0u);
}

TEST(ObjectMemory, ComesFromTheHostThatBroughtItsProcs) {
  const CountingHost host;
  void* block = zeb::allocObject(100);
  EXPECT_EQ(host.sizeOf(block), 100u);
  zeb::freeObject(block);
  EXPECT_EQ(host.live(), 0u);
  EXPECT_EQ(host.takenBack(), 1u);
}

TEST(ObjectMemory, IsNeverNull) {
  CountingHost host;
  host.grant(0);
  EXPECT_THROW((void)zeb::allocObject(100), int);
  host.grantAll();
  zeb::freeObject(zeb::allocObject(100));
}

TEST(ObjectMemory, NeverPassesNullToTheHost) {
  const CountingHost host;
  zeb::freeObject(nullptr);
  zeb::freeObjectThrough(CountingHost::procs.free, nullptr);
  zeb::destroyObject<Told>(nullptr);
  EXPECT_EQ(host.takenBack(), 0u);
}

TEST(ObjectMemory, SwallowsWhatTheHostThrowsWhenItIsFreed) {
  CountingHost host;
  void* block = zeb::allocObject(100);
  host.throwOnTakeBack(true);
  EXPECT_NO_THROW(zeb::freeObject(block));
  EXPECT_EQ(host.takenBack(), 1u);
}

TEST(ObjectMemory, IsFreedThroughTheProcedureThatIsNamed) {
  void* block = zeb::processAllocator.alloc(100);
  const CountingHost host;
  zeb::freeObjectThrough(nullptr, block);
  EXPECT_EQ(host.takenBack(), 0u);
  zeb::freeObjectThrough(CountingHost::procs.free, zeb::allocObject(100));
  EXPECT_EQ(host.takenBack(), 1u);
}

TEST(ObjectMemory, IsFreedUnlessItIsHandedOn) {
  const CountingHost host;
  { const zeb::ObjectMemory memory(100); }
  EXPECT_EQ(host.live(), 0u);
  void* handedOn = nullptr;
  {
    zeb::ObjectMemory memory(100);
    handedOn = memory.release();
    EXPECT_FALSE(memory);
  }
  EXPECT_EQ(host.live(), 1u);
  zeb::freeObject(handedOn);
}

TEST(ObjectMemory, ChangesItsOwnerWhenItIsMoved) {
  const CountingHost host;
  zeb::ObjectMemory first(100);
  void* const block = first.get();
  zeb::ObjectMemory second(std::move(first));
  EXPECT_EQ(second.get(), block);
  {
    zeb::ObjectMemory third(200);
    third = std::move(second);
    EXPECT_EQ(third.get(), block);
    EXPECT_EQ(host.live(), 2u);
  }
  EXPECT_EQ(host.takenBack(), 1u);  // the block; what was third's is second's now
}

TEST(MadeObject, LivesInMemoryOfItsOwn) {
  const CountingHost host;
  int ends = 0;
  Told* object = zeb::makeObject<Told>(&ends);
  EXPECT_EQ(host.requests(), std::vector<uint64_t>{sizeof(Told)});
  zeb::destroyObject(object);
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(host.live(), 0u);
}

TEST(MadeObject, LeavesNoMemoryBehindWhenItsMakingFails) {
  const CountingHost host;
  int ends = 0;
  EXPECT_THROW((void)zeb::makeObject<Told>(&ends, true), std::runtime_error);
  EXPECT_EQ(host.given(), 1u);
  EXPECT_EQ(host.live(), 0u);
  EXPECT_EQ(ends, 0);
}

TEST(MadeObject, EndsWithItsHolder) {
  const CountingHost host;
  int ends = 0;
  { const zeb::ObjectHolder holder(zeb::makeObject<Told>(&ends)); }
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(host.live(), 0u);
}

TEST(MadeObject, OutlivesAHolderThatReleasedIt) {
  const CountingHost host;
  int ends = 0;
  Told* object = nullptr;
  {
    zeb::ObjectHolder holder(zeb::makeObject<Told>(&ends));
    object = holder.release();
    EXPECT_EQ(holder.get(), nullptr);
  }
  EXPECT_EQ(ends, 0);
  zeb::destroyObject(object);
  EXPECT_EQ(ends, 1);
}

}  // namespace
