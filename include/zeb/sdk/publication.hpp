// Publishing an interface of one's own.
//
//   const Publication<Greeting> greeting({.Greeting = guarded([] { return ...; })});
//
// registers every proc of the struct and, beside each, the text of its signature; the end of the
// scope unregisters them.
#ifndef ZEB_SDK_PUBLICATION_HPP
#define ZEB_SDK_PUBLICATION_HPP

#include <type_traits>

#include "zeb/sdk/error.hpp"

namespace zeb::sdk {

namespace detail {

template <class Function, class Result, class... Arguments>
struct GuardedCall {
  static Result call(Arguments... arguments) noexcept {
    using Own = std::invoke_result_t<Function, Arguments...>;
    try {
      if constexpr (std::is_same_v<Result, ZEBErrorObject*> && std::is_void_v<Own>) {
        Function{}(arguments...);
        return nullptr;
      } else {
        return Function{}(arguments...);
      }
    } catch (...) {
      if constexpr (std::is_same_v<Result, ZEBErrorObject*>) {
        return currentExceptionAsError();
      } else {
        return Result();
      }
    }
  }
};

template <class Function>
struct Guarded {
  template <class Result, class... Arguments>
  using Proc = Result (*)(Arguments...);

  // NOLINTNEXTLINE(google-explicit-constructor): it stands in the place of the proc
  template <class Result, class... Arguments>
  constexpr operator Proc<Result, Arguments...>() const noexcept {
    return &GuardedCall<Function, Result, Arguments...>::call;
  }
};

template <auto Function>
struct Constant {
  template <class... Arguments>
  decltype(auto) operator()(Arguments... arguments) const {
    return Function(arguments...);
  }
};

}  // namespace detail

// A proc made of a lambda without captures, or of a function (`guarded<&function>()`): no exception
// leaves it. Where the proc answers with an error, an exception becomes one, and a function that
// returns nothing answers success; any other proc answers null or 0.
template <class Function>
requires std::is_empty_v<Function> && std::is_default_constructible_v<Function>
[[nodiscard]] constexpr detail::Guarded<Function> guarded(Function /*function*/) noexcept {
  return {};
}
template <auto Function>
[[nodiscard]] constexpr detail::Guarded<detail::Constant<Function>> guarded() noexcept {
  return {};
}

// An interface that stays published as long as this object lives. Its name is this publisher's
// alone: the end withdraws whatever is registered under it.
//
// Other threads may look up and call other interfaces meanwhile. Nobody may still use this one when
// it is withdrawn.
template <Interface I>
class Publication {
 public:
  // Throws Failure when a name is taken already or a function is missing, std::bad_alloc when
  // memory is short, and MissingInterface when this module is not attached; nothing is published
  // then, and what was there under the name is as it was.
  explicit Publication(const typename I::Procs& published) {
    (void)procs<Frame>();
    I::forEachProc(published, [](const ZEBProcRequest& request, auto proc) {
      if (proc == nullptr) refuse(request, " has no function");
      if (lookUp()(I::kName, request.methodName, request.procName) != nullptr) {
        refuse(request, " is published by somebody else");
      }
    });
    try {
      // The texts first: whoever finds a proc finds its signature as well.
      I::forEachProc(published, [this]<class Proc>(const ZEBProcRequest& request, Proc /*proc*/) {
        add(request.methodName, detail::signatureName(request).c_str(),
            reinterpret_cast<ZEBProc>(&signatureText<Proc>));
      });
      I::forEachProc(published, [this](const ZEBProcRequest& request, auto proc) {
        add(request.methodName, request.procName, reinterpret_cast<ZEBProc>(proc));
        if (first_ == nullptr) first_ = reinterpret_cast<ZEBProc>(proc);
      });
    } catch (...) {
      withdraw();
      throw;
    }
  }
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;
  ~Publication() { withdraw(); }

 private:
  void add(const char* method, const char* name, ZEBProc proc) {
    if (procs<Frame>().RegisterProcAddress(I::kName, method, name, proc) == 0) {
      throw std::bad_alloc();
    }
    published_ = true;
  }

  [[noreturn]] static void refuse(const ZEBProcRequest& request, const char* why) {
    throw Failure(Error::make(detail::fullName(I::kName, request) + why, I::kName, 0));
  }

  void withdraw() noexcept {
    const auto* frame = tryProcs<Frame>();
    if (!published_ || frame == nullptr) return;
    // After a restart of the library the name may be somebody else's.
    const ZEBProcRequest& request = I::kRequests.front();
    const ZEBProc there = lookUp()(I::kName, request.methodName, request.procName);
    if (first_ == nullptr || there == first_) frame->UnregisterInterface(I::kName);
  }

  ZEBProc first_ = nullptr;  // the first proc of the interface, once it is registered
  bool published_ = false;
};

}  // namespace zeb::sdk

#endif
