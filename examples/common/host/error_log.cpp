#include "common/host/error_log.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace examples {
namespace {

// The procedure is given no context, so the log is the process's.
std::mutex mutex;
std::vector<std::string> messages;  // guarded by mutex

}  // namespace

void reportToErrorLog(const char* message) {
  try {
    const std::lock_guard lock(mutex);
    messages.emplace_back(message);
  } catch (...) {
    // The library calls us through a C pointer, and an exception must not cross it. A report that
    // cannot be kept is at least shown.
    static_cast<void>(std::fprintf(stderr, "error report: %s\n", message));
  }
}

std::vector<std::string> takeErrorLog() {
  const std::lock_guard lock(mutex);
  return std::exchange(messages, {});
}

}  // namespace examples
