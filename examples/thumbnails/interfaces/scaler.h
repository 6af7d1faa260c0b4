/*
 * Interface "ThumbnailsScalerInterface": smaller pictures of pictures.
 */
#ifndef THUMBNAILS_SCALER_H
#define THUMBNAILS_SCALER_H

#include "interfaces/picture.h"
#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define THUMBNAILS_SCALER_INTERFACE "ThumbnailsScalerInterface"

/* component and ids of the errors that the scaler makes. */
#define THUMBNAILS_SCALER_COMPONENT "ThumbnailsScaler"
#define THUMBNAILS_SCALER_ERROR_BAD_ARGUMENT 1 /* something is null, 0 or of the wrong size */
#define THUMBNAILS_SCALER_ERROR_FAILED 2       /* anything else; the message says what */

/*
 * Makes a picture of which no side is longer than `edge` pixels and whose sides have the
 * proportions of the original, as far as whole pixels allow. Each pixel is the mean of what it
 * covers. A picture that is small enough is copied.
 *
 * scaled    receives the picture, with a reference to its pixels; untouched on failure. Must not be
 *           null.
 * original  stays the caller's. Must not be null.
 * edge      1 or more.
 *
 * Returns null on success, else an error of which the caller owns one reference. [any-thread]
 * [calls-host]
 */
typedef ZEBErrorObject* (*ThumbnailsScaleProc)(ThumbnailsPicture* scaled,
                                               const ThumbnailsPicture* original, uint32_t edge);

#define THUMBNAILS_SCALER_PROCS(X) X(Scale, Scale, ThumbnailsScaleProc)

typedef struct ThumbnailsScalerProcs {
  THUMBNAILS_SCALER_PROCS(ZEB_PROC_MEMBER)
} ThumbnailsScalerProcs;

/* Fills the struct; 1 on success, else 0 with *out untouched. [any-thread] */
ZEB_DEFINE_FETCH(ThumbnailsFetchScalerProcs, ThumbnailsScalerProcs, THUMBNAILS_SCALER_INTERFACE,
                 THUMBNAILS_SCALER_PROCS)

#ifdef __cplusplus
}
#endif

#endif
