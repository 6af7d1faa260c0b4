// Modules that are started in the library.
#ifndef ZEBINFO_MODULE_H
#define ZEBINFO_MODULE_H

#include <string>

#include "zeb/types.h"

namespace zebinfo {

// One module file. What is wrong with it is part of the answer, so nothing is thrown.
class Module {
 public:
  // Loads the file and starts the module; `entry` begins the names of its two functions.
  Module(std::string file, const std::string& entry, ZEBGetProcAddress getProcAddress);

  [[nodiscard]] const std::string& file() const noexcept { return file_; }
  // Why it does not run; empty if it does.
  [[nodiscard]] const std::string& problem() const noexcept { return problem_; }

  // Stops it if it runs.
  void stop();

 private:
  using Start = int32_t (*)(ZEBGetProcAddress getProcAddress);
  using Stop = void (*)();

  void start(const std::string& entry, ZEBGetProcAddress getProcAddress);

  std::string file_;
  std::string problem_;
  Stop stop_ = nullptr;  // null: it does not run
};

}  // namespace zebinfo

#endif
