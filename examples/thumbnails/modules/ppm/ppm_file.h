// Portable pixel maps: P6, whose samples are bytes, and P3, whose samples are decimal numbers.
#ifndef THUMBNAILS_PPM_PPM_FILE_H
#define THUMBNAILS_PPM_PPM_FILE_H

#include "common/support/services.h"
#include "common/support/stream.h"
#include "support/picture.h"

namespace examples {

// The first picture of the stream. Throws CodedError with an id of interfaces/decoder.h,
// RaisedError, std::bad_alloc.
Picture readPpm(const Services& services, const Stream& stream);

}  // namespace examples

#endif
