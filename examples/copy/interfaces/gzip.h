/*
 * Interface "CopyGzipInterface": compressed files as streams.
 *
 * What it hands out are ordinary streams of the library: whoever holds one reads or writes the
 * bytes as they were before they were compressed, and need not know where they go.
 */
#ifndef COPY_GZIP_H
#define COPY_GZIP_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define COPY_GZIP_INTERFACE "CopyGzipInterface"

/* component and ids of the errors that the procs and the streams below return. */
#define COPY_GZIP_COMPONENT "CopyGzip"
#define COPY_GZIP_ERROR_MISSING_ARGUMENT 1 /* the path or the place for the stream was null */
#define COPY_GZIP_ERROR_OPEN 2             /* the file cannot be opened or made */
#define COPY_GZIP_ERROR_NOT_COMPRESSED 3   /* the file is not compressed, or empty */
#define COPY_GZIP_ERROR_DAMAGED 4          /* the compressed bytes are wrong or end too early */
#define COPY_GZIP_ERROR_SYSTEM 5           /* reading or writing the file failed */
#define COPY_GZIP_ERROR_DIRECTION 6        /* a write to a file that is read, or the reverse */
#define COPY_GZIP_ERROR_SEEK 7             /* a place that cannot be gone to */
#define COPY_GZIP_ERROR_FINISHED 8         /* the file that is written is complete already */
#define COPY_GZIP_ERROR_FAILED 9           /* anything else; the message says what */

/*
 * Opens a compressed file and makes a positionable stream over what it holds, with one reference
 * for the caller. The stream cannot be written. Going back starts the file over again, going
 * forward reads what lies between; where the file ends, nobody knows before it was read, so a
 * position cannot be given from the end. Independent streams open the file again.
 *
 * stream  receives the stream; untouched on failure. Must not be null.
 * path    the file. Must not be null.
 *
 * Returns null on success, else an error of which the caller owns one reference. [any-thread]
 * [calls-host]
 */
typedef ZEBErrorObject* (*CopyGzipNewReaderProc)(ZEBContainer** stream, const char* path);

/*
 * Makes a compressed file, replacing one of that name, and a simple stream that writes it, with one
 * reference for the caller. The stream answers to the interface below as well: without Finish, the
 * file is completed when the stream goes, and nobody hears whether that worked.
 *
 * Arguments and result as for NewReader. [any-thread] [calls-host]
 */
typedef ZEBErrorObject* (*CopyGzipNewWriterProc)(ZEBContainer** stream, const char* path);

#define COPY_GZIP_PROCS(X)                       \
  X(NewReader, NewReader, CopyGzipNewReaderProc) \
  X(NewWriter, NewWriter, CopyGzipNewWriterProc)

typedef struct CopyGzipProcs {
  COPY_GZIP_PROCS(ZEB_PROC_MEMBER)
} CopyGzipProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(CopyFetchGzipProcs, CopyGzipProcs, COPY_GZIP_INTERFACE, COPY_GZIP_PROCS)

/* What a stream of NewWriter can do beyond a simple stream; its container is asked for the method.
 */
#define COPY_GZIP_WRITER_INTERFACE "CopyGzipWriterInterface"

/* The instance by which the module finds what it writes to; of no use to anybody else. */
#define COPY_GZIP_WRITER_INSTANCE "CopyGzipWriter"

/*
 * Completes the file and closes it. Nothing can be written afterwards. Returns null on success,
 * else an error of which the caller owns one reference. One thread at a time. [calls-host]
 */
typedef ZEBErrorObject* (*CopyGzipFinishProc)(ZEBContainer* stream);

#define COPY_GZIP_WRITER_PROCS(X) X(Finish, Finish, CopyGzipFinishProc)

typedef struct CopyGzipWriterProcs {
  COPY_GZIP_WRITER_PROCS(ZEB_PROC_MEMBER)
} CopyGzipWriterProcs;

#ifdef __cplusplus
}
#endif

#endif
