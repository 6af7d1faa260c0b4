// The procs of the cache: every row under its name, in the order of the typed structs, and nothing
// under names that are merely close.

#include <gtest/gtest.h>

#include "contract/cache_library.h"
#include "contract/published_rows.h"

namespace contract {
namespace {

constexpr ProcRow kNeighbouringRows[] = {
    {"ZEBCacheInterface", "NewCacheID", "ZEBCacheNewCacheIDProcV2"},
    {"ZEBCacheInterface", "Attach", "ZEBCacheAttachProcV3"},
    {"ZEBCacheInterface", "MarkNoPurge", "ZEBCacheMarkPurgeProc"},
    {"ZEBCacheInterface", "MarkPurge", "ZEBCacheMarkPurgeProcV2"},
    {"ZEBCacheInterface", "CurrentCacheSize", "ZEBCacheCurrentCacheSizeProc"},
    {"ZEBCacheInterface", "AddRemoveClientPurge", "ZEBCacheAddRemoveClientPurgeProcV2"},
    {"ZEBCacheInterface", "SearchForID", "ZEBCacheRemoveIDProc"},
    {"ZEBCacheInterface", "RemoveIDs", "ZEBCacheRemoveIDProc"},
    {"ZEBCacheInterface", "", ""},
    {"ZEBCache", "NewCacheID", "ZEBCacheNewCacheIDProc"},
};

class CacheRows : public ::testing::Test {
 protected:
  CacheLibrary zeb_;
  PublishedRows published_{zeb_.getProcAddress};
};

TEST_F(CacheRows, ArePublishedInTheirOrder) {
  static_assert(sizeof(zeb_.cache) == 25 * sizeof(ZEBProc));
  published_.ExpectAre("ZEBCacheInterface", 28, zeb_.cache, zeb_.olderCache);
}

TEST_F(CacheRows, HaveNoNeighbours) { published_.ExpectNone(kNeighbouringRows); }

TEST_F(CacheRows, GoWithTheirInterface) {
  zeb_.frame.UnregisterInterface(ZEB_CACHE_INTERFACE);
  published_.ExpectGone("ZEBCacheInterface");
}

}  // namespace
}  // namespace contract
