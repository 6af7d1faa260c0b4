/*
 * The types that every libzeb interface shares.
 *
 * Valid as C11 and as C++20. Procedures use the platform's C calling convention, pointers and sizes
 * are 64 bits wide, texts are zero-terminated 8-bit texts. No exception leaves a proc or an export;
 * what a client procedure throws is caught at the proc that called it.
 *
 * The tags that end each procedure's comment:
 *   [any-thread]    may be called by any thread at any time while the library is initialised
 *   [frame-thread]  called by one thread while no other thread uses the library
 *   [one-owner]     may be called by one thread at a time for the same object
 *   [calls-host]    may call a procedure of the host or of a client before it returns; no lock of
 *                   the library is held meanwhile
 */
#ifndef ZEB_TYPES_H
#define ZEB_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A procedure of unknown signature. Cast it to the type that carries the proc's name. */
typedef void (*ZEBProc)(void);

/*
 * Handles. Each points to a reference-counted object of the library; the interface that makes a
 * kind of object also counts and releases it.
 */
typedef struct ZEBString ZEBString;             /* an atom: interned, immutable text (atom.h) */
typedef struct ZEBErrorObject ZEBErrorObject;   /* what went wrong (error.h) */
typedef struct ZEBEventCounter ZEBEventCounter; /* a named tally (event.h) */
typedef struct ZEBContainer ZEBContainer;       /* a component (container.h) */
typedef struct ZEBSharedBuffer ZEBSharedBuffer; /* a block of bytes (shared_buffer.h) */
typedef struct ZEBProgress ZEBProgress;         /* a listener to progress (progress.h) */
typedef struct ZEBCacheID ZEBCacheID;           /* a result worth keeping (cache.h) */
typedef struct ZEBCachePurge ZEBCachePurge;     /* a walk that evicts results (cache.h) */
typedef struct ZEBCacheSet ZEBCacheSet;         /* results filed under keys (cache.h) */
typedef struct ZEBDataSink ZEBDataSink;         /* a consumer of bytes, or a filter (filter.h) */
typedef struct ZEBChainState ZEBChainState;     /* where a chain of filters ended (filter.h) */

/*
 * Finds a proc by its three names.
 *
 * Each name may be null: a null name is a name of its own, equal only to itself. The answer is the
 * function registered under exactly these names, to be cast to the type that carries the proc's
 * name, or null when there is none. It stays valid until its interface is unregistered, which
 * moves the change counter (frame.h). [any-thread]
 */
typedef ZEBProc (*ZEBGetProcAddress)(const char *interfaceName, const char *methodName,
                                     const char *procName);

/* One proc as a service publishes it. */
typedef struct ZEBProcTableEntry {
  const char *methodName; /* what the proc does */
  const char *procName;   /* its version: the name of its type */
  ZEBProc proc;           /* the function */
} ZEBProcTableEntry;

/* One proc as a client asks for it. */
typedef struct ZEBProcRequest {
  const char *methodName; /* what the proc does */
  const char *procName;   /* its version: the name of its type */
} ZEBProcRequest;

/*
 * Every interface header lists its procs once, as rows X(member, method, proc): the member's name
 * in the typed struct of fetched procs, the method name, and the proc name, which is also the name
 * of the function-pointer type. The macros below turn rows into members and requests.
 */
#define ZEB_PROC_MEMBER(member, method, proc) proc member;
#define ZEB_PROC_REQUEST(member, method, proc) {#method, #proc},

#ifdef __cplusplus
}
#endif

#endif
