// The library, loaded at run time and running for as long as a C++ object lives.
#ifndef EXAMPLES_COMMON_HOST_LIBRARY_H
#define EXAMPLES_COMMON_HOST_LIBRARY_H

#include <cstdint>
#include <filesystem>
#include <optional>

#include "common/support/services.h"
#include "zeb/exports.h"
#include "zeb/sdk/shared_object.hpp"

namespace examples {

class Library {
 public:
  // Loads the file and starts the library on the host's counting allocators and error log. Without
  // a purge request the library purges its cache itself. Throws Failure if that is not possible or
  // the library is of another major version.
  Library(const std::filesystem::path& path, uint32_t unregisterCountStart, zeb::sdk::Unload unload,
          ZEBPurgeRequest purgeRequest = nullptr);
  ~Library();

  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // Stops the library, once, and returns its change counter. Modules are stopped before. The
  // library's own caches are emptied first: what they keep comes from the host's allocators.
  uint32_t stop();

  [[nodiscard]] const Services& services() const noexcept { return *services_; }
  [[nodiscard]] uint32_t version() const noexcept { return version_; }

 private:
  zeb::sdk::SharedObject file_;
  ZEBTerminateFunction terminate_;
  uint32_t version_;
  bool running_ = false;
  std::optional<Services> services_;
};

}  // namespace examples

#endif
