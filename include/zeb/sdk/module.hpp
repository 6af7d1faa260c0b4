// What a module has of its own as a client of the library: its list of lazy objects and its binding
// of the event interface. Every shared object and the executable have one each.
#ifndef ZEB_SDK_MODULE_HPP
#define ZEB_SDK_MODULE_HPP

#include "zeb/sdk/event_binding.hpp"
#include "zeb/sdk/lazy_list.hpp"
#include "zeb/sdk/module_local.hpp"

namespace zeb::sdk {

// One for each shared object, and one for the executable.
struct Module {
  // Its objects that work between start and stop.
  LazyList lazyList;
  // Its hold of the event interface.
  EventBinding events;
  // Whether startClient has started it.
  bool started = false;
};

// The module that this is compiled into. Objects take it as a default argument, which their
// definition evaluates, and keep the reference: no function that modules might share reads it.
ZEB_SDK_MODULE_LOCAL inline constinit Module thisModule;

}  // namespace zeb::sdk

#endif
