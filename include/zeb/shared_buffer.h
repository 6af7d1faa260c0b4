/*
 * Interface "ZEBSharedBuffInterface": reference-counted blocks of bytes.
 *
 * A shared buffer is handed between modules and services without copying. Its bytes are allocated
 * by the library, or given by a client with a procedure that deletes them. References may be added
 * and dropped by any thread; who writes the bytes when is the holders' agreement.
 */
#ifndef ZEB_SHARED_BUFFER_H
#define ZEB_SHARED_BUFFER_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_SHARED_BUFFER_INTERFACE "ZEBSharedBuffInterface"

/* Deletes client data; called once, with the delete context if there is one, else with the data. */
typedef void (*ZEBSharedBuffDelete)(void *data);

/*
 * Asked when the last reference has gone. A result other than 0 keeps the buffer, unowned; its
 * keeper ends it with DeleteUnowned.
 */
typedef int32_t (*ZEBSharedBuffReleaseHook)(ZEBSharedBuffer *buffer);

/*
 * Makes a buffer of `size` bytes with one reference for the caller.
 *
 * data           null: the library allocates the bytes, undefined at first, and frees them; a
 * delete procedure must then not be given. Else the client's bytes. deleteProc     deletes the
 * client's bytes; null: they stay the client's, who keeps them alive. hook           may be null.
 * deleteContext  passed to deleteProc instead of the data; may be null.
 *
 * Returns null when memory is short or a delete procedure comes without data. The data then stays
 * the caller's. [any-thread]
 */
typedef ZEBSharedBuffer *(*ZEBSharedBuffNewBufferV3Proc)(uint64_t size, void *data,
                                                         ZEBSharedBuffDelete deleteProc,
                                                         ZEBSharedBuffReleaseHook hook,
                                                         void *deleteContext);

/* The same without a delete context. [any-thread] */
typedef ZEBSharedBuffer *(*ZEBSharedBuffNewBufferV2Proc)(uint64_t size, void *data,
                                                         ZEBSharedBuffDelete deleteProc,
                                                         ZEBSharedBuffReleaseHook hook);

/*
 * Takes the hook off, adds a reference and releases it: ends a buffer that its hook has kept, while
 * one that is still referenced only loses its hook. Null is ignored. [any-thread] [calls-host]
 */
typedef void (*ZEBSharedBuffDelUnownedProc)(ZEBSharedBuffer *buffer);

/* Adds a reference; null is ignored. [any-thread] */
typedef void (*ZEBSharedBuffAddRefProc)(ZEBSharedBuffer *buffer);

/* Gives a reference back; the last one deletes the bytes. Null is ignored. [any-thread]
 * [calls-host] */
typedef void (*ZEBSharedBuffReleaseProc)(ZEBSharedBuffer *buffer);

/* The bytes, still the buffer's; null for null. [any-thread] */
typedef void *(*ZEBSharedBuffGetBufferProc)(ZEBSharedBuffer *buffer);

/* The size in bytes; 0 for null. [any-thread] */
typedef uint64_t (*ZEBSharedBuffGetSizeProc)(ZEBSharedBuffer *buffer);

#define ZEB_SHARED_BUFFER_PROCS(X)                             \
  X(NewBuffer, NewBuffer, ZEBSharedBuffNewBufferV3Proc)        \
  X(DeleteUnowned, DeleteUnowned, ZEBSharedBuffDelUnownedProc) \
  X(AddRef, AddRef, ZEBSharedBuffAddRefProc)                   \
  X(Release, Release, ZEBSharedBuffReleaseProc)                \
  X(GetBuffer, GetBuffer, ZEBSharedBuffGetBufferProc)          \
  X(GetSize, GetSize, ZEBSharedBuffGetSizeProc)

/* Older proc, kept for clients built against it. */
#define ZEB_SHARED_BUFFER_OLDER_PROCS(X) X(NewBufferV2, NewBuffer, ZEBSharedBuffNewBufferV2Proc)

typedef struct ZEBSharedBufferProcs {
  ZEB_SHARED_BUFFER_PROCS(ZEB_PROC_MEMBER)
} ZEBSharedBufferProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchSharedBufferProcs, ZEBSharedBufferProcs, ZEB_SHARED_BUFFER_INTERFACE,
                 ZEB_SHARED_BUFFER_PROCS)

#ifdef __cplusplus
}
#endif

#endif
