// A library in a few lines, for tests of what a client does with one: frame procs with a change
// counter, and an event service whose counters and snapshots the test decides.
#ifndef ZEB_TESTS_SDK_FAKE_SERVICE_H
#define ZEB_TESTS_SDK_FAKE_SERVICE_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zeb/zeb.h"

namespace sdk_test {

class FakeService {
 public:
  static inline std::uint32_t changes = 1;
  static inline bool hasFrame = true;
  static inline bool hasEvents = true;
  static inline bool throws = false;
  static inline bool makesCounters = true;
  static inline bool makesSnapshots = true;
  static inline std::vector<ZEBEventRecord> next;  // what the next snapshot holds
  static inline int fetches = 0;
  static inline int liveCounters = 0;
  static inline std::map<std::string, std::uint64_t> signalled;

  static void Reset() {
    changes = 1;
    hasFrame = hasEvents = makesCounters = makesSnapshots = true;
    throws = false;
    next.clear();
    fetches = liveCounters = 0;
    signalled.clear();
    snapshots_.clear();
  }

  static std::size_t LiveSnapshots() { return snapshots_.size(); }

  static ZEBProc GetProcAddress(const char* interfaceName, const char* method, const char*) {
    if (std::strcmp(interfaceName, ZEB_FRAME_INTERFACE) == 0)
      return hasFrame ? Frame(method) : nullptr;
    if (std::strcmp(interfaceName, ZEB_EVENT_INTERFACE) != 0) return nullptr;
    if (std::strcmp(method, "NewEventCounter") == 0) ++fetches;
    if (throws) throw std::runtime_error("thrown by a look-up");
    return hasEvents ? Events(method) : nullptr;
  }

 private:
  static void Nothing() {}
  static std::uint32_t* ChangeCounter() { return &changes; }

  static ZEBProc Frame(const char* method) {
    if (std::strcmp(method, "ZEBGetUnregisterCountAddr") == 0) {
      return reinterpret_cast<ZEBProc>(&ChangeCounter);
    }
    return &Nothing;
  }

  static ZEBProc Events(const char* method) {
    const std::map<std::string, ZEBProc> procs = {
        {"NewEventCounter", reinterpret_cast<ZEBProc>(&NewCounter)},
        {"DeleteEventCounter", reinterpret_cast<ZEBProc>(&DeleteCounter)},
        {"SignalEventCounter", reinterpret_cast<ZEBProc>(&Signal)},
        {"NewEventSnapshot", reinterpret_cast<ZEBProc>(&NewSnapshot)},
        {"DeleteEventSnapshot", reinterpret_cast<ZEBProc>(&DeleteSnapshot)}};
    return procs.at(method);
  }

  static ZEBEventCounter* NewCounter(const char* name, std::int32_t) {
    if (!makesCounters) return nullptr;
    ++liveCounters;
    return reinterpret_cast<ZEBEventCounter*>(new std::string(name));
  }
  static void DeleteCounter(ZEBEventCounter* counter) {
    --liveCounters;
    delete reinterpret_cast<std::string*>(counter);
  }
  static void Signal(ZEBEventCounter* counter, std::uint64_t amount) {
    signalled[*reinterpret_cast<std::string*>(counter)] += amount;
  }
  static ZEBEventRecord* NewSnapshot(std::uint32_t* count) {
    *count = 0;
    if (!makesSnapshots) return nullptr;
    auto records = std::make_unique<ZEBEventRecord[]>(next.size());
    std::copy(next.begin(), next.end(), records.get());
    *count = static_cast<std::uint32_t>(next.size());
    snapshots_.push_back(std::move(records));
    return snapshots_.back().get();
  }
  static void DeleteSnapshot(ZEBEventRecord* records) {
    std::erase_if(snapshots_, [&](const auto& snapshot) { return snapshot.get() == records; });
  }

  static inline std::vector<std::unique_ptr<ZEBEventRecord[]>> snapshots_;
};

}  // namespace sdk_test

#endif
