// Null containers, names, out arguments and procedures: what refuses them, what ignores them, and
// what becomes of the data that came with them.

#include <gtest/gtest.h>

#include "contract/component_library.h"

namespace contract {
namespace {

class ContainerNulls : public ComponentTest {
 protected:
  ZEBString* Any() { return zeb_.Name("any name"); }

  // Something that an out argument must be cleared of.
  template <class Pointer>
  Pointer Stale() {
    return reinterpret_cast<Pointer>(&stale_);
  }

  void ExpectRefused(ZEBErrorObject* error) { EXPECT_EQ(zeb_.Outcome(error), kMissingMethod); }

  // That a refused maker destroyed the data once.
  void ExpectConsumed() { EXPECT_EQ(data_.destroyed.exchange(0), 1); }
  void ExpectUntouched() { EXPECT_EQ(data_.destroyed, 0); }

  Data data_;

 private:
  alignas(16) char stale_[256] = {};
};

TEST_F(ContainerNulls, AreRefusedByNewFullContainer) {
  const auto make = zeb_.container.NewFullContainer;
  ZEBContainer* made = Stale<ZEBContainer*>();
  ExpectRefused(make(nullptr, &data_, Any(), &Data::Destroy, Any(), nullptr, nullptr, 0));
  ExpectConsumed();
  ExpectRefused(make(&made, &data_, nullptr, &Data::Destroy, Any(), nullptr, nullptr, 0));
  ExpectConsumed();
  EXPECT_EQ(made, nullptr);
  made = Stale<ZEBContainer*>();
  ExpectRefused(make(&made, &data_, Any(), &Data::Destroy, nullptr, nullptr, nullptr, 0));
  ExpectConsumed();
  EXPECT_EQ(made, nullptr);
  ExpectRefused(make(nullptr, &data_, nullptr, &Data::Destroy, nullptr, nullptr, nullptr, 0));
  ExpectConsumed();
  ExpectRefused(make(&made, &data_, nullptr, nullptr, Any(), nullptr, nullptr, 0));
  ExpectUntouched();
}

TEST_F(ContainerNulls, AreRefusedByTheSecondNewFullContainer) {
  const auto make = zeb_.olderContainer.NewFullContainerV2;
  ZEBContainer* made = Stale<ZEBContainer*>();
  ExpectRefused(make(nullptr, &data_, Any(), &Data::Destroy, Any()));
  ExpectConsumed();
  ExpectRefused(make(&made, &data_, nullptr, &Data::Destroy, Any()));
  ExpectConsumed();
  EXPECT_EQ(made, nullptr);
  made = Stale<ZEBContainer*>();
  ExpectRefused(make(&made, &data_, Any(), &Data::Destroy, nullptr));
  ExpectConsumed();
  EXPECT_EQ(made, nullptr);
}

TEST_F(ContainerNulls, AreRefusedByTheThirdAndFourthNewFullContainer) {
  for (const auto make :
       {zeb_.olderContainer.NewFullContainerV3, zeb_.olderContainer.NewFullContainerV4}) {
    ZEBContainer* made = Stale<ZEBContainer*>();
    ExpectRefused(make(nullptr, &data_, Any(), &Data::Destroy, Any(), nullptr));
    ExpectConsumed();
    ExpectRefused(make(&made, &data_, nullptr, &Data::Destroy, Any(), nullptr));
    ExpectConsumed();
    EXPECT_EQ(made, nullptr);
    made = Stale<ZEBContainer*>();
    ExpectRefused(make(&made, &data_, Any(), &Data::Destroy, nullptr, nullptr));
    ExpectConsumed();
    EXPECT_EQ(made, nullptr);
  }
}

TEST_F(ContainerNulls, AreAnsweredWithNullByTheFirstNewFullContainer) {
  const auto make = zeb_.olderContainer.NewFullContainerV1;
  EXPECT_EQ(make(&data_, nullptr, &Data::Destroy, Any()), nullptr);
  ExpectConsumed();
  EXPECT_EQ(make(&data_, Any(), &Data::Destroy, nullptr), nullptr);
  ExpectConsumed();
  EXPECT_EQ(make(&data_, nullptr, nullptr, nullptr), nullptr);
  ExpectUntouched();
}

TEST_F(ContainerNulls, AreRefusedByNewContainer) {
  ExpectRefused(zeb_.container.NewContainer(nullptr));
}

TEST_F(ContainerNulls, AreRefusedByCloneContainer) {
  ZEBContainer* source = zeb_.NewFull(&data_);
  ZEBContainer* made = Stale<ZEBContainer*>();
  ExpectRefused(zeb_.container.CloneContainer(&made, nullptr));
  EXPECT_EQ(made, nullptr);
  ExpectRefused(zeb_.container.CloneContainer(nullptr, source));
  ExpectRefused(zeb_.container.CloneContainer(nullptr, nullptr));
  zeb_.container.Release(source);
  ExpectConsumed();
}

TEST_F(ContainerNulls, AreIgnoredByTheCountingProcs) {
  const Events events = zeb_.EventsOf([&] {
    EXPECT_EQ(zeb_.container.AddRef(nullptr), 0);
    zeb_.container.Release(nullptr);
    EXPECT_EQ(zeb_.container.DecrementWithoutDelete(nullptr), nullptr);
    zeb_.container.DeleteUnownedContainer(nullptr);
  });
  EXPECT_EQ(events, Events{});
}

TEST_F(ContainerNulls, AreRefusedByRegisterInterface) {
  ZEBContainer* made = zeb_.NewEmpty();
  ExpectRefused(zeb_.container.RegisterInterface(nullptr, Any()));
  ExpectRefused(zeb_.container.RegisterInterface(made, nullptr));
  ExpectRefused(zeb_.container.RegisterInterface(nullptr, nullptr));
  EXPECT_STREQ(zeb_.container.GetSignature(made), "");
  zeb_.container.Release(made);
}

TEST_F(ContainerNulls, AreIgnoredByTheFirstRegisterInterface) {
  ZEBContainer* made = zeb_.NewEmpty();
  zeb_.olderContainer.RegisterInterfaceV1(nullptr, Any());
  zeb_.olderContainer.RegisterInterfaceV1(made, nullptr);
  zeb_.olderContainer.RegisterInterfaceV1(nullptr, nullptr);
  EXPECT_STREQ(zeb_.container.GetSignature(made), "");
  zeb_.container.Release(made);
}

TEST_F(ContainerNulls, AreIgnoredByRegisterInstanceWithItsDataLeftAlone) {
  EXPECT_EQ(zeb_.Outcome(zeb_.container.RegisterInstance(nullptr, &data_, Any(), &Data::Destroy)),
            kSuccess);
  EXPECT_EQ(zeb_.Outcome(zeb_.container.RegisterInstance(nullptr, &data_, nullptr, &Data::Destroy)),
            kSuccess);
  zeb_.olderContainer.RegisterInstanceV1(nullptr, &data_, Any(), &Data::Destroy);
  zeb_.olderContainer.RegisterInstanceV1(nullptr, &data_, nullptr, &Data::Destroy);
  ExpectUntouched();
}

TEST_F(ContainerNulls, AreRefusedAsInstanceNames) {
  ZEBContainer* made = zeb_.NewEmpty();
  ExpectRefused(zeb_.container.RegisterInstance(made, &data_, nullptr, &Data::Destroy));
  ExpectConsumed();
  zeb_.olderContainer.RegisterInstanceV1(made, &data_, nullptr, &Data::Destroy);
  ExpectConsumed();
  ExpectRefused(zeb_.container.RegisterInstance(made, &data_, nullptr, nullptr));
  EXPECT_EQ(zeb_.CacheOf(made).instanceData, nullptr);
  zeb_.container.Release(made);
  ExpectUntouched();
}

TEST_F(ContainerNulls, AreRefusedByGetMethod) {
  ZEBContainer* full = zeb_.NewFull(&data_);
  for (const std::int32_t flag : {0, 1}) {
    ZEBProc found = Stale<ZEBProc>();
    ExpectRefused(zeb_.container.GetMethod(&found, nullptr, Any(), Any(), flag));
    EXPECT_EQ(found, nullptr);
    found = Stale<ZEBProc>();
    ExpectRefused(zeb_.container.GetMethod(&found, full, nullptr, Any(), flag));
    EXPECT_EQ(found, nullptr);
    found = Stale<ZEBProc>();
    ExpectRefused(zeb_.container.GetMethod(&found, full, Any(), nullptr, flag));
    EXPECT_EQ(found, nullptr);
    ExpectRefused(zeb_.container.GetMethod(nullptr, full, Any(), Any(), flag));
  }
  zeb_.container.Release(full);
}

TEST_F(ContainerNulls, AreRefusedByOlderGetMethods) {
  ZEBContainer* full = zeb_.NewFull(&data_);
  const OlderContainerProcs& older = zeb_.olderContainer;
  ZEBProc found = Stale<ZEBProc>();
  ExpectRefused(older.GetMethodV2(&found, nullptr, Any(), Any()));
  EXPECT_EQ(found, nullptr);
  found = Stale<ZEBProc>();
  ExpectRefused(older.GetMethodV2(&found, full, nullptr, Any()));
  EXPECT_EQ(found, nullptr);
  ExpectRefused(older.GetMethodV2(&found, full, Any(), nullptr));
  ExpectRefused(older.GetMethodV2(nullptr, full, Any(), Any()));
  EXPECT_EQ(older.GetMethodV1(nullptr, Any(), Any()), nullptr);
  EXPECT_EQ(older.GetMethodV1(full, nullptr, Any()), nullptr);
  EXPECT_EQ(older.GetMethodV1(full, Any(), nullptr), nullptr);
  zeb_.container.Release(full);
}

TEST_F(ContainerNulls, AreRefusedByGetParentMethod) {
  ZEBContainer* full = zeb_.NewFull(&data_);
  const auto get = zeb_.container.GetParentMethod;
  for (const std::int32_t flag : {0, 1}) {
    ZEBProc found = Stale<ZEBProc>();
    ExpectRefused(get(&found, nullptr, Any(), Any(), Any(), flag));
    EXPECT_EQ(found, nullptr);
    found = Stale<ZEBProc>();
    ExpectRefused(get(&found, full, nullptr, Any(), Any(), flag));
    EXPECT_EQ(found, nullptr);
    ExpectRefused(get(&found, full, Any(), nullptr, Any(), flag));
    ExpectRefused(get(&found, full, Any(), Any(), nullptr, flag));
    ExpectRefused(get(nullptr, full, Any(), Any(), Any(), flag));
  }
  const auto older = zeb_.olderContainer.GetParentMethodV1;
  EXPECT_EQ(older(nullptr, Any(), Any(), Any()), nullptr);
  EXPECT_EQ(older(full, nullptr, Any(), Any()), nullptr);
  EXPECT_EQ(older(full, Any(), nullptr, Any()), nullptr);
  EXPECT_EQ(older(full, Any(), Any(), nullptr), nullptr);
  zeb_.container.Release(full);
}

TEST_F(ContainerNulls, HaveNoInstances) {
  ZEBContainer* full = zeb_.NewFull(&data_);
  EXPECT_EQ(zeb_.container.GetInstance(nullptr, Any()), nullptr);
  EXPECT_EQ(zeb_.container.GetInstance(full, nullptr), nullptr);
  void* found = Stale<void*>();
  ExpectRefused(zeb_.container.NGetInstance(&found, nullptr, Any()));
  EXPECT_EQ(found, nullptr);
  found = Stale<void*>();
  ExpectRefused(zeb_.container.NGetInstance(&found, full, nullptr));
  EXPECT_EQ(found, nullptr);
  ExpectRefused(zeb_.container.NGetInstance(nullptr, full, Any()));
  zeb_.container.Release(full);
}

TEST_F(ContainerNulls, HaveNoSignature) {
  EXPECT_EQ(zeb_.container.GetSignature(nullptr), nullptr);
  EXPECT_EQ(zeb_.container.DebugGetRefCountAddr(nullptr), nullptr);
}

}  // namespace
}  // namespace contract
