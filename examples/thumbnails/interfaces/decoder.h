/*
 * Interfaces "ThumbnailsDecoder.<ending>": pictures out of files.
 *
 * A module that decodes a format publishes this interface once for each ending that such a file's
 * name may have, in small letters: "ThumbnailsDecoder.jpg" and "ThumbnailsDecoder.jpeg". So whoever
 * has a file asks by its name, and a further format is a further module.
 */
#ifndef THUMBNAILS_DECODER_H
#define THUMBNAILS_DECODER_H

#include "interfaces/picture.h"
#include "zeb/client.h"
#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The ending follows, without a dot of its own. */
#define THUMBNAILS_DECODER_INTERFACE_PREFIX "ThumbnailsDecoder."

/* component and ids of the errors that decoders make; those of the stream are passed on. */
#define THUMBNAILS_DECODER_COMPONENT "ThumbnailsDecoder"
#define THUMBNAILS_DECODER_ERROR_MISSING_ARGUMENT 1
#define THUMBNAILS_DECODER_ERROR_DAMAGED 2   /* not of this format, incomplete or contradictory */
#define THUMBNAILS_DECODER_ERROR_TOO_LARGE 3 /* more pixels than a picture may have, or none */
#define THUMBNAILS_DECODER_ERROR_FAILED 4    /* anything else; the message says what */

/*
 * Decodes the picture that a stream holds.
 *
 * picture  receives the picture, with a reference to its pixels; untouched on failure. Must not be
 *          null.
 * stream   a positionable stream, read from its cursor on; where it stands afterwards is not said.
 *          Must not be null.
 *
 * A picture of which anything is missing or wrong is refused as a whole: half a picture would be
 * kept and handed out as if it were the picture. Returns null on success, else an error of which
 * the caller owns one reference. [any-thread] [calls-host]
 */
typedef ZEBErrorObject* (*ThumbnailsDecodeProc)(ThumbnailsPicture* picture, ZEBContainer* stream);

#define THUMBNAILS_DECODER_PROCS(X) X(Decode, Decode, ThumbnailsDecodeProc)

typedef struct ThumbnailsDecoderProcs {
  THUMBNAILS_DECODER_PROCS(ZEB_PROC_MEMBER)
} ThumbnailsDecoderProcs;

#ifdef __cplusplus
}
#endif

#endif
