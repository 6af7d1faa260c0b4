#include "cache/cache_set.h"

#include "base/failure.h"

namespace zeb::cache {

constinit LiveTally liveSetTally;

// One comparison a level: equality is looked for once, at the end.
Place findPlace(const ZEBCacheSet& set, void* key) {
  const ZEBCacheCompare compare = set.compare;
  Place place;
  for (ZEBCacheID* node = set.tree.root(); node != nullptr;) {
    place.parent = node;
    // While the procedure compares, the next key comes closer, whichever it is.
    if (node->left != nullptr) __builtin_prefetch(node->left->data);
    if (node->right != nullptr) __builtin_prefetch(node->right->data);
    place.left = compare(node->data, key) == 0;
    (place.left ? place.atLeast : place.before) = node;
    node = place.left ? node->left : node->right;
  }
  if (place.atLeast != nullptr && compare(key, place.atLeast->data) == 0) {
    place.equal = place.atLeast;
  }
  return place;
}

ZEBCacheID* find(const ZEBCacheSet& set, void* key, int32_t mode) {
  switch (mode) {
    case ZEB_CACHE_FIND_EQUAL:
      return findPlace(set, key).equal;
    case ZEB_CACHE_FIND_AT_LEAST:
      return findPlace(set, key).atLeast;
    case ZEB_CACHE_FIND_AT_MOST: {
      const Place place = findPlace(set, key);
      return place.equal != nullptr ? place.equal : place.before;
    }
    default:
      raiseStandardZeb(zebid::kMissingMethod);
  }
}

void file(ZEBCacheSet& set, ZEBCacheID& id, const Place& place) noexcept {
  set.tree.link(&id, place.parent, place.left);
  id.set = &set;
}

void unfile(ZEBCacheID& id) noexcept {
  id.set->tree.remove(&id);
  id.set = nullptr;
}

}  // namespace zeb::cache
