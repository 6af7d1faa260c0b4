// Modules that are started in the library.
#ifndef ZEBINFO_MODULE_H
#define ZEBINFO_MODULE_H

#include <optional>
#include <string>

#include "zeb/sdk/loaded_module.hpp"

namespace zebinfo {

// The names of a module's two functions.
struct EntryNames {
  std::string start = ZEB_MODULE_START;
  std::string stop = ZEB_MODULE_STOP;
};

// One module file. What is wrong with it is part of the answer, so nothing is thrown.
class Module {
 public:
  // Loads the file and starts the module. The file is never unloaded: the process ends soon, and a
  // checker can still name its functions.
  Module(std::string file, const EntryNames& names, ZEBGetProcAddress getProcAddress);

  [[nodiscard]] const std::string& file() const noexcept { return file_; }
  // Why it does not run; empty if it does.
  [[nodiscard]] const std::string& problem() const noexcept { return problem_; }

  // Stops it if it runs.
  void stop() noexcept { running_.reset(); }

 private:
  std::string file_;
  std::string problem_;
  std::optional<zeb::sdk::LoadedModule> running_;
};

}  // namespace zebinfo

#endif
