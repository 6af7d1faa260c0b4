// An event counter that exists for as long as a C++ object lives.
#ifndef EXAMPLES_COMMON_SUPPORT_EVENT_COUNTER_H
#define EXAMPLES_COMMON_SUPPORT_EVENT_COUNTER_H

#include <cstdint>
#include <new>

#include "zeb/event.h"

namespace examples {

class EventCounter {
 public:
  // The name is not copied and must outlive the counter; snapshots point to it. Throws
  // std::bad_alloc.
  EventCounter(const ZEBEventProcs& procs, const char* name, int32_t criticality)
      : procs_(procs), counter_(procs.NewEventCounter(name, criticality)) {
    if (counter_ == nullptr) throw std::bad_alloc();
  }
  ~EventCounter() { procs_.DeleteEventCounter(counter_); }

  EventCounter(const EventCounter&) = delete;
  EventCounter& operator=(const EventCounter&) = delete;

  void signal(uint64_t amount) const { procs_.SignalEventCounter(counter_, amount); }

 private:
  const ZEBEventProcs& procs_;
  ZEBEventCounter* counter_;
};

}  // namespace examples

#endif
