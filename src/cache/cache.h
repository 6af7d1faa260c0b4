// The cache: every identifier, what they cost, what they come to, and the purge that goes on.
//
// One lock guards all of it, the sets' trees included. Compare and select procedures of clients run
// under it, since the trees must not change meanwhile; nothing else of a client's does. What is to
// be deleted is collected under the lock and deleted after it.
//
// An identifier stays on the list from its making to its end:
//
//   empty ── attach ──> attached, unfiled ── evict ──> empty
//     │                     ▲    └─ last release ─> gone
//     └─ attach to a set ─> filed ── evict, remove without references ─> gone
//                             └───── remove while referenced ─> unfiled
//
// The purge stands on an identifier, its cursor, and moves toward the newest end. Of all purges
// only the current one has a cursor. Whoever destroys the identifier under the cursor moves it on.
#ifndef ZEB_CACHE_CACHE_H
#define ZEB_CACHE_CACHE_H

#include <cstdint>
#include <limits>

#include "cache/cache_set.h"
#include "cache/deletions.h"
#include "cache/purge_order.h"
#include "cache/recency_list.h"
#include "platform/manual_reset_event.h"
#include "platform/spin_lock.h"

struct ZEBCachePurge {
  explicit ZEBCachePurge(ZEBObjFree freeBy = nullptr) noexcept : freeThrough(freeBy) {}
  ZEBCachePurge(const ZEBCachePurge&) = delete;
  ZEBCachePurge& operator=(const ZEBCachePurge&) = delete;

  ZEBCacheID* cursor = nullptr;  // null: exhausted
  uint32_t restingWalks = 0;     // steps that have given the lock away in the midst of their walk
  const ZEBObjFree freeThrough;  // as an identifier's
};

namespace zeb::cache {

// What an identifier is given.
struct Attachment {
  void* data = nullptr;
  uint64_t size = 0;
  ZEBCacheDelete deleteProc = nullptr;
  float cost = 0;
};

struct Costs {
  uint64_t size = 0;
  float cost = 0;
  uint64_t cacheTime = 0;
};

// The data that the caller finds, and the total if the call has changed it.
struct Attached {
  void* data = nullptr;
  bool adopted = false;
  int64_t total = 0;
};

enum class Wait : bool { no, yes };

class Cache {
 public:
  // A step that passes more identifiers than this gives the lock away in between.
  static constexpr unsigned kLongestWalk = 512;
  static constexpr int64_t kPurgeAll = std::numeric_limits<int64_t>::min();

  constexpr Cache() noexcept = default;
  Cache(const Cache&) = delete;
  Cache& operator=(const Cache&) = delete;

  // --- Identifiers ---

  // Raises "Out of Memory".
  [[nodiscard]] ZEBCacheID* makeID() ZEB_EXCLUDES(lock_);
  void addReference(ZEBCacheID& id) noexcept ZEB_EXCLUDES(lock_);
  void release(ZEBCacheID& id) noexcept ZEB_EXCLUDES(lock_);

  // `held` becomes the identifier of an equal key if the set has one. Throws what the set's compare
  // procedure throws; nothing has changed then.
  [[nodiscard]] Attached attach(ZEBCacheID*& held, ZEBCacheSet* set, const Attachment& given)
      ZEB_EXCLUDES(lock_);

  // Each changes the size, what it adds to the total, and the cost; raises an error when the
  // identifier is empty. The new total.
  int64_t grow(ZEBCacheID& id, uint64_t size, float cost) ZEB_EXCLUDES(lock_);
  int64_t adjust(ZEBCacheID& id, int32_t size, float cost) ZEB_EXCLUDES(lock_);
  [[nodiscard]] Costs costsOf(const ZEBCacheID& id) const noexcept ZEB_EXCLUDES(lock_);

  [[nodiscard]] void* pin(ZEBCacheID& id, bool touch) noexcept ZEB_EXCLUDES(lock_);
  void unpin(ZEBCacheID& id) noexcept ZEB_EXCLUDES(lock_);

  [[nodiscard]] int64_t total() const noexcept ZEB_EXCLUDES(lock_);
  [[nodiscard]] uint64_t count() const noexcept ZEB_EXCLUDES(lock_);

  // --- Sets ---

  // With a reference for the caller; null when there is none. Throws as find() of a set does.
  [[nodiscard]] ZEBCacheID* search(const ZEBCacheSet& set, void* key, int32_t mode)
      ZEB_EXCLUDES(lock_);
  void removeFound(const ZEBCacheSet& set, void* key, int32_t mode) ZEB_EXCLUDES(lock_);
  // Throws what the procedure throws; what was selected before is removed then.
  void removeSelected(ZEBCacheSet& set, void* value, ZEBCacheSelect select) ZEB_EXCLUDES(lock_);
  void removeAll(ZEBCacheSet& set) noexcept ZEB_EXCLUDES(lock_);

  // --- Purges ---

  // Sorts, and puts the purge at the oldest end. False when another purge goes on and `wait` says
  // no. Raises "Out of Memory"; no purge goes on then.
  [[nodiscard]] bool begin(ZEBCachePurge& purge, Wait wait) ZEB_EXCLUDES(lock_);
  // False when the purge is exhausted or the total is at most `enough`.
  bool step(ZEBCachePurge& purge, int64_t enough) noexcept ZEB_EXCLUDES(lock_);
  void end(ZEBCachePurge& purge) noexcept ZEB_EXCLUDES(lock_);

  // Ends a purge that was never ended, and lets the clock begin anew if there are no identifiers
  // whose times it must not pass. Only while one thread uses the library.
  void settle() noexcept ZEB_EXCLUDES(lock_);

 private:
  class Claim;
  enum class Walk { candidate, end, unfinished };

  void touchLocked(ZEBCacheID& id) noexcept ZEB_REQUIRES(lock_);
  void attachLocked(ZEBCacheID& id, const Attachment& given) noexcept ZEB_REQUIRES(lock_);
  void chargeLocked(ZEBCacheID& id, int64_t change) noexcept ZEB_REQUIRES(lock_);
  void dropReferenceLocked(ZEBCacheID& id, Deletions& deletions) noexcept ZEB_REQUIRES(lock_);
  void destroyLocked(ZEBCacheID& id, Deletions& deletions) noexcept ZEB_REQUIRES(lock_);
  void removeLocked(ZEBCacheID& id, Deletions& deletions) noexcept ZEB_REQUIRES(lock_);

  bool claim(ZEBCachePurge& purge, Wait wait) noexcept ZEB_EXCLUDES(lock_);
  void placeSorted(ZEBCachePurge& purge) ZEB_EXCLUDES(lock_);
  [[nodiscard]] Walk walkLocked(ZEBCachePurge& purge, uint64_t longest) noexcept
      ZEB_REQUIRES(lock_);
  void evictLocked(ZEBCachePurge& purge, Deletions& deletions) noexcept ZEB_REQUIRES(lock_);
  void standOnLocked(ZEBCachePurge& purge, ZEBCacheID* id) noexcept ZEB_REQUIRES(lock_);
  void finishLocked() noexcept ZEB_REQUIRES(lock_);

  mutable SpinLock lock_{20};
  RecencyList list_ ZEB_GUARDED_BY(lock_);
  uint64_t clock_ ZEB_GUARDED_BY(lock_) = 0;  // attachments and touches so far
  int64_t total_ ZEB_GUARDED_BY(lock_) = 0;
  ZEBCachePurge* current_ ZEB_GUARDED_BY(lock_) = nullptr;
  ManualResetEvent finished_;  // signalled whenever `current_` becomes null
};

// The one of the process.
extern constinit Cache processCache;

[[nodiscard]] LiveObjects liveIDs() noexcept;

}  // namespace zeb::cache

#endif
