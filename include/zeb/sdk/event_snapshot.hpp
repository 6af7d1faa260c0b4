// A snapshot of all event counters, which goes back to the service that made it.
#ifndef ZEB_SDK_EVENT_SNAPSHOT_HPP
#define ZEB_SDK_EVENT_SNAPSHOT_HPP

#include <cstdint>
#include <span>
#include <utility>

#include "zeb/event.h"
#include "zeb/sdk/event_binding.hpp"

namespace zeb::sdk {

// All counters at one moment; its only owner gives the records back.
class EventSnapshot {
 public:
  EventSnapshot() noexcept = default;
  // Owns the records from here on; `remove` takes them back.
  EventSnapshot(ZEBEventRecord* records, uint32_t count, ZEBDeleteEventSnapshotProc remove) noexcept
      : records_(records), count_(records != nullptr ? count : 0), remove_(remove) {}
  EventSnapshot(EventSnapshot&& other) noexcept { swap(other); }
  EventSnapshot& operator=(EventSnapshot&& other) noexcept {
    EventSnapshot taken(std::move(other));
    swap(taken);
    return *this;
  }
  EventSnapshot(const EventSnapshot&) = delete;
  EventSnapshot& operator=(const EventSnapshot&) = delete;
  ~EventSnapshot() {
    if (records_ != nullptr) remove_(records_);
  }

  // The counters now; nothing when no event service is available or memory is short.
  [[nodiscard]] static EventSnapshot take(EventBinding& events) {
    const auto procs = events.procs();
    if (!procs) return {};
    uint32_t count = 0;
    ZEBEventRecord* records = procs->NewEventSnapshot(&count);
    return {records, count, procs->DeleteEventSnapshot};
  }

  // False for one that could not be taken.
  [[nodiscard]] bool exists() const noexcept { return records_ != nullptr; }
  // The records, the latest counter first; empty when there are none.
  [[nodiscard]] std::span<ZEBEventRecord> records() const noexcept { return {records_, count_}; }

  // Lets the records go without giving them back: their service may be gone.
  void abandon() noexcept {
    records_ = nullptr;
    count_ = 0;
  }

 private:
  void swap(EventSnapshot& other) noexcept {
    std::swap(records_, other.records_);
    std::swap(count_, other.count_);
    std::swap(remove_, other.remove_);
  }

  ZEBEventRecord* records_ = nullptr;
  uint32_t count_ = 0;
  ZEBDeleteEventSnapshotProc remove_ = nullptr;
};

}  // namespace zeb::sdk

#endif
