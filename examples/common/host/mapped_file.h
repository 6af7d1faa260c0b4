// What the loader has in memory.
#ifndef EXAMPLES_COMMON_HOST_MAPPED_FILE_H
#define EXAMPLES_COMMON_HOST_MAPPED_FILE_H

#include <filesystem>

namespace examples {

// Whether the file is in memory, whoever loaded it.
bool isMapped(const std::filesystem::path& path);

}  // namespace examples

#endif
