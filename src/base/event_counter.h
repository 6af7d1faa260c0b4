// The library's own event counters, as the rooms that count see them.
//
// A CZEBEventCounter is a static object with a name and a criticality. Between start and stop it
// may be registered with an event service; while it is not, signalling costs one test. The rooms
// below the event service reach it through one slot that the service fills.
#ifndef ZEB_BASE_EVENT_COUNTER_H
#define ZEB_BASE_EVENT_COUNTER_H

#include <cstdint>

#include "base/lazy_list.h"
#include "base/tally.h"
#include "zeb/event.h"

namespace zeb {

// What an event service gives a counter: a handle, and the service's own procs for it.
struct EventRegistration {
  ZEBEventCounter* handle = nullptr;  // null: no service is available
  ZEBSignalEventCounterProc signal = nullptr;
  ZEBDeleteEventCounterProc remove = nullptr;
  // The tally behind the handle if the library's own service made it, else null. Signalling then
  // adds to the tally directly.
  Tally* tally = nullptr;
};

// Registers a counter with the event service that the proc registry holds. The default has none.
using RegisterCounter = EventRegistration (*)(const char* name, int32_t criticality);
extern constinit RegisterCounter registerCounter;

}  // namespace zeb

namespace ZEB_T_MT {

class CZEBEventCounter final : public LazyTerminate {
 public:
  static constexpr int32_t kLevel = 1;

  // The name is not copied.
  CZEBEventCounter(const char* name, int32_t criticality) noexcept
      : LazyTerminate(kLevel), name_(name), criticality_(criticality) {}

  bool initialise() override;
  void terminate() override;

  // Counts `times` events of amount 1 each. Call it with no lock held: the counter may be the
  // host's. What the host's procedure throws is swallowed.
  void signal(uint64_t times = 1) const noexcept {
    if (registration_.tally != nullptr) {
      registration_.tally->add(times);
    } else if (registration_.handle != nullptr) {
      signalForeign(times);
    }
  }

  [[nodiscard]] const char* name() const noexcept { return name_; }
  [[nodiscard]] int32_t criticality() const noexcept { return criticality_; }
  [[nodiscard]] bool registered() const noexcept { return registration_.handle != nullptr; }

 private:
  void signalForeign(uint64_t times) const noexcept;

  const char* const name_;
  const int32_t criticality_;
  zeb::EventRegistration registration_;
};

}  // namespace ZEB_T_MT

#endif
