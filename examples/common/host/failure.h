// Why the host gives up, and the exit status that says so.
#ifndef EXAMPLES_COMMON_HOST_FAILURE_H
#define EXAMPLES_COMMON_HOST_FAILURE_H

#include <stdexcept>
#include <string>

namespace examples {

// Part of the command line's contract: --help lists them.
enum class ExitStatus {
  success = 0,
  failed = 1,      // a step failed, or something leaked
  usage = 2,       // the command line is wrong
  badInput = 3,    // the file is missing, unreadable, empty or not a text
  badLibrary = 4,  // the library cannot be loaded or started
  badModules = 5,  // a module folder is missing, or a module that is needed
};

class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message)
      : std::runtime_error(message), status_(status) {}

  [[nodiscard]] ExitStatus status() const noexcept { return status_; }

 private:
  ExitStatus status_;
};

}  // namespace examples

#endif
