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

void AddRelaxed(AtomicCounter* counter, uint64_t amount) {
  counter->fetch_add(amount, std::memory_order_relaxed);
}

void AddUnlessNull(AtomicCounter* counter, uint64_t amount) {
  if (counter) counter->fetch_add(amount, std::memory_order_relaxed);
}

// Alone in its cache line.
struct alignas(64) LonelyCounter {
  AtomicCounter value{0};
};

class Events {
 public:
  Events() {
    Check(ZEBFetchEventProcs(session_.GetProcAddress(), &procs_), "event procs are missing");
    live_ = procs_.NewEventCounter("bench", 0);
    Check(live_, "a counter cannot be made");
    CheckThatSignalsAreCounted();
  }

  ~Events() { procs_.DeleteEventCounter(live_); }

  ZEBSignalEventCounterProc Signal() const { return procs_.SignalEventCounter; }
  ZEBEventCounter* Live() const { return live_; }
  AtomicCounter* Atomic() { return &atomic_.value; }

 private:
  void CheckThatSignalsAreCounted() {
    procs_.SignalEventCounter(live_, 2);
    procs_.SignalEventCounter(live_, 3);
    uint32_t count = 0;
    ZEBEventRecord* records = procs_.NewEventSnapshot(&count);
    Check(count >= 1 && records[0].total == 5, "signals are not counted");
    procs_.DeleteEventSnapshot(records);
  }

  Session session_;
  ZEBEventProcs procs_;
  ZEBEventCounter* live_;
  LonelyCounter atomic_;
};

template <class Function, class Counter>
auto Signal(Function function, Counter* counter) {
  return [function = Opaque(function), counter = Opaque(counter)] { function(counter, 1); };
}

Row SignalRow(const Shared<Events>& events, std::string name, bool live, int threads) {
  Row row{.area = "events",
          .name = std::move(name),
          .threads = threads,
          .goal = Goal{1.0, {"relaxed std::atomic"}}};
  row.prepare = [events] { events.Get(); };
  row.ours = Measure("ours", [=](size_t) {
    return Signal(events.Get().Signal(), live ? events.Get().Live() : nullptr);
  });
  row.peers.push_back(Measure("relaxed std::atomic",
                              [=](size_t) { return Signal(AddRelaxed, events.Get().Atomic()); }));
  if (!live)
    row.peers.push_back(Measure("test and return", [=](size_t) {
      return Signal(AddUnlessNull, static_cast<AtomicCounter*>(nullptr));
    }));
  return row;
}

}  // namespace

void AddEventRows(Rows& rows) {
  const Shared<Events> events([] { return std::make_unique<Events>(); });
  rows.push_back(SignalRow(events, "signal: null handle", false, 1));
  rows.push_back(SignalRow(events, "signal: live counter", true, 1));
  rows.push_back(SignalRow(events, "signal: live counter", true, 2));
}

}  // namespace zeb::bench
