// The procs of the cache: every row under its name, in the order of the typed structs, and nothing
// under names that are merely close.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "contract/cache_library.h"
#include "contract/proc_rows.h"

namespace contract {
namespace {

using ::testing::Each;
using ::testing::IsNull;
using ::testing::NotNull;

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
  ZEBProc Find(const ProcRow& row) const {
    return zeb_.getProcAddress(row.interfaceName, row.methodName, row.procName);
  }

  std::vector<ZEBProc> Published() const {
    std::vector<ZEBProc> procs;
    for (const ProcRow& row : kProcRows) {
      if (std::string("ZEBCacheInterface") == row.interfaceName) procs.push_back(Find(row));
    }
    return procs;
  }

  template <class Fetched>
  static void AppendMembers(const Fetched& fetched, std::vector<ZEBProc>& procs) {
    const std::size_t before = procs.size();
    procs.resize(before + sizeof(fetched) / sizeof(ZEBProc));
    std::memcpy(&procs[before], &fetched, sizeof(fetched));
  }

  CacheLibrary zeb_;
};

TEST_F(CacheRows, ArePublishedInTheirOrder) {
  const std::vector<ZEBProc> published = Published();
  EXPECT_EQ(published.size(), 28u);
  EXPECT_THAT(published, Each(NotNull()));
  std::vector<ZEBProc> members;
  AppendMembers(zeb_.cache, members);
  EXPECT_EQ(members.size(), 25u);
  AppendMembers(zeb_.olderCache, members);
  EXPECT_EQ(members, published);
}

TEST_F(CacheRows, HaveNoNeighbours) {
  for (const ProcRow& row : kNeighbouringRows) {
    EXPECT_EQ(Find(row), nullptr) << ::testing::PrintToString(row);
  }
}

TEST_F(CacheRows, GoWithTheirInterface) {
  zeb_.frame.UnregisterInterface(ZEB_CACHE_INTERFACE);
  EXPECT_THAT(Published(), Each(IsNull()));
}

}  // namespace
}  // namespace contract
