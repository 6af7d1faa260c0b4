// The library's own event counters, as the rooms that count see them.
//
// A CZEBEventCounter is a static object with a name and a criticality. Between start and stop it
// may hold the handle of a counter that the event service registered for it; without one,
// signalling costs one test. The rooms below the event service reach it through a few slots that it
// fills.
#ifndef ZEB_BASE_EVENT_COUNTER_H
#define ZEB_BASE_EVENT_COUNTER_H

#include <cstdint>

#include "base/lazy_list.h"
#include "base/tally.h"
#include "zeb/types.h"

namespace zeb {

// How a counter's handle comes, is signalled and goes. The defaults do nothing.
struct EventSlots {
  ZEBEventCounter* (*create)(const char* name, int32_t criticality);  // null: not available
  void (*destroy)(ZEBEventCounter* counter);
  void (*signal)(ZEBEventCounter* counter, uint64_t amount);
  // The tally behind a handle if the library itself made it, else null. Signalling then adds to the
  // tally directly; a counter of the host's own event service is signalled through its proc.
  Tally* (*tallyOf)(ZEBEventCounter* counter);
};

extern constinit EventSlots eventSlots;

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
    if (tally_ != nullptr) {
      tally_->add(times);
    } else if (handle_ != nullptr) {
      signalHandle(times);
    }
  }

  [[nodiscard]] const char* name() const noexcept { return name_; }
  [[nodiscard]] int32_t criticality() const noexcept { return criticality_; }
  [[nodiscard]] bool registered() const noexcept { return handle_ != nullptr; }

 private:
  void signalHandle(uint64_t times) const noexcept;

  const char* const name_;
  const int32_t criticality_;
  ZEBEventCounter* handle_ = nullptr;
  zeb::Tally* tally_ = nullptr;  // of the handle, when it is the library's own
};

}  // namespace ZEB_T_MT

#endif
