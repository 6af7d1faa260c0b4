// What clients cannot see of a container: its record, the pages behind it, and failures that no
// client can bring about.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "atoms/atom.h"
#include "base/library_counters.h"
#include "container/container.h"
#include "container/container_service.h"
#include "container/primary_instance.h"
#include "errors/error_object.h"
#include "memory/object_pool.h"
#include "registry/proc_registry.h"
#include "support/restored.h"
#include "support/started_library.h"

namespace zeb::container {
namespace {

using test::CountingHost;
using test::StartedLibrary;
using test::totalOf;

const int64_t offsetAtLoad = offsetToPrimaryInstance();

class ContainerRecordTest : public testing::Test {
 protected:
  ContainerRecordTest() { emptyRecycled(); }

  // Everything that a test made must be gone once no container waits any more.
  void TearDown() override {
    emptyRecycled();
    names_.clear();
    library_.stop();
    EXPECT_EQ(CountingHost::liveBlocks, 0);
    EXPECT_TRUE(CountingHost::reports.empty());
  }

  ZEBString* name(const char* text) {
    const auto [entry, isNew] = names_.try_emplace(text);
    if (isNew) entry->second = atoms::Ref(text);
    return entry->second.get();
  }

  ZEBContainer* makeOf(const char* instanceName, const char* interfaceName) {
    return makeFull({.instanceName = name(instanceName), .interfaceName = name(interfaceName)});
  }

  // The block that holds an object of a pool, and its size.
  static void* pageOf(const void* object) {
    void* page = nullptr;
    std::memcpy(&page, static_cast<const char*>(object) - ObjectPool::kLinkBytes, sizeof page);
    return page;
  }
  static uint64_t pageBytesOf(const void* object) { return CountingHost::size(pageOf(object)); }

  static uint32_t referencesOf(const ZEBContainer& container) {
    return container.references.load();
  }

  StartedLibrary library_;
  std::map<std::string, atoms::Ref> names_;
};

TEST_F(ContainerRecordTest, LiesInPagesOfItsOwnKind) {
  ZEBContainer* container = makeOf("instance", "interface");
  EXPECT_EQ(pageBytesOf(container), 1712u);
  EXPECT_EQ(pageBytesOf(container->instances.head()), 1072u);
  EXPECT_EQ(pageBytesOf(container->interfaces.head()), 816u);
  release(*container);
}

TEST_F(ContainerRecordTest, FitsItsSlotExactly) {
  ZEBContainer* first = makeEmpty();
  ZEBContainer* second = makeEmpty();
  EXPECT_EQ(reinterpret_cast<char*>(second) - reinterpret_cast<char*>(first), 104);
  EXPECT_EQ(pageOf(first), pageOf(second));
  release(*first);
  release(*second);
}

TEST_F(ContainerRecordTest, HasItsOffsetOnlyOnceTheLibraryWasStarted) {
  EXPECT_EQ(offsetAtLoad, -1);
  ZEBContainer* container = makeEmpty();
  EXPECT_EQ(reinterpret_cast<char*>(container) + offsetToPrimaryInstance(),
            reinterpret_cast<char*>(&container->cache));
  release(*container);
}

TEST_F(ContainerRecordTest, CarriesOneReferenceHoweverItWasMade) {
  ZEBContainer* empty = makeEmpty();
  EXPECT_EQ(referencesOf(*empty), 1u);
  release(*empty);
  ZEBContainer* full = makeOf("instance", "interface");
  EXPECT_EQ(referencesOf(*full), 1u);
  ZEBContainer* clone = makeClone(*full);
  EXPECT_EQ(referencesOf(*clone), 1u);
  EXPECT_EQ(referencesOf(*full), 2u);
  release(*clone);
  EXPECT_EQ(referencesOf(*full), 1u);
  release(*full);
  ZEBContainer* again = makeOf("other instance", "other interface");
  EXPECT_EQ(again, full);
  EXPECT_EQ(referencesOf(*again), 1u);
  release(*again);
}

TEST_F(ContainerRecordTest, HoldsEachNameOnce) {
  ZEBString* instance = name("instance");
  ZEBString* interface = name("interface");
  const uint32_t ofInstance = instance->references;
  const uint32_t ofInterface = interface->references;
  ZEBContainer* full = makeOf("instance", "interface");
  EXPECT_EQ(instance->references, ofInstance + 1);
  EXPECT_EQ(interface->references, ofInterface + 2);  // of the interface and of the signature
  // Made anew under the same names, it holds no more of them.
  release(*full);
  full = makeOf("instance", "interface");
  EXPECT_EQ(instance->references, ofInstance + 1);
  EXPECT_EQ(interface->references, ofInterface + 2);
  // Under other names, none.
  release(*full);
  full = makeOf("other", "other");
  EXPECT_EQ(instance->references, ofInstance);
  EXPECT_EQ(interface->references, ofInterface);
  release(*full);
}

TEST_F(ContainerRecordTest, HoldsNoNameAfterAnInterfaceThatIsThereAlready) {
  ZEBContainer* full = makeOf("instance", "interface");
  const uint32_t before = name("interface")->references;
  const int64_t blocks = CountingHost::liveBlocks;
  addInterface(*full, name("interface"));
  EXPECT_EQ(name("interface")->references, before);
  EXPECT_EQ(full->interfaces.count(), 1u);
  EXPECT_EQ(CountingHost::liveBlocks, blocks);
  release(*full);
}

TEST_F(ContainerRecordTest, IsFullWithExactlyOneOfEach) {
  ZEBContainer* container = makeEmpty();
  EXPECT_FALSE(container->isFull());
  addInterface(*container, name("interface"));
  EXPECT_FALSE(container->isFull());
  addInstance(*container, nullptr, name("instance"), nullptr);
  EXPECT_TRUE(container->isFull());
  addInstance(*container, nullptr, name("instance"), nullptr);
  EXPECT_FALSE(container->isFull());
  release(*container);
  container = makeOf("instance", "interface");
  addInterface(*container, name("second"));
  EXPECT_FALSE(container->isFull());
  release(*container);
}

TEST_F(ContainerRecordTest, WaitsWithoutADestroyProcedure) {
  static int destroyed;
  destroyed = 0;
  ZEBContainer* full = makeFull({.instanceName = name("instance"),
                                 .destroy = [](void*) { ++destroyed; },
                                 .interfaceName = name("interface")});
  release(*full);
  EXPECT_EQ(destroyed, 1);
  full->instances.head()->end();  // waiting: the record is still there
  EXPECT_EQ(destroyed, 1);
}

TEST_F(ContainerRecordTest, IsDeletedWithAllOthersThatWait) {
  const int64_t blocks = CountingHost::liveBlocks;
  std::vector<ZEBContainer*> made;
  for (int i = 0; i < 20; ++i) made.push_back(makeOf("instance", "interface"));
  for (ZEBContainer* one : made) release(*one);
  EXPECT_EQ(CountingHost::liveBlocks, blocks + 2 + 2 * 3);  // two names, two pages of each kind
  emptyRecycled();
  EXPECT_EQ(CountingHost::liveBlocks, blocks + 2);
  ZEBContainer* next = makeOf("instance", "interface");
  EXPECT_EQ(totalOf(counters::fullContainerCacheHit), 0);
  release(*next);
}

// ---- Signatures whose length cannot be represented. No client can make texts that long: the
// length of one is changed under the container.

class EndlessSignatureTest : public ContainerRecordTest,
                             public testing::WithParamInterface<uint64_t> {};

TEST_P(EndlessSignatureTest, IsRefusedBeforeAnythingIsAllocated) {
  ZEBContainer* container = makeOf("instance", "interface");
  ZEBString* signature = container->signature.get();
  ZEBString* added = name("added");
  const auto registerInterface = library_.proc<ZEBRegisterInterfaceV2Proc>(
      ZEB_CONTAINER_INTERFACE, "RegisterInterface", "ZEBRegisterInterfaceV2Proc");
  ZEBErrorObject* error = nullptr;
  {
    const zeb_test::Restored<uint64_t> length(signature->length, GetParam());
    error = registerInterface(container, added);
  }
  ASSERT_NE(error, nullptr);
  EXPECT_STREQ(error->message.get()->text(), "Math overflow exception");
  EXPECT_STREQ(error->component.get()->text(), "KST");
  EXPECT_EQ(error->id, 0);
  errors::release(error);
  EXPECT_EQ(container->signature.get(), signature);
  EXPECT_EQ(container->interfaces.count(), 1u);
  addInterface(*container, added);
  EXPECT_STREQ(container->signature.get()->text(), "interface.added");
  release(*container);
}

constexpr uint64_t kLongest = std::numeric_limits<uint64_t>::max();

// The point overflows, then the second name, then the zero at the end.
INSTANTIATE_TEST_SUITE_P(Lengths, EndlessSignatureTest,
                         testing::Values(kLongest, kLongest - 1, kLongest - 1 - 5));

// ---- The same table under another name

TEST_F(ContainerRecordTest, IsServedUnderAnotherNameWithoutTheOlderProcs) {
  ASSERT_TRUE(registerContainersAs("AnotherInterface"));
  const ServiceTable service = containerService();
  EXPECT_EQ(service.entries.size(), 16u);
  EXPECT_EQ(service.olderEntries.size(), 10u);
  for (const ZEBProcTableEntry& entry : service.entries) {
    EXPECT_EQ(registry::find("AnotherInterface", entry.methodName, entry.procName), entry.proc);
  }
  for (const ZEBProcTableEntry& entry : service.olderEntries) {
    EXPECT_EQ(registry::find("AnotherInterface", entry.methodName, entry.procName), nullptr)
        << entry.procName;
  }
}

TEST_F(ContainerRecordTest, IsServedUnderEachNameOnce) {
  EXPECT_FALSE(registerContainersAs(ZEB_CONTAINER_INTERFACE));
  EXPECT_TRUE(registerContainersAs("AnotherInterface"));
  EXPECT_FALSE(registerContainersAs("AnotherInterface"));
  registry::removeInterface("AnotherInterface");
  EXPECT_TRUE(registerContainersAs("AnotherInterface"));
}

}  // namespace
}  // namespace zeb::container
