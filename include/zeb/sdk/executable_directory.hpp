// Where the running executable stands, for files that belong beside it.
#ifndef ZEB_SDK_EXECUTABLE_DIRECTORY_HPP
#define ZEB_SDK_EXECUTABLE_DIRECTORY_HPP

#include <cstddef>
#include <string>
#include <vector>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace zeb::sdk {

#if defined(_WIN32)
// What stands between the parts of a path.
inline constexpr const char* kPathSeparators = "\\/";

// Stores the executable's path; answers its length, or that of the room when it does not fit.
inline size_t readExecutablePath(std::vector<char>& room) {
  return GetModuleFileNameA(nullptr, room.data(), static_cast<DWORD>(room.size()));
}
// Whether the path means the same wherever the program runs.
inline bool isAbsolutePath(const std::string& path) {
  return path.find(':') != std::string::npos || path.find_first_of(kPathSeparators) == 0;
}
#else
// What stands between the parts of a path.
inline constexpr const char* kPathSeparators = "/";

// Stores the executable's path; answers its length, or that of the room when it does not fit.
inline size_t readExecutablePath(std::vector<char>& room) {
  const ssize_t length = readlink("/proc/self/exe", room.data(), room.size());
  return length > 0 ? static_cast<size_t>(length) : 0;
}
// Whether the path means the same wherever the program runs.
inline bool isAbsolutePath(const std::string& path) { return path.starts_with('/'); }
#endif

// The directory, with its last separator; empty when the system does not tell.
inline std::string executableDirectory() {
  constexpr size_t kLongestPath = size_t{1} << 16U;
  for (std::vector<char> room(1024); room.size() <= kLongestPath; room.resize(room.size() * 2)) {
    const size_t length = readExecutablePath(room);
    if (length == room.size()) continue;
    const std::string path(room.data(), length);
    return path.substr(0, path.find_last_of(kPathSeparators) + 1);
  }
  return {};
}

// A path that is relative to the executable's directory, made absolute; empty when that directory
// is not known.
inline std::string besideExecutable(const std::string& path) {
  if (isAbsolutePath(path)) return path;
  const std::string directory = executableDirectory();
  return directory.empty() ? directory : directory + path;
}

}  // namespace zeb::sdk

#endif
