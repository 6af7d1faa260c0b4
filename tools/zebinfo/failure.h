// Why zebinfo ends, as its exit status says it.
#ifndef ZEBINFO_FAILURE_H
#define ZEBINFO_FAILURE_H

#include <stdexcept>
#include <string>

namespace zebinfo {

// Described in the help text.
enum class ExitStatus : int {
  success = 0,
  missing = 1,
  usage = 2,
  badLibrary = 3,
  badModule = 4,
  notGivenBack = 5,
  badOutput = 6,
};

class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& reason)
      : std::runtime_error(reason), status_(status) {}
  [[nodiscard]] ExitStatus status() const noexcept { return status_; }

 private:
  ExitStatus status_;
};

}  // namespace zebinfo

#endif
