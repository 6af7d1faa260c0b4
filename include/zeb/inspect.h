/*
 * Interface "ZEBInspectInterface": looking into a running library.
 *
 * It answers what a person asks who wonders why something is not found or not given back: what is
 * registered and by whom, why a look-up fails, which objects live, which atoms. Nothing else needs
 * it, and nothing is counted, kept or locked for it while nobody asks, but for the names of the
 * interfaces unregistered last and a tally for each kind of object that has no pool or list.
 *
 * Every answer is a snapshot: a copy that shows one moment and that nothing changes afterwards. All
 * texts in it are copies that live and die with it. The caller owns a snapshot and gives it back
 * with DeleteSnapshot, at the latest before the library stops. Reference counts are given as
 * numbers, never by address, and objects are counted, never handed out.
 *
 * While a snapshot is copied, registering (or making atoms, or pooled objects) in other threads
 * waits; looking up and finding atoms does not.
 */
#ifndef ZEB_INSPECT_H
#define ZEB_INSPECT_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_INSPECT_INTERFACE "ZEBInspectInterface"

/* One registered proc. 48 bytes, for ever. */
typedef struct ZEBInspectedProc {
  const char *interfaceName; /* each name may be null: a null name is a name of its own */
  const char *methodName;    /* what the proc does */
  const char *procName;      /* its version */
  ZEBProc proc;              /* the function; null if a null function was registered */
  const char *file;          /* path of the loaded file that the function lies in; null: in none */
  uint64_t fileOffset;       /* the function's address less the one that the file is loaded at */
} ZEBInspectedProc;

/*
 * Copies the registry, sorted by interface, method and proc name (bytes compared as unsigned
 * numbers, a null name before every text), into a new array; stores the number of procs in *count.
 * The file tells who published a proc: the program, the library or a module. Returns null with
 * *count 0 when memory is short, null for a null count. [any-thread]
 */
typedef ZEBInspectedProc *(*ZEBInspectNewProcSnapshotProc)(uint32_t *count);

/* One live atom. 24 bytes, for ever. */
typedef struct ZEBInspectedAtom {
  const char *text;    /* ends with a zero byte */
  uint64_t length;     /* of the text in bytes */
  uint32_t references; /* at least 1, the library's own included */
  uint32_t reserved;   /* 0 */
} ZEBInspectedAtom;

/*
 * Copies the live atoms, sorted by text (bytes compared as unsigned numbers), into a new array;
 * stores their number in *count. Atoms that were held over a stop of the library are in no table
 * and so not among them. Returns null with *count 0 when memory is short, null for a null count.
 * [any-thread]
 */
typedef ZEBInspectedAtom *(*ZEBInspectNewAtomSnapshotProc)(uint32_t *count);

/* How many objects of one kind live. 24 bytes, for ever. */
typedef struct ZEBInspectedKind {
  const char *kind; /* see NewObjectSnapshot */
  uint64_t live;    /* objects that are made and not yet freed, the library's own included */
  uint64_t kept;    /* of these, those that the library alone keeps, for being made anew */
} ZEBInspectedKind;

/*
 * Counts the live objects of each kind, in the order below, into a new array; stores the number of
 * kinds in *count. Later versions add kinds at the end. Each kind is counted at a moment of its
 * own.
 *
 *   "proc"              entries of the registry
 *   "atom"              as NewAtomSnapshot; kept: by the ring of recent atoms
 *   "error"             error objects, the standard ones included
 *   "event counter"     of the library's event service
 *   "container"         kept: waiting to be made anew; the same for the next two
 *   "instance"          named instances of containers
 *   "interface method"  interface names of containers
 *   "shared buffer"
 *   "progress"          progress objects
 *   "stream"            stream objects; each has a container besides
 *   "cache identifier"
 *   "cache set"
 *   "data sink"         filters included
 *
 * Returns null with *count 0 when memory is short, null for a null count. [any-thread]
 */
typedef ZEBInspectedKind *(*ZEBInspectNewObjectSnapshotProc)(uint32_t *count);

/* What a look-up comes to. */
#define ZEB_LOOKUP_FOUND 0             /* there is a function under the three names */
#define ZEB_LOOKUP_UNKNOWN_INTERFACE 1 /* no proc is registered under the interface name */
#define ZEB_LOOKUP_UNKNOWN_METHOD 2    /* the interface has no proc of that method name */
#define ZEB_LOOKUP_UNKNOWN_PROC 3      /* the method is there, but only as other procs */
#define ZEB_LOOKUP_NULL_FUNCTION 4     /* the names are there, with a null function */

/* Never more than this many names are offered as nearest. */
#define ZEB_LOOKUP_MOST_NEAREST 5u

/* Why a look-up finds what it finds. 56 bytes, for ever. */
typedef struct ZEBLookupExplanation {
  int32_t outcome; /* one of ZEB_LOOKUP_... */

  /*
   * 1 if the interface has been unregistered since the library started; it may be back since then.
   * The 64 names that were unregistered last are remembered. An unregistration that is under way
   * may show here alone or in the outcome alone.
   */
  int32_t wasUnregistered;
  uint32_t unregisteredAt; /* the change counter that the unregistration brought about, else 0 */

  uint32_t versionCount; /* of the names in `versions` */
  uint32_t nearestCount; /* of the names in `nearest` */
  uint32_t reserved;     /* 0 */
  ZEBProc proc;          /* what the look-up finds, or null */

  /*
   * The proc names under which the interface has the method, sorted; the one asked for is among
   * them when it is there. Null if there are none; an element may be null, for the null name.
   */
  const char *const *versions;

  /*
   * Names that resemble the first of the three that is not there: interface names, the interface's
   * method names, or the method's proc names. The nearest first, those equally near sorted; null if
   * there are none. The distance of two names is the number of bytes to insert, remove or replace
   * to make one the other; near is what differs in a third of the longer name at the most. Names of
   * more than 255 bytes are near to nothing.
   */
  const char *const *nearest;

  /* All of this as a sentence in English, for a log; never null. */
  const char *text;
} ZEBLookupExplanation;

/*
 * Explains what looking up the three names comes to, at this moment. Unlike a look-up it interns
 * nothing and counts no event. Returns null when memory is short. [any-thread]
 */
typedef ZEBLookupExplanation *(*ZEBInspectNewLookupExplanationProc)(const char *interfaceName,
                                                                    const char *methodName,
                                                                    const char *procName);

/* Frees a snapshot or an explanation, texts included; null is ignored. [any-thread] */
typedef void (*ZEBInspectDeleteSnapshotProc)(void *snapshot);

#define ZEB_INSPECT_PROCS(X)                                                        \
  X(NewProcSnapshot, NewProcSnapshot, ZEBInspectNewProcSnapshotProc)                \
  X(NewAtomSnapshot, NewAtomSnapshot, ZEBInspectNewAtomSnapshotProc)                \
  X(NewObjectSnapshot, NewObjectSnapshot, ZEBInspectNewObjectSnapshotProc)          \
  X(NewLookupExplanation, NewLookupExplanation, ZEBInspectNewLookupExplanationProc) \
  X(DeleteSnapshot, DeleteSnapshot, ZEBInspectDeleteSnapshotProc)

typedef struct ZEBInspectProcs {
  ZEB_INSPECT_PROCS(ZEB_PROC_MEMBER)
} ZEBInspectProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchInspectProcs, ZEBInspectProcs, ZEB_INSPECT_INTERFACE, ZEB_INSPECT_PROCS)

#ifdef __cplusplus
}
#endif

#endif
