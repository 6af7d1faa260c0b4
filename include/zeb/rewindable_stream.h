/*
 * Interface "ZEBRewindableStreamInterface": going back to the beginning, for streams that are at
 * least rewindable (simple_stream.h).
 */
#ifndef ZEB_REWINDABLE_STREAM_H
#define ZEB_REWINDABLE_STREAM_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_REWINDABLE_STREAM_INTERFACE "ZEBRewindableStreamInterface"

/*
 * Makes a stream over the same bytes with a position of its own, which is the beginning; one
 * reference for the caller. From then on no stream over those bytes can be written, unless they
 * are a shared buffer's. What a client's stream makes of it is the client's. [calls-host]
 */
typedef ZEBErrorObject *(*ZEBRewindableStreamCreateIndependentlyRewindableStreamProc)(
    ZEBContainer *stream, ZEBContainer **out);

/*
 * Moves the position to the beginning. A file's next transfer nevertheless goes on where the last
 * one ended: only Seek (positionable_stream.h) moves within a file. [calls-host]
 */
typedef ZEBErrorObject *(*ZEBRewindableStreamRewindProc)(ZEBContainer *stream);

#define ZEB_REWINDABLE_STREAM_PROCS(X)                                        \
  X(CreateIndependentlyRewindableStream, CreateIndependentlyRewindableStream, \
    ZEBRewindableStreamCreateIndependentlyRewindableStreamProc)               \
  X(Rewind, Rewind, ZEBRewindableStreamRewindProc)

typedef struct ZEBRewindableStreamProcs {
  ZEB_REWINDABLE_STREAM_PROCS(ZEB_PROC_MEMBER)
} ZEBRewindableStreamProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchRewindableStreamProcs, ZEBRewindableStreamProcs,
                 ZEB_REWINDABLE_STREAM_INTERFACE, ZEB_REWINDABLE_STREAM_PROCS)

#ifdef __cplusplus
}
#endif

#endif
