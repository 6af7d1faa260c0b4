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
inline constexpr const char *kPathSeparators = "\\/";

// Stores the executable's path; answers its length, or that of the room when it does not fit.
inline size_t readExecutablePath(std::vector<char> &room) {
  return GetModuleFileNameA(nullptr, room.data(), static_cast<DWORD>(room.size()));
}
inline bool isAbsolutePath(const std::string &path) {
  return path.find(':') != std::string::npos || path.find_first_of(kPathSeparators) == 0;
}
#else
inline constexpr const char *kPathSeparators = "/";

inline size_t readExecutablePath(std::vector<char> &room) {
  const ssize_t length = readlink("/proc/self/exe", room.data(), room.size());
  return length > 0 ? static_cast<size_t>(length) : 0;
}
inline bool isAbsolutePath(const std::string &path) { return path.starts_with('/'); }
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

// A path that is relative to the executable's directory, made absolute.
inline std::string besideExecutable(const std::string &path) {
  return isAbsolutePath(path) ? path : executableDirectory() + path;
}

}  // namespace zeb::sdk

#endif
