// A module's own event counter: a static object with a name and a criticality.
//
// While the module is started the counter is registered with whatever event service the library
// publishes and appears in its snapshots. While it is not, or when no service is available,
// signalling costs one test.
#ifndef ZEB_SDK_EVENT_COUNTER_HPP
#define ZEB_SDK_EVENT_COUNTER_HPP

#include <cstdint>

#include "zeb/event.h"
#include "zeb/sdk/lazy_list.hpp"
#include "zeb/sdk/module.hpp"

namespace zeb::sdk {

// A counter that is registered while its module is started.
class EventCounter final : public LazyTerminate {
 public:
  // Its level among the lazy objects (lazy_walk.hpp).
  static constexpr int32_t kLevel = 1;

  // The name is not copied.
  EventCounter(const char* name, int32_t criticality, Module& module = thisModule) noexcept
      : LazyTerminate(kLevel, module.lazyList),
        events_(module.events),
        name_(name),
        criticality_(criticality) {}

  // Registers the counter if it can; never fails.
  bool initialise() override {
    const auto procs = events_.procs();
    if (!procs) return true;
    handle_ = procs->NewEventCounter(name_, criticality_);
    signal_ = procs->SignalEventCounter;
    remove_ = procs->DeleteEventCounter;
    return true;
  }

  void terminate() override {
    if (handle_ != nullptr) remove_(handle_);
    handle_ = nullptr;
  }

  void forget() override { handle_ = nullptr; }

  // Counts an amount. Any thread, between start and stop.
  void signal(uint64_t amount = 1) const {
    if (handle_ != nullptr) signal_(handle_, amount);
  }

  // The pointer that it was made with.
  [[nodiscard]] const char* name() const noexcept { return name_; }
  // As it was made with.
  [[nodiscard]] int32_t criticality() const noexcept { return criticality_; }
  // Whether an event service has it now.
  [[nodiscard]] bool registered() const noexcept { return handle_ != nullptr; }

 private:
  EventBinding& events_;
  const char* const name_;
  const int32_t criticality_;
  ZEBEventCounter* handle_ = nullptr;
  // Of the service that made the handle: one that replaces it later knows nothing of it.
  ZEBSignalEventCounterProc signal_ = nullptr;
  ZEBDeleteEventCounterProc remove_ = nullptr;
};

}  // namespace zeb::sdk

namespace ZEB_T_MT {
// The class under the name that older sources know.
using CZEBEventCounter = zeb::sdk::EventCounter;
}  // namespace ZEB_T_MT

#endif
