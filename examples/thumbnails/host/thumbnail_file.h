// Writes a picture as a JPEG file, through a chain of filters.
#ifndef THUMBNAILS_HOST_THUMBNAIL_FILE_H
#define THUMBNAILS_HOST_THUMBNAIL_FILE_H

#include <cstdint>
#include <filesystem>

#include "common/support/services.h"
#include "host/picture_modules.h"
#include "support/picture.h"

namespace examples {

// The encoding filter, which a module brings; behind it a filter that counts; behind that a sink
// into the file's stream. Returns the size of the file. Throws RaisedError, or std::runtime_error
// when not everything has reached the file, which is removed then.
uint64_t writeThumbnail(const Services& services, const PictureModules& modules,
                        const std::filesystem::path& path, const Picture& picture,
                        unsigned quality);

}  // namespace examples

#endif
