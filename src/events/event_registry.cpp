#include "events/event_registry.h"

#include "base/checked_size.h"
#include "memory/object_memory.h"
#include "platform/spin_lock.h"

namespace zeb::events {

static_assert(sizeof(ZEBEventRecord) == 24);

namespace {

class EventRegistry {
 public:
  constexpr EventRegistry() noexcept = default;

  void add(ZEBEventCounter* counter) noexcept ZEB_EXCLUDES(lock_) {
    const SpinGuard guard(lock_);
    counters_.pushHead(counter);
  }

  void remove(ZEBEventCounter* counter) noexcept ZEB_EXCLUDES(lock_) {
    const SpinGuard guard(lock_);
    counters_.remove(counter);
  }

  [[nodiscard]] uint64_t count() noexcept ZEB_EXCLUDES(lock_) {
    const SpinGuard guard(lock_);
    return counters_.count();
  }

  // False when there are more counters than records; nothing is written then.
  bool copyTo(ZEBEventRecord* records, uint64_t capacity, uint64_t& copied) noexcept
      ZEB_EXCLUDES(lock_) {
    const SpinGuard guard(lock_);
    copied = counters_.count();
    if (copied > capacity) return false;
    for (const auto* counter = counters_.head(); counter != nullptr; counter = counter->older()) {
      *records++ = {.total = static_cast<int64_t>(counter->total.total()),
                    .name = counter->name,
                    .criticality = counter->criticality,
                    .reserved = 0};
    }
    return true;
  }

 private:
  SpinLock lock_{50};
  double_linked_list<ZEBEventCounter> counters_ ZEB_GUARDED_BY(lock_);
};

constinit EventRegistry registry;

}  // namespace

ZEBEventCounter* makeCounter(const char* name, int32_t criticality) {
  auto* counter = makeObject<ZEBEventCounter>(name, criticality);
  registry.add(counter);
  return counter;
}

void deleteCounter(ZEBEventCounter* counter) noexcept {
  registry.remove(counter);
  destroyObject(counter);
}

LiveObjects liveCounters() noexcept { return {.live = registry.count()}; }

// The memory is taken before the lock, so the number of counters may have grown by then.
ZEBEventRecord* makeSnapshot(uint32_t& count) {
  uint64_t copied = registry.count();
  for (;;) {
    const uint64_t capacity = copied;
    ObjectMemory memory(sizeOfMany(capacity, sizeof(ZEBEventRecord)));
    if (!registry.copyTo(static_cast<ZEBEventRecord*>(memory.get()), capacity, copied)) continue;
    count = static_cast<uint32_t>(copied);
    return static_cast<ZEBEventRecord*>(memory.release());
  }
}

}  // namespace zeb::events
