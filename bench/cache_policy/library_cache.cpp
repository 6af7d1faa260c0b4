// libzeb's cache as a client uses it: objects are filed in a set by their number, found there,
// pinned, used and given back. What it evicts is told by the delete procedure.
//
// No time passes in a replay, so the cost of making an object is told as a plain number after its
// attachment has charged nothing. The library purges by itself, at its own marks; a client purge
// that asks for it keeps that on the replaying thread, so that each replay goes the same way.
#include "../check.h"
#include "../library.h"
#include "policies.h"

namespace zeb::bench {

namespace {

constexpr int32_t kTouch = 1;

struct Entry {
  uint32_t object;
  bool isCached = false;
};

int32_t ordersBefore(void* a, void* b) {
  return static_cast<Entry*>(a)->object < static_cast<Entry*>(b)->object;
}

void forget(void* data, int32_t) { static_cast<Entry*>(data)->isCached = false; }

void* purgeNothing(void* value) { return value; }

class LibraryCache : public Cache {
 public:
  explicit LibraryCache(const std::vector<Item>& items) : items_(items) {
    check(ZEBFetchCacheProcs(session_.getProcAddress(), &procs_), "cache procs are missing");
    for (uint32_t object = 0; object < items.size(); ++object) entries_.push_back({object});
    procs_.AddClientPurge(purgeNothing, ZEB_CACHE_PURGE_ON_CALLER);
    set_ = procs_.NewCacheSet(ordersBefore);
    check(set_, "a cache set cannot be made");
    procs_.AddRefCacheSet(set_);
  }

  ~LibraryCache() override {
    procs_.DeleteCacheSet(set_);
    procs_.RemoveClientPurge(purgeNothing, ZEB_CACHE_PURGE_ON_CALLER);
    check(procs_.CurrentCacheSize() == 0, "an emptied cache still has a size");
  }

  bool request(uint32_t object) override {
    Entry& entry = entries_[object];
    ZEBCacheID* id = procs_.SearchForID(set_, &entry, ZEB_CACHE_FIND_EQUAL);
    const bool hit = procs_.MarkNoPurge(id, nullptr, kTouch) != nullptr;
    check(hit == entry.isCached, "the cache has lost or kept what it should not");
    if (!hit) attach(id, entry);
    procs_.MarkPurge(id);
    procs_.Release(id);
    return hit;
  }

 private:
  void attach(ZEBCacheID*& id, Entry& entry) {
    const Item& item = items_[entry.object];
    entry.isCached = true;
    procs_.Attach(&id, &entry, set_, item.size, forget, nullptr);
    procs_.UpdateCost(id, 0, &item.cost);
    check(entry.isCached, "a pinned object is evicted");
    check(procs_.CurrentCacheSize() <= static_cast<int64_t>(kBudget),
          "the cache does not purge at its mark");
  }

  Session session_;
  ZEBCacheProcs procs_;
  const std::vector<Item>& items_;
  std::vector<Entry> entries_;
  ZEBCacheSet* set_;
};

}  // namespace

std::unique_ptr<Cache> makeLibraryCache(const std::vector<Item>& items) {
  return std::make_unique<LibraryCache>(items);
}

}  // namespace zeb::bench
