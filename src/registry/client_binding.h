// How the library uses its own interfaces: like any client, by name, through the change counter.
//
// A binding keeps the procs of one interface and the change counter's value at which it fetched
// them. Before each use it compares the counter and fetches again when it has moved, so that a
// host's replacement of an interface reaches the library too. Stopping the library invalidates the
// bindings: a later start with another host never calls the last one's procedures.
//
// Thread safety: none of its own; the owner says what guards it.
#ifndef ZEB_REGISTRY_CLIENT_BINDING_H
#define ZEB_REGISTRY_CLIENT_BINDING_H

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base/host_state.h"
#include "registry/proc_registry.h"

namespace zeb::registry {

// `Procs` is the typed struct of an interface's procs, `count` of them.
template <class Procs>
class ClientBinding {
 public:
  static constexpr size_t kCount = sizeof(Procs) / sizeof(ZEBProc);
  static_assert(std::is_trivially_copyable_v<Procs> && sizeof(Procs) == kCount * sizeof(ZEBProc));
  using Requests = std::array<ZEBProcRequest, kCount>;

  // `requests` outlives the binding.
  constexpr ClientBinding(const char* interfaceName, const Requests& requests) noexcept
      : interfaceName_(interfaceName), requests_(requests) {}

  // Fetches when there is need. False when the interface cannot be fetched completely; the binding
  // is then invalid.
  [[nodiscard]] bool refresh() noexcept {
    const uint32_t now = unregisterCount();
    return now == fetchedAt_ || fetch(now);
  }

  // True when what is held was fetched at the change counter's present value.
  [[nodiscard]] bool current() const noexcept { return unregisterCount() == fetchedAt_; }

  // What the last successful refresh fetched.
  [[nodiscard]] const Procs& procs() const noexcept { return procs_; }

  // Takes over what another binding of the same interface has fetched.
  void adopt(const ClientBinding& other) noexcept {
    procs_ = other.procs_;
    fetchedAt_ = other.fetchedAt_;
  }

  void invalidate() noexcept {
    procs_ = Procs{};
    fetchedAt_ = kNever;
  }

 private:
  // The change counter never has this value.
  static constexpr uint32_t kNever = 0;

  bool fetch(uint32_t now) noexcept {
    std::array<ZEBProc, kCount> found{};
    if (!findAll(requests_, interfaceName_, found.data())) {
      invalidate();
      return false;
    }
    std::memcpy(&procs_, found.data(), sizeof procs_);
    fetchedAt_ = now;
    return true;
  }

  const char* const interfaceName_;
  const Requests& requests_;
  Procs procs_{};
  uint32_t fetchedAt_ = kNever;
};

// Tells the host that a binding of the library itself found no procs, and ends the process: nothing
// that the library could go on with is left.
[[noreturn]] void endWithoutInterface(const char* interfaceName) noexcept;

}  // namespace zeb::registry

#endif
