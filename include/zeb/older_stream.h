/*
 * Interfaces "ZEBNewStreamInterface" and "ZEBStreamInterface": streams as clients made and used
 * them before there were tiers, kept for clients built against them. New clients take
 * stream_factory.h and simple_stream.h.
 *
 * The handles are those of the current interfaces, and all procs work on all of them. Procs without
 * an error swallow it: makers answer null, the others 0.
 */
#ifndef ZEB_OLDER_STREAM_H
#define ZEB_OLDER_STREAM_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZEB_NEW_STREAM_INTERFACE "ZEBNewStreamInterface"
#define ZEB_STREAM_INTERFACE "ZEBStreamInterface"

/* The callbacks of an old client's stream; each gets the client's context first. */
typedef uint64_t (*ZEBOldStreamRead)(void *context, void *buffer, uint64_t count);
typedef int32_t (*ZEBOldStreamWrite)(void *context, const void *buffer, uint64_t count);
typedef ZEBErrorObject *(*ZEBOldStreamWriteWithError)(void *context, const void *buffer,
                                                      uint64_t count);
typedef int32_t (*ZEBOldStreamSeek)(void *context, uint64_t position);
typedef ZEBErrorObject *(*ZEBOldStreamSeekWithError)(void *context, uint64_t position);
typedef uint64_t (*ZEBOldStreamTell)(void *context);
typedef void (*ZEBOldStreamRelease)(void *context);

/* A memory stream. [any-thread] */
typedef ZEBContainer *(*ZEBNewMemoryStreamProc2)(void);
typedef ZEBErrorObject *(*ZEBNewMemoryStreamProc3)(ZEBContainer **out);

/* A buffer stream. [any-thread] */
typedef ZEBContainer *(*ZEBNewBufferStreamProc3)(ZEBSharedBuffer *buffer);
typedef ZEBErrorObject *(*ZEBNewBufferStreamProc4)(ZEBContainer **out, ZEBSharedBuffer *buffer);

/* A file stream. [any-thread] */
typedef ZEBContainer *(*ZEBNewFileStreamProc2)(const char *path, const char *mode);
typedef ZEBErrorObject *(*ZEBNewFileStreamProc3)(ZEBContainer **out, const char *path,
                                                 const char *mode);

/*
 * A positionable stream over a client's callbacks. It can neither be made independent nor seek from
 * its end. A write or seek that answers 0 is "Unknown Kesto Error". The context belongs to the
 * stream in every case, as with the current makers. [any-thread] [calls-host]
 */
typedef ZEBContainer *(*ZEBNewExternalStreamProc3)(void *context, ZEBOldStreamRead read,
                                                   ZEBOldStreamWrite write, ZEBOldStreamSeek seek,
                                                   ZEBOldStreamTell tell,
                                                   ZEBOldStreamRelease release);
typedef ZEBErrorObject *(*ZEBNewExternalStreamProc4)(
    ZEBContainer **out, void *context, ZEBOldStreamRead read, ZEBOldStreamWriteWithError write,
    ZEBOldStreamSeekWithError seek, ZEBOldStreamTell tell, ZEBOldStreamRelease release);

/* The bytes read. [calls-host] */
typedef uint64_t (*ZEBStreamReadProc2)(ZEBContainer *stream, void *buffer, uint64_t count);

/* 1 on success. [calls-host] */
typedef int32_t (*ZEBStreamWriteProc2)(ZEBContainer *stream, const void *buffer, uint64_t count);
typedef ZEBErrorObject *(*ZEBStreamWriteProc3)(ZEBContainer *stream, const void *buffer,
                                               uint64_t count);

/* Moves to a position counted from the beginning; 1 on success. [calls-host] */
typedef int32_t (*ZEBStreamSeekProc2)(ZEBContainer *stream, uint64_t position);
typedef ZEBErrorObject *(*ZEBStreamSeekProc3)(ZEBContainer *stream, uint64_t position);

/* The position. [calls-host] */
typedef uint64_t (*ZEBStreamMarkProc)(ZEBContainer *stream);

#define ZEB_NEW_STREAM_OLDER_PROCS(X)                                  \
  X(NewMemoryStreamV2, NewMemoryStream, ZEBNewMemoryStreamProc2)       \
  X(NewMemoryStreamV3, NewMemoryStream, ZEBNewMemoryStreamProc3)       \
  X(NewBufferStreamV3, NewBufferStream, ZEBNewBufferStreamProc3)       \
  X(NewBufferStreamV4, NewBufferStream, ZEBNewBufferStreamProc4)       \
  X(NewFileStreamV2, NewFileStream, ZEBNewFileStreamProc2)             \
  X(NewFileStreamV3, NewFileStream, ZEBNewFileStreamProc3)             \
  X(NewExternalStreamV3, NewExternalStream, ZEBNewExternalStreamProc3) \
  X(NewExternalStreamV4, NewExternalStream, ZEBNewExternalStreamProc4)

#define ZEB_STREAM_OLDER_PROCS(X)        \
  X(ReadV2, Read, ZEBStreamReadProc2)    \
  X(WriteV2, Write, ZEBStreamWriteProc2) \
  X(WriteV3, Write, ZEBStreamWriteProc3) \
  X(SeekV2, Seek, ZEBStreamSeekProc2)    \
  X(SeekV3, Seek, ZEBStreamSeekProc3)    \
  X(MarkV1, Mark, ZEBStreamMarkProc)

#ifdef __cplusplus
}
#endif

#endif
