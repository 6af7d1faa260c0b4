// Files and the current directory, as far as systems differ. The handles are stdio's.
//
// What is opened here is used by one thread at a time: its handle takes no lock of its own where
// the system lets it be told so.
#ifndef ZEB_PLATFORM_FILE_H
#define ZEB_PLATFORM_FILE_H

#include <cstdint>
#include <cstdio>

namespace zeb {

// What the system's own directory names are made of.
#ifdef _WIN32
using PathChar = wchar_t;
#else
using PathChar = char;
#endif

// The name of the process's current directory, with its zero. The result is how many characters
// were written; or more than `capacity`, when that many may be needed; or 0: there is no name.
uint64_t currentDirectory(PathChar* name, uint64_t capacity) noexcept;

// fopen: null when it fails. Where paths have an encoding, the path and the mode are taken in the
// system's narrow one first, then in UTF-8.
std::FILE* openFile(const char* path, const char* mode) noexcept;

// Opens a file for reading; a relative path means what it would mean if the directory were the
// current one. Null when it fails.
std::FILE* openFileFrom(const PathChar* directory, const char* path) noexcept;

// The size of a file of which nothing is waiting to be written, or -1 for what is no regular file.
// The handle does not move.
int64_t sizeOfFile(std::FILE* file) noexcept;

}  // namespace zeb

#endif
