// Which loaded file - the program, a library, a module - an address lies in.
#ifndef ZEB_PLATFORM_LOADED_FILE_H
#define ZEB_PLATFORM_LOADED_FILE_H

#include <array>
#include <cstdint>

namespace zeb {

struct LoadedFile {
  static constexpr uint64_t kLongestPath = 4095;

  uint64_t base = 0;  // the address that it is loaded at
  std::array<char, kLongestPath + 1> path{};
};

// False when the address lies in no loaded file or its path cannot be told. Files may be loaded and
// unloaded meanwhile. Allocates nothing.
[[nodiscard]] bool findLoadedFile(const void* address, LoadedFile& found) noexcept;

}  // namespace zeb

#endif
