// The procs of "ZEBEventInterface", as a client module holds them: fetched by name, and again
// whenever the library's change counter has moved. Once they could not be fetched, events are not
// available to the module any more.
//
// Thread safety: any thread may ask for the procs; connect and disconnect belong to start and stop.
#ifndef ZEB_SDK_EVENT_BINDING_HPP
#define ZEB_SDK_EVENT_BINDING_HPP

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>

#include "zeb/event.h"

namespace zeb::sdk {

// A module's hold of the event interface.
class EventBinding {
 public:
  constexpr EventBinding() noexcept = default;
  EventBinding(const EventBinding&) = delete;
  EventBinding& operator=(const EventBinding&) = delete;

  // `changeCounter` is the address that ZEBGetUnregisterCountAddr answered.
  void connect(ZEBGetProcAddress getProcAddress, uint32_t* changeCounter) {
    const std::lock_guard guard(lock_);
    getProcAddress_ = getProcAddress;
    changeCounter_ = changeCounter;
    fetched_ = false;
  }

  // Until the next connect there are no procs.
  void disconnect() {
    const std::lock_guard guard(lock_);
    getProcAddress_ = nullptr;
    fetched_ = false;
  }

  // The procs that are registered now; none while events are not available.
  [[nodiscard]] std::optional<ZEBEventProcs> procs() {
    ZEBGetProcAddress getProcAddress = nullptr;
    uint32_t now = 0;
    {
      const std::lock_guard guard(lock_);
      if (unusable_ || getProcAddress_ == nullptr) return std::nullopt;
      now = std::atomic_ref<uint32_t>(*changeCounter_).load(std::memory_order_acquire);
      if (fetched_ && fetchedAt_ == now) return procs_;
      getProcAddress = getProcAddress_;
    }
    // Without the lock: the library may call the host's allocator.
    const std::optional<ZEBEventProcs> fresh = fetch(getProcAddress);
    const std::lock_guard guard(lock_);
    if (!fresh) {
      unusable_ = true;
      return std::nullopt;
    }
    procs_ = *fresh;
    fetchedAt_ = now;
    fetched_ = true;
    return fresh;
  }

 private:
  static std::optional<ZEBEventProcs> fetch(ZEBGetProcAddress getProcAddress) noexcept {
    try {
      ZEBEventProcs procs{};
      if (ZEBFetchEventProcs(getProcAddress, &procs) != 0) return procs;
    } catch (...) {  // a look-up that throws has found nothing
    }
    return std::nullopt;
  }

  std::mutex lock_;
  ZEBGetProcAddress getProcAddress_ = nullptr;
  uint32_t* changeCounter_ = nullptr;
  ZEBEventProcs procs_{};
  uint32_t fetchedAt_ = 0;
  bool fetched_ = false;
  bool unusable_ = false;
};

}  // namespace zeb::sdk

#endif
