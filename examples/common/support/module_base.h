// What every module of the examples is made of: the library's services, the state that its procs
// work on, and what it publishes.
#ifndef EXAMPLES_COMMON_SUPPORT_MODULE_BASE_H
#define EXAMPLES_COMMON_SUPPORT_MODULE_BASE_H

#include <initializer_list>
#include <list>
#include <stdexcept>

#include "common/support/published_interface.h"
#include "common/support/services.h"
#include "zeb/sdk/module_entry.hpp"

namespace examples {

// For modules whose procs keep nothing between calls.
struct NoState {
  explicit NoState(const Services& /*services*/) {}
};

// The base of a module's class, Self, which ZEB_SDK_MODULE starts and stops. State is made from the
// services, which outlive it.
template <class Self, class State = NoState>
class ModuleBase {
 public:
  ModuleBase(const ModuleBase&) = delete;
  ModuleBase& operator=(const ModuleBase&) = delete;

  // For the module's procs, which are published between start and stop only.
  [[nodiscard]] static const Services& services() noexcept { return self().services_; }
  [[nodiscard]] static State& state() noexcept { return self().state_; }

 protected:
  // Publishes the interfaces in the order given. Throws when something is missing or taken.
  explicit ModuleBase(std::initializer_list<Publication> publications)
      : services_(requireServices()), state_(services_) {
    // Last: from here on other modules may call.
    for (const Publication& publication : publications) {
      published_.emplace_back(services_, publication);
    }
  }
  ~ModuleBase() {
    while (!published_.empty()) published_.pop_back();
  }

 private:
  static ModuleBase& self() noexcept { return zeb::sdk::moduleObject<Self>(); }

  static Services requireServices() {
    if (const auto services = fetchServices(zeb::sdk::lookUp())) return *services;
    throw std::runtime_error("the library lacks procs of its own interfaces");
  }

  Services services_;
  State state_;
  std::list<PublishedInterface> published_;
};

}  // namespace examples

#endif
