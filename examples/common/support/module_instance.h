// A module's life: made at start, published once it is ready, taken back and gone at stop.
#ifndef EXAMPLES_COMMON_SUPPORT_MODULE_INSTANCE_H
#define EXAMPLES_COMMON_SUPPORT_MODULE_INSTANCE_H

#include <exception>
#include <list>
#include <optional>
#include <span>

#include "common/support/published_interface.h"
#include "common/support/services.h"

namespace examples {

// For modules whose procs keep nothing between calls.
struct NoState {
  explicit NoState(const Services& /*services*/) {}
};

// Each module has one instance, in its file of entry points. State is what the module's procs work
// on; it is made from the services, which outlive it.
template <class State>
class ModuleInstance {
 public:
  // Does ExampleModuleStart's work and returns its result. The interfaces are published in the
  // order given and taken back in reverse. The reason of a failure goes to the library's error
  // report.
  int32_t start(ZEBGetProcAddress getProcAddress,
                std::span<const Publication> publications) noexcept {
    if (state_) return refuseSecondStart();
    services_ = fetchServices(getProcAddress);
    if (!services_) return 0;
    try {
      state_.emplace(*services_);
      // Last: from here on other modules may call.
      for (const Publication& publication : publications) {
        published_.emplace_back(*services_, publication);
      }
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
    while (!published_.empty()) published_.pop_back();
    state_.reset();
  }

  // Only while the module's procs are published.
  [[nodiscard]] const Services& services() const noexcept { return *services_; }
  [[nodiscard]] State& state() noexcept { return *state_; }

 private:
  // The loader gives one file that has two names one place in memory, and so one instance.
  [[nodiscard]] int32_t refuseSecondStart() const noexcept {
    services_->frame.ReportError("is running already");
    return 0;
  }

  std::optional<Services> services_;
  std::optional<State> state_;
  std::list<PublishedInterface> published_;
};

}  // namespace examples

#endif
