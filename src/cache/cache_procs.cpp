// Interface "ZEBCacheInterface".
#include <array>
#include <limits>

#include "base/failure.h"
#include "base/value_boundary.h"
#include "cache/automatic_purge.h"
#include "cache/cache.h"
#include "cache/cache_service.h"
#include "cache/client_purges.h"
#include "memory/object_memory.h"
#include "platform/clock.h"
#include "registry/proc_registry.h"

namespace zeb {

namespace {

using cache::processCache;

// The time since the stamp; work that nobody has timed costs nothing.
float costSince(const uint64_t* startStamp) noexcept {
  if (startStamp == nullptr) return 0;
  return static_cast<float>(static_cast<int64_t>(timeStamp() - *startStamp));
}

// Without its fraction; what is too large for the type becomes the largest.
int64_t wholeCost(float cost) noexcept {
  constexpr float kBeyond = 9223372036854775808.0F;  // 2^63
  if (cost >= kBeyond) return std::numeric_limits<int64_t>::max();
  if (cost < -kBeyond) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(cost);
}

// Gives the object's memory back to the host that it came from.
template <class T>
void destroyThroughItsHost(T* object) noexcept {
  const ZEBObjFree freeThrough = object->freeThrough;
  object->~T();
  freeObjectThrough(freeThrough, object);
}

// A purge that goes on for as long as this object lives.
class WholePurge {
 public:
  WholePurge() { (void)processCache.begin(purge_, cache::Wait::yes); }
  ~WholePurge() { processCache.end(purge_); }
  WholePurge(const WholePurge&) = delete;
  WholePurge& operator=(const WholePurge&) = delete;

  [[nodiscard]] bool step() noexcept { return processCache.step(purge_, cache::Cache::kPurgeAll); }

 private:
  ZEBCachePurge purge_;
};

namespace procs {

ZEBCacheID* NewCacheID() { return processCache.makeID(); }

void AddRef(ZEBCacheID* id) noexcept {
  if (id != nullptr) processCache.addReference(*id);
}
void Release(ZEBCacheID* id) noexcept {
  if (id != nullptr) processCache.release(*id);
}

void* Attach(ZEBCacheID** id, void* data, ZEBCacheSet* set, uint64_t size,
             ZEBCacheDelete deleteProc, const uint64_t* startStamp) {
  if (deleteProc == nullptr) raiseNewKst(kst::kUnknown, "invalid null delete proc");
  if (id == nullptr || *id == nullptr || data == nullptr) return nullptr;
  const cache::Attached attached = processCache.attach(
      *id, set,
      {.data = data, .size = size, .deleteProc = deleteProc, .cost = costSince(startStamp)});
  if (attached.adopted) cache::sizeChanged(attached.total);
  return attached.data;
}

void* AttachV1(ZEBCacheID* id, void* data, uint64_t size, ZEBCacheDelete deleteProc,
               const uint64_t* startStamp) {
  return Attach(&id, data, nullptr, size, deleteProc, startStamp);
}

void Add(ZEBCacheID* id, uint64_t size, const uint64_t* startStamp) {
  if (id != nullptr) cache::sizeChanged(processCache.grow(*id, size, costSince(startStamp)));
}

void UpdateCost(ZEBCacheID* id, int32_t sizeChange, const int64_t* costChange) {
  if (id == nullptr) return;
  const float cost = costChange != nullptr ? static_cast<float>(*costChange) : 0;
  cache::sizeChanged(processCache.adjust(*id, sizeChange, cost));
}

void ReturnCost(ZEBCacheID* id, uint32_t* size, int64_t* cost, uint32_t* cacheTime) noexcept {
  if (id == nullptr || size == nullptr || cost == nullptr || cacheTime == nullptr) return;
  const cache::Costs costs = processCache.costsOf(*id);
  *size = static_cast<uint32_t>(costs.size);
  *cost = wholeCost(costs.cost);
  *cacheTime = static_cast<uint32_t>(costs.cacheTime);
}

void* MarkNoPurge(ZEBCacheID* id, uint64_t* stamp, int32_t touch) noexcept {
  if (id == nullptr) return nullptr;
  void* data = processCache.pin(*id, touch != 0);
  if (data == nullptr && stamp != nullptr) *stamp = timeStamp();
  return data;
}
void* MarkNoPurgeV1(ZEBCacheID* id, uint64_t* stamp) noexcept { return MarkNoPurge(id, stamp, 1); }

void MarkPurge(ZEBCacheID* id) noexcept {
  if (id != nullptr) processCache.unpin(*id);
}

void GetCacheTime(uint64_t* stamp) noexcept {
  if (stamp != nullptr) *stamp = timeStamp();
}

int64_t CurrentCacheSize() noexcept { return processCache.total(); }

ZEBCachePurge* NewCachePurge() {
  ObjectHolder purge(makeObject<ZEBCachePurge>(hostState.objects.free));
  return processCache.begin(*purge.get(), cache::Wait::no) ? purge.release() : nullptr;
}

int32_t PurgeNextBlock(ZEBCachePurge* purge) noexcept {
  return purge != nullptr && processCache.step(*purge, cache::Cache::kPurgeAll) ? 1 : 0;
}

void DeleteCachePurge(ZEBCachePurge* purge) noexcept {
  if (purge == nullptr) return;
  processCache.end(*purge);
  destroyThroughItsHost(purge);
}

void PurgeAll() {
  WholePurge purge;
  while (purge.step()) {
  }
}

void PurgeAllStaticCaches(void* value) noexcept { cache::purgeAllStaticCaches(value); }

void AddClientPurge(ZEBCacheClientPurge purge, int32_t flag) {
  if (purge != nullptr) cache::clientPurges.add(purge, flag);
}
void RemoveClientPurge(ZEBCacheClientPurge purge, int32_t flag) noexcept {
  if (purge != nullptr) cache::clientPurges.remove(purge, flag);
}
void AddClientPurgeV1(ZEBCacheClientPurge purge) {
  AddClientPurge(purge, ZEB_CACHE_PURGE_ON_CALLER);
}
void RemoveClientPurgeV1(ZEBCacheClientPurge purge) noexcept {
  RemoveClientPurge(purge, ZEB_CACHE_PURGE_ON_CALLER);
}

ZEBCacheSet* NewCacheSet(ZEBCacheCompare compare) {
  if (compare == nullptr) return nullptr;
  return makeObject<ZEBCacheSet>(compare, hostState.objects.free);
}

void AddRefCacheSet(ZEBCacheSet* set) noexcept {
  if (set != nullptr) set->references.fetch_add(1, std::memory_order_relaxed);
}

// A set that nobody ever took a reference of goes below 0 and stays; its maker relies on that.
void DeleteCacheSet(ZEBCacheSet* set) noexcept {
  if (set == nullptr || set->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  processCache.removeAll(*set);
  destroyThroughItsHost(set);
}

ZEBCacheID* SearchForID(ZEBCacheSet* set, void* key, int32_t mode) {
  if (set == nullptr) return nullptr;
  ZEBCacheID* id = processCache.search(*set, key, mode);
  return id != nullptr ? id : processCache.makeID();
}

void RemoveID(ZEBCacheSet* set, void* key, int32_t mode) {
  if (set != nullptr) processCache.removeFound(*set, key, mode);
}

void RemoveIDs(ZEBCacheSet* set, void* value, ZEBCacheSelect select) {
  if (set != nullptr && select != nullptr) processCache.removeSelected(*set, value, select);
}

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_CACHE_PROCS(ZEB_ROW)};
const std::array olderEntries{ZEB_CACHE_OLDER_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable cacheService() { return {ZEB_CACHE_INTERFACE, entries, olderEntries}; }

namespace cache {

void prepare() {
  chooseClock();
  allowPurgeThread();
}

void finishPurges() noexcept { endPurgeThread(); }

void tearDown() noexcept {
  clientPurges.removeAll();
  processCache.settle();
}

bool registerCacheAs(const char* interfaceName) noexcept {
  return registry::addAll(entries, interfaceName);
}

}  // namespace cache

}  // namespace zeb
