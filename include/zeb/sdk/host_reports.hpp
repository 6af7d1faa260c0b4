// What the host's error-report procedure is told, listened to.
//
// The library takes one procedure without an argument of the host's. A host's Library
// (library.hpp) puts its own in that place, which passes everything on to the host's and lets
// whoever waits for the outcome of a call hear what was reported meanwhile.
#ifndef ZEB_SDK_HOST_REPORTS_HPP
#define ZEB_SDK_HOST_REPORTS_HPP

#include <algorithm>
#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "zeb/exports.h"
#include "zeb/sdk/module_local.hpp"

namespace zeb::sdk::detail {

class ReportListener;

ZEB_SDK_MODULE_LOCAL inline constinit thread_local ReportListener* reportListener = nullptr;
ZEB_SDK_MODULE_LOCAL inline constinit std::atomic<ZEBErrorReport> hostReport = nullptr;

// Hears what the thread that made it reports as long as it lives. Of several only the last one.
class ReportListener {
 public:
  ReportListener() noexcept : outer_(std::exchange(reportListener, this)) {}
  ReportListener(const ReportListener&) = delete;
  ReportListener& operator=(const ReportListener&) = delete;
  ~ReportListener() { reportListener = outer_; }

  void hear(const char* message) noexcept {
    try {
      // An error is reported when it is made, and again by whoever gives up because of it.
      if (std::find(heard_.begin(), heard_.end(), message) == heard_.end()) {
        heard_.emplace_back(message);
      }
    } catch (...) {  // memory is short
    }
  }

  // What was heard, separated by semicolons; empty for nothing.
  [[nodiscard]] std::string text() const {
    std::string text;
    for (const std::string& message : heard_) text.append(text.empty() ? "" : "; ").append(message);
    return text;
  }

 private:
  ReportListener* outer_;
  std::vector<std::string> heard_;
};

// What the library is given as the host's error-report procedure.
ZEB_SDK_MODULE_LOCAL inline void reportToHost(const char* message) {
  if (reportListener != nullptr) reportListener->hear(message);
  if (const ZEBErrorReport report = hostReport.load(std::memory_order_acquire)) report(message);
}

}  // namespace zeb::sdk::detail

#endif
