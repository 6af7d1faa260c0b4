// Snapshots of all event counters, some twenty of the library's and, in another row, as many more
// as make a thousand: one is taken and deleted, a time is that of one counter. The peer copies an
// array of as many records, allocated and freed; it shows how much of the time that is.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "library.h"
#include "rows.h"

namespace zeb::bench {

namespace {

constexpr double kMostNanoseconds = 10;

uint32_t registered(const ZEBEventProcs& procs) {
  uint32_t count = 0;
  procs.DeleteEventSnapshot(procs.NewEventSnapshot(&count));
  return count;
}

// The library with so many counters more than its own.
class Counters {
 public:
  explicit Counters(uint32_t more) {
    check(ZEBFetchEventProcs(session_.getProcAddress(), &procs_), "event procs are missing");
    const uint32_t own = registered(procs_);
    for (uint32_t i = 0; i < more; ++i) mine_.push_back(procs_.NewEventCounter("bench", 0));
    check(registered(procs_) == own + more, "a snapshot does not tell of every counter");
    if (more) checkTotal();
  }

  ~Counters() {
    for (ZEBEventCounter* counter : mine_) procs_.DeleteEventCounter(counter);
  }

  auto snapshot() {
    return [procs = procs_] {
      uint32_t count = 0;
      ZEBEventRecord* records = procs.NewEventSnapshot(&count);
      benchmark::DoNotOptimize(records);
      procs.DeleteEventSnapshot(records);
    };
  }

 private:
  // The latest counter stands first.
  void checkTotal() {
    procs_.SignalEventCounter(mine_.back(), 3);
    uint32_t count = 0;
    ZEBEventRecord* records = procs_.NewEventSnapshot(&count);
    check(records && records[0].total == 3, "a snapshot tells a wrong total");
    procs_.DeleteEventSnapshot(records);
  }

  Session session_;
  ZEBEventProcs procs_;
  std::vector<ZEBEventCounter*> mine_;
};

auto copyArray(uint32_t count) {
  return [records = std::vector<ZEBEventRecord>(opaque(count))] {
    const size_t size = records.size() * sizeof(ZEBEventRecord);
    void* copy = std::malloc(size);
    std::memcpy(copy, records.data(), size);
    benchmark::DoNotOptimize(copy);
    benchmark::ClobberMemory();
    std::free(copy);
  };
}

uint32_t ownCounters() {
  const Session session;
  ZEBEventProcs procs{};
  check(ZEBFetchEventProcs(session.getProcAddress(), &procs), "event procs are missing");
  return registered(procs);
}

Row snapshotRow(const std::string& name, uint32_t count, uint32_t more) {
  const Shared<Counters> counters([=] { return std::make_unique<Counters>(more); });
  Row row{.area = "events",
          .name = "snapshot of " + name + ", by the counter",
          .operations = static_cast<int>(count),
          .goal = Goal{.limit = kMostNanoseconds, .kind = Goal::Kind::time}};
  row.prepare = [=] { counters.get(); };
  row.ours = measure("ours", [=](size_t) { return counters.get().snapshot(); });
  row.peers.push_back(measure("copy of an array", [=](size_t) { return copyArray(count); }));
  return row;
}

}  // namespace

void addSnapshotRows(Rows& rows) {
  constexpr uint32_t many = 1000;
  const uint32_t own = ownCounters();
  rows.push_back(snapshotRow("the library's own counters", own, 0));
  rows.push_back(snapshotRow("1,000 counters", many, many - own));
}

}  // namespace zeb::bench
