#include "platform/file.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zeb {

namespace {

std::FILE* withoutLocking(std::FILE* file) noexcept {
  if (file != nullptr) __fsetlocking(file, FSETLOCKING_BYCALLER);
  return file;
}

std::FILE* handleFor(int descriptor) noexcept {
  if (descriptor < 0) return nullptr;
  std::FILE* file = fdopen(descriptor, "rb");
  if (file == nullptr) close(descriptor);
  return file;
}

// The directory is named to the one call that needs it: the process's own, which every thread would
// see change, stays what it is.
int openDescriptorFrom(const char* directory, const char* path) noexcept {
  if (path[0] == '/') return open(path, O_RDONLY);
  const int base = open(directory, O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (base < 0) return -1;
  const int descriptor = openat(base, path, O_RDONLY);
  close(base);
  return descriptor;
}

}  // namespace

uint64_t currentDirectory(PathChar* name, uint64_t capacity) noexcept {
  if (getcwd(name, capacity) != nullptr) return std::strlen(name) + 1;
  return errno == ERANGE ? 2 * capacity : 0;
}

std::FILE* openFile(const char* path, const char* mode) noexcept {
  return withoutLocking(std::fopen(path, mode));
}

std::FILE* openFileFrom(const PathChar* directory, const char* path) noexcept {
  return withoutLocking(handleFor(openDescriptorFrom(directory, path)));
}

int64_t sizeOfFile(std::FILE* file) noexcept {
  struct stat status {};
  if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  return status.st_size;
}

}  // namespace zeb
