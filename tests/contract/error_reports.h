// A host's error-report procedure that remembers what it was told.
#ifndef ZEB_TESTS_CONTRACT_ERROR_REPORTS_H
#define ZEB_TESTS_CONTRACT_ERROR_REPORTS_H

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "contract/library.h"

namespace contract {

// One memory for each `Tag`: two tags are two hosts.
template <int Tag = 0>
class ErrorReports {
 public:
  static void Report(const char* message) {
    const std::lock_guard guard(Mutex());
    Messages().emplace_back(message == nullptr ? "(null)" : message);
  }

  // What was told since the last call.
  static std::vector<std::string> Take() {
    const std::lock_guard guard(Mutex());
    return std::exchange(Messages(), {});
  }

  static StartOptions Told(StartOptions options = {}) {
    options.errorReport = &Report;
    return options;
  }

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  static std::vector<std::string>& Messages() {
    static std::vector<std::string> messages;
    return messages;
  }
};

}  // namespace contract

#endif
