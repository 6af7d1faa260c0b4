// Clones: the source's interfaces and instances in a container of its own, which keeps the source.

#include <gtest/gtest.h>

#include "contract/component_library.h"

namespace contract {
namespace {

class ContainerClone : public ComponentTest {
 protected:
  Data data_;
};

TEST_F(ContainerClone, HasTheSourcesInterfacesAndInstances) {
  Data second;
  ZEBContainer* source = zeb_.NewFull(&data_);
  zeb_.AddInterface(source, "second");
  zeb_.AddInstance(source, "second", &second);
  ZEBContainer* clone = zeb_.Clone(source);
  ASSERT_NE(clone, source);
  EXPECT_EQ(zeb_.container.GetSignature(clone), zeb_.container.GetSignature(source));
  EXPECT_EQ(zeb_.InstanceOf(clone, "instance"), &data_);
  EXPECT_EQ(zeb_.InstanceOf(clone, "second"), &second);
  zeb_.container.Release(source);
  zeb_.container.Release(clone);
  EXPECT_EQ(data_.destroyed, 1);
  EXPECT_EQ(second.destroyed, 1);
}

TEST_F(ContainerClone, KeepsTheOrderOfBoth) {
  Data later;
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("earlier", "method", "proc", FakeProc(16)), 1);
  ASSERT_EQ(zeb_.frame.RegisterProcAddress("later", "method", "proc", FakeProc(32)), 1);
  ZEBContainer* source = zeb_.NewFull(&data_, {"same name", "earlier"});
  zeb_.AddInterface(source, "later");
  zeb_.AddInstance(source, "same name", &later);
  ZEBContainer* clone = zeb_.Clone(source);
  EXPECT_EQ(zeb_.MethodOf(clone, "method", "proc"), FakeProc(32));
  EXPECT_EQ(zeb_.ParentMethodOf(clone, "later", "method", "proc"), FakeProc(16));
  EXPECT_EQ(zeb_.ParentMethodOf(clone, "earlier", "method", "proc"), nullptr);
  EXPECT_EQ(zeb_.InstanceOf(clone, "same name"), &later);
  zeb_.container.Release(clone);
  zeb_.container.Release(source);
}

TEST_F(ContainerClone, KeepsItsSourceAlive) {
  ZEBContainer* source = zeb_.NewFull(&data_);
  ZEBContainer* clone = zeb_.Clone(source);
  zeb_.container.Release(source);
  EXPECT_EQ(data_.destroyed, 0);
  EXPECT_EQ(zeb_.InstanceOf(source, "instance"), &data_);
  zeb_.container.Release(clone);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ContainerClone, DestroysNothingThatTheSourceOwns) {
  ZEBContainer* source = zeb_.NewFull(&data_);
  zeb_.container.Release(zeb_.Clone(source));
  EXPECT_EQ(data_.destroyed, 0);
  EXPECT_EQ(zeb_.InstanceOf(source, "instance"), &data_);
  zeb_.container.Release(source);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ContainerClone, HoldsExactlyOneReferenceToItsSource) {
  ZEBContainer* source = zeb_.NewFull(&data_);
  ZEBContainer* clone = zeb_.Clone(source);
  EXPECT_EQ(zeb_.container.DecrementWithoutDelete(source), source);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.Release(clone);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ContainerClone, AddsAnInstanceOfItsOwn) {
  ZEBContainer* source = zeb_.NewFull(&data_);
  ZEBContainer* clone = zeb_.Clone(source);
  EXPECT_NE(zeb_.InstanceOf(clone, "ZEBContainerCloneInst"), nullptr);
  EXPECT_EQ(zeb_.InstanceOf(source, "ZEBContainerCloneInst"), nullptr);
  EXPECT_STREQ(ZEB_CONTAINER_CLONE_INSTANCE, "ZEBContainerCloneInst");
  zeb_.container.Release(clone);
  zeb_.container.Release(source);
}

TEST_F(ContainerClone, NamesItsOwnInstanceInTheCachedFields) {
  ZEBContainer* source = zeb_.NewFull(&data_);
  ZEBContainer* clone = zeb_.Clone(source);
  const ZEBContainerCache cache = zeb_.CacheOf(clone);
  EXPECT_EQ(cache.instanceName, zeb_.TextOf("ZEBContainerCloneInst"));
  EXPECT_EQ(cache.interfaceName, zeb_.TextOf("interface"));
  EXPECT_EQ(cache.instanceData, zeb_.InstanceOf(clone, "ZEBContainerCloneInst"));
  zeb_.container.Release(clone);
  zeb_.container.Release(source);
}

TEST_F(ContainerClone, IsNeverRecycled) {
  ZEBContainer* source = zeb_.NewFull(&data_);
  ZEBContainer* clone = nullptr;
  const Events events = zeb_.EventsOf([&] { clone = zeb_.Clone(source); });
  EXPECT_EQ(events, (Events{{kContainerAddRef, 2}})) << "the clone's first and one of the source";
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(clone); }), (Events{{kNotRecycled, 1}}));
  zeb_.container.Release(source);
}

TEST_F(ContainerClone, CanBeCloned) {
  ZEBContainer* source = zeb_.NewFull(&data_);
  ZEBContainer* clone = zeb_.Clone(source);
  ZEBContainer* again = zeb_.Clone(clone);
  EXPECT_NE(zeb_.InstanceOf(again, "ZEBContainerCloneInst"),
            zeb_.InstanceOf(clone, "ZEBContainerCloneInst"));
  zeb_.container.Release(source);
  zeb_.container.Release(clone);
  EXPECT_EQ(zeb_.InstanceOf(again, "instance"), &data_);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.Release(again);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ContainerClone, OfAnEmptyContainerHasItsOwnInstanceOnly) {
  ZEBContainer* source = zeb_.NewEmpty();
  ZEBContainer* clone = zeb_.Clone(source);
  EXPECT_STREQ(zeb_.container.GetSignature(clone), "");
  EXPECT_EQ(zeb_.CacheOf(clone).instanceName, zeb_.TextOf("ZEBContainerCloneInst"));
  EXPECT_STREQ(zeb_.CacheOf(clone).interfaceName, "");
  zeb_.container.Release(source);
  zeb_.container.Release(clone);
}

TEST_F(ContainerClone, IsFullWithItsOwnInstanceAndASingleInterface) {
  ZEBContainer* source = zeb_.NewEmpty();
  zeb_.AddInterface(source, "interface");
  ZEBContainer* clone = zeb_.Clone(source);
  zeb_.container.Release(source);
  // The clone waits to be made anew; its source goes for good.
  EXPECT_EQ(zeb_.EventsOf([&] { zeb_.container.Release(clone); }), (Events{{kNotRecycled, 1}}));
  ZEBContainer* next = zeb_.NewFull(&data_);
  EXPECT_EQ(next, clone);
  EXPECT_EQ(zeb_.InstanceOf(next, "ZEBContainerCloneInst"), nullptr);
  zeb_.container.Release(next);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ContainerClone, CountsItsSourceWhereTheSourceIsCounted) {
  struct Counts {
    int adds = 0;
    int drops = 0;
    int references = 1;
  } counts;
  const auto refProc = [](std::uint64_t context, std::int32_t add) -> std::int64_t {
    auto* self = reinterpret_cast<Counts*>(context);
    ++(add == 1 ? self->adds : self->drops);
    self->references += add == 1 ? 1 : -1;
    return self->references == 0;
  };
  ZEBContainer* source = zeb_.NewFull(
      &data_, {.refProc = refProc, .refContext = reinterpret_cast<std::uint64_t>(&counts)});
  ZEBContainer* clone = zeb_.Clone(source);
  EXPECT_EQ(counts.adds, 1);
  // The clone's own references are its own affair.
  zeb_.container.AddRef(clone);
  zeb_.container.Release(clone);
  EXPECT_EQ(counts.adds, 1);
  EXPECT_EQ(counts.drops, 0);
  zeb_.container.Release(clone);
  EXPECT_EQ(counts.drops, 1);
  EXPECT_EQ(data_.destroyed, 0);
  zeb_.container.Release(source);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ContainerClone, DoesNotAskTheSourcesOwnerAboutItself) {
  static int asked;
  asked = 0;
  const auto hook = [](ZEBContainer*, std::uint64_t, std::uint64_t) -> std::int32_t {
    ++asked;
    return 0;
  };
  ZEBContainer* source = zeb_.NewFull(&data_, {.ownerHook = hook});
  zeb_.container.Release(zeb_.Clone(source));
  EXPECT_EQ(asked, 0);
  zeb_.container.Release(source);
  EXPECT_EQ(asked, 1);
}

TEST_F(ContainerClone, LeavesTheSourcesLaterChangesToTheSource) {
  Data later;
  ZEBContainer* source = zeb_.NewFull(&data_);
  ZEBContainer* clone = zeb_.Clone(source);
  zeb_.AddInterface(source, "later");
  zeb_.AddInstance(source, "later", &later);
  EXPECT_EQ(zeb_.InstanceOf(clone, "later"), nullptr);
  EXPECT_STREQ(zeb_.container.GetSignature(clone), "interface");
  zeb_.container.Release(source);
  zeb_.container.Release(clone);
  EXPECT_EQ(later.destroyed, 1);
}

}  // namespace
}  // namespace contract
