// Full containers that wait to be made anew: which ones wait, how many, what they keep meanwhile
// and what is left of their first life afterwards.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "contract/component_library.h"

namespace contract {
namespace {

class RecycledContainer : public ComponentTest {
 protected:
  // One waiting container, which was made of these parts.
  ZEBContainer* Recycle(const FullParts& parts = {}) {
    ZEBContainer* full = zeb_.NewFull(&first_, parts);
    zeb_.container.Release(full);
    return full;
  }

  // Whether the container, made again, has exactly one reference, which is taken.
  void ExpectOneReference(ZEBContainer* full, Data& data) {
    EXPECT_EQ(zeb_.container.AddRef(full), 1);
    zeb_.container.Release(full);
    EXPECT_EQ(data.destroyed, 0);
    zeb_.container.Release(full);
    EXPECT_EQ(data.destroyed, 1);
  }

  std::vector<ZEBContainer*> MakeMany(int count) {
    std::vector<ZEBContainer*> made;
    for (int i = 0; i < count; ++i) made.push_back(zeb_.NewFull(&first_));
    return made;
  }
  void ReleaseAll(const std::vector<ZEBContainer*>& made) {
    for (ZEBContainer* one : made) zeb_.container.Release(one);
  }

  Data first_;
  Data second_;
};

TEST_F(RecycledContainer, IsTheNextFullContainer) {
  ZEBContainer* waiting = Recycle();
  ZEBContainer* next = zeb_.NewFull(&second_);
  EXPECT_EQ(next, waiting);
  zeb_.container.Release(next);
}

TEST_F(RecycledContainer, WaitsWithItsInstanceDestroyed) {
  Recycle();
  EXPECT_EQ(first_.destroyed, 1);
  zeb_.container.Release(zeb_.NewFull(&second_));
  EXPECT_EQ(first_.destroyed, 1);
  EXPECT_EQ(second_.destroyed, 1);
}

TEST_F(RecycledContainer, HasNothingOfItsFirstLife) {
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("interface", "method", "proc", FakeProc(16)), 1);
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("new interface", "new method", "proc", FakeProc(32)), 1);
  ZEBContainer* waiting = Recycle();
  ZEBContainer* next = zeb_.NewFull(&second_, {"new instance", "new interface"});
  ASSERT_EQ(next, waiting);
  EXPECT_EQ(zeb_.InstanceOf(next, "new instance"), &second_);
  EXPECT_EQ(zeb_.InstanceOf(next, "instance"), nullptr);
  EXPECT_EQ(zeb_.MethodOf(next, "new method", "proc"), FakeProc(32));
  EXPECT_EQ(zeb_.MethodOf(next, "method", "proc"), nullptr);
  EXPECT_EQ(zeb_.container.GetSignature(next), zeb_.TextOf("new interface"));
  const ZEBContainerCache cache = zeb_.CacheOf(next);
  EXPECT_EQ(cache.instanceName, zeb_.TextOf("new instance"));
  EXPECT_EQ(cache.interfaceName, zeb_.TextOf("new interface"));
  EXPECT_EQ(cache.instanceData, &second_);
  zeb_.container.Release(next);
}

TEST_F(RecycledContainer, CountsAHitAndNothingElse) {
  Recycle();
  ZEBContainer* next = nullptr;
  EXPECT_EQ(zeb_.EventsOf([&] { next = zeb_.NewFull(&second_); }), (Events{{kRecycledHit, 1}}));
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(next); }), Events{});
}

TEST_F(RecycledContainer, IsMadeAnewByEveryVersion) {
  const OlderContainerProcs& older = zeb_.olderContainer;
  ZEBString* instance = zeb_.Name("instance");
  ZEBString* interface = zeb_.Name("interface");
  ZEBContainer* waiting = Recycle();
  ZEBContainer* made = older.NewFullContainerV1(&second_, instance, nullptr, interface);
  EXPECT_EQ(made, waiting);
  zeb_.container.Release(made);
  EXPECT_EQ(zeb_.Outcome(older.NewFullContainerV2(&made, &second_, instance, nullptr, interface)),
            kSuccess);
  EXPECT_EQ(made, waiting);
  zeb_.container.Release(made);
  for (const auto make : {older.NewFullContainerV3, older.NewFullContainerV4}) {
    EXPECT_EQ(zeb_.Outcome(make(&made, &second_, instance, nullptr, interface, nullptr)), kSuccess);
    EXPECT_EQ(made, waiting);
    zeb_.container.Release(made);
  }
}

TEST_F(RecycledContainer, HasOneReference) {
  Recycle();
  ZEBContainer* next = zeb_.NewFull(&second_);
  ExpectOneReference(next, second_);
}

TEST_F(RecycledContainer, HasOneReferenceAfterManyWereCounted) {
  ZEBContainer* full = zeb_.NewFull(&first_);
  for (int i = 0; i < 10; ++i) zeb_.container.AddRef(full);
  for (int i = 0; i < 11; ++i) zeb_.container.Release(full);
  ExpectOneReference(zeb_.NewFull(&second_), second_);
}

TEST_F(RecycledContainer, HasOneReferenceAfterOthersWereCountedElsewhere) {
  const auto lastAtOnce = [](std::uint64_t, std::int32_t add) -> std::int64_t { return add == 0; };
  ZEBContainer* counted = zeb_.NewFull(&first_, {.refProc = lastAtOnce});
  for (int i = 0; i < 3; ++i) zeb_.container.AddRef(counted);
  zeb_.container.Release(counted);
  EXPECT_EQ(first_.destroyed, 1);
  ExpectOneReference(zeb_.NewFull(&second_), second_);
}

TEST_F(RecycledContainer, HasOneReferenceAfterItsOwnerKeptIt) {
  const auto keep = [](ZEBContainer*, std::uint64_t, std::uint64_t) -> std::int32_t { return 1; };
  ZEBContainer* kept = zeb_.NewFull(&first_, {.ownerHook = keep});
  zeb_.container.Release(kept);
  zeb_.container.DeleteUnownedContainer(kept);
  EXPECT_EQ(first_.destroyed, 1);
  ExpectOneReference(zeb_.NewFull(&second_), second_);
}

TEST_F(RecycledContainer, ForgetsHooksAndForeignCounts) {
  static int asked;
  asked = 0;
  const FullParts watched = {
      .ownerHook = [](ZEBContainer*, std::uint64_t, std::uint64_t) -> std::int32_t {
        ++asked;
        return 0;
      },
      .refProc = [](std::uint64_t, std::int32_t) -> std::int64_t {
        ++asked;
        return 1;
      }};
  ZEBContainer* waiting = Recycle(watched);
  asked = 0;
  ZEBContainer* next = zeb_.NewFull(&second_);
  ASSERT_EQ(next, waiting);
  ExpectOneReference(next, second_);
  EXPECT_EQ(asked, 0);
}

TEST_F(RecycledContainer, TakesHooksAndForeignCountsAnew) {
  static int asked;
  static int drops;
  asked = drops = 0;
  ZEBContainer* waiting = Recycle();
  ZEBContainer* next = zeb_.NewFull(
      &second_, {.ownerHook = [](ZEBContainer*, std::uint64_t, std::uint64_t) -> std::int32_t {
                   ++asked;
                   return 0;
                 },
                 .refProc = [](std::uint64_t context, std::int32_t add) -> std::int64_t {
                   EXPECT_EQ(context, 7u);
                   EXPECT_EQ(add, 0);
                   return ++drops == 2;
                 },
                 .refContext = 7});
  ASSERT_EQ(next, waiting);
  EXPECT_EQ(drops, 0);
  zeb_.container.Release(next);
  EXPECT_EQ(second_.destroyed, 0);
  zeb_.container.Release(next);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(second_.destroyed, 1);
}

TEST_F(RecycledContainer, ForgetsItsDestroyProcedure) {
  Recycle();
  zeb_.container.Release(zeb_.NewFull(&second_, {.destroy = nullptr}));
  EXPECT_EQ(second_.destroyed, 0);
}

TEST_F(RecycledContainer, CanGrowLikeANewOne) {
  Data third;
  Recycle();
  ZEBContainer* next = zeb_.NewFull(&second_);
  zeb_.AddInterface(next, "second interface");
  zeb_.AddInstance(next, "third", &third);
  EXPECT_STREQ(zeb_.container.GetSignature(next), "interface.second interface");
  EXPECT_EQ(zeb_.CacheOf(next).instanceData, &second_);
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(next); }), (Events{{kNotRecycled, 1}}));
  EXPECT_EQ(second_.destroyed, 1);
  EXPECT_EQ(third.destroyed, 1);
}

TEST_F(RecycledContainer, MayHaveBeenMadeFullByHand) {
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInstance(made, "by hand", &first_);
  zeb_.AddInterface(made, "by hand");
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(made); }), Events{});
  EXPECT_EQ(first_.destroyed, 1);
  ZEBContainer* next = zeb_.NewFull(&second_);
  EXPECT_EQ(next, made);
  EXPECT_EQ(zeb_.CacheOf(next).instanceData, &second_);
  EXPECT_EQ(zeb_.container.GetSignature(next), zeb_.TextOf("interface"));
  ExpectOneReference(next, second_);
}

TEST_F(RecycledContainer, IsTheOneThatCameLast) {
  const std::vector<ZEBContainer*> made = MakeMany(3);
  ReleaseAll(made);
  const std::vector<ZEBContainer*> next = MakeMany(3);
  EXPECT_TRUE(std::equal(made.rbegin(), made.rend(), next.begin()));
  ReleaseAll(next);
}

TEST_F(RecycledContainer, WaitsWithThirtyOneOthers) {
  const std::vector<ZEBContainer*> made = MakeMany(40);
  EXPECT_EQ(zeb_.EventsOf([&] { ReleaseAll(made); }), Events{});
  EXPECT_EQ(first_.destroyed, 40);
  std::vector<ZEBContainer*> next;
  Events events = zeb_.EventsOf([&] { next = MakeMany(40); });
  EXPECT_EQ(events[kRecycledHit], kMaxRecycled);
  EXPECT_EQ(events[kRecycledMiss], 40 - kMaxRecycled);
  // The first 32 that came waited; those after them were deleted.
  EXPECT_TRUE(std::is_permutation(made.begin(), made.begin() + kMaxRecycled, next.begin(),
                                  next.begin() + kMaxRecycled));
  ReleaseAll(next);
}

TEST_F(RecycledContainer, LeavesNoPlaceForAThirtyThird) {
  const std::vector<ZEBContainer*> made = MakeMany(2 * 16);
  ZEBContainer* last = zeb_.NewFull(&second_, {"last instance", "last interface"});
  ReleaseAll(made);
  const std::uint64_t live = Host::LiveBlocks();
  // Deleted, though not as one that could not wait; its three pages go with it.
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(last); }), Events{});
  EXPECT_EQ(second_.destroyed, 1);
  EXPECT_EQ(Host::LiveBlocks(), live - 3);
  zeb_.ReleaseNames();
  ForgetRecentAtoms(zeb_);
  for (const char* text : {"last instance", "last interface"}) {
    EXPECT_EQ(AtomEventsOf(zeb_, [&] { zeb_.Name(text); }), (AtomEvents{.allocated = 1})) << text;
  }
}

TEST_F(RecycledContainer, HoldsItsNamesUntilItIsMadeAnew) {
  Recycle({"held instance", "held interface"});
  zeb_.ReleaseNames();
  ForgetRecentAtoms(zeb_);
  for (const char* text : {"held instance", "held interface"}) {
    EXPECT_EQ(AtomEventsOf(zeb_, [&] { zeb_.Name(text); }), (AtomEvents{.found = 1})) << text;
  }
  ZEBContainer* next = zeb_.NewFull(&second_);
  zeb_.ReleaseNames();
  ForgetRecentAtoms(zeb_);
  for (const char* text : {"held instance", "held interface"}) {
    EXPECT_EQ(AtomEventsOf(zeb_, [&] { zeb_.Name(text); }), (AtomEvents{.allocated = 1})) << text;
  }
  zeb_.container.Release(next);
}

TEST_F(RecycledContainer, NeedsNoMemoryToBeMadeAnew) {
  ZEBContainer* waiting = Recycle();
  ZEBString* instance = zeb_.Name("new instance");
  ZEBString* interface = zeb_.Name("new interface");
  ZEBContainer* next = nullptr;
  Host::FailAt(1, true);
  ZEBErrorObject* error = zeb_.container.NewFullContainer(&next, &second_, instance, &Data::Destroy,
                                                          interface, nullptr, nullptr, 0);
  zeb_.container.AddRef(next);
  zeb_.container.Release(next);
  EXPECT_FALSE(Host::StopFailing());
  EXPECT_EQ(zeb_.Outcome(error), kSuccess);
  EXPECT_EQ(next, waiting);
  Host::FailAt(1, true);
  zeb_.container.Release(next);
  EXPECT_FALSE(Host::StopFailing());
  EXPECT_EQ(second_.destroyed, 1);
}

TEST_F(RecycledContainer, IsLeftAloneByRefusedMakers) {
  ZEBContainer* waiting = Recycle();
  ZEBContainer* none = waiting;
  EXPECT_EQ(
      zeb_.Outcome(zeb_.container.NewFullContainer(&none, &second_, zeb_.Name("instance"),
                                                   &Data::Destroy, nullptr, nullptr, nullptr, 0)),
      kMissingMethod);
  EXPECT_EQ(none, nullptr);
  ZEBContainer* next = zeb_.NewFull(nullptr, {.destroy = nullptr});
  EXPECT_EQ(next, waiting);
  zeb_.container.Release(next);
}

}  // namespace
}  // namespace contract
