// A library that runs over a host whose allocations are counted and can be made to fail, for unit
// tests that look inside.
#ifndef ZEB_TESTS_SUPPORT_STARTED_LIBRARY_H
#define ZEB_TESTS_SUPPORT_STARTED_LIBRARY_H

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base/event_counter.h"
#include "events/event_registry.h"
#include "frame/lifecycle.h"
#include "memory/object_memory.h"

namespace zeb::test {

// The host's object allocator set. Blocks carry their size in a header of 16 bytes.
class CountingHost {
 public:
  static inline std::atomic<int64_t> liveBlocks{0};
  // Counts down to the allocation that fails; negative: none does.
  static inline std::atomic<int64_t> allocationsUntilFailure{-1};
  static inline std::vector<std::string> reports;

  static ObjectAllocatorSet objects() noexcept { return {alloc, realloc, free, size}; }

  static void reset() {
    liveBlocks = 0;
    allocationsUntilFailure = -1;
    reports.clear();
  }

  // From now on the nth allocation (from 1) fails, once.
  static void failAllocation(int64_t nth) noexcept { allocationsUntilFailure = nth; }
  static bool failureIsPending() noexcept { return allocationsUntilFailure > 0; }
  static void stopFailing() noexcept { allocationsUntilFailure = -1; }

  static void report(const char* message) { reports.emplace_back(message); }

  static void* alloc(uint64_t bytes) noexcept {
    if (allocationsUntilFailure > 0 && --allocationsUntilFailure == 0) return nullptr;
    auto* block = static_cast<unsigned char*>(std::malloc(bytes + kHeader));
    if (block == nullptr) return nullptr;
    std::memcpy(block, &bytes, sizeof bytes);
    ++liveBlocks;
    return block + kHeader;
  }
  static void free(void* data) noexcept {
    --liveBlocks;
    std::free(static_cast<unsigned char*>(data) - kHeader);
  }
  static uint64_t size(void* data) noexcept {
    uint64_t bytes = 0;
    std::memcpy(&bytes, static_cast<unsigned char*>(data) - kHeader, sizeof bytes);
    return bytes;
  }
  static void* realloc(void* data, uint64_t bytes) noexcept {
    void* moved = alloc(bytes);
    if (moved == nullptr || data == nullptr) return moved;
    std::memcpy(moved, data, std::min(size(data), bytes));
    free(data);
    return moved;
  }

 private:
  static constexpr uint64_t kHeader = 16;
};

// Started over a CountingHost, stopped at the latest by the destructor.
class StartedLibrary {
 public:
  StartedLibrary() {
    CountingHost::reset();
    frame::StartOptions options;
    options.objects = CountingHost::objects();
    options.errorReport = CountingHost::report;
    options.flags = ZEB_FLAG_MULTI_THREADED;
    find_ = frame::start(options);
  }
  ~StartedLibrary() { stop(); }
  StartedLibrary(const StartedLibrary&) = delete;
  StartedLibrary& operator=(const StartedLibrary&) = delete;

  void stop() noexcept {
    if (find_ != nullptr) frame::stop();
    find_ = nullptr;
  }

  [[nodiscard]] bool started() const noexcept { return find_ != nullptr; }

  template <class Proc>
  [[nodiscard]] Proc proc(const char* interfaceName, const char* method, const char* name) const {
    return reinterpret_cast<Proc>(find_(interfaceName, method, name));
  }

 private:
  ZEBGetProcAddress find_ = nullptr;
};

// The total that the library's own event service has for a counter.
inline int64_t totalOf(const ZEB_T_MT::CZEBEventCounter& counter) {
  uint32_t count = 0;
  ZEBEventRecord* records = events::makeSnapshot(count);
  int64_t total = -1;
  for (uint32_t i = 0; i < count; ++i) {
    if (std::strcmp(records[i].name, counter.name()) == 0) total = records[i].total;
  }
  freeObject(records);
  return total;
}

}  // namespace zeb::test

#endif
