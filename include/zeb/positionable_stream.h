/*
 * Interface "ZEBPositionableStreamInterface": telling and choosing the position, for streams that
 * are positionable (simple_stream.h).
 */
#ifndef ZEB_POSITIONABLE_STREAM_H
#define ZEB_POSITIONABLE_STREAM_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_POSITIONABLE_STREAM_INTERFACE "ZEBPositionableStreamInterface"

/* What the offset of a Seek counts from. */
#define ZEB_SEEK_FROM_BEGINNING 0u
#define ZEB_SEEK_FROM_POSITION 1u
#define ZEB_SEEK_FROM_END 2u

/*
 * Makes a stream over the same bytes with a position of its own, which is the beginning; one
 * reference for the caller. From then on no stream over those bytes can be written, unless they
 * are a shared buffer's. What a client's stream makes of it is the client's. [calls-host]
 */
typedef ZEBErrorObject *(*ZEBPositionableStreamCreateIndependentlyPositionableStreamProc)(
    ZEBContainer *stream, ZEBContainer **out);

/* *position is the position in bytes from the beginning. [calls-host] */
typedef ZEBErrorObject *(*ZEBPositionableStreamMarkProc)(ZEBContainer *stream, uint64_t *position);

/*
 * Moves the position to `offset` bytes from the origin, one of ZEB_SEEK_FROM_...; the offset may be
 * negative. Where a position may be past the end depends on the bytes:
 *
 *   memory that can be written  anywhere: the stream grows to the position, unless it has never
 *                               held a byte; then the next write at the position makes it grow.
 *                               Bytes that nobody has written read as zero
 *   memory that cannot, buffer  not past the end
 *   file                        anywhere; positions in a file are 32 bits wide
 *
 * Any other position is "invalid stream position", any other origin "Invalid seek origin"; the
 * position is then unchanged. [calls-host]
 */
typedef ZEBErrorObject *(*ZEBPositionableStreamSeekProc)(ZEBContainer *stream, int64_t offset,
                                                         uint32_t origin);

/* Brings written bytes of a file to the system; nothing for other streams. */
typedef ZEBErrorObject *(*ZEBPositionableStreamFlushProc)(ZEBContainer *stream);

#define ZEB_POSITIONABLE_STREAM_PROCS(X)                                          \
  X(CreateIndependentlyPositionableStream, CreateIndependentlyPositionableStream, \
    ZEBPositionableStreamCreateIndependentlyPositionableStreamProc)               \
  X(Mark, Mark, ZEBPositionableStreamMarkProc)                                    \
  X(Seek, Seek, ZEBPositionableStreamSeekProc)                                    \
  X(Flush, Flush, ZEBPositionableStreamFlushProc)

typedef struct ZEBPositionableStreamProcs {
  ZEB_POSITIONABLE_STREAM_PROCS(ZEB_PROC_MEMBER)
} ZEBPositionableStreamProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchPositionableStreamProcs, ZEBPositionableStreamProcs,
                 ZEB_POSITIONABLE_STREAM_INTERFACE, ZEB_POSITIONABLE_STREAM_PROCS)

#ifdef __cplusplus
}
#endif

#endif
