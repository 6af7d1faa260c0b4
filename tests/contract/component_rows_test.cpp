// The procs of containers, shared buffers and progress objects: every row under its name, in the
// order of the typed structs, and nothing under names that are merely close.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "contract/component_library.h"
#include "contract/proc_rows.h"

namespace contract {
namespace {

using ::testing::Each;
using ::testing::IsNull;
using ::testing::NotNull;

// Names that are close to those above and belong to nothing.
constexpr ProcRow kNeighbouringRows[] = {
    {"ZEBContainerInterface", "NewFullContainer", "ZEBNewFullContainerV6Proc"},
    {"ZEBContainerInterface", "NewFullContainer", "ZEBNewFullContainerV1Proc"},
    {"ZEBContainerInterface", "NewContainer", "ZEBNewContainerV3Proc"},
    {"ZEBContainerInterface", "NewContainer", "ZEBNewFullContainerV5Proc"},
    {"ZEBContainerInterface", "AddRef", "ZEBAddRefContainerProc"},
    {"ZEBContainerInterface", "Release", "ZEBSharedBuffReleaseProc"},
    {"ZEBContainerInterface", "ReleaseContainer", "ZEBReleaseContainerProc"},
    {"ZEBContainerInterface", "GetMethod", "ZEBGetMethodV4Proc"},
    {"ZEBContainerInterface", "GetParentMethod", "ZEBGetMethodV2Proc"},
    {"ZEBContainerInterface", "", ""},
    {"ZEBSharedBuffInterface", "NewBuffer", "ZEBSharedBuffNewBufferProc"},
    {"ZEBSharedBuffInterface", "NewBuffer", "ZEBSharedBuffNewBufferV4Proc"},
    {"ZEBSharedBuffInterface", "DeleteUnowned", "ZEBSharedBuffDeleteUnownedProc"},
    {"ZEBSharedBuffInterface", "", ""},
    {"ZEBSharedBufferInterface", "NewBuffer", "ZEBSharedBuffNewBufferV3Proc"},
    {"ZEBProgressInterface", "NewClientProgress", "ZEBProgressNewNullProgressProc"},
    {"ZEBProgressInterface", "Update", "ZEBProgressUpdateV2Proc"},
    {"ZEBProgressInterface", "", ""},
};

class ComponentRows : public ::testing::Test {
 protected:
  ZEBProc Find(const ProcRow& row) const {
    return zeb_.getProcAddress(row.interfaceName, row.methodName, row.procName);
  }

  // The published procs of an interface, in the order in which clients know them.
  std::vector<ZEBProc> Published(const std::string& interfaceName) const {
    std::vector<ZEBProc> procs;
    for (const ProcRow& row : kProcRows) {
      if (interfaceName == row.interfaceName) procs.push_back(Find(row));
    }
    return procs;
  }

  // The procs of a typed struct.
  template <class Fetched>
  static std::vector<ZEBProc> Members(const Fetched& fetched) {
    std::vector<ZEBProc> procs(sizeof(fetched) / sizeof(ZEBProc));
    std::memcpy(procs.data(), &fetched, sizeof(fetched));
    return procs;
  }

  // The current procs come first, the older ones after them.
  template <class Current, class Older>
  static std::vector<ZEBProc> Members(const Current& current, const Older& older) {
    std::vector<ZEBProc> procs = Members(current);
    const std::vector<ZEBProc> more = Members(older);
    procs.insert(procs.end(), more.begin(), more.end());
    return procs;
  }

  ComponentLibrary zeb_;
};

TEST_F(ComponentRows, ArePublishedForContainers) {
  const std::vector<ZEBProc> published = Published("ZEBContainerInterface");
  EXPECT_EQ(published.size(), 26u);
  EXPECT_THAT(published, Each(NotNull()));
  EXPECT_EQ(Members(zeb_.container, zeb_.olderContainer), published);
}

TEST_F(ComponentRows, ArePublishedForSharedBuffers) {
  const std::vector<ZEBProc> published = Published("ZEBSharedBuffInterface");
  EXPECT_EQ(published.size(), 7u);
  EXPECT_THAT(published, Each(NotNull()));
  EXPECT_EQ(Members(zeb_.buffer, zeb_.olderBuffer), published);
}

TEST_F(ComponentRows, ArePublishedForProgressObjects) {
  const std::vector<ZEBProc> published = Published("ZEBProgressInterface");
  EXPECT_EQ(published.size(), 5u);
  EXPECT_THAT(published, Each(NotNull()));
  EXPECT_EQ(Members(zeb_.progress), published);
}

TEST_F(ComponentRows, HaveNoNeighbours) {
  for (const ProcRow& row : kNeighbouringRows) {
    EXPECT_EQ(Find(row), nullptr) << ::testing::PrintToString(row);
  }
}

TEST_F(ComponentRows, GoWithTheirInterface) {
  zeb_.frame.UnregisterInterface(ZEB_PROGRESS_INTERFACE);
  EXPECT_THAT(Published("ZEBProgressInterface"), Each(IsNull()));
  EXPECT_THAT(Published("ZEBSharedBuffInterface"), Each(NotNull()));
}

}  // namespace
}  // namespace contract
