// Starting and stopping a module as a client of the library: it is attached (attachment.hpp), and
// the counters and accumulators that it declares as static objects begin to work.
//
//   static zeb::sdk::EventCounter opened("my module opened a file", 20);
//
//   const ZEBGetProcAddress zeb = ...;  // from ZEBInitialize4, or from the host
//   if (!zeb::sdk::startClient(zeb)) ...;
//   opened.signal();
//   zeb::sdk::stopClient();
//
// A host's Library (library.hpp) starts and stops the host itself.
#ifndef ZEB_SDK_CLIENT_START_HPP
#define ZEB_SDK_CLIENT_START_HPP

#include <cstdint>

#include "zeb/frame.h"
#include "zeb/sdk/attachment.hpp"
#include "zeb/sdk/lazy_walk.hpp"
#include "zeb/sdk/module.hpp"

namespace zeb::sdk {

// The levels whose objects a start initialises.
struct LazyLevels {
  // The lowest level that is initialised.
  int32_t lowest = kLowestLazyLevel;
  // The highest one.
  int32_t highest = kHighestLazyLevel;
};

namespace detail {

ZEB_SDK_MODULE_LOCAL inline void leaveLibrary(Module& module) {
  module.events.disconnect();
  if (&module == &thisModule) detach();
}

}  // namespace detail

// Attaches the module and initialises its lazy objects. False when the module is started already,
// when the library cannot be reached through `getProcAddress`, or when an object fails; what was
// initialised is then terminated again. By one thread, while no other uses the module's objects.
[[nodiscard]] ZEB_SDK_MODULE_LOCAL inline bool startClient(ZEBGetProcAddress getProcAddress,
                                                           const LazyLevels& levels = {},
                                                           Module& module = thisModule) {
  if (module.started || getProcAddress == nullptr) return false;
  ZEBFrameProcs frame{};
  if (ZEBFetchFrameProcs(getProcAddress, &frame) == 0) return false;
  if (&module == &thisModule && !attach(getProcAddress)) return false;
  module.events.connect(getProcAddress, frame.GetUnregisterCountAddr());
  module.started = initialiseLazyObjects(module.lazyList.head(), levels.lowest, levels.highest);
  if (!module.started) detail::leaveLibrary(module);
  return module.started;
}

// Terminates all of the module's lazy objects and detaches it; afterwards it may be started again.
// Does nothing for a module that is not started. By one thread, while no other uses the module's
// objects.
ZEB_SDK_MODULE_LOCAL inline void stopClient(Module& module = thisModule) {
  if (!module.started) return;
  module.started = false;
  terminateLazyObjects(module.lazyList.head());
  detail::leaveLibrary(module);
}

}  // namespace zeb::sdk

#endif
