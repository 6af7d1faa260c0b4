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
      : slots_(zeb::eventSlots, {create, destroy, signal, tallyOf}), watched_(watched) {
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
  static ZEBEventCounter* create(const char* name, int32_t /*criticality*/) {
    return reinterpret_cast<ZEBEventCounter*>(&current->tallies_[name]);
  }
  static void destroy(ZEBEventCounter* /*counter*/) {}
  static void signal(ZEBEventCounter* counter, uint64_t amount) { tallyOf(counter)->add(amount); }
  static zeb::Tally* tallyOf(ZEBEventCounter* counter) {
    return reinterpret_cast<zeb::Tally*>(counter);
  }

  inline static CountedEvents* current = nullptr;
  Restored<zeb::EventSlots> slots_;
  std::vector<Counter*> watched_;
  std::map<std::string, zeb::Tally> tallies_;
};

}  // namespace zeb_test

#endif
