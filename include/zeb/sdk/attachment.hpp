// A module's tie to the library: the look-up function that its host handed over, and the change
// counter that says when what was fetched has to be fetched again.
//
// A module attaches once, when its host starts it, and detaches when its host stops it; a host's
// Library (library.hpp) attaches the host itself. Everything else in the SDK stands on this tie.
#ifndef ZEB_SDK_ATTACHMENT_HPP
#define ZEB_SDK_ATTACHMENT_HPP

#include <atomic>
#include <mutex>

#include "zeb/sdk/interface.hpp"
#include "zeb/sdk/module_local.hpp"

namespace zeb::sdk {

namespace detail {

// A binding, as the attachment knows it: something that can forget what it has fetched.
class Forgettable {
 public:
  using Forget = void (*)(Forgettable& self) noexcept;

  explicit constexpr Forgettable(Forget forget) noexcept : forget_(forget) {}
  Forgettable(const Forgettable&) = delete;
  Forgettable& operator=(const Forgettable&) = delete;

 private:
  friend class Attachment;

  const Forget forget_;
  Forgettable* next_ = nullptr;
  bool known_ = false;
};

class Attachment {
 public:
  constexpr Attachment() noexcept = default;

  bool attach(ZEBGetProcAddress found) noexcept {
    if (found == nullptr) return false;
    const auto counterAddress = reinterpret_cast<ZEBGetUnregisterCountAddr>(
        found(ZEB_FRAME_INTERFACE, "ZEBGetUnregisterCountAddr", "ZEBGetUnregisterCountAddr"));
    if (counterAddress == nullptr) return false;
    const std::scoped_lock guard(lock_);
    forgetAll();
    counter_.store(counterAddress(), std::memory_order_release);
    coreError_.store(reinterpret_cast<ZEBGetCoreErrorProc>(
                         found(ZEB_ERROR_INTERFACE, "GetCoreError", "ZEBGetCoreErrorProc")),
                     std::memory_order_release);
    find_.store(found, std::memory_order_release);
    return true;
  }

  void detach() noexcept {
    const std::scoped_lock guard(lock_);
    find_.store(nullptr, std::memory_order_release);
    forgetAll();
  }

  [[nodiscard]] ZEBGetProcAddress find() const noexcept {
    return find_.load(std::memory_order_acquire);
  }

  [[nodiscard]] uint32_t* counter() const noexcept {
    return counter_.load(std::memory_order_acquire);
  }

  // Where standard errors come from; kept when the module detaches. Whoever still calls into the
  // module then is the library's own code, or holds it.
  [[nodiscard]] ZEBGetCoreErrorProc coreError() const noexcept {
    return coreError_.load(std::memory_order_acquire);
  }

  // Held while a binding fetches, so that it cannot keep what a detachment has made stale.
  [[nodiscard]] std::mutex& lock() noexcept { return lock_; }

  // With the lock held.
  void remember(Forgettable& binding) noexcept {
    if (binding.known_) return;
    binding.known_ = true;
    binding.next_ = first_;
    first_ = &binding;
  }

 private:
  void forgetAll() noexcept {
    for (Forgettable* binding = first_; binding != nullptr; binding = binding->next_) {
      binding->forget_(*binding);
    }
  }

  std::atomic<ZEBGetProcAddress> find_ = nullptr;
  std::atomic<uint32_t*> counter_ = nullptr;
  std::atomic<ZEBGetCoreErrorProc> coreError_ = nullptr;
  std::mutex lock_;
  Forgettable* first_ = nullptr;
};

ZEB_SDK_MODULE_LOCAL inline constinit Attachment attachment;

}  // namespace detail

// Ties this module to the library. False if `find` is null or finds nothing; the module is then as
// it was. Attaching again, after a restart, replaces the tie. One thread, before any other call.
ZEB_SDK_MODULE_LOCAL inline bool attach(ZEBGetProcAddress find) noexcept {
  return detail::attachment.attach(find);
}

// Forgets all that was fetched. Owners that still live can no longer give their objects back, so
// let them go first. One thread, after any other call.
ZEB_SDK_MODULE_LOCAL inline void detach() noexcept { detail::attachment.detach(); }

// The look-up function; null while the module is not attached. [any-thread]
[[nodiscard]] ZEB_SDK_MODULE_LOCAL inline ZEBGetProcAddress lookUp() noexcept {
  return detail::attachment.find();
}

}  // namespace zeb::sdk

#endif
