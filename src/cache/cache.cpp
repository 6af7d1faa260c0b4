#include "cache/cache.h"

#include "base/failure.h"
#include "base/library_counters.h"
#include "memory/object_memory.h"

namespace zeb::cache {

constinit Cache processCache;

namespace {

// What a size adds to the total: its low half, taken as a signed number. Clients rely on it.
int64_t truncated(uint64_t size) noexcept { return static_cast<int32_t>(size); }

[[noreturn]] void raiseEmpty() {
  raiseNewKst(kst::kUnknown, "adding size to empty cache item (call Attach first)");
}

}  // namespace

ZEBCacheID* Cache::makeID() {
  auto* id = makeObject<ZEBCacheID>(hostState.objects.free);
  const SpinGuard guard(lock_);
  list_.add(*id);
  return id;
}

void Cache::addReference(ZEBCacheID& id) noexcept {
  const SpinGuard guard(lock_);
  ++id.references;
}

void Cache::release(ZEBCacheID& id) noexcept {
  Deletions deletions;
  const SpinGuard guard(lock_);
  dropReferenceLocked(id, deletions);
}

Attached Cache::attach(ZEBCacheID*& held, ZEBCacheSet* set, const Attachment& given) {
  Deletions deletions;
  const SpinGuard guard(lock_);
  Place place;
  if (set != nullptr) place = findPlace(*set, given.data);
  if (place.equal != nullptr) {
    ++place.equal->references;
    dropReferenceLocked(*held, deletions);
    held = place.equal;
    return {.data = held->data};
  }
  if (held->data != nullptr) return {.data = held->data};
  attachLocked(*held, given);
  if (set != nullptr) file(*set, *held, place);
  return {.data = given.data, .adopted = true, .total = total_};
}

int64_t Cache::grow(ZEBCacheID& id, uint64_t size, float cost) {
  {
    const SpinGuard guard(lock_);
    if (id.data != nullptr) {
      id.size += size;
      id.cost += cost;
      chargeLocked(id, truncated(size));
      return total_;
    }
  }
  raiseEmpty();
}

int64_t Cache::adjust(ZEBCacheID& id, int32_t size, float cost) {
  return grow(id, static_cast<uint64_t>(int64_t{size}), cost);
}

Costs Cache::costsOf(const ZEBCacheID& id) const noexcept {
  const SpinGuard guard(lock_);
  return {.size = id.size, .cost = id.cost, .cacheTime = id.cacheTime};
}

void* Cache::pin(ZEBCacheID& id, bool touch) noexcept {
  void* data = nullptr;
  {
    const SpinGuard guard(lock_);
    ++id.references;
    ++id.pins;
    if (touch) touchLocked(id);
    data = id.data;
  }
  if (data == nullptr) counters::markNoPurgeOnPurged.signal();
  return data;
}

void Cache::unpin(ZEBCacheID& id) noexcept {
  Deletions deletions;
  const SpinGuard guard(lock_);
  --id.pins;
  dropReferenceLocked(id, deletions);
}

int64_t Cache::total() const noexcept {
  const SpinGuard guard(lock_);
  return total_;
}

uint64_t Cache::count() const noexcept {
  const SpinGuard guard(lock_);
  return list_.count();
}

LiveObjects liveIDs() noexcept { return {.live = processCache.count()}; }

ZEBCacheID* Cache::search(const ZEBCacheSet& set, void* key, int32_t mode) {
  const SpinGuard guard(lock_);
  ZEBCacheID* id = find(set, key, mode);
  if (id != nullptr) ++id->references;
  return id;
}

void Cache::removeFound(const ZEBCacheSet& set, void* key, int32_t mode) {
  Deletions deletions;
  const SpinGuard guard(lock_);
  ZEBCacheID* id = find(set, key, mode);
  if (id != nullptr) removeLocked(*id, deletions);
}

void Cache::removeSelected(ZEBCacheSet& set, void* value, ZEBCacheSelect select) {
  Deletions deletions;
  const SpinGuard guard(lock_);
  for (ZEBCacheID* id = set.tree.first(); id != nullptr;) {
    ZEBCacheID* next = SetTree::next(id);
    if (select(value, id->data) != 0) removeLocked(*id, deletions);
    id = next;
  }
}

// Nothing is left to keep in balance: the tree is taken apart in order and dropped as a whole.
void Cache::removeAll(ZEBCacheSet& set) noexcept {
  Deletions deletions;
  const SpinGuard guard(lock_);
  for (ZEBCacheID* id = set.tree.first(); id != nullptr;) {
    ZEBCacheID* next = SetTree::next(id);
    id->set = nullptr;
    if (id->references == 0 && id->pins == 0) destroyLocked(*id, deletions);
    id = next;
  }
  set.tree.clear();
}

// A step that rests must not be carried to the newest end by the identifier that it rests on.
void Cache::touchLocked(ZEBCacheID& id) noexcept {
  id.cacheTime = ++clock_;
  if (current_ != nullptr && current_->cursor == &id && current_->restingWalks != 0 &&
      id.newer != nullptr) {
    current_->cursor = id.newer;
  }
  list_.makeNewest(id);
}

void Cache::attachLocked(ZEBCacheID& id, const Attachment& given) noexcept {
  id.deleteProc = given.deleteProc;
  id.data = given.data;
  id.size = given.size != 0 ? given.size : 1;
  id.cost = given.cost;
  touchLocked(id);
  chargeLocked(id, truncated(id.size));
}

void Cache::chargeLocked(ZEBCacheID& id, int64_t change) noexcept {
  id.charged += change;
  total_ += change;
}

void Cache::dropReferenceLocked(ZEBCacheID& id, Deletions& deletions) noexcept {
  if (--id.references == 0 && id.set == nullptr) destroyLocked(id, deletions);
}

void Cache::destroyLocked(ZEBCacheID& id, Deletions& deletions) noexcept {
  chargeLocked(id, -id.charged);
  if (current_ != nullptr && current_->cursor == &id) standOnLocked(*current_, id.newer);
  list_.remove(id);
  deletions.add(id);
}

void Cache::removeLocked(ZEBCacheID& id, Deletions& deletions) noexcept {
  unfile(id);
  if (id.references == 0 && id.pins == 0) destroyLocked(id, deletions);
}

}  // namespace zeb::cache
