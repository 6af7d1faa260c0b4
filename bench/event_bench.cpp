// Signalling an event counter: through a null handle, and a live one by one and by two threads.
//
// The peer is the least that a count can be: a relaxed addition to one atomic, called through a
// function pointer as a client calls the proc. With a null handle there is nothing to count; the
// test and return alone, called alike, is shown beside it.
#include <atomic>

#include "library.h"
#include "rows.h"

namespace zeb::bench {

namespace {

using AtomicCounter = std::atomic<uint64_t>;

void addRelaxed(AtomicCounter* counter, uint64_t amount) {
  counter->fetch_add(amount, std::memory_order_relaxed);
}

void addUnlessNull(AtomicCounter* counter, uint64_t amount) {
  if (counter) counter->fetch_add(amount, std::memory_order_relaxed);
}

// Alone in its cache line.
struct alignas(64) LonelyCounter {
  AtomicCounter value{0};
};

class Events {
 public:
  Events() {
    check(ZEBFetchEventProcs(session_.getProcAddress(), &procs_), "event procs are missing");
    live_ = procs_.NewEventCounter("bench", 0);
    check(live_, "a counter cannot be made");
    checkThatSignalsAreCounted();
  }

  ~Events() { procs_.DeleteEventCounter(live_); }

  ZEBSignalEventCounterProc signal() const { return procs_.SignalEventCounter; }
  ZEBEventCounter* live() const { return live_; }
  AtomicCounter* atomic() { return &atomic_.value; }

 private:
  void checkThatSignalsAreCounted() {
    procs_.SignalEventCounter(live_, 2);
    procs_.SignalEventCounter(live_, 3);
    uint32_t count = 0;
    ZEBEventRecord* records = procs_.NewEventSnapshot(&count);
    check(count >= 1 && records[0].total == 5, "signals are not counted");
    procs_.DeleteEventSnapshot(records);
  }

  Session session_;
  ZEBEventProcs procs_;
  ZEBEventCounter* live_;
  LonelyCounter atomic_;
};

template <class Function, class Counter>
auto signal(Function function, Counter* counter) {
  return [function = opaque(function), counter = opaque(counter)] { function(counter, 1); };
}

Row signalRow(const Shared<Events>& events, std::string name, bool live, int threads) {
  Row row{.area = "events",
          .name = std::move(name),
          .threads = threads,
          .goal = Goal{1.0, {"relaxed std::atomic"}}};
  row.prepare = [events] { events.get(); };
  row.ours = measure("ours", [=](size_t) {
    return signal(events.get().signal(), live ? events.get().live() : nullptr);
  });
  row.peers.push_back(measure("relaxed std::atomic",
                              [=](size_t) { return signal(addRelaxed, events.get().atomic()); }));
  if (!live)
    row.peers.push_back(measure("test and return", [=](size_t) {
      return signal(addUnlessNull, static_cast<AtomicCounter*>(nullptr));
    }));
  return row;
}

}  // namespace

void addEventRows(Rows& rows) {
  const Shared<Events> events([] { return std::make_unique<Events>(); });
  rows.push_back(signalRow(events, "signal: null handle", false, 1));
  rows.push_back(signalRow(events, "signal: live counter", true, 1));
  rows.push_back(signalRow(events, "signal: live counter", true, 2));
}

}  // namespace zeb::bench
