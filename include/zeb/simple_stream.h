/*
 * Interface "ZEBSimpleStreamInterface": reading and writing, which every stream can.
 *
 * A stream is a sequence of bytes behind a container (container.h): AddRef and Release of
 * "ZEBContainerInterface" count it, and the container's interfaces say what it can do. There are
 * three tiers, each of which can do what those before it can: simple streams; rewindable streams
 * (rewindable_stream.h); positionable streams (positionable_stream.h). A proc of a tier that the
 * stream does not have answers "Missing ZEB Method".
 *
 * One stream is used by one thread at a time. Independent streams over the same bytes may be read
 * by several threads at once.
 *
 * Procs return an error, null on success; the caller owns one reference of it. They refuse a null
 * stream and a null out argument with "Missing ZEB Method" (component "ZEB", id 0) and clear the
 * out argument before anything can fail.
 */
#ifndef ZEB_SIMPLE_STREAM_H
#define ZEB_SIMPLE_STREAM_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_SIMPLE_STREAM_INTERFACE "ZEBSimpleStreamInterface"

/*
 * Reads at most `count` bytes into the buffer and moves on behind them. *bytesRead is how many
 * came, 0 at the end of the stream. The buffer may be null when no byte is to come; else that is
 * "Memory Copy Error". [calls-host]
 */
typedef ZEBErrorObject *(*ZEBSimpleStreamReadProc)(ZEBContainer *stream, uint64_t *bytesRead,
                                                   void *buffer, uint64_t count);

/* Writes all `count` bytes and moves on behind them, or answers an error. [calls-host] */
typedef ZEBErrorObject *(*ZEBSimpleStreamWriteProc)(ZEBContainer *stream, const void *buffer,
                                                    uint64_t count);

#define ZEB_SIMPLE_STREAM_PROCS(X)       \
  X(Read, Read, ZEBSimpleStreamReadProc) \
  X(Write, Write, ZEBSimpleStreamWriteProc)

typedef struct ZEBSimpleStreamProcs {
  ZEB_SIMPLE_STREAM_PROCS(ZEB_PROC_MEMBER)
} ZEBSimpleStreamProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchSimpleStreamProcs, ZEBSimpleStreamProcs, ZEB_SIMPLE_STREAM_INTERFACE,
                 ZEB_SIMPLE_STREAM_PROCS)

#ifdef __cplusplus
}
#endif

#endif
