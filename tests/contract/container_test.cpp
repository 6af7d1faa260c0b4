// Containers as their makers and holders meet them: one reference to begin with, an end with the
// last one, owners that keep them, references that are counted elsewhere.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contract/component_library.h"

namespace contract {
namespace {

// ---- Making

class NewContainer : public ComponentTest {};

TEST_F(NewContainer, HasOneReference) {
  Data data;
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInstance(made, "instance", &data);
  EXPECT_EQ(zeb_.container.AddRef(made), 1);
  zeb_.container.Release(made);
  EXPECT_EQ(data.destroyed, 0);
  zeb_.container.Release(made);
  EXPECT_EQ(data.destroyed, 1);
}

TEST_F(NewContainer, HasNeitherInterfaceNorInstance) {
  ZEBContainer* made = zeb_.NewEmpty();
  EXPECT_STREQ(zeb_.container.GetSignature(made), "");
  EXPECT_EQ(zeb_.InstanceOf(made, "instance"), nullptr);
  EXPECT_EQ(zeb_.MethodOf(made, "Release", "ZEBReleaseContainerProc"), nullptr);
  zeb_.container.Release(made);
}

TEST_F(NewContainer, CountsItsMakingAndItsFirstReference) {
  ZEBContainer* first = nullptr;
  ZEBContainer* second = nullptr;
  EXPECT_EQ(zeb_.EventsOf([&] { first = zeb_.NewEmpty(); }),
            (Events{{kNewContainer, 1}, {kContainerAddRef, 1}, {kContainerPage, 1}}));
  EXPECT_EQ(zeb_.EventsOf([&] { second = zeb_.NewEmpty(); }),
            (Events{{kNewContainer, 1}, {kContainerAddRef, 1}}));
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(first); }), (Events{{kNotRecycled, 1}}));
  zeb_.container.Release(second);
}

TEST_F(NewContainer, IsMadeByTheFirstVersionAsWell) {
  ZEBContainer* made = nullptr;
  EXPECT_EQ(zeb_.EventsOf([&] { made = zeb_.olderContainer.NewContainerV1(); }),
            (Events{{kNewContainer, 1}, {kContainerAddRef, 1}, {kContainerPage, 1}}));
  ASSERT_NE(made, nullptr);
  EXPECT_STREQ(zeb_.container.GetSignature(made), "");
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(made); }), (Events{{kNotRecycled, 1}}));
}

class NewFullContainer : public ComponentTest {
 protected:
  // Checks a container with one reference, and takes it.
  void ExpectFull(ZEBContainer* full, Data& data) {
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(zeb_.InstanceOf(full, "instance"), &data);
    EXPECT_STREQ(zeb_.container.GetSignature(full), "interface");
    EXPECT_EQ(zeb_.container.AddRef(full), 1);
    zeb_.container.Release(full);
    EXPECT_EQ(data.destroyed, 0);
    zeb_.container.Release(full);
    EXPECT_EQ(data.destroyed, 1);
  }
};

TEST_F(NewFullContainer, HasOneInterfaceOneInstanceAndOneReference) {
  Data data;
  ExpectFull(zeb_.NewFull(&data), data);
}

TEST_F(NewFullContainer, IsMadeByTheFirstVersionAsWell) {
  Data data;
  ExpectFull(zeb_.olderContainer.NewFullContainerV1(&data, zeb_.Name("instance"), &Data::Destroy,
                                                    zeb_.Name("interface")),
             data);
}

TEST_F(NewFullContainer, IsMadeByTheSecondVersionAsWell) {
  Data data;
  ZEBContainer* made = nullptr;
  EXPECT_EQ(zeb_.Outcome(zeb_.olderContainer.NewFullContainerV2(
                &made, &data, zeb_.Name("instance"), &Data::Destroy, zeb_.Name("interface"))),
            kSuccess);
  ExpectFull(made, data);
}

TEST_F(NewFullContainer, IsMadeByTheThirdAndFourthVersionsAlike) {
  static int asked;
  asked = 0;
  const auto hook = [](ZEBContainer*, std::uint64_t, std::uint64_t) -> std::int32_t {
    ++asked;
    return 0;
  };
  for (const auto make :
       {zeb_.olderContainer.NewFullContainerV3, zeb_.olderContainer.NewFullContainerV4}) {
    Data data;
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(make(&made, &data, zeb_.Name("instance"), &Data::Destroy,
                                zeb_.Name("interface"), hook)),
              kSuccess);
    ExpectFull(made, data);
  }
  EXPECT_EQ(asked, 2);
}

TEST_F(NewFullContainer, CountsAMissWhenNoneWaits) {
  Data data;
  ZEBContainer* full = nullptr;
  const Events events = zeb_.EventsOf([&] { full = zeb_.NewFull(&data); });
  EXPECT_EQ(events, (Events{{kRecycledMiss, 1},
                            {kContainerAddRef, 1},
                            {kContainerPage, 1},
                            {kInstancePage, 1},
                            {kInterfacePage, 1}}));
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(full); }), Events{});
}

TEST_F(NewFullContainer, NeedsNoDestroyProcedure) {
  Data data;
  zeb_.container.Release(zeb_.NewFull(&data, {.destroy = nullptr}));
  EXPECT_EQ(data.destroyed, 0);
}

TEST_F(NewFullContainer, DestroysNullDataToo) {
  static int destroyed;
  destroyed = 0;
  ZEBContainer* full = zeb_.NewFull(nullptr, {.destroy = [](void* data) {
                                      EXPECT_EQ(data, nullptr);
                                      ++destroyed;
                                    }});
  EXPECT_EQ(zeb_.InstanceOf(full, "instance"), nullptr);
  zeb_.container.Release(full);
  EXPECT_EQ(destroyed, 1);
}

TEST_F(NewFullContainer, HoldsItsNames) {
  ZEBContainer* full = zeb_.NewFull(nullptr, {"kept instance", "kept interface", nullptr});
  zeb_.ReleaseNames();
  ForgetRecentAtoms(zeb_);
  EXPECT_EQ(AtomEventsOf(zeb_, [&] { zeb_.Name("kept instance"); }), (AtomEvents{.found = 1}));
  EXPECT_EQ(AtomEventsOf(zeb_, [&] { zeb_.Name("kept interface"); }), (AtomEvents{.found = 1}));
  zeb_.container.Release(full);
}

// ---- References

class ContainerReferences : public ComponentTest {};

TEST_F(ContainerReferences, AreCountedAsEvents) {
  Data data;
  ZEBContainer* full = zeb_.NewFull(&data);
  EXPECT_EQ(zeb_.EventsOf([&] {
    for (int i = 0; i < 5; ++i) zeb_.container.AddRef(full);
  }),
            (Events{{kContainerAddRef, 5}}));
  EXPECT_EQ(zeb_.EventsOf([&] {
    for (int i = 0; i < 6; ++i) zeb_.container.Release(full);
  }),
            Events{});
  EXPECT_EQ(data.destroyed, 1);
}

TEST_F(ContainerReferences, AreDroppedWithoutDeleting) {
  Data data;
  ZEBContainer* full = zeb_.NewFull(&data);
  zeb_.container.AddRef(full);
  EXPECT_EQ(zeb_.EventsOf([&] {
    EXPECT_EQ(zeb_.container.DecrementWithoutDelete(full), full);
    EXPECT_EQ(zeb_.container.DecrementWithoutDelete(full), full);
  }),
            Events{});
  EXPECT_EQ(data.destroyed, 0);
  EXPECT_EQ(zeb_.InstanceOf(full, "instance"), &data);
  // Nobody holds it now; this does what the last release would have done.
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.DeleteUnownedContainer(full); }),
            (Events{{kContainerAddRef, 1}}));
  EXPECT_EQ(data.destroyed, 1);
}

TEST_F(ContainerReferences, MayBeTakenAgainAfterTheLastWasDroppedWithoutDeleting) {
  Data data;
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInstance(made, "instance", &data);
  zeb_.container.DecrementWithoutDelete(made);
  EXPECT_EQ(zeb_.container.AddRef(made), 1);
  EXPECT_EQ(data.destroyed, 0);
  zeb_.container.Release(made);
  EXPECT_EQ(data.destroyed, 1);
}

TEST_F(ContainerReferences, KeepTheirCountToThemselves) {
  ZEBContainer* empty = zeb_.NewEmpty();
  ZEBContainer* full = zeb_.NewFull(nullptr, {.destroy = nullptr});
  for (ZEBContainer* asked : {empty, full, static_cast<ZEBContainer*>(nullptr)}) {
    EXPECT_EQ(zeb_.container.DebugGetRefCountAddr(asked), nullptr);
  }
  zeb_.container.Release(empty);
  zeb_.container.Release(full);
}

// ---- The end

class DeletedContainer : public ComponentTest {};

TEST_F(DeletedContainer, DestroysEveryInstanceOnce) {
  Data data[5];
  ZEBContainer* made = zeb_.NewEmpty();
  for (Data& one : data) zeb_.AddInstance(made, "instance", &one);
  zeb_.AddInterface(made, "interface");
  zeb_.container.Release(made);
  for (const Data& one : data) EXPECT_EQ(one.destroyed, 1);
}

TEST_F(DeletedContainer, IsNotRecycledWithTwoInstances) {
  Data first;
  Data second;
  ZEBContainer* full = zeb_.NewFull(&first);
  zeb_.AddInstance(full, "second", &second);
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(full); }), (Events{{kNotRecycled, 1}}));
  EXPECT_EQ(first.destroyed, 1);
  EXPECT_EQ(second.destroyed, 1);
  ZEBContainer* next = nullptr;
  EXPECT_EQ(zeb_.EventsOf([&] { next = zeb_.NewFull(nullptr, {.destroy = nullptr}); })
                .count(kRecycledMiss),
            1u);
  zeb_.container.Release(next);
}

TEST_F(DeletedContainer, IsNotRecycledWithTwoInterfaces) {
  Data data;
  ZEBContainer* full = zeb_.NewFull(&data);
  zeb_.AddInterface(full, "second");
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(full); }), (Events{{kNotRecycled, 1}}));
  EXPECT_EQ(data.destroyed, 1);
}

TEST_F(DeletedContainer, IsNotRecycledWithoutAnInterface) {
  Data data;
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInstance(made, "instance", &data);
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(made); }), (Events{{kNotRecycled, 1}}));
}

TEST_F(DeletedContainer, GivesItsNamesBack) {
  ZEBContainer* full = zeb_.NewFull(nullptr, {"passing instance", "passing interface", nullptr});
  zeb_.AddInstance(full, "passing second", nullptr, nullptr);
  zeb_.container.Release(full);
  zeb_.ReleaseNames();
  ForgetRecentAtoms(zeb_);
  for (const char* text : {"passing instance", "passing interface", "passing second"}) {
    EXPECT_EQ(AtomEventsOf(zeb_, [&] { zeb_.Name(text); }), (AtomEvents{.allocated = 1})) << text;
  }
}

TEST_F(DeletedContainer, MayUseTheLibraryWhileItsInstanceIsDestroyed) {
  struct Nested {
    ComponentLibrary& zeb;
    Data own;
    Data inner;
    ZEBContainer* made = nullptr;
  };
  Nested nested{.zeb = zeb_, .own = {}, .inner = {}};
  ZEBContainer* outer = zeb_.NewFull(&nested, {.destroy = [](void* data) {
    auto* self = static_cast<Nested*>(data);
    ++self->own.destroyed;
    self->made = self->zeb.NewFull(&self->inner, {"inner", "inner"});
    self->zeb.MethodOf(self->made, "method", "proc");
    self->zeb.frame.UnregisterInterface("inner");
  }});
  zeb_.container.Release(outer);
  EXPECT_EQ(nested.own.destroyed, 1);
  // The container that is ending cannot be made anew before its instance has gone.
  EXPECT_NE(nested.made, outer);
  EXPECT_EQ(zeb_.InstanceOf(nested.made, "inner"), &nested.inner);
  zeb_.container.Release(nested.made);
  EXPECT_EQ(nested.inner.destroyed, 1);
}

// ---- Owners that keep their containers

// An owner that answers as it is told and remembers what it was asked.
struct Owner {
  static inline std::int32_t answer = 0;
  static inline int asked = 0;
  static inline ZEBContainer* container = nullptr;
  static inline std::uint64_t interfaces = 0;
  static inline std::uint64_t instances = 0;

  static void Reset(std::int32_t nextAnswer) {
    answer = nextAnswer;
    asked = 0;
  }

  static std::int32_t Hook(ZEBContainer* ended, std::uint64_t interfaceCount,
                           std::uint64_t instanceCount) {
    ++asked;
    container = ended;
    interfaces = interfaceCount;
    instances = instanceCount;
    return answer;
  }
};

class OwnedContainer : public ComponentTest {
 protected:
  ZEBContainer* NewOwned(std::int32_t answer) {
    Owner::Reset(answer);
    return zeb_.NewFull(&data_, {.ownerHook = &Owner::Hook});
  }

  Data data_;
};

TEST_F(OwnedContainer, AsksItsOwnerWhenTheLastReferenceHasGone) {
  ZEBContainer* owned = NewOwned(0);
  zeb_.container.AddRef(owned);
  zeb_.container.Release(owned);
  EXPECT_EQ(Owner::asked, 0);
  zeb_.container.Release(owned);
  EXPECT_EQ(Owner::asked, 1);
  EXPECT_EQ(Owner::container, owned);
  EXPECT_EQ(Owner::interfaces, 1u);
  EXPECT_EQ(Owner::instances, 1u);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(OwnedContainer, TellsItsOwnerHowManyInterfacesAndInstancesItHas) {
  Data more[2];
  ZEBContainer* owned = NewOwned(0);
  zeb_.AddInterface(owned, "second");
  zeb_.AddInterface(owned, "third");
  zeb_.AddInterface(owned, "third");
  zeb_.AddInterface(owned, "fourth");
  for (Data& one : more) zeb_.AddInstance(owned, "more", &one);
  zeb_.container.Release(owned);
  EXPECT_EQ(Owner::asked, 1);
  EXPECT_EQ(Owner::interfaces, 4u);
  EXPECT_EQ(Owner::instances, 3u);
}

TEST_F(OwnedContainer, StaysWithAnOwnerThatKeepsIt) {
  ZEBContainer* owned = NewOwned(-1);
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(owned); }), Events{});
  EXPECT_EQ(Owner::asked, 1);
  EXPECT_EQ(data_.destroyed, 0);
  EXPECT_EQ(zeb_.InstanceOf(owned, "instance"), &data_);
  // It does not wait among those that can be made anew.
  ZEBContainer* other = zeb_.NewFull(nullptr, {.destroy = nullptr});
  EXPECT_NE(other, owned);
  zeb_.container.Release(other);

  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.DeleteUnownedContainer(owned); }),
            (Events{{kContainerAddRef, 1}}));
  EXPECT_EQ(Owner::asked, 1);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(OwnedContainer, IsDeletedWhenItsOwnerKeptItAndItIsNotFull) {
  Data second;
  ZEBContainer* owned = NewOwned(1);
  zeb_.AddInstance(owned, "second", &second);
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(owned); }), Events{});
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.DeleteUnownedContainer(owned); }),
            (Events{{kContainerAddRef, 1}, {kNotRecycled, 1}}));
  EXPECT_EQ(data_.destroyed, 1);
  EXPECT_EQ(second.destroyed, 1);
}

TEST_F(OwnedContainer, AsksAgainEachTimeTheCountReachesZero) {
  ZEBContainer* owned = NewOwned(1);
  for (int round = 1; round <= 3; ++round) {
    zeb_.container.Release(owned);
    EXPECT_EQ(Owner::asked, round);
    EXPECT_EQ(zeb_.container.AddRef(owned), 1);
  }
  Owner::answer = 0;
  zeb_.container.Release(owned);
  EXPECT_EQ(Owner::asked, 4);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(OwnedContainer, OnlyLosesItsHookWhileItIsReferenced) {
  ZEBContainer* owned = NewOwned(1);
  zeb_.container.DeleteUnownedContainer(owned);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.Release(owned);
  EXPECT_EQ(Owner::asked, 0);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(OwnedContainer, MayBeTakenBackByItsOwnerInTheHook) {
  static const ComponentLibrary* zeb;
  zeb = &zeb_;
  ZEBContainer* owned = zeb_.NewFull(
      &data_, {.ownerHook = [](ZEBContainer* ended, std::uint64_t, std::uint64_t) -> std::int32_t {
        return zeb->container.AddRef(ended);
      }});
  zeb_.container.Release(owned);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.DeleteUnownedContainer(owned);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.Release(owned);
  EXPECT_EQ(data_.destroyed, 1);
}

// ---- References that are counted elsewhere

// A count of references outside the container; `scale` is what its drops answer at the last one.
struct OtherCount {
  std::int64_t references = 1;
  int adds = 0;
  int drops = 0;

  std::uint64_t context() { return reinterpret_cast<std::uint64_t>(this); }

  static std::int64_t Count(std::uint64_t context, std::int32_t add) {
    auto* self = reinterpret_cast<OtherCount*>(context);
    if (add == 1) {
      ++self->adds;
      return ++self->references;
    }
    EXPECT_EQ(add, 0);
    ++self->drops;
    return --self->references == 0 ? kLast : 0;
  }

  // Some value other than 0 that a pointer can carry whole.
  static constexpr std::int64_t kLast = 0x123456789ABC;
};

class ForeignCount : public ComponentTest {
 protected:
  ZEBContainer* NewCounted(OtherCount& count) {
    return zeb_.NewFull(&data_, {.refProc = &OtherCount::Count, .refContext = count.context()});
  }

  Data data_;
};

TEST_F(ForeignCount, IsNotAskedByCreation) {
  OtherCount count;
  ZEBContainer* counted = NewCounted(count);
  EXPECT_EQ(count.adds + count.drops, 0);
  zeb_.container.Release(counted);
  EXPECT_EQ(count.adds, 0);
  EXPECT_EQ(count.drops, 1);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ForeignCount, DecidesWhichReleaseIsTheLast) {
  OtherCount count;
  ZEBContainer* counted = NewCounted(count);
  EXPECT_EQ(zeb_.EventsOf([&] { EXPECT_EQ(zeb_.container.AddRef(counted), 1); }),
            (Events{{kContainerAddRef, 1}}));
  EXPECT_EQ(count.adds, 1);
  // References that somebody else holds, unknown to the container.
  count.references += 2;
  for (int i = 0; i < 3; ++i) zeb_.container.Release(counted);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.Release(counted);
  EXPECT_EQ(count.drops, 4);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ForeignCount, AnswersADropWithoutDeleting) {
  OtherCount count;
  ZEBContainer* counted = NewCounted(count);
  zeb_.container.AddRef(counted);
  EXPECT_EQ(zeb_.container.DecrementWithoutDelete(counted), nullptr);
  EXPECT_EQ(zeb_.container.DecrementWithoutDelete(counted),
            reinterpret_cast<void*>(OtherCount::kLast));
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.DeleteUnownedContainer(counted);
  EXPECT_EQ(count.adds, 2);
  EXPECT_EQ(count.drops, 3);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ForeignCount, IsFollowedByTheOwnersHook) {
  OtherCount count;
  Owner::Reset(1);
  ZEBContainer* counted = zeb_.NewFull(
      &data_,
      {.ownerHook = &Owner::Hook, .refProc = &OtherCount::Count, .refContext = count.context()});
  zeb_.container.AddRef(counted);
  zeb_.container.Release(counted);
  EXPECT_EQ(Owner::asked, 0);
  zeb_.container.Release(counted);
  EXPECT_EQ(Owner::asked, 1);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.DeleteUnownedContainer(counted);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ForeignCount, GetsItsContextWhole) {
  static std::uint64_t seen;
  seen = 0;
  ZEBContainer* counted = zeb_.NewFull(&data_, {.refProc =
                                                    [](std::uint64_t context, std::int32_t) {
                                                      seen = context;
                                                      return std::int64_t{1} << 40;
                                                    },
                                                .refContext = 0xFEDCBA9876543210u});
  // An answer whose lower half is 0 is other than 0 all the same.
  zeb_.container.Release(counted);
  EXPECT_EQ(seen, 0xFEDCBA9876543210u);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ForeignCount, MayHaveAContextWithoutAProcedure) {
  ZEBContainer* full = zeb_.NewFull(&data_, {.refContext = 5});
  zeb_.container.AddRef(full);
  zeb_.container.Release(full);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.Release(full);
  EXPECT_EQ(data_.destroyed, 1);
}

// ---- Interfaces, signatures and cached fields

class ContainerSignature : public ComponentTest {
 protected:
  // Whether a signature is exactly the atom of this text.
  bool IsAtomOf(ZEBContainer* asked, const std::string& text) {
    return zeb_.container.GetSignature(asked) == zeb_.TextOf(text);
  }
};

TEST_F(ContainerSignature, IsTheNameOfTheOnlyInterface) {
  ZEBContainer* full = zeb_.NewFull(nullptr, {.destroy = nullptr});
  EXPECT_TRUE(IsAtomOf(full, "interface"));
  zeb_.container.Release(full);
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInterface(made, "by hand");
  EXPECT_TRUE(IsAtomOf(made, "by hand"));
  zeb_.container.Release(made);
}

TEST_F(ContainerSignature, JoinsTheNamesInTheirOrder) {
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInterface(made, "first");
  zeb_.AddInterface(made, "second");
  EXPECT_STREQ(zeb_.container.GetSignature(made), "first.second");
  EXPECT_TRUE(IsAtomOf(made, "first.second"));
  zeb_.AddInterface(made, "third");
  EXPECT_TRUE(IsAtomOf(made, "first.second.third"));
  zeb_.container.Release(made);
}

TEST_F(ContainerSignature, IgnoresRepeats) {
  ZEBContainer* made = zeb_.NewEmpty();
  for (const char* name : {"first", "second", "first", "second", "first"}) {
    zeb_.AddInterface(made, name);
  }
  EXPECT_TRUE(IsAtomOf(made, "first.second"));
  zeb_.container.Release(made);
}

TEST_F(ContainerSignature, GrowsWithTheFirstVersionOfTheProcToo) {
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.olderContainer.RegisterInterfaceV1(made, zeb_.Name("first"));
  zeb_.olderContainer.RegisterInterfaceV1(made, zeb_.Name("second"));
  zeb_.olderContainer.RegisterInterfaceV1(made, zeb_.Name("second"));
  EXPECT_TRUE(IsAtomOf(made, "first.second"));
  zeb_.container.Release(made);
}

TEST_F(ContainerSignature, CanBeLong) {
  std::string expected;
  ZEBContainer* made = zeb_.NewEmpty();
  for (int i = 0; i < 200; ++i) {
    const std::string name = "interface number " + std::to_string(i);
    zeb_.AddInterface(made, name.c_str());
    expected += (i == 0 ? "" : ".") + name;
  }
  EXPECT_TRUE(IsAtomOf(made, expected));
  zeb_.container.Release(made);
}

class CachedFields : public ComponentTest {
 protected:
  void ExpectCached(ZEBContainer* made, const char* instance, const char* interface,
                    const void* data) {
    const ZEBContainerCache cache = zeb_.CacheOf(made);
    EXPECT_EQ(cache.instanceName, instance);
    EXPECT_EQ(cache.interfaceName, interface);
    EXPECT_EQ(cache.instanceData, data);
  }
};

TEST_F(CachedFields, StandInsideTheContainer) {
  EXPECT_GE(zeb_.container.GetOffsetToPrimaryInstance(), 0);
  EXPECT_EQ(zeb_.container.GetOffsetToPrimaryInstance() % 8, 0);
}

TEST_F(CachedFields, NameTheOnlyInstanceOfAFullContainer) {
  Data data;
  ZEBContainer* full = zeb_.NewFull(&data);
  ExpectCached(full, zeb_.TextOf("instance"), zeb_.TextOf("interface"), &data);
  zeb_.container.Release(full);
}

TEST_F(CachedFields, FollowTheSignature) {
  Data data;
  ZEBContainer* full = zeb_.NewFull(&data);
  zeb_.AddInterface(full, "second");
  ExpectCached(full, zeb_.TextOf("instance"), zeb_.container.GetSignature(full), &data);
  EXPECT_STREQ(zeb_.CacheOf(full).interfaceName, "interface.second");
  zeb_.container.Release(full);
}

TEST_F(CachedFields, KeepTheFirstInstanceWithData) {
  Data first;
  Data second;
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInterface(made, "interface");
  zeb_.AddInstance(made, "without data", nullptr, nullptr);
  EXPECT_EQ(zeb_.CacheOf(made).instanceData, nullptr);
  zeb_.AddInstance(made, "first", &first);
  ExpectCached(made, zeb_.TextOf("first"), zeb_.TextOf("interface"), &first);
  zeb_.AddInstance(made, "second", &second);
  ExpectCached(made, zeb_.TextOf("first"), zeb_.TextOf("interface"), &first);
  zeb_.container.Release(made);
}

TEST_F(CachedFields, HaveTheEmptyTextForAMissingSignature) {
  Data data;
  ZEBContainer* made = zeb_.NewEmpty();
  EXPECT_EQ(zeb_.CacheOf(made).instanceData, nullptr);
  zeb_.AddInstance(made, "instance", &data);
  EXPECT_EQ(zeb_.CacheOf(made).instanceName, zeb_.TextOf("instance"));
  EXPECT_STREQ(zeb_.CacheOf(made).interfaceName, "");
  EXPECT_EQ(zeb_.CacheOf(made).instanceData, &data);
  zeb_.AddInterface(made, "interface");
  ExpectCached(made, zeb_.TextOf("instance"), zeb_.TextOf("interface"), &data);
  zeb_.container.Release(made);
}

// ---- Instances

class ContainerInstances : public ComponentTest {};

TEST_F(ContainerInstances, AreDestroyedWithTheirContainer) {
  Data newer;
  Data older;
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInstance(made, "newer", &newer);
  zeb_.olderContainer.RegisterInstanceV1(made, &older, zeb_.Name("older"), &Data::Destroy);
  EXPECT_EQ(zeb_.InstanceOf(made, "newer"), &newer);
  EXPECT_EQ(zeb_.InstanceOf(made, "older"), &older);
  zeb_.container.Release(made);
  EXPECT_EQ(newer.destroyed, 1);
  EXPECT_EQ(older.destroyed, 1);
}

TEST_F(ContainerInstances, NeedNoDestroyProcedure) {
  Data data;
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.AddInstance(made, "instance", &data, nullptr);
  zeb_.container.Release(made);
  EXPECT_EQ(data.destroyed, 0);
}

TEST_F(ContainerInstances, CountAPageForEverySixteenOfThem) {
  ZEBContainer* made = zeb_.NewEmpty();
  for (int i = 1; i <= 33; ++i) {
    const Events events =
        zeb_.EventsOf([&] { zeb_.AddInstance(made, "instance", nullptr, nullptr); });
    EXPECT_EQ(events, i % 16 == 1 ? (Events{{kInstancePage, 1}}) : Events{}) << i;
  }
  zeb_.container.Release(made);
}

TEST_F(ContainerInstances, ShareTheirPoolWithNothingElse) {
  ZEBContainer* made = zeb_.NewEmpty();
  for (int i = 1; i <= 33; ++i) {
    const std::string name = "interface " + std::to_string(i);
    const Events events = zeb_.EventsOf([&] { zeb_.AddInterface(made, name.c_str()); });
    EXPECT_EQ(events, i % 16 == 1 ? (Events{{kInterfacePage, 1}}) : Events{}) << i;
  }
  zeb_.container.Release(made);
}

}  // namespace
}  // namespace contract
