// A module as a class: it runs as long as its one object lives.
//
//   class Greeter {
//    public:
//     Greeter();                         // throws when the module cannot work
//    private:
//     Publication<Greeting> published_{{.Greet = guarded<&greet>()}};
//   };
//   ZEB_SDK_MODULE(Greeter);
//
// The last line exports the two functions of module_entry.h. The start attaches this module,
// initialises its static lazy objects (client_start.hpp) and makes the object; the stop does the
// same in reverse, so that the members of the class may use the library from their construction to
// their destruction. Members are made in the order of their declaration: let the publications come
// last, for others may call as soon as an interface is published.
//
// No exception leaves either function. What the construction throws ends the start, and the host's
// error-report procedure and this module's log (setLog in binding.hpp) are told its text.
//
// Both are visible in a file that is compiled with hidden visibility, as a module best is: a host
// that exports its symbols would lend the module its own copies of inline functions otherwise.
#ifndef ZEB_SDK_MODULE_ENTRY_HPP
#define ZEB_SDK_MODULE_ENTRY_HPP

#include <cstddef>
#include <exception>
#include <new>
#include <stdexcept>
#include <type_traits>

#include "zeb/sdk/binding.hpp"
#include "zeb/sdk/client_start.hpp"
#include "zeb/sdk/module_entry.h"

// Makes `Class`, which has a default constructor, this module. Once in a shared object, after the
// class, in any namespace.
#define ZEB_SDK_MODULE(Class)                                                   \
  extern "C" ZEB_MODULE_EXPORT int32_t ZEBModuleStart(ZEBGetProcAddress find) { \
    return ::zeb::sdk::detail::moduleEntry<Class>.start(find);                  \
  }                                                                             \
  extern "C" ZEB_MODULE_EXPORT void ZEBModuleStop() {                           \
    ::zeb::sdk::detail::moduleEntry<Class>.stop();                              \
  }                                                                             \
  static_assert(std::is_default_constructible_v<Class>, "a module is made of nothing")

namespace zeb::sdk {

namespace detail {

// Tells the host, and this module's log unless it knows, why the module does not start.
ZEB_SDK_MODULE_LOCAL inline void tellRefusal(ZEBGetProcAddress find, const char* reason,
                                             bool isLogged = false) noexcept {
  try {
    const Log tell = isLogged ? nullptr : log.load(std::memory_order_acquire);
    if (tell != nullptr) tell(reason);
    if (find == nullptr) return;
    const auto report = reinterpret_cast<ZEBReportError>(
        find(ZEB_FRAME_INTERFACE, "ZEBReportError", "ZEBReportError"));
    if (report != nullptr) report(reason);
  } catch (...) {  // what listens must not throw
  }
}

// Does `work()`; false when it throws, after the reason was told.
template <class Work>
ZEB_SDK_MODULE_LOCAL bool succeeds(ZEBGetProcAddress find, Work work) noexcept {
  try {
    work();
    return true;
  } catch (const MissingInterface& missing) {
    tellRefusal(find, missing.what(), true);
  } catch (const std::exception& failure) {
    tellRefusal(find, failure.what());
  } catch (...) {
    tellRefusal(find, "an unknown exception was thrown");
  }
  return false;
}

// The one object of a module's class. It is never destroyed but by a stop: a process that ends
// without one leaves it alone, for the library may be gone by then.
template <class Class>
class ZEB_SDK_MODULE_LOCAL ModuleEntry {
 public:
  int32_t start(ZEBGetProcAddress find) noexcept {
    if (thisModule.started) {
      tellRefusal(find, "this module is running already");
      return 0;
    }
    if (!succeeds(find, [find] { connect(find); })) return 0;
    isMade_ = succeeds(find, [this] { ::new (static_cast<void*>(&room_)) Class(); });
    if (!isMade_) stopClient();
    return isMade_ ? 1 : 0;
  }

  void stop() noexcept {
    if (!isMade_) return;
    isMade_ = false;
    object().~Class();
    stopClient();
  }

  Class& object() noexcept { return *std::launder(reinterpret_cast<Class*>(&room_)); }

 private:
  static void connect(ZEBGetProcAddress find) {
    if (startClient(find)) return;
    throw std::runtime_error(
        "the library cannot be reached, or a static object of this module failed");
  }

  alignas(Class) std::byte room_[sizeof(Class)]{};
  bool isMade_ = false;
};

template <class Class>
ZEB_SDK_MODULE_LOCAL inline constinit ModuleEntry<Class> moduleEntry;

}  // namespace detail

// The object of this module's class, for its procs. Only between start and stop; while it is being
// made, its members are those that are declared before the one that asks.
template <class Class>
[[nodiscard]] ZEB_SDK_MODULE_LOCAL Class& moduleObject() noexcept {
  return detail::moduleEntry<Class>.object();
}

}  // namespace zeb::sdk

#endif
