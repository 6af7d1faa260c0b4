// The pictures of a folder.
#ifndef THUMBNAILS_HOST_FOLDER_H
#define THUMBNAILS_HOST_FOLDER_H

#include <filesystem>
#include <vector>

#include "host/picture_modules.h"

namespace examples {

// The files of a folder for which a module has a decoder, sorted by name. Throws Failure when there
// is no such folder or no such file in it.
std::vector<std::filesystem::path> picturesIn(const std::filesystem::path& folder,
                                              const PictureModules& modules);

// Makes the folder for the thumbnails if need be. Throws Failure when that is not possible, and
// when it is one of the folders of pictures: the thumbnails would be pictures of the next run.
void prepareOutput(const std::filesystem::path& output,
                   const std::vector<std::filesystem::path>& folders);

}  // namespace examples

#endif
