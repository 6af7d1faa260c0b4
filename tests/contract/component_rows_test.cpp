// The procs of containers, shared buffers and progress objects: every row under its name, in the
// order of the typed structs, and nothing under names that are merely close.

#include <gtest/gtest.h>

#include "contract/component_library.h"
#include "contract/published_rows.h"

namespace contract {
namespace {

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
  ComponentLibrary zeb_;
  PublishedRows published_{zeb_.getProcAddress};
};

TEST_F(ComponentRows, ArePublishedForContainers) {
  published_.ExpectAre("ZEBContainerInterface", 26, zeb_.container, zeb_.olderContainer);
}

TEST_F(ComponentRows, ArePublishedForSharedBuffers) {
  published_.ExpectAre("ZEBSharedBuffInterface", 7, zeb_.buffer, zeb_.olderBuffer);
}

TEST_F(ComponentRows, ArePublishedForProgressObjects) {
  published_.ExpectAre("ZEBProgressInterface", 5, zeb_.progress);
}

TEST_F(ComponentRows, HaveNoNeighbours) { published_.ExpectNone(kNeighbouringRows); }

TEST_F(ComponentRows, GoWithTheirInterface) {
  zeb_.frame.UnregisterInterface(ZEB_PROGRESS_INTERFACE);
  published_.ExpectGone("ZEBProgressInterface");
  published_.ExpectThere("ZEBSharedBuffInterface");
}

}  // namespace
}  // namespace contract
