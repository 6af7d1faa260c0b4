/*
 * Interface "ThumbnailsEncoderInterface": a filter that makes JPEG files of pixels.
 */
#ifndef THUMBNAILS_ENCODER_H
#define THUMBNAILS_ENCODER_H

#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define THUMBNAILS_ENCODER_INTERFACE "ThumbnailsEncoderInterface"

/* component and ids of the errors that the encoder makes; those of its target are passed on. */
#define THUMBNAILS_ENCODER_COMPONENT "ThumbnailsEncoder"
#define THUMBNAILS_ENCODER_ERROR_MISSING_ARGUMENT 1
#define THUMBNAILS_ENCODER_ERROR_GEOMETRY 2 /* none was set, or it cannot be encoded */
#define THUMBNAILS_ENCODER_ERROR_TOO_MANY 3 /* more bytes than the geometry has */
#define THUMBNAILS_ENCODER_ERROR_FAILED 4   /* anything else; the message says what */

/*
 * Makes a JPEG filter of the library (NewFilterJPEG in zeb/filter.h) whose client is the module.
 *
 * Before the first byte SetImageParameters sets the geometry: width, height and bytes per pixel, 1
 * for grey or 3 for red, green, blue. SetCompressionParameters sets the quality, from 1 to 100;
 * until then it is 75. Then the pixels are written, in pieces of any size, row by row from the top.
 * With the last of them the file is complete in the filter's target, so that the write's result
 * tells of a failure too; closing the filter earlier gives the picture up. After a failure nothing
 * more can be written.
 *
 * filter  receives the filter, which has no reference yet; untouched on failure. Must not be null.
 * target  where the file goes; the filter takes a reference. Must not be null.
 *
 * Returns null on success, else an error of which the caller owns one reference. The filter goes
 * before the module stops. [any-thread] [calls-host]
 */
typedef ZEBErrorObject* (*ThumbnailsNewEncoderProc)(ZEBDataSink** filter, ZEBDataSink* target);

#define THUMBNAILS_ENCODER_PROCS(X) X(NewEncoder, NewEncoder, ThumbnailsNewEncoderProc)

typedef struct ThumbnailsEncoderProcs {
  THUMBNAILS_ENCODER_PROCS(ZEB_PROC_MEMBER)
} ThumbnailsEncoderProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ThumbnailsFetchEncoderProcs, ThumbnailsEncoderProcs, THUMBNAILS_ENCODER_INTERFACE,
                 THUMBNAILS_ENCODER_PROCS)

#ifdef __cplusplus
}
#endif

#endif
