// Measuring the library: an accumulator adds up what the event counters counted during monitoring
// sessions and writes a report of it when its module is stopped.
//
//   static zeb::sdk::EventAccumulator startup("startup events.txt", 10, true);
//
//   {
//     const zeb::sdk::EventSession session(startup);
//     ...  // what is counted here goes into the report
//   }
//
// Sessions may overlap; only the one that ends last counts then, from its own beginning to its end.
// The records are those of the first session that counts: a counter made after its beginning is not
// among them. Counters are told apart by the address of their name, and their names are read when
// the report is written. Every session ends before its module is stopped.
#ifndef ZEB_SDK_EVENT_ACCUMULATOR_HPP
#define ZEB_SDK_EVENT_ACCUMULATOR_HPP

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <optional>
#include <span>
#include <utility>

#include "zeb/event.h"
#include "zeb/sdk/event_snapshot.hpp"
#include "zeb/sdk/executable_directory.hpp"
#include "zeb/sdk/lazy_list.hpp"
#include "zeb/sdk/module.hpp"

namespace zeb::sdk {

// Adds up what the counters counted during sessions, and reports it when the module stops.
class EventAccumulator final : public LazyTerminate {
 public:
  // Its level among the lazy objects (lazy_walk.hpp).
  static constexpr int32_t kLevel = 8;

  // `reportName` is relative to the executable's directory and not copied; without one there is no
  // report. The report leaves out counters whose criticality is below the threshold and, with
  // `onlySignalled`, counters that counted nothing.
  EventAccumulator(const char* reportName, int32_t threshold, bool onlySignalled,
                   Module& module = thisModule) noexcept
      : LazyTerminate(kLevel, module.lazyList),
        events_(module.events),
        reportName_(reportName),
        threshold_(threshold),
        onlySignalled_(onlySignalled) {}
  EventAccumulator(const EventAccumulator&) = delete;
  EventAccumulator& operator=(const EventAccumulator&) = delete;
  // Without a stop before it there is no report, and the service of the records may be gone.
  ~EventAccumulator() override { forget(); }

  // Opens the report, which is empty at first; a report that cannot be opened is not written.
  bool initialise() override {
    const std::lock_guard guard(lock_);
    sessions_ = 0;
    report_ = openReport();
    return true;
  }

  void terminate() override {
    const std::lock_guard guard(lock_);
    if (report_ != nullptr) writeReport();
    closeReport();
    accumulated_ = {};
  }

  void forget() override {
    const std::lock_guard guard(lock_);
    closeReport();
    accumulated_.abandon();
  }

  // Begins a session; any thread. The answer goes to endSession. EventSession does both.
  [[nodiscard]] EventSnapshot beginSession() {
    openSessions_.fetch_add(1, std::memory_order_relaxed);
    return EventSnapshot::take(events_);
  }
  // Ends the session that began with `start`; any thread.
  void endSession(EventSnapshot start) {
    EventSnapshot end = EventSnapshot::take(events_);
    endSession(std::move(start), std::move(end));
  }
  // The same with an end that was taken earlier.
  void endSession(EventSnapshot start, EventSnapshot end) {
    const std::lock_guard guard(lock_);
    ++sessions_;
    if (openSessions_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (accumulated_.exists()) {
      add(start.records(), end.records());
    } else {
      adopt(std::move(start), end.records());
    }
  }

  // What has been accumulated for the counter of this name, compared as text.
  [[nodiscard]] std::optional<ZEBEventRecord> find(const char* name) const {
    const std::lock_guard guard(lock_);
    for (const ZEBEventRecord& record : accumulated_.records()) {
      if (name != nullptr && record.name != nullptr && std::strcmp(record.name, name) == 0) {
        return record;
      }
    }
    return std::nullopt;
  }

  // Sessions that have ended since the module was started.
  [[nodiscard]] int32_t sessions() const {
    const std::lock_guard guard(lock_);
    return sessions_;
  }

 private:
  static constexpr size_t kLongestLine = 1024;
  using Line = std::array<char, kLongestLine + 1>;
  using Records = std::span<ZEBEventRecord>;

  // The counter's record in another snapshot. Mostly nothing was registered in between, and it has
  // the same index there.
  static const ZEBEventRecord* sameCounter(Records records, const char* name, size_t index) {
    if (index < records.size() && records[index].name == name) return &records[index];
    for (const ZEBEventRecord& record : records) {
      if (record.name == name) return &record;
    }
    return nullptr;
  }

  // Totals may have wrapped around.
  static int64_t sum(int64_t a, int64_t b) noexcept {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
  }
  static int64_t difference(int64_t a, int64_t b) noexcept {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
  }

  void adopt(EventSnapshot start, Records end) {
    const Records records = start.records();
    for (size_t i = 0; i < records.size(); ++i) {
      const ZEBEventRecord* ended = sameCounter(end, records[i].name, i);
      records[i].total = ended != nullptr ? difference(ended->total, records[i].total) : 0;
    }
    accumulated_ = std::move(start);
  }

  void add(Records start, Records end) {
    const Records records = accumulated_.records();
    for (size_t i = 0; i < records.size(); ++i) {
      const ZEBEventRecord* started = sameCounter(start, records[i].name, i);
      const ZEBEventRecord* ended = sameCounter(end, records[i].name, i);
      if (started == nullptr || ended == nullptr) continue;
      records[i].total = sum(records[i].total, difference(ended->total, started->total));
    }
  }

  [[nodiscard]] std::FILE* openReport() const noexcept {
    if (reportName_ == nullptr) return nullptr;
    try {
      return std::fopen(besideExecutable(reportName_).c_str(), "w+");
    } catch (...) {  // no memory for the path
      return nullptr;
    }
  }

  void closeReport() {
    if (report_ != nullptr) (void)std::fclose(report_);
    report_ = nullptr;
  }

  void put(const char* text) const { (void)std::fputs(text, report_); }

  void writeReport() const {
    Line line{};
    (void)std::snprintf(line.data(), line.size(), "Total Number of Sessions: %d\n\nEvent List",
                        sessions_);
    put(line.data());
    put(onlySignalled_ ? " - only listing events that signaled at least once\n"
                         "============================================================"
                       : "\n==========");
    if (sessions_ < 1) {
      put("\n(no monitoring sessions -- nothing to report)");
    } else if (!writeRecords()) {
      put(reasonForNoRecords());
    }
  }

  // True when there was a record to write.
  [[nodiscard]] bool writeRecords() const {
    bool written = false;
    for (const ZEBEventRecord& record : accumulated_.records()) {
      if (record.criticality < threshold_) continue;
      if (onlySignalled_ && record.total <= 0) continue;
      writeRecord(record);
      written = true;
    }
    return written;
  }

  void writeRecord(const ZEBEventRecord& record) const {
    const auto total = static_cast<double>(record.total);
    Line line{};
    (void)std::snprintf(line.data(), line.size(),
                        "\n\n%s\n  Criticality:          %d\n  Total Signals:        %.0lf\n"
                        "  Signals Per Session: %9.6lf",
                        record.name != nullptr ? record.name : "", record.criticality, total,
                        total / sessions_);
    put(line.data());
  }

  [[nodiscard]] const char* reasonForNoRecords() const {
    if (!accumulated_.records().empty()) return "\n(no events occured meeting given criteria)";
    return countersCanBeMade() ? "\n(no registered events)" : "\n(ZEB event registry unsupported)";
  }

  [[nodiscard]] bool countersCanBeMade() const {
    const auto procs = events_.procs();
    if (!procs) return false;
    ZEBEventCounter* trial = procs->NewEventCounter("trial", 0);
    if (trial == nullptr) return false;
    procs->DeleteEventCounter(trial);
    return true;
  }

  EventBinding& events_;
  const char* const reportName_;
  const int32_t threshold_;
  const bool onlySignalled_;
  std::atomic<int32_t> openSessions_{0};

  mutable std::mutex lock_;  // guards what follows
  std::FILE* report_ = nullptr;
  int32_t sessions_ = 0;
  EventSnapshot accumulated_;
};

// A session, from its construction to its destruction.
class EventSession {
 public:
  // Begins a session of the accumulator, which outlives it.
  explicit EventSession(EventAccumulator& accumulator)
      : accumulator_(accumulator), start_(accumulator.beginSession()) {}
  EventSession(const EventSession&) = delete;
  EventSession& operator=(const EventSession&) = delete;
  ~EventSession() { accumulator_.endSession(std::move(start_)); }

 private:
  EventAccumulator& accumulator_;
  EventSnapshot start_;
};

}  // namespace zeb::sdk

namespace ZEB_T_MT {
// The class under the name that older sources know.
using CZEBEventAccumulator = zeb::sdk::EventAccumulator;
}  // namespace ZEB_T_MT

#endif
