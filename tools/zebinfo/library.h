// The library, running as long as a C++ object lives.
#ifndef ZEBINFO_LIBRARY_H
#define ZEBINFO_LIBRARY_H

#include <cstdint>
#include <optional>
#include <string>

#include "zeb/zeb.h"

namespace zebinfo {

class Library {
 public:
  // Loads the file, or takes the library that this program is linked with when the path is empty,
  // and starts it. Throws Failure when that is not possible.
  explicit Library(const std::string& path);
  ~Library();

  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  [[nodiscard]] ZEBGetProcAddress getProcAddress() const noexcept { return getProcAddress_; }
  [[nodiscard]] const ZEBFrameProcs& frame() const noexcept { return frame_; }
  [[nodiscard]] const ZEBEventProcs& events() const noexcept { return events_; }
  // Nothing with a library that has no inspection interface.
  [[nodiscard]] const std::optional<ZEBInspectProcs>& inspect() const noexcept { return inspect_; }

  [[nodiscard]] uint32_t version() const noexcept { return version_; }
  // The path of its file, as far as the loader knows it.
  [[nodiscard]] std::string file() const;

  // Stops it, once.
  void stop() noexcept;

 private:
  void fetch();

  ZEBTerminateFunction terminate_ = nullptr;
  uint32_t version_ = 0;
  ZEBGetProcAddress getProcAddress_ = nullptr;
  ZEBFrameProcs frame_{};
  ZEBEventProcs events_{};
  std::optional<ZEBInspectProcs> inspect_;
};

}  // namespace zebinfo

#endif
