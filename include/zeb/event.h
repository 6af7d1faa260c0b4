/*
 * Interface "ZEBEventInterface": named event counters.
 *
 * A counter is a named, process-wide tally with a criticality (larger means more important; -1
 * marks a counter that is only of interest when asked for). The library counts its own events with
 * it; modules may add theirs. A snapshot copies all totals at one moment.
 */
#ifndef ZEB_EVENT_H
#define ZEB_EVENT_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_EVENT_INTERFACE "ZEBEventInterface"

/* One counter in a snapshot. 24 bytes, for ever. */
typedef struct ZEBEventRecord {
  int64_t total;       /* sum of all amounts signalled so far */
  const char *name;    /* the counter's own name pointer, not a copy */
  int32_t criticality; /* as given when the counter was made */
  int32_t reserved;    /* 0 */
} ZEBEventRecord;

/*
 * Makes a counter with a total of 0 and puts it at the head of the registry. The name is not
 * copied: it must stay readable until the counter is deleted, and if its characters change, later
 * snapshots show the changed text. The caller owns the counter and deletes it with
 * DeleteEventCounter, at the latest before the library stops. Returns null for a null name or when
 * memory is short. [any-thread]
 */
typedef ZEBEventCounter *(*ZEBNewEventCounterProc)(const char *name, int32_t criticality);

/* Removes and frees a counter; null is ignored. Nobody may signal it any more. [any-thread] */
typedef void (*ZEBDeleteEventCounterProc)(ZEBEventCounter *counter);

/*
 * Adds an amount to the total; null is ignored. Takes no lock, and no signal is lost however many
 * threads signal. [any-thread]
 */
typedef void (*ZEBSignalEventCounterProc)(ZEBEventCounter *counter, uint64_t amount);

/*
 * Copies all counters, the latest made first, into a new array that the caller gives back with
 * DeleteEventSnapshot; stores their number in *count. Returns null with *count 0 when memory is
 * short, null for a null count. The name pointers are the counters' own: they are valid as long as
 * their owners keep them. [any-thread]
 */
typedef ZEBEventRecord *(*ZEBNewEventSnapshotProc)(uint32_t *count);

/* Frees a snapshot; null is ignored. [any-thread] */
typedef void (*ZEBDeleteEventSnapshotProc)(ZEBEventRecord *snapshot);

#define ZEB_EVENT_PROCS(X)                                             \
  X(NewEventCounter, NewEventCounter, ZEBNewEventCounterProc)          \
  X(DeleteEventCounter, DeleteEventCounter, ZEBDeleteEventCounterProc) \
  X(SignalEventCounter, SignalEventCounter, ZEBSignalEventCounterProc) \
  X(NewEventSnapshot, NewEventSnapshot, ZEBNewEventSnapshotProc)       \
  X(DeleteEventSnapshot, DeleteEventSnapshot, ZEBDeleteEventSnapshotProc)

typedef struct ZEBEventProcs {
  ZEB_EVENT_PROCS(ZEB_PROC_MEMBER)
} ZEBEventProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchEventProcs, ZEBEventProcs, ZEB_EVENT_INTERFACE, ZEB_EVENT_PROCS)

#ifdef __cplusplus
}
#endif

#endif
