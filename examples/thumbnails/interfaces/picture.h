/*
 * A picture, as decoders make it and the scaler takes and makes it.
 */
#ifndef THUMBNAILS_PICTURE_H
#define THUMBNAILS_PICTURE_H

#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Red, green and blue, a byte each. */
#define THUMBNAILS_BYTES_PER_PIXEL 3

/* No picture is larger than this: 300 MB, and more is a header that lies rather than a photograph.
 */
#define THUMBNAILS_MOST_PIXELS 100000000

typedef struct ThumbnailsPicture {
  uint32_t width;          /* in pixels, 1 or more */
  uint32_t height;         /* the same */
  ZEBSharedBuffer* pixels; /* width * height * 3 bytes, row by row from the top, without gaps; one
                              reference, for whoever holds the picture */
} ThumbnailsPicture;

#ifdef __cplusplus
}
#endif

#endif
