// JPEG files, over the JPEG library.
#ifndef THUMBNAILS_JPEG_DECODER_JPEG_FILE_H
#define THUMBNAILS_JPEG_DECODER_JPEG_FILE_H

#include "common/support/services.h"
#include "support/picture.h"

namespace examples {

// The picture of the stream, which is read from its cursor on. Throws CodedError with an id of
// interfaces/decoder.h, RaisedError, std::bad_alloc.
Picture readJpeg(const Services& services, ZEBContainer* stream);

}  // namespace examples

#endif
