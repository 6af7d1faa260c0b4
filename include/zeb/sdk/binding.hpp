// Procs of an interface, fetched in bulk and fetched again when the change counter has moved.
//
//   procs<Strings>().NewStringAtom("hello")     required: throws MissingInterface, which says why
//   if (auto* cache = tryProcs<Cache>()) ...    optional: silent
//
// Both cost one load and compare while the interface is there and nothing was unregistered; one
// that is missing is looked for each time. Both may be called by any thread of an attached module.
// What they return stays readable until the module detaches; what it points at is current at the
// moment of the call, as with any look-up.
#ifndef ZEB_SDK_BINDING_HPP
#define ZEB_SDK_BINDING_HPP

#include <atomic>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "zeb/sdk/attachment.hpp"
#include "zeb/sdk/signature.hpp"

namespace zeb::sdk {

// A required interface that could not be bound. what() says which proc was missing, or what about
// it was refused.
class MissingInterface : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Told why a required binding failed, before MissingInterface is thrown. Null, as at the beginning:
// nobody is told.
using Log = void (*)(const char* message);

namespace detail {

ZEB_SDK_MODULE_LOCAL inline constinit std::atomic<Log> log = nullptr;

// The text under which a proc's signature is published; empty when memory is short.
inline std::string signatureName(const ZEBProcRequest& request) {
  return std::string(request.procName).append(kSignatureSuffix);
}

// The text published beside a proc; null when its publisher gave none.
inline const char* publishedSignature(ZEBGetProcAddress find, const char* interfaceName,
                                      const ZEBProcRequest& request) {
  const auto text = reinterpret_cast<SignatureProc>(
      find(interfaceName, request.methodName, signatureName(request).c_str()));
  return text != nullptr ? text() : nullptr;
}

inline std::string fullName(const char* interfaceName, const ZEBProcRequest& request) {
  return std::string(interfaceName) + "/" + request.methodName + "/" + request.procName;
}

template <Interface I>
bool fetch(ZEBGetProcAddress find, typename I::Procs& procs) noexcept {
  constexpr std::size_t count = I::kRequests.size();
  static_assert(sizeof(procs) == count * sizeof(ZEBProc), "a struct of procs holds procs alone");
  std::array<ZEBProc, count> found{};
  if (ZEBFetchProcs(find, I::kName, I::kRequests.data(), count, found.data()) == 0) return false;
  std::memcpy(static_cast<void*>(&procs), found.data(), sizeof(procs));
  return true;
}

// The first proc whose published signature differs from the one that this module was compiled
// with; empty when there is none.
template <Interface I>
std::string changedSignature(ZEBGetProcAddress find) {
  std::string complaint;
  if constexpr (I::kGuarded) {
    I::forEachType([&]<class Proc>(const ZEBProcRequest& request) {
      if (!complaint.empty()) return;
      const char* published = publishedSignature(find, I::kName, request);
      if (published == nullptr || signatureOf<Proc>() == published) return;
      complaint = fullName(I::kName, request) + " is published as " + published +
                  ", but this module was built for " + std::string(signatureOf<Proc>());
    });
  }
  return complaint;
}

// Why a look-up fails, in the words of the library's own inspection where it is served.
inline std::string explained(ZEBGetProcAddress find, const char* interfaceName,
                             const ZEBProcRequest& request) {
  std::string text = fullName(interfaceName, request) + " is not registered";
  ZEBInspectProcs inspect{};
  if (ZEBFetchInspectProcs(find, &inspect) == 0) return text;
  ZEBLookupExplanation* explanation =
      inspect.NewLookupExplanation(interfaceName, request.methodName, request.procName);
  if (explanation == nullptr) return text;
  try {
    text.append(": ").append(explanation->text);
  } catch (...) {  // what there is must do
  }
  inspect.DeleteSnapshot(explanation);
  return text;
}

template <Interface I>
std::string whyMissing(ZEBGetProcAddress find) {
  if (find == nullptr)
    return std::string(I::kName) + ": this module is not attached to the library";
  for (const ZEBProcRequest& request : I::kRequests) {
    if (find(I::kName, request.methodName, request.procName) == nullptr) {
      return explained(find, I::kName, request);
    }
  }
  std::string changed = changedSignature<I>(find);
  return changed.empty() ? std::string(I::kName) + " could not be bound" : changed;
}

// One per interface and module.
template <Interface I>
class ZEB_SDK_MODULE_LOCAL Binding final : public Forgettable {
 public:
  using Procs = typename I::Procs;

  constexpr Binding() noexcept : Forgettable(&forget) {}

  // Null when the interface, or part of it, is missing or refused.
  [[nodiscard]] const Procs* tryGet() noexcept {
    const Fetched* fetched = current_.load(std::memory_order_acquire);
    if (fetched != nullptr && fetched->isCurrent()) [[likely]]
      return &fetched->procs;
    return refresh();
  }

  [[nodiscard]] const Procs& get() {
    const Procs* procs = tryGet();
    if (procs == nullptr) [[unlikely]]
      refuse();
    return *procs;
  }

 private:
  struct Fetched {
    [[nodiscard]] bool isCurrent() const noexcept {
      return std::atomic_ref(*counter).load(std::memory_order_acquire) ==
             count.load(std::memory_order_relaxed);
    }

    Procs procs{};
    uint32_t* counter = nullptr;
    std::atomic<uint32_t> count = 0;
    Fetched* older = nullptr;
  };

  // Fetches without the lock, for the look-up may call the host's allocator. The counter is read
  // first: what is unregistered meanwhile makes the result stale at once, and not for ever.
  const Procs* refresh() noexcept {
    try {
      const ZEBGetProcAddress find = attachment.find();
      if (find == nullptr) return nullptr;
      uint32_t* counter = attachment.counter();
      const uint32_t count = std::atomic_ref(*counter).load(std::memory_order_acquire);
      Procs procs{};
      if (!fetch<I>(find, procs) || !changedSignature<I>(find).empty()) return nullptr;
      return install(find, procs, counter, count);
    } catch (...) {  // memory is short
      return nullptr;
    }
  }

  // Another thread may be reading what was current: it stays, and a new one takes its place. When
  // some other interface was unregistered, the procs are the same and only the count moves on.
  // NOLINTNEXTLINE(readability-non-const-parameter): reading it atomically takes a plain pointer
  const Procs* install(ZEBGetProcAddress find, const Procs& procs, uint32_t* counter,
                       uint32_t count) {
    const std::scoped_lock guard(attachment.lock());
    if (attachment.find() != find) return nullptr;
    Fetched* before = current_.load(std::memory_order_relaxed);
    if (before != nullptr && before->counter == counter &&
        std::memcmp(&before->procs, &procs, sizeof(procs)) == 0) {
      before->count.store(count, std::memory_order_relaxed);
      return &before->procs;
    }
    auto* fetched = new Fetched;
    fetched->procs = procs;
    fetched->counter = counter;
    fetched->count.store(count, std::memory_order_relaxed);
    fetched->older = before;
    current_.store(fetched, std::memory_order_release);
    attachment.remember(*this);
    return &fetched->procs;
  }

  static void forget(Forgettable& self) noexcept {
    Fetched* fetched =
        static_cast<Binding&>(self).current_.exchange(nullptr, std::memory_order_acq_rel);
    while (fetched != nullptr) delete std::exchange(fetched, fetched->older);
  }

  [[noreturn]] static void refuse() {
    const std::string reason = whyMissing<I>(attachment.find());
    if (const Log tell = log.load(std::memory_order_acquire)) tell(reason.c_str());
    throw MissingInterface(reason);
  }

  std::atomic<Fetched*> current_ = nullptr;
};

template <Interface I>
ZEB_SDK_MODULE_LOCAL inline constinit Binding<I> binding;

}  // namespace detail

// Sets who is told from now on; any thread.
ZEB_SDK_MODULE_LOCAL inline void setLog(Log log) noexcept {
  detail::log.store(log, std::memory_order_release);
}

// The procs of an interface that this module cannot do without. Throws MissingInterface.
template <Interface I>
[[nodiscard]] ZEB_SDK_MODULE_LOCAL const typename I::Procs& procs() {
  return detail::binding<I>.get();
}

// The procs of an interface, or null when it is not there.
template <Interface I>
[[nodiscard]] ZEB_SDK_MODULE_LOCAL const typename I::Procs* tryProcs() noexcept {
  return detail::binding<I>.tryGet();
}

}  // namespace zeb::sdk

#endif
