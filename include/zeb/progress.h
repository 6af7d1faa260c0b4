/*
 * Interface "ZEBProgressInterface": where a long operation says how far it has come.
 *
 * The operation calls Update as it goes; each call answers yes or no to the operation, which
 * decides what that means to it. A null progress ignores what it is told and answers no.
 */
#ifndef ZEB_PROGRESS_H
#define ZEB_PROGRESS_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_PROGRESS_INTERFACE "ZEBProgressInterface"

/*
 * A client's side of a progress: the work done and the whole work in the operation's own unit, a
 * total of 0 when it is unknown. Called on the operation's thread. Other than 0 is yes.
 */
typedef int32_t (*ZEBProgressUpdate)(void *data, uint64_t done, uint64_t total);

/* Ends the client's data; called once. */
typedef void (*ZEBProgressDelete)(void *data);

/* A progress that ignores what it is told, with one reference; null on failure. [any-thread] */
typedef ZEBProgress *(*ZEBProgressNewNullProgressProc)(void);

/*
 * A progress that hands its updates to the client, with one reference for the caller. The data
 * belongs to it in every case: if making it fails, with a null answer, deleteProc is called before
 * the proc returns. Both procedures are required; a null one is a failure. [any-thread]
 * [calls-host]
 */
typedef ZEBProgress *(*ZEBProgressNewClientProgressProc)(void *data, ZEBProgressUpdate update,
                                                         ZEBProgressDelete deleteProc);

/* Adds a reference; null is ignored. [any-thread] */
typedef void (*ZEBProgressAddRefProc)(ZEBProgress *progress);

/* Gives a reference back; the last one deletes the client's data. Null is ignored. [any-thread]
 * [calls-host] */
typedef void (*ZEBProgressReleaseProc)(ZEBProgress *progress);

/*
 * Tells how far the operation has come. 1 for yes, 0 for no, for null, and when the client's
 * procedure throws. [any-thread] [calls-host]
 */
typedef int32_t (*ZEBProgressUpdateProc)(ZEBProgress *progress, uint64_t done, uint64_t total);

#define ZEB_PROGRESS_PROCS(X)                                               \
  X(NewNullProgress, NewNullProgress, ZEBProgressNewNullProgressProc)       \
  X(NewClientProgress, NewClientProgress, ZEBProgressNewClientProgressProc) \
  X(AddRef, AddRef, ZEBProgressAddRefProc)                                  \
  X(Release, Release, ZEBProgressReleaseProc)                               \
  X(Update, Update, ZEBProgressUpdateProc)

typedef struct ZEBProgressProcs {
  ZEB_PROGRESS_PROCS(ZEB_PROC_MEMBER)
} ZEBProgressProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchProgressProcs, ZEBProgressProcs, ZEB_PROGRESS_INTERFACE,
                 ZEB_PROGRESS_PROCS)

#ifdef __cplusplus
}
#endif

#endif
