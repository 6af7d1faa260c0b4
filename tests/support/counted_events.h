// An event service of the test's own: it registers the counters that the test wants to watch and
// reads their totals.
#ifndef ZEB_TESTS_SUPPORT_COUNTED_EVENTS_H
#define ZEB_TESTS_SUPPORT_COUNTED_EVENTS_H

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "base/event_counter.h"
#include "base/tally.h"
#include "support/restored.h"

namespace zeb_test {

class CountedEvents {
 public:
  using Counter = ZEB_T_MT::CZEBEventCounter;

  CountedEvents(std::initializer_list<Counter*> watched)
      : registerCounter_(zeb::registerCounter, registerTally), watched_(watched) {
    current = this;
    for (Counter* counter : watched_) counter->initialise();
  }
  ~CountedEvents() {
    for (Counter* counter : watched_) counter->terminate();
    current = nullptr;
  }
  CountedEvents(const CountedEvents&) = delete;
  CountedEvents& operator=(const CountedEvents&) = delete;

  // How often the counter was signalled.
  [[nodiscard]] uint64_t of(const Counter& counter) const {
    return tallies_.at(counter.name()).total();
  }

 private:
  // A handle is the address of a tally.
  static zeb::EventRegistration registerTally(const char* name, int32_t /*criticality*/) {
    zeb::Tally& tally = current->tallies_[name];
    return {.handle = reinterpret_cast<ZEBEventCounter*>(&tally),
            .signal = signal,
            .remove = destroy,
            .tally = &tally};
  }
  static void destroy(ZEBEventCounter* /*counter*/) {}
  static void signal(ZEBEventCounter* counter, uint64_t amount) {
    reinterpret_cast<zeb::Tally*>(counter)->add(amount);
  }

  inline static CountedEvents* current = nullptr;
  Restored<zeb::RegisterCounter> registerCounter_;
  std::vector<Counter*> watched_;
  std::map<std::string, zeb::Tally> tallies_;
};

}  // namespace zeb_test

#endif
