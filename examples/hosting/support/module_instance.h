// A module's life: made at start, published once it is ready, taken back and gone at stop.
#ifndef HOSTING_SUPPORT_MODULE_INSTANCE_H
#define HOSTING_SUPPORT_MODULE_INSTANCE_H

#include <exception>
#include <optional>
#include <span>

#include "support/published_interface.h"
#include "support/services.h"

namespace hosting {

// For modules whose procs keep nothing between calls.
struct NoState {
  explicit NoState(const Services& /*services*/) {}
};

// Each module has one instance, in its file of entry points. State is what the module's procs work
// on; it is made from the services, which outlive it.
template <class State>
class ModuleInstance {
 public:
  // Does HostingModuleStart's work and returns its result. The reason of a failure goes to the
  // library's error report.
  int32_t start(ZEBGetProcAddress getProcAddress, const char* interfaceName,
                std::span<const ZEBProcTableEntry> entries) noexcept {
    services_ = fetchServices(getProcAddress);
    if (!services_) return 0;
    try {
      state_.emplace(*services_);
      // Last: from here on other modules may call.
      published_.emplace(*services_, interfaceName, entries);
      return 1;
    } catch (const std::exception& failure) {
      services_->frame.ReportError(failure.what());
    } catch (...) {
      services_->frame.ReportError("unknown failure");
    }
    stop();
    return 0;
  }

  void stop() noexcept {
    published_.reset();
    state_.reset();
  }

  // Only while the module's procs are published.
  [[nodiscard]] const Services& services() const noexcept { return *services_; }
  [[nodiscard]] State& state() noexcept { return *state_; }

 private:
  std::optional<Services> services_;
  std::optional<State> state_;
  std::optional<PublishedInterface> published_;
};

}  // namespace hosting

#endif
