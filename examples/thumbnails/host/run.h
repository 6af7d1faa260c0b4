// The run: folder by folder, pass by pass.
#ifndef THUMBNAILS_HOST_RUN_H
#define THUMBNAILS_HOST_RUN_H

#include "common/host/failure.h"
#include "host/options.h"

namespace examples {

// Makes all thumbnails and prints what happens. Returns success; badInput when a picture was
// skipped; failed when a thumbnail could not be written or something leaked. Throws Failure when it
// cannot go on.
ExitStatus makeThumbnails(const Options& options);

}  // namespace examples

#endif
