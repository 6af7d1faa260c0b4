// Reads the text that the job works on.
#ifndef HOSTING_HOST_INPUT_FILE_H
#define HOSTING_HOST_INPUT_FILE_H

#include <filesystem>
#include <string>

namespace examples {

// The whole file. Throws Failure if it is missing, unreadable, empty or not a text; a file with a
// zero byte counts as not a text.
std::string readTextFile(const std::filesystem::path& path);

}  // namespace examples

#endif
