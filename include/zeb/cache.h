/*
 * Interface "ZEBCacheInterface": results that can be made again, kept while there is room.
 *
 * A client wraps a result in an identifier and says what it cost to make. While the client uses the
 * result it pins the identifier. When the results of the whole process grow too large, the library
 * deletes those that are cheap for their size and long unused: the identifier then survives as an
 * empty shell, its client finds no data and makes the result again. An identifier can be filed in a
 * cache set under a key, so that a second client finds the first one's result; evicting a filed
 * identifier destroys it.
 *
 *   NewCacheID, SearchForID -> empty -- Attach --> attached, filed if Attach was given a set
 *                                ^                    |
 *                                +---- eviction ------+  (in no set; a filed one is destroyed)
 *
 * Sizes are in a unit of the clients' own. Above 2000000 of it the library purges by itself, on a
 * thread of its own or on the calling one (AddClientPurge), until 1500000 or less are left. A host
 * that gives a purge request when it starts the library is asked instead.
 *
 * One lock guards all identifiers and sets. Delete procedures, client purges and the host's purge
 * request run without it and may call every proc here. Compare and select procedures run under it
 * and must not call into the cache.
 */
#ifndef ZEB_CACHE_H
#define ZEB_CACHE_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_CACHE_INTERFACE "ZEBCacheInterface"

/* The total size above which the library purges, and down to which it does. */
#define ZEB_CACHE_HIGH_WATER_MARK 2000000
#define ZEB_CACHE_LOW_WATER_MARK 1500000

/* A purge sorts a cache of at most this many identifiers; a larger one it walks as it stands. */
#define ZEB_CACHE_SORT_LIMIT 10000

/* Search modes. */
#define ZEB_CACHE_FIND_EQUAL 0    /* the key itself */
#define ZEB_CACHE_FIND_AT_LEAST 1 /* the key itself, else the next one after it */
#define ZEB_CACHE_FIND_AT_MOST 2  /* the key itself, else the last one before it */

/* Values for the flag of AddClientPurge and RemoveClientPurge. */
#define ZEB_CACHE_PURGE_ON_CALLER 0     /* the library purges on the thread that grew the cache */
#define ZEB_CACHE_PURGE_ON_ANY_THREAD 1 /* a thread of the library's may purge */

/*
 * Deletes attached data; called once for each attached data, on any thread. survives: 1 if the
 * identifier stays as an empty shell, 0 if it is gone.
 */
typedef void (*ZEBCacheDelete)(void *data, int32_t survives);

/* Other than 0 if key a orders before key b: a strict weak order. Keys are data of filed
 * identifiers, and what the caller searches by. */
typedef int32_t (*ZEBCacheCompare)(void *a, void *b);

/* Other than 0 if the identifier filed under the key is to be removed. */
typedef int32_t (*ZEBCacheSelect)(void *value, void *key);

/* Empties a client's own caches; takes the value that the procedure before it answered. */
typedef void *(*ZEBCacheClientPurge)(void *value);

/* --- Identifiers --- */

/* An empty identifier with one reference; null when memory is short. [any-thread] */
typedef ZEBCacheID *(*ZEBCacheNewCacheIDProc)(void);

/* Adds a reference; null is ignored. [any-thread] */
typedef void (*ZEBCacheAddRefProc)(ZEBCacheID *id);

/*
 * Gives a reference back. The last one destroys an identifier that is in no set and deletes its
 * data; one in a set stays there to be found. Null is ignored. [any-thread] [calls-host]
 */
typedef void (*ZEBCacheReleaseProc)(ZEBCacheID *id);

/*
 * Gives an identifier its data.
 *
 * id         the caller's identifier, of which the caller holds a reference; see below.
 * data       the result, and its key if there is a set; not null, which stands for none.
 * set        files the identifier under its data; may be null.
 * size       0 counts as 1. To the total it adds the low 32 bits, taken as a signed number.
 * deleteProc required.
 * startStamp when the work began (GetCacheTime): the cost is the time since then. Null: no cost.
 *
 * If the set has an equal key already, the caller's identifier is released, *id becomes the one
 * found, with a reference for the caller, and its data is the answer. Otherwise, if the identifier
 * has data already, nothing changes and that data is the answer. In both cases the data given stays
 * the caller's, who sees it by comparing. Else the answer is the data given, now the library's to
 * delete.
 *
 * Returns null for a null id, *id, data or deleteProc, and if the set's compare procedure throws;
 * nothing has changed then and the data stays the caller's. [any-thread] [calls-host]
 */
typedef void *(*ZEBCacheAttachProcV2)(ZEBCacheID **id, void *data, ZEBCacheSet *set, uint64_t size,
                                      ZEBCacheDelete deleteProc, const uint64_t *startStamp);

/*
 * Adds to the size and the cost of attached data: the size in full, to the total its low 32 bits
 * taken as a signed number; the cost grows by the time since *startStamp, or not at all if that is
 * null. Nothing happens to an empty identifier or null. [any-thread] [calls-host]
 */
typedef void (*ZEBCacheAddProc)(ZEBCacheID *id, uint64_t size, const uint64_t *startStamp);

/*
 * Changes the size and the cost of attached data by these amounts; a null costChange is none.
 * Nothing happens to an empty identifier or null. [any-thread] [calls-host]
 */
typedef void (*ZEBCacheUpdateCostProc)(ZEBCacheID *id, int32_t sizeChange,
                                       const int64_t *costChange);

/*
 * Stores the size and the cache time, both truncated to 32 bits, and the cost without its fraction.
 * If any argument is null nothing is stored. The three may be of different moments while another
 * thread changes them. [any-thread]
 */
typedef void (*ZEBCacheReturnCostProc)(ZEBCacheID *id, uint32_t *size, int64_t *cost,
                                       uint32_t *cacheTime);

/*
 * Pins the identifier, which keeps its data from being evicted, and adds a reference; MarkPurge
 * undoes both.
 *
 * stamp  receives the time if the identifier is empty, to be handed to Attach; may be null.
 * touch  other than 0: the identifier counts as used just now.
 *
 * Returns the data; null for an empty identifier, which is pinned all the same, and for null.
 * [any-thread] [calls-host]
 */
typedef void *(*ZEBCacheMarkNoPurgeProcV2)(ZEBCacheID *id, uint64_t *stamp, int32_t touch);

/* Undoes one MarkNoPurge, as Release does if it was the last reference. Null is ignored.
 * [any-thread] [calls-host] */
typedef void (*ZEBCacheMarkPurgeProc)(ZEBCacheID *id);

/* Stores the current time stamp, in a unit of the machine's; null is ignored. [any-thread] */
typedef void (*ZEBCacheGetCacheTimeProc)(uint64_t *stamp);

/* The total size of all attached data. [any-thread] */
typedef int64_t (*ZEBCurrentCacheSizeProc)(void);

/* --- Purges --- */

/*
 * Begins a purge: sorts the cache by what each data is worth and starts at the least. The caller
 * ends it with DeleteCachePurge. Returns null while another purge goes on and when memory is short.
 * [any-thread] [calls-host]
 */
typedef ZEBCachePurge *(*ZEBCacheNewCachePurgeProc)(void);

/*
 * One step: evicts the next data that nothing forbids to evict, or passes a filed identifier that
 * is referenced. Returns 1, or 0 at the end and for null. A purge that has reached its end keeps
 * nobody else from purging. [any-thread] [calls-host]
 */
typedef int32_t (*ZEBCachePurgeNextBlockProc)(ZEBCachePurge *purge);

/* Ends a purge; null is ignored. [any-thread] */
typedef void (*ZEBCacheDeleteCachePurgeProc)(ZEBCachePurge *purge);

/*
 * Purges to the end, after waiting for the purge that goes on, if any; so a client that calls it
 * between its own NewCachePurge and DeleteCachePurge may wait for ever. Nothing is evicted when
 * memory for sorting is short. [any-thread] [calls-host]
 */
typedef void (*ZEBCachePurgeAllProc)(void);

/*
 * Calls every client purge, the latest added first, each with the answer of the one before it and
 * the first with `value`; then empties the library's own caches: recycled containers and recent
 * atoms. A client purge that throws passes on what it was given. [any-thread] [calls-host]
 */
typedef void (*ZEBCachePurgeAllStaticCachesProc)(void *value);

/*
 * AddClientPurge adds a procedure to those that PurgeAllStaticCaches calls; RemoveClientPurge
 * removes the latest one added that is equal, or does nothing. While procedures added with flag 0
 * remain, the library purges only on the thread that grew the cache. Remove with the flag that was
 * used to add. A null procedure is ignored, and an addition when memory is short is lost. Stopping
 * the library removes all. [any-thread]
 */
typedef void (*ZEBCacheAddRemoveClientPurgeProcV2)(ZEBCacheClientPurge purge, int32_t flag);

/* --- Sets --- */

/* An empty set with no reference: its maker adds its own with AddRefCacheSet. Null when memory is
 * short or compare is null. [any-thread] */
typedef ZEBCacheSet *(*ZEBCacheNewCacheSetProc)(ZEBCacheCompare compare);

/* Adds a reference; null is ignored. [any-thread] */
typedef void (*ZEBCacheAddRefCacheSetProc)(ZEBCacheSet *set);

/*
 * Gives a reference back. When that leaves exactly none, every identifier is removed as by
 * RemoveIDs and the set is destroyed. Null is ignored. [any-thread] [calls-host]
 */
typedef void (*ZEBCacheDeleteCacheSetProc)(ZEBCacheSet *set);

/*
 * The identifier filed under the key, with one more reference, or else a new empty one; see the
 * search modes. Null for a null set, an unknown mode, when memory is short, and when the compare
 * procedure throws. [any-thread]
 */
typedef ZEBCacheID *(*ZEBCacheSearchForIDProc)(ZEBCacheSet *set, void *key, int32_t mode);

/* Takes the identifier that the search finds out of the set; without references it is destroyed and
 * its data deleted, else it lives on in no set. [any-thread] [calls-host] */
typedef void (*ZEBCacheRemoveIDProc)(ZEBCacheSet *set, void *key, int32_t mode);

/* The same with every identifier that is selected, in the order of the keys. Nothing happens if
 * select is null; if it throws, what was selected before is removed. [any-thread] [calls-host] */
typedef void (*ZEBCacheRemoveIDsProc)(ZEBCacheSet *set, void *value, ZEBCacheSelect select);

/*
 * Older procs, kept for clients built against them: MarkNoPurge that always touches, Attach without
 * a set, client purges with flag 0. Attach answers the data that the identifier holds afterwards.
 */
typedef void *(*ZEBCacheMarkNoPurgeProc)(ZEBCacheID *id, uint64_t *stamp);
typedef void (*ZEBCacheAddRemoveClientPurgeProc)(ZEBCacheClientPurge purge);
typedef void *(*ZEBCacheAttachProc)(ZEBCacheID *id, void *data, uint64_t size,
                                    ZEBCacheDelete deleteProc, const uint64_t *startStamp);

#define ZEB_CACHE_PROCS(X)                                                        \
  X(NewCacheID, NewCacheID, ZEBCacheNewCacheIDProc)                               \
  X(AddRef, AddRef, ZEBCacheAddRefProc)                                           \
  X(Release, Release, ZEBCacheReleaseProc)                                        \
  X(Attach, Attach, ZEBCacheAttachProcV2)                                         \
  X(Add, Add, ZEBCacheAddProc)                                                    \
  X(UpdateCost, UpdateCost, ZEBCacheUpdateCostProc)                               \
  X(ReturnCost, ReturnCost, ZEBCacheReturnCostProc)                               \
  X(MarkNoPurge, MarkNoPurge, ZEBCacheMarkNoPurgeProcV2)                          \
  X(MarkPurge, MarkPurge, ZEBCacheMarkPurgeProc)                                  \
  X(GetCacheTime, GetCacheTime, ZEBCacheGetCacheTimeProc)                         \
  X(CurrentCacheSize, CurrentCacheSize, ZEBCurrentCacheSizeProc)                  \
  X(NewCachePurge, NewCachePurge, ZEBCacheNewCachePurgeProc)                      \
  X(PurgeNextBlock, PurgeNextBlock, ZEBCachePurgeNextBlockProc)                   \
  X(DeleteCachePurge, DeleteCachePurge, ZEBCacheDeleteCachePurgeProc)             \
  X(PurgeAll, PurgeAll, ZEBCachePurgeAllProc)                                     \
  X(PurgeAllStaticCaches, PurgeAllStaticCaches, ZEBCachePurgeAllStaticCachesProc) \
  X(AddClientPurge, AddClientPurge, ZEBCacheAddRemoveClientPurgeProcV2)           \
  X(RemoveClientPurge, RemoveClientPurge, ZEBCacheAddRemoveClientPurgeProcV2)     \
  X(NewCacheSet, NewCacheSet, ZEBCacheNewCacheSetProc)                            \
  X(AddRefCacheSet, AddRefCacheSet, ZEBCacheAddRefCacheSetProc)                   \
  X(DeleteCacheSet, DeleteCacheSet, ZEBCacheDeleteCacheSetProc)                   \
  X(SearchForID, SearchForID, ZEBCacheSearchForIDProc)                            \
  X(RemoveID, RemoveID, ZEBCacheRemoveIDProc)                                     \
  X(RemoveIDs, RemoveIDs, ZEBCacheRemoveIDsProc)                                  \
  X(MarkNoPurgeV1, MarkNoPurge, ZEBCacheMarkNoPurgeProc)

#define ZEB_CACHE_OLDER_PROCS(X)                                              \
  X(AddClientPurgeV1, AddClientPurge, ZEBCacheAddRemoveClientPurgeProc)       \
  X(RemoveClientPurgeV1, RemoveClientPurge, ZEBCacheAddRemoveClientPurgeProc) \
  X(AttachV1, Attach, ZEBCacheAttachProc)

typedef struct ZEBCacheProcs {
  ZEB_CACHE_PROCS(ZEB_PROC_MEMBER)
} ZEBCacheProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchCacheProcs, ZEBCacheProcs, ZEB_CACHE_INTERFACE, ZEB_CACHE_PROCS)

#ifdef __cplusplus
}
#endif

#endif
