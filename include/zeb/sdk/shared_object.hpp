// A shared object, loaded for as long as a C++ object lives.
#ifndef ZEB_SDK_SHARED_OBJECT_HPP
#define ZEB_SDK_SHARED_OBJECT_HPP

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <system_error>
#else
#include <dlfcn.h>
#endif

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace zeb::sdk {

// Whether the code and data of a file leave the process when its owner lets it go.
enum class Unload : uint8_t {
  // They stay: what the file's code made may outlive the owner, and still call it. The same file
  // loaded again is the one that is there.
  never,
  // They go, if nobody else has loaded the file: for files that are replaced while the host runs.
  // Nothing may call into the file any more. A sanitizer or a profiler then cannot name functions
  // of the file in what it reports later.
  atEnd,
};

// A file that could not be loaded. what() says which and why.
class LoadFailure : public std::runtime_error {
 public:
  // `reason` is the loader's own.
  LoadFailure(const std::string& path, const std::string& reason)
      : std::runtime_error(path + " cannot be loaded: " + reason), reason_(reason) {}

  // Why, without the path.
  [[nodiscard]] const std::string& reason() const noexcept { return reason_; }

 private:
  std::string reason_;
};

// Used by one thread at a time.
class SharedObject {
 public:
  // Loads a file by its path, or by its name where the system's loader looks for libraries. Its
  // symbols stay its own: two files may export the same names. Throws LoadFailure.
  explicit SharedObject(const std::string& path, Unload unload = Unload::never)
      : handle_(load(path)), unload_(unload) {
    if (handle_ == nullptr) throw LoadFailure(path, reason(path));
  }
  // The other one has no file afterwards.
  SharedObject(SharedObject&& other) noexcept
      : handle_(std::exchange(other.handle_, nullptr)), unload_(other.unload_) {}
  // The file that was here is let go first.
  SharedObject& operator=(SharedObject&& other) noexcept {
    if (this == &other) return *this;
    close();
    handle_ = std::exchange(other.handle_, nullptr);
    unload_ = other.unload_;
    return *this;
  }
  ~SharedObject() { close(); }

  // The function that the file exports under this name; null when there is none, or no file. The
  // type is not checked.
  template <class Function>
  [[nodiscard]] Function find(const char* name) const noexcept {
    return handle_ != nullptr ? reinterpret_cast<Function>(symbol(name)) : nullptr;
  }

  // Lets the file go before the end of the scope. Does nothing the second time.
  void close() noexcept {
    void* handle = std::exchange(handle_, nullptr);
    if (handle != nullptr && unload_ == Unload::atEnd) free(handle);
  }

 private:
#ifdef _WIN32
  static void* load(const std::string& path) noexcept { return LoadLibraryA(path.c_str()); }
  static void free(void* handle) noexcept { FreeLibrary(static_cast<HMODULE>(handle)); }
  static std::string reason(const std::string& /*path*/) {
    return std::system_category().message(static_cast<int>(GetLastError()));
  }
  [[nodiscard]] void* symbol(const char* name) const noexcept {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
  }
#else
  static void* load(const std::string& path) noexcept {
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  }
  static void free(void* handle) noexcept { dlclose(handle); }
  // The loader mostly begins with the path.
  static std::string reason(const std::string& path) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the text is the calling thread's own
    const char* const text = dlerror();
    std::string reason = text != nullptr ? text : "unknown reason";
    const std::string beginning = path + ": ";
    if (reason.starts_with(beginning)) reason.erase(0, beginning.size());
    return reason;
  }
  [[nodiscard]] void* symbol(const char* name) const noexcept { return dlsym(handle_, name); }
#endif

  void* handle_;
  Unload unload_;
};

}  // namespace zeb::sdk

#endif
