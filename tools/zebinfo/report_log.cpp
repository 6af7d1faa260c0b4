#include "report_log.h"

#include <mutex>
#include <utility>

namespace zebinfo {

namespace {

// The procedure has no argument to find its log by.
std::mutex mutex;
std::vector<std::string> messages;

}  // namespace

void keepReport(const char* message) {
  const std::lock_guard guard(mutex);
  messages.emplace_back(message);
}

std::vector<std::string> takeReports() {
  const std::lock_guard guard(mutex);
  return std::exchange(messages, {});
}

}  // namespace zebinfo
