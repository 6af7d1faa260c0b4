/*
 * Interface "ZEBStreamFactoryInterface": makers of streams (simple_stream.h).
 *
 * A maker stores one reference to the new stream in *out and answers null, or answers an error, of
 * which the caller owns one reference, with *out null. A null out argument, path or mode is
 * "Missing ZEB Method" (component "ZEB", id 0).
 */
#ifndef ZEB_STREAM_FACTORY_H
#define ZEB_STREAM_FACTORY_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_STREAM_FACTORY_INTERFACE "ZEBStreamFactoryInterface"

/*
 * The callbacks of a client's stream. Each gets the client's context first. One that returns an
 * error answers null on success; else the library takes over one reference of the error, and the
 * error becomes the answer of the proc that was called. A callback that throws ends in "Unknown
 * Kesto Error".
 */
typedef ZEBErrorObject *(*ZEBClientStreamRead)(void *context, uint64_t *bytesRead, void *buffer,
                                               uint64_t count);
typedef ZEBErrorObject *(*ZEBClientStreamWrite)(void *context, const void *buffer, uint64_t count);
/* Makes the context of an independent stream, which is released by itself. */
typedef ZEBErrorObject *(*ZEBClientStreamNewContext)(void *context, void **newContext);
typedef ZEBErrorObject *(*ZEBClientStreamRewind)(void *context);
typedef ZEBErrorObject *(*ZEBClientStreamMark)(void *context, uint64_t *position);
/* The origin is one of ZEB_SEEK_FROM_... (positionable_stream.h), or what the caller gave. */
typedef ZEBErrorObject *(*ZEBClientStreamSeek)(void *context, int64_t offset, uint32_t origin);
/* Called once, when the stream ends. */
typedef void (*ZEBClientStreamRelease)(void *context);

/* A positionable stream over memory of the library's, empty at first. [any-thread] */
typedef ZEBErrorObject *(*ZEBNewPositionableMemoryStreamProc)(ZEBContainer **out);

/*
 * A positionable stream over the bytes of a shared buffer (shared_buffer.h), in place: it has the
 * buffer's size and cannot grow. The stream holds a reference to the buffer; a null buffer makes a
 * stream without bytes. [any-thread]
 */
typedef ZEBErrorObject *(*ZEBNewPositionableBufferStreamProc)(ZEBContainer **out,
                                                              ZEBSharedBuffer *buffer);

/*
 * A positionable stream over a file.
 *
 * path  in the system's narrow encoding, or in UTF-8. A relative path means the file that it names
 *       now, also for independent streams that are made after the current directory has changed.
 * mode  as fopen takes it
 *
 * A file that cannot be opened is "file does not exist". Bytes that are written reach the system
 * with the next read, Flush or release. Positions are 32 bits wide: files of 2 GiB and more are
 * beyond such a stream. [any-thread]
 */
typedef ZEBErrorObject *(*ZEBNewPositionableFileStreamProc)(ZEBContainer **out, const char *path,
                                                            const char *mode);

/*
 * A stream over a client's callbacks: simple, rewindable or positionable. The context belongs to
 * the stream in every case: if making it fails, release is called before the proc returns. A null
 * callback is "Missing ZEB Method" when it is called for; a null release does nothing.
 * [any-thread] [calls-host]
 */
typedef ZEBErrorObject *(*ZEBNewClientSimpleStreamProc)(ZEBContainer **out, void *context,
                                                        ZEBClientStreamRead read,
                                                        ZEBClientStreamWrite write,
                                                        ZEBClientStreamRelease release);
typedef ZEBErrorObject *(*ZEBNewClientRewindableStreamProc)(ZEBContainer **out, void *context,
                                                            ZEBClientStreamRead read,
                                                            ZEBClientStreamWrite write,
                                                            ZEBClientStreamNewContext newRewindable,
                                                            ZEBClientStreamRewind rewind,
                                                            ZEBClientStreamRelease release);
typedef ZEBErrorObject *(*ZEBNewClientPositionableStreamProc)(
    ZEBContainer **out, void *context, ZEBClientStreamRead read, ZEBClientStreamWrite write,
    ZEBClientStreamNewContext newRewindable, ZEBClientStreamRewind rewind,
    ZEBClientStreamNewContext newPositionable, ZEBClientStreamMark mark, ZEBClientStreamSeek seek,
    ZEBClientStreamRelease release);

#define ZEB_STREAM_FACTORY_PROCS(X)                                                               \
  X(NewPositionableMemoryStream, NewPositionableMemoryStream, ZEBNewPositionableMemoryStreamProc) \
  X(NewPositionableBufferStream, NewPositionableBufferStream, ZEBNewPositionableBufferStreamProc) \
  X(NewPositionableFileStream, NewPositionableFileStream, ZEBNewPositionableFileStreamProc)       \
  X(NewClientSimpleStream, NewClientSimpleStream, ZEBNewClientSimpleStreamProc)                   \
  X(NewClientRewindableStream, NewClientRewindableStream, ZEBNewClientRewindableStreamProc)       \
  X(NewClientPositionableStream, NewClientPositionableStream, ZEBNewClientPositionableStreamProc)

typedef struct ZEBStreamFactoryProcs {
  ZEB_STREAM_FACTORY_PROCS(ZEB_PROC_MEMBER)
} ZEBStreamFactoryProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ZEBFetchStreamFactoryProcs, ZEBStreamFactoryProcs, ZEB_STREAM_FACTORY_INTERFACE,
                 ZEB_STREAM_FACTORY_PROCS)

#ifdef __cplusplus
}
#endif

#endif
