// A cache identifier: a result that can be made again, or the empty shell of one.
#ifndef ZEB_CACHE_CACHE_ID_H
#define ZEB_CACHE_CACHE_ID_H

#include <cstdint>

#include "base/object_bases.h"
#include "util/redblack_tree.h"
#include "zeb/cache.h"
#include "zeb/exports.h"

namespace zeb::cache {
struct HeldData {
  void* data = nullptr;  // null: empty. The key, if filed
};
}  // namespace zeb::cache

// Everything here is guarded by the lock of the cache that the identifier belongs to. What a search
// in a set reads, the key and the children, stands first and close together.
struct ZEBCacheID : ZEBBase, zeb::cache::HeldData, zeb::redblack_node<ZEBCacheID> {
  explicit ZEBCacheID(ZEBObjFree freeBy) noexcept
      : redblack_node{nullptr, nullptr, nullptr, zeb::NodeColour::red},
        // NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject): the line above
        freeThrough(freeBy) {}
  ZEBCacheID(const ZEBCacheID&) = delete;
  ZEBCacheID& operator=(const ZEBCacheID&) = delete;

  uint32_t references = 1;
  uint32_t pins = 0;            // MarkNoPurge less MarkPurge; never evicted unless 0
  ZEBCacheSet* set = nullptr;   // that files it, in whose tree it is then
  ZEBCacheID* older = nullptr;  // neighbours in the cache's list
  ZEBCacheID* newer = nullptr;
  uint64_t cacheTime = 0;  // the cache's clock when it was last attached or touched
  uint64_t size = 0;
  int64_t charged = 0;  // what it has added to the total, each piece as truncated as it was
  float cost = 0;       // in time stamps
  ZEBCacheDelete deleteProc = nullptr;  // never null while there is data
  // The host's procedure that its memory goes back through; null: the process's allocator. It may
  // outlive the host that it came from.
  const ZEBObjFree freeThrough;
};

#endif
