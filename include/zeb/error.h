/*
 * Interface "ZEBErrorInterface": error objects.
 *
 * An error carries a message, the name of the component that failed, an id within that component
 * and, if its maker wants, a piece of client data. Errors are reference-counted and never change.
 * A proc that can fail returns an error handle: null is success, otherwise the caller owns one
 * reference and gives it back with Release.
 */
#ifndef ZEB_ERROR_H
#define ZEB_ERROR_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_ERROR_INTERFACE "ZEBErrorInterface"

/*
 * The standard errors of component "KST", made at start so that reporting them needs no memory:
 * "Unknown Kesto Error", "Out of Memory", an empty text, "Corrupt Data".
 */
#define ZEB_ERROR_UNKNOWN 0
#define ZEB_ERROR_OUT_OF_MEMORY 1
#define ZEB_ERROR_EMPTY 2
#define ZEB_ERROR_CORRUPT_DATA 3

/*
 * Makes an error and tells the host's error-report procedure its message.
 *
 * message, component  copied; null counts as the empty text.
 * id                  any value; its meaning is the component's.
 * info, infoDelete    client data that the error owns from here on, in every case; infoDelete is
 *                     called with it once, when the error goes or when making it fails. A null
 *                     infoDelete is never called.
 *
 * Always returns an error of which the caller owns one reference: when making it fails, the
 * failure's own error (as "Out of Memory") or the standard error "Unknown Kesto Error".
 * [any-thread] [calls-host]
 */
typedef ZEBErrorObject *(*ZEBNewErrorProc)(const char *message, const char *component, int32_t id,
                                           void *info, void (*infoDelete)(void *info));

/*
 * The "KST" standard error of an id from 0 to 3, with one reference for the caller; ids of 4 and
 * above give id 0, a negative id null. Null while the library is not initialised. [any-thread]
 */
typedef ZEBErrorObject *(*ZEBGetCoreErrorProc)(int32_t id);

/* Adds a reference; null is ignored. [any-thread] */
typedef void (*ZEBErrorAddRefProcV2)(ZEBErrorObject *error);
typedef void (*ZEBErrorAddRefProc)(ZEBErrorObject *error); /* the same under its first name */

/*
 * Gives a reference back; null is ignored. With the last one infoDelete is called, then message and
 * component are released. [any-thread] [calls-host]
 */
typedef void (*ZEBErrorReleaseProc)(ZEBErrorObject *error);

/*
 * The message and the component, as atoms that stay the error's: no reference is added. Read them
 * with GetCString of the string interface. Null for a null error. [any-thread]
 */
typedef ZEBString *(*ZEBErrorGetMessageProc)(ZEBErrorObject *error);
typedef ZEBString *(*ZEBErrorGetComponentProc)(ZEBErrorObject *error);

/* The id; 0 for a null error. [any-thread] */
typedef int32_t (*ZEBErrorGetIDProc)(ZEBErrorObject *error);

/* The client data, still the error's; null for a null error. [any-thread] */
typedef void *(*ZEBGetErrorInfoProc)(ZEBErrorObject *error);

#define ZEB_ERROR_PROCS(X)                                    \
  X(NewError, NewError, ZEBNewErrorProc)                      \
  X(GetCoreError, GetCoreError, ZEBGetCoreErrorProc)          \
  X(AddRef, AddRef, ZEBErrorAddRefProcV2)                     \
  X(Release, Release, ZEBErrorReleaseProc)                    \
  X(GetErrorMessage, GetErrorMessage, ZEBErrorGetMessageProc) \
  X(GetComponent, GetComponent, ZEBErrorGetComponentProc)     \
  X(GetID, GetID, ZEBErrorGetIDProc)                          \
  X(GetErrorInfo, GetErrorInfo, ZEBGetErrorInfoProc)

/* Older procs, kept for clients built against them. */
#define ZEB_ERROR_OLDER_PROCS(X) X(AddRefV1, AddRef, ZEBErrorAddRefProc)

typedef struct ZEBErrorProcs {
  ZEB_ERROR_PROCS(ZEB_PROC_MEMBER)
} ZEBErrorProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchErrorProcs, ZEBErrorProcs, ZEB_ERROR_INTERFACE, ZEB_ERROR_PROCS)

#ifdef __cplusplus
}
#endif

#endif
