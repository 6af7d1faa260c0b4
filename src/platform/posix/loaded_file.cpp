#include "platform/loaded_file.h"

#include <link.h>
#include <unistd.h>

#include <cstring>

namespace zeb {

namespace {

constexpr const char* kOwnProgram = "/proc/self/exe";

struct Search {
  uint64_t address;
  LoadedFile& found;
  bool done;
};

bool contains(const dl_phdr_info& file, uint64_t address) noexcept {
  for (ElfW(Half) i = 0; i < file.dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = file.dlpi_phdr[i];
    if (segment.p_type != PT_LOAD) continue;
    if (address - (file.dlpi_addr + segment.p_vaddr) < segment.p_memsz) return true;
  }
  return false;
}

bool copyPath(const char* path, LoadedFile& found) noexcept {
  const uint64_t length = std::strlen(path);
  if (length > LoadedFile::kLongestPath) return false;
  std::memcpy(found.path.data(), path, length + 1);
  return true;
}

// The program itself has no name in the loader's list.
bool copyProgramPath(LoadedFile& found) noexcept {
  const ssize_t length = readlink(kOwnProgram, found.path.data(), LoadedFile::kLongestPath);
  if (length <= 0) return false;
  found.path[static_cast<size_t>(length)] = 0;
  return true;
}

// Called for one file after the other with the loader's lock held: the file cannot be unloaded
// while its path is copied.
int look(dl_phdr_info* file, size_t /*size*/, void* context) noexcept {
  auto& search = *static_cast<Search*>(context);
  if (!contains(*file, search.address)) return 0;
  search.found.base = file->dlpi_addr;
  const bool named = file->dlpi_name != nullptr && file->dlpi_name[0] != 0;
  search.done = named ? copyPath(file->dlpi_name, search.found) : copyProgramPath(search.found);
  return 1;
}

}  // namespace

// The loader's own look-up by address hands out the name as it keeps it, which may be freed by the
// time that it is read.
bool findLoadedFile(const void* address, LoadedFile& found) noexcept {
  Search search{reinterpret_cast<uint64_t>(address), found, false};
  dl_iterate_phdr(&look, &search);
  return search.done;
}

}  // namespace zeb
